// Looks to files and back: the dialog to export with, and the menu of the looks used last.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "reference_renderer/editor/editor_memory.h"
#include "support/win32/utf8.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <array>
#include <fstream>
#include <iterator>

#include <commdlg.h>
#include <dlgs.h>

namespace ReferenceRenderer
{

namespace
{

class EditorExchange : public EditorTest
{
protected:
    // Presses a button that opens a dialog or a menu, and comes back before it is done.
    static void Press(const OpenEditor& editor, int id)
    {
        ::PostMessageW(editor.Window(), WM_COMMAND, static_cast<WPARAM>(id), 0);
    }
    // The dialog that the editor's thread shows; null when none comes.
    static HWND DialogOf(const OpenEditor& editor)
    {
        HWND found = nullptr;
        Eventually([&] {
            ::EnumThreadWindows(
                editor.Thread(),
                [](HWND window, LPARAM result) {
                    std::array<wchar_t, 16> name{};
                    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
                    const bool isDialog = std::wstring_view(name.data()) == L"#32770";
                    if (isDialog && ::IsWindowVisible(window))
                    {
                        *reinterpret_cast<HWND*>(result) = window;
                        return FALSE;
                    }
                    return TRUE;
                },
                reinterpret_cast<LPARAM>(&found));
            return found != nullptr && ::IsWindowEnabled(found);
        });
        return found;
    }
    // Names the file in the dialog to export with and presses its button; waits until it is gone.
    static void NameFile(const OpenEditor& editor, const std::wstring& path, int format)
    {
        const HWND dialog = DialogOf(editor);
        ASSERT_NE(dialog, nullptr);
        ::SendDlgItemMessageW(dialog, cmb1, CB_SETCURSEL, static_cast<WPARAM>(format), 0);
        for (const WORD what : std::initializer_list<WORD>{CBN_SELENDOK, CBN_SELCHANGE})
        {
            ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(cmb1, what),
                           reinterpret_cast<LPARAM>(::GetDlgItem(dialog, cmb1)));
        }
        const HWND name =
            ::GetDlgItem(dialog, edt1) ? ::GetDlgItem(dialog, edt1) : ::GetDlgItem(dialog, cmb13);
        ::SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
        ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED),
                       reinterpret_cast<LPARAM>(::GetDlgItem(dialog, IDOK)));
        EXPECT_TRUE(Eventually([&] { return !::IsWindow(dialog); }));
    }
    static bool Says(const OpenEditor& editor, const std::wstring& text)
    {
        return Eventually([&] { return editor.Status().find(text) != std::wstring::npos; });
    }
    static bool HasMenu(const OpenEditor& editor)
    {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return ::GetGUIThreadInfo(editor.Thread(), &info) && info.hwndMenuOwner != nullptr;
    }
    // A path that nothing is at; what a test writes there is deleted with it.
    std::wstring FreePath(const std::string& name)
    {
        const std::wstring path = WriteFile(name, "");
        ::DeleteFileW(path.c_str());
        return path;
    }
    static std::string Read(const std::wstring& path)
    {
        const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, 0, nullptr);
        std::string text(std::size_t{1} << 20, '\0');
        DWORD read = 0;
        const BOOL ok =
            ::ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
        ::CloseHandle(file);
        text.resize(ok ? read : 0);
        return text;
    }
};

TEST_F(EditorExchange, ACorrectionIsExportedAndComesBackTheSame)
{
    const std::wstring path = FreePath("exported.cc");
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.25");
    editor.Type(Control::PowerBlue, L"0.8");
    Press(editor, IDC_EXPORT);
    NameFile(editor, path, 3);
    EXPECT_TRUE(Says(editor, L"exported.cc is written: CDL"));
    editor.Click(IDC_RESET_ALL);
    editor.Drop(path);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.250");
    EXPECT_EQ(editor.NumberText(Control::PowerBlue), "0.800");
}

TEST_F(EditorExchange, ACubeOfTheChosenSizeHasTheLookInIt)
{
    const std::wstring path = FreePath("exported.cube");
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    Press(editor, IDC_EXPORT);
    NameFile(editor, path.substr(0, path.size() - 5), 1); // the ending follows from the format
    EXPECT_TRUE(Says(editor, L"exported.cube is written: 3D LUT of 17 points a side"));
    const std::string text = Read(path);
    EXPECT_NE(text.find("LUT_3D_SIZE 17"), std::string::npos);
    EXPECT_NE(text.find("\n1 1 1\n"), std::string::npos) << "of black";
}

TEST_F(EditorExchange, WhatAFileCannotHoldIsSaidAndNotWritten)
{
    const std::wstring path = FreePath("refused.cc");
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    Press(editor, IDC_EXPORT);
    NameFile(editor, path, 3);
    EXPECT_TRUE(Says(editor, L"refused.cc is not written: the look has a 3D LUT"));
    EXPECT_EQ(::GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(EditorExchange, AFileThatIsThereIsReplacedOnlyWhenTheUserSaysSo)
{
    const std::wstring path = WriteFile("kept.cc", "mine");
    OpenEditor editor = Open();
    for (const auto& [answer, kept] : {std::pair(IDNO, true), std::pair(IDYES, false)})
    {
        Press(editor, IDC_EXPORT);
        NameFile(editor, path, 3);
        const HWND question = DialogOf(editor);
        ASSERT_NE(question, nullptr);
        ::PostMessageW(question, WM_COMMAND, static_cast<WPARAM>(answer), 0);
        ASSERT_TRUE(Eventually([&] { return !::IsWindow(question); }));
        ASSERT_TRUE(kept || Says(editor, L"kept.cc is written"));
        EXPECT_EQ(Read(path) == "mine", kept);
    }
}

TEST_F(EditorExchange, AFileThatCannotBeWrittenIsSaidAndLeftAsItWas)
{
    const std::wstring path = WriteFile("busy.cc", "mine");
    OpenEditor editor = Open();
    const HANDLE held = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    Press(editor, IDC_EXPORT);
    NameFile(editor, path, 3);
    const HWND question = DialogOf(editor);
    ::PostMessageW(question, WM_COMMAND, IDYES, 0);
    EXPECT_TRUE(Says(editor, L"busy.cc: cannot be written: "));
    ::CloseHandle(held);
    EXPECT_EQ(Read(path), "mine");
    WIN32_FIND_DATAW found{};
    EXPECT_EQ(::FindFirstFileW((path + L".*.part").c_str(), &found), INVALID_HANDLE_VALUE)
        << "no part of it is left";
}

TEST_F(EditorExchange, TheLooksUsedLastAreKeptTheNewestFirst)
{
    const std::wstring first =
        WriteFile("first.cc", "<ColorCorrection id=\"a\"><SOPNode><Slope>2 2 2"
                              "</Slope><Offset>0 0 0</Offset><Power>1 1 1"
                              "</Power></SOPNode></ColorCorrection>");
    const std::wstring second = WriteFile("second.cube", "LUT_1D_SIZE 2\n1 1 1\n0 0 0\n");
    {
        OpenEditor editor = Open();
        editor.Drop(first);
        editor.Drop(second);
        editor.Drop(first);
        editor.Drop(L"C:\\no such folder\\no such look.cube");
    }
    ASSERT_EQ(RecentLooks().size(), 2U);
    EXPECT_EQ(RecentLooks()[0], first);
    EXPECT_EQ(RecentLooks()[1], second);
    for (int i = 0; i < 12; ++i)
    {
        RememberLook(L"C:\\looks\\" + std::to_wstring(i) + L".cube");
    }
    EXPECT_EQ(RecentLooks().size(), kMostRecentLooks);
    EXPECT_EQ(RecentLooks().back(), L"C:\\looks\\2.cube");
    RememberLook(L"c:\\LOOKS\\7.cube");
    EXPECT_EQ(RecentLooks().size(), kMostRecentLooks) << "the same file";
}

TEST_F(EditorExchange, AListThatIsNoListIsNone)
{
    const DWORD number = 7;
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kEditorKey, kRecentValue, REG_DWORD, &number,
                      sizeof number);
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kEditorKey, kViewValue, REG_DWORD, &number, sizeof number);
    EXPECT_TRUE(RecentLooks().empty());
    EXPECT_EQ(LastView(), View::Light);
}

TEST_F(EditorExchange, TheMenuBringsALookBack)
{
    const std::wstring gone = WriteFile("gone.cube", "LUT_1D_SIZE 2\n1 1 1\n0 0 0\n");
    const std::wstring there = WriteFile("there.cube", "LUT_1D_SIZE 2\n1 1 1\n0 0 0\n");
    RememberLook(there);
    RememberLook(gone);
    ::DeleteFileW(gone.c_str());
    OpenEditor editor = Open();
    Press(editor, IDC_RECENT);
    ASSERT_TRUE(Eventually([&] { return HasMenu(editor); }));
    // The one that is gone cannot be chosen.
    for (const WPARAM key : std::initializer_list<WPARAM>{VK_DOWN, VK_RETURN, VK_DOWN, VK_RETURN})
    {
        ::PostMessageW(editor.Window(), WM_KEYDOWN, key, 0);
    }
    EXPECT_TRUE(Says(editor, L"there.cube is imported"));
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(127, 127, 127));
}

TEST_F(EditorExchange, AnEditorThatIsClosedWhileTheMenuIsOpenGoes)
{
    RememberLook(L"C:\\looks\\any.cube");
    OpenEditor editor = Open();
    Press(editor, IDC_RECENT);
    ASSERT_TRUE(Eventually([&] { return HasMenu(editor); }));
    ::PostMessageW(editor.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(editor.Result(), 0);
}

TEST_F(EditorExchange, WithoutAnyLookTheMenuSaysSo)
{
    OpenEditor editor = Open();
    editor.Click(IDC_RECENT);
    EXPECT_EQ(editor.Status(), L"No look was imported or exported yet");
}

TEST_F(EditorExchange, TheViewThatWasShownLastComesFirst)
{
    EXPECT_EQ(LastView(), View::Light) << "at first";
    {
        OpenEditor editor = Open();
        editor.ShowView(View::Wheels);
    }
    EXPECT_EQ(LastView(), View::Wheels);
    OpenEditor editor([this] { return m_library.doModalUI2(&m_preview, nullptr, 0, 0); }, {});
    EXPECT_TRUE(::IsWindowVisible(editor.Slider(Control::LiftRed)));
    EXPECT_FALSE(::IsWindowVisible(editor.Slider(Control::SlopeRed)));
}

} // namespace

} // namespace ReferenceRenderer
