// Effects and renderers that throw, by this compiler or another: nothing may leave the page's
// methods and its window procedure, and the page works on.
#include "tests/doubles/foreign_exception.h"
#include "tests/propertypage/page_fixture.h"

#include <tuple>

namespace
{

class ThrowingObjects : public PageTest
{
protected:
    ThrowingObjects() { exchange.ShowPreview(kFormatBgra8); }
    ~ThrowingObjects() override { exchange.onCall = nullptr; }

    void ThrowIn(std::string_view method, Throws what)
    {
        exchange.onCall = [method, what](std::string_view called) {
            if (called == method)
            {
                Throw(what);
            }
        };
    }
};

class ThrownByTheEffect : public ThrowingObjects,
                          public testing::WithParamInterface<std::tuple<const char*, Throws>>
{
};

class ThrownByTheRenderer : public ThrowingObjects,
                            public testing::WithParamInterface<std::tuple<Call, Throws>>
{
};

} // namespace

TEST_P(ThrownByTheEffect, EndsWithTheCallAndThePageWorksOn)
{
    const std::string_view method = std::get<0>(GetParam());
    exchange.bytes = PageRecord(3, 1);
    ThrowIn(method, std::get<1>(GetParam()));
    Open();
    ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    Click(kOnCheckBox);
    EXPECT_EQ(::GetCapture(), nullptr);
    Click(kOnEdit);
    EXPECT_EQ(::GetCapture(), nullptr);
    if (method == "QueryInterface" || method == "GetPreviewFrame")
    {
        EXPECT_EQ(TakeBox(), "Sorry, unable to create a suitable preview frame for GlazelBuilder.");
    }
    Close();
    EXPECT_EQ(exchange.references, 1U) << "only as the page's object";

    exchange.onCall = nullptr;
    recording.count = 0;
    exchange.bytes = PageRecord(4, 1);
    Open();
    Click(kOnCheckBox);
    EXPECT_EQ(exchange.bytes, PageRecord(4, 0));
    Click(kOnEdit);
    EXPECT_EQ(CallsOf(Call::DoModalUI2), 1U);
}

INSTANTIATE_TEST_SUITE_P(EachCall, ThrownByTheEffect,
                         testing::Combine(testing::Values("QueryInterface", "GetProps", "SetProps",
                                                          "SetNotifyWindow", "GetPreviewFrame",
                                                          "Release"),
                                          testing::ValuesIn(kAllThrows)));

TEST_P(ThrownByTheRenderer, TheRendererLeavesThePageItsRecordAndLetsItWorkOn)
{
    const auto [call, what] = GetParam();
    exchange.bytes = PageRecord(3, 1);
    const std::vector<std::uint8_t> edited = PageRecord(5, 1);
    recording.editorResult = 1;
    recording.sessionData = edited.data();
    recording.sessionDataSize = static_cast<std::uint32_t>(edited.size());
    recording.throwsFrom = call;
    recording.throws = what;
    Open();
    Repaint();
    Click(kOnEdit);
    EXPECT_EQ(::GetCapture(), nullptr);
    if (call != Call::GetSessionIcon)
    {
        EXPECT_EQ(exchange.bytes, PageRecord(3, 1)) << "half a session changes nothing";
        Click(kOnCheckBox);
        EXPECT_EQ(exchange.bytes, PageRecord(3, 0)) << "the page has no half a look of its own";
        Click(kOnCheckBox);
    }

    recording.throws = Throws::Nothing;
    Click(kOnEdit);
    EXPECT_EQ(exchange.bytes, edited);
    recording.count = 0;
    Repaint();
    EXPECT_EQ(CallsOf(Call::GetSessionIcon), 1U);
    Close();
    EXPECT_EQ(exchange.references, 1U) << "only as the page's object";
}

INSTANTIATE_TEST_SUITE_P(EachCall, ThrownByTheRenderer,
                         testing::Combine(testing::Values(Call::GetSessionIcon, Call::DoModalUI2,
                                                          Call::GetSessionDataSize,
                                                          Call::GetSessionData),
                                          testing::ValuesIn(kAllThrows)));

TEST_F(ThrowingObjects, ApplyingAnswersWhatEachMeans)
{
    SetObject(&exchange);
    page->m_bDirty = TRUE;
    for (const Throws what : kAllThrows)
    {
        page->m_bDirty = TRUE;
        ThrowIn("QueryInterface", what);
        EXPECT_EQ(page->Apply(), E_UNEXPECTED) << "there is no effect to talk to";
        EXPECT_EQ(page->IsPageDirty(), S_OK);
        for (const char* const method : {"SetProps", "Release"})
        {
            page->m_bDirty = TRUE;
            ThrowIn(method, what);
            EXPECT_EQ(page->Apply(), S_OK) << "whatever the effect does with it: " << method;
            EXPECT_EQ(page->IsPageDirty(), S_FALSE) << method;
        }
    }
}
