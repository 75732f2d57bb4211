// From the button to the look that the editor left behind.
#include "tests/doubles/failing_allocation.h"
#include "tests/doubles/fake_surface.h"
#include "tests/effect/effect_fixture.h"
#include "tests/propertypage/page_fixture.h"

#include <cstring>

namespace
{

constexpr char kNoPreviewText[] =
    "Sorry, unable to create a suitable preview frame for GlazelBuilder.";
constexpr char kNoEditorText[] = "Sorry, unable to launch the GlazelBuilder application.";

class EditorLaunch : public PageTest
{
protected:
    using PageTest::PageTest;

    // Comes back when the editor is closed.
    void ClickEdit() const { Click(kOnEdit); }
    // The next editor session is accepted and leaves these bytes behind.
    void Accept(const std::vector<std::uint8_t>& bytes)
    {
        recording.editorResult = 1;
        recording.sessionData = bytes.data();
        recording.sessionDataSize = static_cast<std::uint32_t>(bytes.size());
    }
    // What runs while the editor is open.
    void WhileOpen(std::function<void()> work)
    {
        m_work = std::move(work);
        recording.editContext = this;
        recording.onEdit = [](void* self) { static_cast<EditorLaunch*>(self)->m_work(); };
    }

private:
    std::function<void()> m_work;
};

class EditorLaunchWithoutOptional : public EditorLaunch
{
protected:
    EditorLaunchWithoutOptional() : EditorLaunch(L"without_optional") {}
};

} // namespace

TEST_F(EditorLaunch, AnEffectThatHasNotProcessedAFrameGivesTheMessageAndNoEditor)
{
    CComObject<OpenPlugin>* object = nullptr;
    ASSERT_EQ(CComObject<OpenPlugin>::CreateInstance(&object), S_OK);
    const CComPtr<OpenPlugin> effect = object;
    Open();
    SetObject(static_cast<IDXEffect*>(effect.p));
    ClickEdit();
    EXPECT_EQ(TakeBox(), kNoPreviewText);
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 0U);
}

TEST_F(EditorLaunch, AnEffectThatHasProcessedAFrameShowsItInTheEditor)
{
    CComObject<OpenPlugin>* object = nullptr;
    ASSERT_EQ(CComObject<OpenPlugin>::CreateInstance(&object), S_OK);
    const CComPtr<OpenPlugin> effect = object;
    const CComPtr<FakeSurface> input = FakeSurface::Make({.width = 8, .height = 4});
    const CComPtr<FakeSurface> output = FakeSurface::Make({.width = 8, .height = 4});
    IUnknown* const inputs[] = {static_cast<IDXSurface*>(input.p)};
    IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
    CComPtr<IDXTransform> transform;
    ASSERT_EQ(effect.QueryInterface(&transform), S_OK);
    ASSERT_EQ(transform->Setup(inputs, 1, outputs, 1, 0), S_OK);
    ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    Open();
    SetObject(static_cast<IDXEffect*>(effect.p));
    ClickEdit();
    FrameBufferDesc preview{};
    const RecordedCall call = LastOf(Call::DoModalUI2);
    std::memcpy(static_cast<void*>(&preview), call.source.data(), sizeof preview);
    EXPECT_EQ(preview.format, kFormatBgra8);
    EXPECT_EQ(preview.width, 8U);
    EXPECT_EQ(preview.height, 4U);
    EXPECT_EQ(preview.pixels, effect->GetPreviewFrame()->pixels) << "the effect's own buffer";
}

TEST_F(EditorLaunch, AFrameThatIsNotValidGivesTheMessageAndNoEditor)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.preview->rowPitch = 0;
    Open();
    ClickEdit();
    EXPECT_EQ(TakeBox(), kNoPreviewText);
    exchange.preview = nullptr;
    ClickEdit();
    EXPECT_EQ(TakeBox(), kNoPreviewText);
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 0U);
}

TEST_F(EditorLaunch, AFloatFrameOpensTheEditorWithTheCheckBoxsState)
{
    exchange.ShowPreview(kFormatBgraFloat);
    Open();
    for (const std::uint32_t flag : {1U, 0U})
    {
        exchange.bytes = PageRecord(3, flag);
        ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
        ClickEdit();
        EXPECT_EQ(LastOf(Call::DoModalUI2).word1, flag);
    }
}

TEST_F(EditorLaunch, AnEightBitFrameOpensTheEditorWithoutLinearGammaWhateverTheCheckBoxSays)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    for (const std::uint32_t flag : {1U, 0U})
    {
        exchange.bytes = PageRecord(3, flag);
        ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
        ClickEdit();
        EXPECT_EQ(LastOf(Call::DoModalUI2).word1, 0U);
    }
}

TEST_F(EditorLaunch, TheEditorGetsThePagesRecord)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes = PageRecord(0x42, 1, 90);
    Open();
    ClickEdit();
    const RecordedCall call = LastOf(Call::DoModalUI2);
    EXPECT_EQ(call.sizeA, 90U);
    EXPECT_TRUE(std::equal(call.bytesA.begin(), call.bytesA.end(), exchange.bytes.begin()));
}

TEST_F(EditorLaunch, AnEmptyRecordOpensTheEditorToo)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes.clear();
    Open();
    ClickEdit();
    const RecordedCall call = LastOf(Call::DoModalUI2);
    EXPECT_EQ(call.recordA, nullptr);
    EXPECT_EQ(call.sizeA, 0U);
}

TEST_F(EditorLaunchWithoutOptional, ARendererWithoutTheSecondEditorGetsTheFirst)
{
    exchange.ShowPreview(kFormatBgraFloat);
    Open();
    ClickEdit();
    EXPECT_EQ(LastOf(Call::DoModalUI).sizeA, 64U);
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 0U);
    EXPECT_EQ(CallsOf(Call::DoModalUIWithProfile), 0U);
}

TEST_F(EditorLaunch, AnAcceptedLookIsAppliedAndShown)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const std::vector<std::uint8_t> edited = PageRecord(0x99, 1, 100);
    Accept(edited);
    ClickEdit();
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(exchange.bytes, edited);
    RECT toPaint{};
    EXPECT_TRUE(::GetUpdateRect(PageWindow(), &toPaint, FALSE));
    const RECT all = frame->PageRect();
    EXPECT_TRUE(::EqualRect(&toPaint, &all));
    ::UpdateWindow(PageWindow());
    EXPECT_EQ(LastOf(Call::GetSessionIcon).sizeA, 100U);
    EXPECT_EQ(page->IsPageDirty(), S_FALSE);
}

TEST_F(EditorLaunch, AnAcceptedLookLetsTheGroundBeErased)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const std::vector<std::uint8_t> edited = PageRecord(0x99);
    Accept(edited);
    ClickEdit();
    EXPECT_TRUE(TakeErase());
}

TEST_F(EditorLaunch, AnAcceptedSessionKeepsTheCheckBoxAsItWas)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    for (const std::uint32_t before : {0U, 1U})
    {
        exchange.bytes = PageRecord(3, before);
        ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
        const std::vector<std::uint8_t> edited = PageRecord(0x99, 1 - before, 64);
        Accept(edited);
        ClickEdit();
        EXPECT_EQ(exchange.bytes, PageRecord(0x99, before, 64));
        EXPECT_EQ(exchange.flag, before);
    }
}

TEST_F(EditorLaunch, AnAcceptedLookOfNoBytesEmptiesTheRecordAndIsApplied)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes = PageRecord(3, 0);
    Open();
    Accept({});
    ClickEdit();
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_TRUE(exchange.bytes.empty());
    EXPECT_EQ(exchange.flag, 0U) << "the option outlives the block";
    EXPECT_EQ(CallsOf(Call::GetSessionData), 0U);
}

TEST_F(EditorLaunch, ACancelledSessionLeavesTheRecordAndAppliesNothing)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const std::vector<std::uint8_t> before = exchange.bytes;
    const std::vector<std::uint8_t> edited = PageRecord(0x99);
    for (const std::int32_t result : {0, 2, -1, 9, 11})
    {
        Accept(edited);
        recording.editorResult = result;
        ClickEdit();
        EXPECT_EQ(exchange.sets, 0) << result;
        EXPECT_EQ(CallsOf(Call::GetSessionDataSize), 0U) << result;
    }
    EXPECT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(exchange.bytes, before) << "byte for byte";
}

TEST_F(EditorLaunch, AnEditorThatCannotStartGivesTheMessageAndLeavesTheRecord)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    recording.editorResult = 10;
    ClickEdit();
    EXPECT_EQ(TakeBox(), kNoEditorText);
    EXPECT_EQ(exchange.sets, 0);
}

TEST_F(EditorLaunch, TheEffectIsLetGoAfterEverySession)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const ULONG references = exchange.references;
    const std::vector<std::uint8_t> edited = PageRecord(0x99);
    for (const std::int32_t result : {0, 1, 10})
    {
        Accept(edited);
        recording.editorResult = result;
        ClickEdit();
        EXPECT_EQ(exchange.references, references) << result;
    }
    EXPECT_EQ(TakeBox(), kNoEditorText);
}

TEST_F(EditorLaunch, AChangeThatIsHandledWhileTheEditorIsOpenLeavesItsRecordAlone)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes = PageRecord(0x11, 1, 4000);
    Open();
    bool same = false;
    WhileOpen([&] {
        const auto* const given =
            static_cast<const std::uint8_t*>(LastOf(Call::DoModalUI2).recordA);
        exchange.bytes = PageRecord(0x22, 0, 200);
        ::PostMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
        HandleMessages();
        same = std::vector<std::uint8_t>(given, given + 4000) == PageRecord(0x11, 1, 4000);
    });
    ClickEdit();
    EXPECT_TRUE(same);
    EXPECT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(exchange.bytes, PageRecord(0x22, 0, 200)) << "cancelled: the change stays";
}

TEST_F(EditorLaunch, AnAcceptedLookWinsOverAChangeDuringItsSessionWithTheCheckBoxOfItsStart)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes = PageRecord(0x11, 1, 64);
    Open();
    const std::vector<std::uint8_t> edited = PageRecord(0x99, 0, 100);
    Accept(edited);
    WhileOpen([&] {
        exchange.bytes = PageRecord(0x22, 0, 200);
        ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    });
    ClickEdit();
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(exchange.bytes, PageRecord(0x99, 1, 100));
    EXPECT_EQ(exchange.flag, 1U);
}

TEST_F(EditorLaunch, TheEditorWorksOnACopyAndWithoutMemoryForItOnTheRecordItself)
{
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes = PageRecord(0x42, 1, 90);
    Open();
    ClickEdit();
    EXPECT_NE(LastOf(Call::DoModalUI2).recordA, exchange.recordBlock);
    const NoMemory noMemory;
    ClickEdit();
    const RecordedCall call = LastOf(Call::DoModalUI2);
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 2U) << "the editor opens all the same";
    EXPECT_EQ(call.recordA, exchange.recordBlock);
    EXPECT_EQ(call.sizeA, 90U);
}

TEST_F(EditorLaunch, AnEffectThatIsReplacedDuringTheSessionIsHeldToItsEndAndTheNewOneGetsTheLook)
{
    FakeExchange other;
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const std::vector<std::uint8_t> edited = PageRecord(0x99);
    Accept(edited);
    ULONG during = 0;
    WhileOpen([&] {
        SetObject(&other);
        during = exchange.references;
    });
    ClickEdit();
    EXPECT_EQ(during, 1U) << "by the session alone";
    EXPECT_EQ(exchange.references, 0U);
    EXPECT_EQ(exchange.sets, 0);
    EXPECT_EQ(other.sets, 1);
    EXPECT_EQ(other.bytes, edited);
    Close();
    IUnknown* none = nullptr;
    page->SetObjects(0, &none);
    EXPECT_EQ(other.references, 0U);
}

TEST_F(EditorLaunch, APageThatIsClosedWhileTheEditorIsOpenStillAppliesTheLook)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const std::vector<std::uint8_t> edited = PageRecord(0x99);
    Accept(edited);
    WhileOpen([&] { page->Deactivate(); });
    ClickEdit();
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(exchange.bytes, edited);
}

TEST_F(EditorLaunch, APageThatIsLetGoWhileTheEditorIsOpenDoesNotCrash)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    const std::vector<std::uint8_t> edited = PageRecord(0x99);
    Accept(edited);
    ULONG references = 0;
    WhileOpen([&] {
        page->Deactivate();
        page.Release();
        references = exchange.references;
    });
    ClickEdit();
    EXPECT_EQ(references, 2U) << "the page lives on until its call is over";
    EXPECT_EQ(exchange.references, 0U) << "and no longer";
    EXPECT_EQ(exchange.bytes, edited);
}

TEST_F(EditorLaunch, AnEditorThatDoesNotBlockThePageIsNotOpenedTwice)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    WhileOpen([&] { ClickEdit(); });
    ClickEdit();
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 1U);
    WhileOpen([] {});
    ClickEdit();
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 2U) << "closed, it opens again";
}

// Not over the fixture: it starts the renderer.
TEST(EditorLaunchAlone, WithoutARendererLibraryNothingHappensAndNothingIsSaid)
{
    ASSERT_EQ(::GetModuleHandleW(L"GZ3Renderer_x64.dll"), nullptr) << "run this test alone";
    MessageBoxWatch boxes;
    FakeExchange exchange;
    exchange.ShowPreview(kFormatBgra8);
    exchange.bytes = PageRecord(4);
    {
        CComObject<CPluginPP>* object = nullptr;
        ASSERT_EQ(CComObject<CPluginPP>::CreateInstance(&object), S_OK);
        const CComPtr<CPluginPP> page = object;
        const PageFrame frame;
        IUnknown* effect = &exchange;
        ASSERT_EQ(page->SetObjects(1, &effect), S_OK);
        const RECT rect = frame.PageRect();
        ASSERT_EQ(page->Activate(frame.Window(), &rect, FALSE), S_OK);
        ASSERT_EQ(page->Show(SW_SHOWNA), S_OK);
        MovePointer(frame.PageWindow(), kOnEdit);
        ::SendMessageW(frame.PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
        ::SendMessageW(frame.PageWindow(), WM_LBUTTONUP, 0, 0);
        EXPECT_EQ(page->Deactivate(), S_OK);
    }
    EXPECT_TRUE(boxes.boxes.empty());
    EXPECT_EQ(exchange.sets, 0);
    EXPECT_EQ(exchange.references, 0U);
}
