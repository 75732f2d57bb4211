// Effects that throw: nothing may leave the page's methods and its window procedure, and the page
// works on.
#include "tests/propertypage/page_fixture.h"

#include <stdexcept>

namespace
{

class ForeignException : public PageTest
{
protected:
    ForeignException() { exchange.ShowPreview(kFormatBgra8); }
    ~ForeignException() override { exchange.onCall = nullptr; }

    void ThrowIn(std::string_view method)
    {
        exchange.onCall = [method](std::string_view called) {
            if (called == method)
            {
                throw std::runtime_error("of the effect");
            }
        };
    }
};

class ForeignExceptionIn : public ForeignException, public testing::WithParamInterface<const char*>
{
};

} // namespace

TEST_P(ForeignExceptionIn, EndsWithTheCallAndThePageWorksOn)
{
    const std::string_view method = GetParam();
    exchange.bytes = PageRecord(3, 1);
    ThrowIn(method);
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

INSTANTIATE_TEST_SUITE_P(EachCall, ForeignExceptionIn,
                         testing::Values("QueryInterface", "GetProps", "SetProps",
                                         "SetNotifyWindow", "GetPreviewFrame", "Release"),
                         [](const auto& method) { return std::string(method.param); });

TEST_F(ForeignException, ApplyingAnswersWhatEachMeans)
{
    SetObject(&exchange);
    page->m_bDirty = TRUE;
    ThrowIn("QueryInterface");
    EXPECT_EQ(page->Apply(), E_UNEXPECTED) << "there is no effect to talk to";
    EXPECT_EQ(page->IsPageDirty(), S_OK);
    for (const char* const method : {"SetProps", "Release"})
    {
        page->m_bDirty = TRUE;
        ThrowIn(method);
        EXPECT_EQ(page->Apply(), S_OK) << "whatever the effect does with the record: " << method;
        EXPECT_EQ(page->IsPageDirty(), S_FALSE) << method;
    }
}
