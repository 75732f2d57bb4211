#include "tests/reference_renderer/editor/editor_fixture.h"

#include "reference_renderer/editor/editor_memory.h"
#include "support/win32/utf8.h"

#include <array>
#include <cstdio>
#include <fstream>

namespace ReferenceRenderer
{

namespace
{

constexpr wchar_t kAside[] = L"Software\\Glazel DX\\Look editor before the test";

void CopyKey(const wchar_t* from, const wchar_t* to)
{
    HKEY target = nullptr;
    if (::RegCreateKeyW(HKEY_CURRENT_USER, to, &target) == ERROR_SUCCESS)
    {
        ::RegCopyTreeW(HKEY_CURRENT_USER, from, target);
        ::RegCloseKey(target);
    }
}

} // namespace

EmptyMemory::EmptyMemory()
{
    CopyKey(kEditorKey, kAside);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kEditorKey);
}

EmptyMemory::~EmptyMemory()
{
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kEditorKey);
    CopyKey(kAside, kEditorKey);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kAside);
}

EditorTest::EditorTest() : m_pixels(std::size_t{64} * 36 * 4, 128)
{
    m_preview.format = kFormatBgra8;
    m_preview.pixels = m_pixels.data();
    m_preview.width = 64;
    m_preview.height = 36;
    m_preview.rowPitch = 64;
}

EditorTest::~EditorTest()
{
    for (const std::wstring& file : m_files)
    {
        ::DeleteFileW(file.c_str());
    }
}

OpenEditor EditorTest::Open(const Bytes& record, std::uint32_t linear)
{
    return OpenEditor([this, record, linear] {
        return m_library.doModalUI2(&m_preview, record.data(),
                                    static_cast<std::uint32_t>(record.size()), linear);
    });
}

std::unique_ptr<StoredLook> EditorTest::Produced()
{
    auto look = std::make_unique<StoredLook>();
    EXPECT_EQ(ReadRecord(m_library.Produced(), *look), RecordState::Usable);
    return look;
}

COLORREF EditorTest::PixelShown(const ShownEditor& editor, double x, double y)
{
    const HWND picture = editor.Child(IDC_PICTURE);
    ::SendMessageW(picture, WM_NULL, 0, 0);
    ::RedrawWindow(picture, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    RECT client{};
    ::GetClientRect(picture, &client);
    // The picture fills one direction and stands in the middle of the other.
    const double scale = std::min(client.right / 64.0, client.bottom / 36.0);
    const double left = (client.right - 64.0 * scale) / 2.0;
    const double top = (client.bottom - 36.0 * scale) / 2.0;
    const HDC dc = ::GetDC(picture);
    const COLORREF pixel = ::GetPixel(dc, static_cast<int>(left + x * 64.0 * scale),
                                      static_cast<int>(top + y * 36.0 * scale));
    ::ReleaseDC(picture, dc);
    return pixel;
}

std::wstring EditorTest::WriteFile(const std::string& name, const std::string& text)
{
    std::array<wchar_t, MAX_PATH> folder{};
    ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    const std::wstring path = folder.data() + Wide(name);
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    DWORD written = 0;
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    ::CloseHandle(file);
    m_files.push_back(path);
    return path;
}

} // namespace ReferenceRenderer
