// Looks that go from one editor to another as text.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "support/win32/clipboard_text.h"
#include "support/win32/utf8.h"
#include "tests/reference_renderer/core/look_fixtures.h"

namespace ReferenceRenderer
{

namespace
{

class EditorClipboard : public EditorTest
{
protected:
    static void Put(const char* text)
    {
        ASSERT_TRUE(
            Eventually([&] { return PutOnClipboard(nullptr, Wide(text)) == ERROR_SUCCESS; }));
    }
    static std::string Held()
    {
        std::optional<std::wstring> text;
        EXPECT_TRUE(Eventually([&] { return (text = TextOnClipboard(nullptr)).has_value(); }));
        return Utf8(text.value_or(L""));
    }
};

TEST_F(EditorClipboard, ALookIsCopiedInOneEditorAndPastedIntoAnother)
{
    Look look = CubeLook(CubeOf(5, Inverted));
    look.title = "Inverted";
    look.cdlMode = CdlMode::Unclamped;
    look.cdl.slope = {1.5F, 1.0F, 0.5F};
    const Bytes record = RecordOf(look);
    {
        OpenEditor from = Open(record);
        from.PressKey('C', {VK_CONTROL});
        EXPECT_EQ(from.CloseWith(IDCANCEL), 0);
    }
    OpenEditor to = Open();
    to.PressKey('V', {VK_CONTROL});
    EXPECT_EQ(to.Status(), L"The look is pasted");
    EXPECT_EQ(to.NumberText(Control::SlopeRed), "1.500");
    to.PressKey('Z', {VK_CONTROL});
    EXPECT_EQ(to.NumberText(Control::SlopeRed), "1.000");
    to.PressKey('Y', {VK_CONTROL});
    EXPECT_EQ(to.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), record);
}

TEST_F(EditorClipboard, OtherTextIsExplainedAndChangesNothing)
{
    Put("1.75");
    OpenEditor editor = Open();
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    editor.PressKey('V', {VK_CONTROL});
    EXPECT_EQ(editor.Status(),
              L"The clipboard holds no whole look: copy one in an editor and paste again");
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.010");
}

TEST_F(EditorClipboard, InANumberTheKeysAreTheNumbers)
{
    Put("1.75");
    OpenEditor editor = Open();
    editor.ClickInto(editor.Number(Control::SlopeRed));
    editor.PressKey('C', {VK_CONTROL});
    EXPECT_EQ(Held().find("glazel-look:"), std::string::npos);
    editor.PressKey('V', {VK_CONTROL});
    EXPECT_EQ(editor.Status(), L"") << "no look was asked for";
}

} // namespace

} // namespace ReferenceRenderer
