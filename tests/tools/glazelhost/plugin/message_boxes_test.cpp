#include "tools/glazelhost/plugin/message_boxes.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

// This program's own imports are redirected, so its calls below never reach the system.
class MessageBoxes : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { RedirectMessageBoxes(::GetModuleHandleW(nullptr)); }
    void SetUp() override { TakeMessageBoxes(); }
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(MessageBoxes, EveryKindIsRecordedAsOneLine)
{
    ::MessageBoxA(nullptr, "one\r\ntwo", nullptr, MB_OK);
    ::MessageBoxW(nullptr, L"gr\u00FCn", L"caption", MB_OK);
    ::MessageBoxExA(nullptr, "three", "", MB_OK, 0);
    ::MessageBoxExW(nullptr, L"four", L"", MB_OK, 0);
    MSGBOXPARAMSA narrow{};
    narrow.lpszText = "five";
    ::MessageBoxIndirectA(&narrow);
    MSGBOXPARAMSW wide{};
    wide.lpszText = L"six";
    ::MessageBoxIndirectW(&wide);
    EXPECT_EQ(TakeMessageBoxes(),
              (Texts{"one two", "gr\xC3\xBCn", "three", "four", "five", "six"}));
}

TEST_F(MessageBoxes, TakingThemForgetsThem)
{
    ::MessageBoxA(nullptr, "once", nullptr, MB_OK);
    EXPECT_EQ(TakeMessageBoxes(), Texts{"once"});
    EXPECT_EQ(TakeMessageBoxes(), Texts{});
}

TEST_F(MessageBoxes, ABoxWithoutATextIsRecordedToo)
{
    ::MessageBoxA(nullptr, nullptr, nullptr, MB_OK);
    EXPECT_EQ(TakeMessageBoxes(), Texts{""});
}

TEST_F(MessageBoxes, TheAnswerIsTheMostCarefulButton)
{
    EXPECT_EQ(::MessageBoxA(nullptr, "", nullptr, MB_OK), IDOK);
    EXPECT_EQ(::MessageBoxA(nullptr, "", nullptr, MB_OKCANCEL | MB_ICONERROR), IDCANCEL);
    EXPECT_EQ(::MessageBoxA(nullptr, "", nullptr, MB_YESNO), IDNO);
    EXPECT_EQ(::MessageBoxA(nullptr, "", nullptr, MB_YESNOCANCEL), IDCANCEL);
    EXPECT_EQ(::MessageBoxA(nullptr, "", nullptr, MB_RETRYCANCEL), IDCANCEL);
    EXPECT_EQ(::MessageBoxA(nullptr, "", nullptr, MB_ABORTRETRYIGNORE), IDABORT);
}

TEST_F(MessageBoxes, RedirectingAgainChangesNothing)
{
    RedirectMessageBoxes(::GetModuleHandleW(nullptr));
    RedirectMessageBoxesOfLoadedModules();
    ::MessageBoxA(nullptr, "still here", nullptr, MB_OK);
    EXPECT_EQ(TakeMessageBoxes(), Texts{"still here"});
}

} // namespace GlazelHost
