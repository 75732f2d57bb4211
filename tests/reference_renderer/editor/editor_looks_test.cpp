// What the editor starts from, imports, shows and produces.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "tests/propertypage/panel_picture.h"
#include "tests/reference_renderer/core/look_fixtures.h"

namespace ReferenceRenderer
{

namespace
{

constexpr char kCdl[] = "<ColorCorrection id=\"dim\"><SOPNode><Slope>0.5 0.5 0.5</Slope>"
                        "<Offset>0 0 0</Offset><Power>1 1 1</Power></SOPNode></ColorCorrection>";

class EditorLooks : public EditorTest
{
};

TEST_F(EditorLooks, StartsFromTheRecordAndGivesItBackUnchanged)
{
    Look look = CubeLook(CubeOf(9, Swirled));
    look.cdlMode = CdlMode::Unclamped;
    look.cdl.offset[1] = 0.125F;
    look.strength = 0.75F;
    const Bytes record = RecordOf(look);
    OpenEditor editor = Open(record);
    EXPECT_EQ(editor.NumberText(Control::OffsetGreen), "0.125");
    EXPECT_EQ(editor.NumberText(Control::Strength), "0.750");
    EXPECT_EQ(editor.Status(), L"");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), record);
}

TEST_F(EditorLooks, StartsNeutralFromForeignBytesAndSaysSo)
{
    OpenEditor editor = Open(Bytes(300, 9));
    EXPECT_NE(editor.Status().find(L"not one of this renderer"), std::wstring::npos);
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), RecordOf(Look()));
}

TEST_F(EditorLooks, StartsNeutralWithoutARecordAndSaysNothing)
{
    OpenEditor editor = Open();
    EXPECT_EQ(editor.Status(), L"");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), RecordOf(Look()));
}

TEST_F(EditorLooks, ACancelledSessionLeavesWhatWasProducedBefore)
{
    const std::wstring file = WriteFile("editor_before.cc", kCdl);
    const Bytes before = m_library.Import(std::string(file.begin(), file.end()));
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.5");
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_EQ(m_library.Produced(), before);
}

TEST_F(EditorLooks, ADroppedLutIsShownAndItsStrengthCounts)
{
    const std::wstring file = WriteFile("editor_lut.cube", CubeText(2, Inverted));
    OpenEditor editor = Open();
    EXPECT_FALSE(::IsWindowEnabled(editor.Slider(Control::Strength)));
    EXPECT_FALSE(::IsWindowEnabled(editor.Child(IDC_REMOVE_TABLES)));
    editor.Drop(file);
    EXPECT_EQ(editor.Status().find(L"editor_lut.cube is imported"), 0U);
    EXPECT_TRUE(::IsWindowEnabled(editor.Slider(Control::Strength)));
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(127, 127, 127));
    editor.Type(Control::Strength, L"0");
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(128, 128, 128));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cubeSize, 2U);
    EXPECT_EQ(Produced()->strength, 0.0F);
    EXPECT_STREQ(Produced()->title.data(), "editor_lut");
}

TEST_F(EditorLooks, ADroppedCdlIsAddedToTheLut)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(3, Inverted))));
    editor.Drop(WriteFile("editor_cdl.cc", kCdl));
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "0.500");
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(191, 191, 191));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cubeSize, 3U);
    EXPECT_EQ(Produced()->cdl.slope[0], 0.5F);
}

TEST_F(EditorLooks, AFileThatIsNoLookIsExplainedInTheWindowAndChangesNothing)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(3, Inverted)));
    OpenEditor editor = Open(record);
    editor.Drop(WriteFile("editor_bad.cube", "LUT_3D_SIZE 2\n0 0 0\n0 0 zero\n"));
    EXPECT_NE(editor.Status().find(L"line 3"), std::wstring::npos) << "where it is wrong";
    editor.Drop(L"Z:\\no such folder\\no such look.cube");
    EXPECT_NE(editor.Status().find(L"cannot be opened"), std::wstring::npos);
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), record);
}

TEST_F(EditorLooks, RemovingTheLutLeavesTheNumbers)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(3, Inverted))));
    editor.Type(Control::SlopeRed, L"0.5");
    editor.Click(IDC_REMOVE_TABLES);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(64, 128, 128));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_FALSE(Produced()->HasTables());
    EXPECT_EQ(Produced()->cdl.slope[0], 0.5F);
}

TEST_F(EditorLooks, TheImportButtonAsksForAFile)
{
    const std::wstring file = WriteFile("editor_asked.cube", CubeText(2, Inverted));
    OpenEditor editor = Open();
    ::PostMessageW(editor.Child(IDC_IMPORT), BM_CLICK, 0, 0);
    HWND dialog = nullptr;
    ASSERT_TRUE(Eventually([&] {
        dialog = ::FindWindowW(nullptr, L"Import a look");
        return dialog != nullptr && ::IsWindowVisible(dialog);
    }));
    constexpr int kFileName = 0x480; // edt1 of the system's dialog, or cmb13 with an edit inside
    constexpr int kFileNameList = 0x47C;
    HWND name = nullptr;
    ASSERT_TRUE(Eventually([&] {
        name = ::GetDlgItem(dialog, kFileName);
        name = name != nullptr ? name : ::GetDlgItem(dialog, kFileNameList);
        return name != nullptr;
    }));
    ::SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file.c_str()));
    ::SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(Eventually([&] { return !editor.Status().empty(); }));
    EXPECT_EQ(editor.Status().find(L"editor_asked.cube is imported"), 0U);
}

TEST_F(EditorLooks, ThePictureCanBeComparedWithTheOriginal)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    editor.Type(Control::SlopeRed, L"0");
    const COLORREF graded = PixelShown(editor, 0.2, 0.5);
    EXPECT_EQ(graded, RGB(255, 127, 127));
    editor.Click(IDC_SHOW_ORIGINAL);
    EXPECT_EQ(PixelShown(editor, 0.2, 0.5), RGB(128, 128, 128));
    editor.Click(IDC_SHOW_SPLIT);
    EXPECT_EQ(PixelShown(editor, 0.2, 0.5), RGB(128, 128, 128));
    EXPECT_EQ(PixelShown(editor, 0.8, 0.5), graded);
    editor.Click(IDC_SHOW_GRADED);
    EXPECT_EQ(PixelShown(editor, 0.2, 0.5), graded);
}

TEST_F(EditorLooks, TheLineBetweenBothCanBeDraggedAndMovedWithKeys)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    editor.Type(Control::SlopeRed, L"0");
    editor.Click(IDC_SHOW_SPLIT);
    const HWND picture = editor.Child(IDC_PICTURE);
    RECT client{};
    ::GetClientRect(picture, &client);
    const LPARAM middle = MAKELPARAM(client.right / 2, client.bottom / 2);
    ::SendMessageW(picture, WM_LBUTTONDOWN, MK_LBUTTON, middle);
    ::SendMessageW(picture, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(client.right * 9 / 10, 10));
    ::SendMessageW(picture, WM_LBUTTONUP, 0, MAKELPARAM(client.right * 9 / 10, 10));
    EXPECT_EQ(PixelShown(editor, 0.8, 0.5), RGB(128, 128, 128));
    for (int i = 0; i < 20; ++i)
    {
        ::SendMessageW(picture, WM_KEYDOWN, VK_LEFT, 0);
    }
    EXPECT_EQ(PixelShown(editor, 0.8, 0.5), RGB(255, 127, 127));
}

TEST_F(EditorLooks, ThePictureIsACopyOfThePreview)
{
    OpenEditor editor = Open();
    std::fill(m_pixels.begin(), m_pixels.end(), std::uint8_t{7});
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    editor.SlideKey(Control::SlopeRed, VK_LEFT);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(128, 128, 128));
}

class EditorFloats : public EditorTest
{
protected:
    EditorFloats() : m_floats(std::size_t{64} * 36 * 4, 0.5F)
    {
        m_preview.format = kFormatBgraFloat;
        m_preview.pixels = m_floats.data();
    }

    std::vector<float> m_floats;
};

TEST_F(EditorFloats, LinearLightIsShownEncoded)
{
    OpenEditor editor = Open({}, 1);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(188, 188, 188));
}

TEST_F(EditorFloats, OtherFloatsAreShownAsTheyAre)
{
    OpenEditor editor = Open({}, 0);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(128, 128, 128));
}

TEST_F(EditorFloats, TheEntryPointWithoutTheOptionTakesNoLinearLight)
{
    OpenEditor editor([this] { return m_library.doModalUI(&m_preview, nullptr, 0); });
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(128, 128, 128));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
}

TEST_F(EditorFloats, TheEntryPointWithAProfileTakesTheOption)
{
    OpenEditor editor(
        [this] { return m_library.doModalUIWithProfile(&m_preview, nullptr, 0, "profile", 7, 1); });
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(188, 188, 188));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
}

TEST_F(EditorFloats, EveryPixelIsGradedSoonAfterTheLastStepOfASlider)
{
    // Every pixel differs from its neighbours, and the look takes its time.
    std::vector<float> noise(std::size_t{1280} * 720 * 4);
    for (std::size_t i = 0; i < noise.size(); ++i)
    {
        noise[i] = static_cast<float>(i * 7919 % 1009) / 1009.0F;
    }
    m_preview.pixels = noise.data();
    m_preview.width = m_preview.rowPitch = 1280;
    m_preview.height = 720;
    Look look = CubeLook(CubeOf(25, Swirled));
    look.cdlMode = CdlMode::Clamped;
    look.cdl.power = {0.9F, 1.1F, 1.2F};
    OpenEditor editor = Open(RecordOf(look), 1);
    editor.Resize(1270, 1000);
    const auto shown = [picture = editor.Child(IDC_PICTURE)] {
        ::RedrawWindow(picture, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        return ScreenOf(picture);
    };
    const Picture whole = shown(); // as in any new size
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    EXPECT_NE(FirstDifference(shown(), whole), "") << "seen at once";
    editor.SlideKey(Control::SlopeRed, VK_LEFT);
    EXPECT_TRUE(Eventually([&] { return FirstDifference(shown(), whole).empty(); }));
}

TEST_F(EditorLooks, WithoutAPictureTheLookCanBeEditedAllTheSame)
{
    OpenEditor editor([this] { return m_library.doModalUI2(nullptr, nullptr, 0, 0); });
    editor.Type(Control::SlopeRed, L"1.5");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.slope[0], 1.5F);
}

} // namespace

} // namespace ReferenceRenderer
