// What somebody who grades does in the first hour, each with mouse and keyboard as a person would,
// and with a picture of what came of it.
#include "tests/reference_renderer/editor/photograph_fixture.h"

#include "reference_renderer/editor/number_text.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string_view>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kBalanceWheel = 0;
constexpr std::size_t kLiftWheel = 1;
constexpr std::size_t kGainWheel = 3;

// What the line below the picture says of a pixel, in 8-bit codes.
struct PickedPixel
{
    std::array<int, 3> before{};
    std::array<int, 3> after{};
};

class ColouristTask : public PhotographTest
{
protected:
    static constexpr POINT kCupRim{275, 23};  // white, with a trace of magenta
    static constexpr POINT kSaucer{380, 250}; // dark red
    static constexpr POINT kCoffee{300, 150}; // brown

    ColouristTask() { Load("coffee.png"); }
    ~ColouristTask() override
    {
        if (m_open && ::IsWindow(m_open->Window()))
        {
            const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
            Take(*m_open, "task-" + std::string(test->name()) + ".png");
        }
        m_open.reset();
    }

    OpenEditor& Editor()
    {
        if (!m_open)
        {
            m_open.emplace([this] { return m_library.doModalUI2(&m_preview, nullptr, 0, 0); },
                           std::nullopt);
        }
        return *m_open;
    }
    // A letter with Alt.
    void Letter(wchar_t letter)
    {
        constexpr LPARAM kAltIsDown = LPARAM{1} << 29;
        ::PostMessageW(Editor().Focus(), WM_SYSCHAR, letter, kAltIsDown);
        Editor().PressKey(VK_NONAME, {}); // until the loop has taken it
    }
    void Type(Control control, const std::wstring& text)
    {
        Editor().ClickInto(Editor().Number(control));
        Editor().TypeLetters(text);
    }
    float Number(Control control)
    {
        return TypedNumber(Editor().NumberText(control)).value_or(-1000.0F);
    }
    // The left button on a window, from a point by some pixels.
    void Drag(HWND window, POINT from, POINT by, WPARAM keys = 0)
    {
        Editor().Mouse(window, WM_LBUTTONDOWN, from, MK_LBUTTON | keys);
        for (const LONG part : {3, 2, 1})
        {
            Editor().Mouse(window, WM_MOUSEMOVE, {from.x + by.x / part, from.y + by.y / part},
                           MK_LBUTTON | keys);
        }
        Editor().Mouse(window, WM_LBUTTONUP, {from.x + by.x, from.y + by.y}, keys);
    }
    void DragWheel(std::size_t wheel, POINT by)
    {
        Drag(Editor().Pad(wheel), MiddleOf(Editor().Pad(wheel)), by);
    }
    // Takes the knob in the middle of its slider by a share of its width.
    void DragSlider(Control control, double share, WPARAM keys = 0)
    {
        const HWND slider = Editor().Slider(control);
        const POINT middle = MiddleOf(slider);
        Drag(slider, middle, {static_cast<LONG>(2 * middle.x * share), 0}, keys);
    }
    static POINT MiddleOf(HWND window)
    {
        RECT client{};
        ::GetClientRect(window, &client);
        return {client.right / 2, client.bottom / 2};
    }
    // The point of the picture's window at which a pixel is while the picture fits.
    POINT OnPicture(POINT pixel)
    {
        RECT client{};
        ::GetClientRect(Editor().Child(IDC_PICTURE), &client);
        const double scale = std::min(static_cast<double>(client.right) / m_preview.width,
                                      static_cast<double>(client.bottom) / m_preview.height);
        const double left = (client.right - m_preview.width * scale) / 2.0;
        const double top = (client.bottom - m_preview.height * scale) / 2.0;
        return {static_cast<LONG>(left + (pixel.x + 0.5) * scale),
                static_cast<LONG>(top + (pixel.y + 0.5) * scale)};
    }
    PickedPixel Pick(POINT pixel)
    {
        Editor().Mouse(Editor().Child(IDC_PICTURE), WM_MOUSEMOVE, OnPicture(pixel));
        std::string text = TextOf(IDC_PIXEL);
        constexpr std::string_view kArrow = "\xE2\x86\x92"; // no text for a format of sscanf
        text.replace(std::min(text.find(kArrow), text.size()), kArrow.size(), ">");
        PickedPixel picked;
        POINT at{};
        const int read = std::sscanf(text.c_str(), "%ld, %ld: %d %d %d > %d %d %d", &at.x, &at.y,
                                     &picked.before[0], &picked.before[1], &picked.before[2],
                                     &picked.after[0], &picked.after[1], &picked.after[2]);
        EXPECT_EQ(read, 8) << text;
        EXPECT_NEAR(at.x, pixel.x, 1) << text;
        EXPECT_NEAR(at.y, pixel.y, 1) << text;
        return picked;
    }
    std::string TextOf(int id)
    {
        std::array<wchar_t, 256> text{};
        ::SendMessageW(Editor().Child(id), WM_GETTEXT, text.size(),
                       reinterpret_cast<LPARAM>(text.data()));
        return Utf8(text.data());
    }
    // A scope, counted whole.
    std::string Scope(WPARAM key)
    {
        Editor().PressKey(key, {});
        EXPECT_TRUE(Eventually([&] { return CountColours(Editor().Child(IDC_SCOPE)) > 100; }));
        return TextOf(IDC_SCOPE);
    }
    void Wheel(HWND window, POINT at, int notches, WPARAM keys = 0)
    {
        POINT screen = at;
        ::ClientToScreen(window, &screen);
        ::PostMessageW(window, WM_MOUSEWHEEL,
                       MAKEWPARAM(keys, static_cast<WORD>(notches * WHEEL_DELTA)),
                       MAKELPARAM(screen.x, screen.y));
        Editor().PressKey(VK_NONAME, {});
    }

private:
    std::optional<OpenEditor> m_open;
};

TEST_F(ColouristTask, StartsFromALut)
{
    Editor().Drop(L"" GLAZEL_SOURCE_DIR "/samples/looks/warm_print.cube");
    EXPECT_EQ(Editor().Status().find(L"warm_print.cube is imported"), 0U);
    EXPECT_NE(Pick(kCoffee).after, Pick(kCoffee).before);
}

TEST_F(ColouristTask, TakesHalfOfALut)
{
    Editor().Drop(L"" GLAZEL_SOURCE_DIR "/samples/looks/warm_print.cube");
    const int whole = Pick(kSaucer).after[0];
    Letter('t');
    for (int i = 0; i < 5; ++i)
    {
        Editor().PressKey(VK_NEXT, {});
    }
    EXPECT_EQ(Editor().NumberText(Control::Strength), "0.500");
    const PickedPixel half = Pick(kSaucer);
    EXPECT_NEAR(half.after[0], (half.before[0] + whole) / 2.0, 1.0);
}

TEST_F(ColouristTask, TakesALutOutAgain)
{
    Editor().Drop(L"" GLAZEL_SOURCE_DIR "/samples/looks/bleach_bypass.cube");
    Editor().ClickInto(Editor().Child(IDC_REMOVE_TABLES));
    EXPECT_EQ(Editor().Status(), L"The LUT is removed");
    EXPECT_EQ(Pick(kSaucer).after, Pick(kSaucer).before);
}

TEST_F(ColouristTask, WarmsThePictureUp)
{
    DragSlider(Control::Temperature, 0.2);
    const PickedPixel rim = Pick(kCoffee);
    EXPECT_GT(rim.after[0], rim.before[0]);
    EXPECT_LT(rim.after[2], rim.before[2]);
}

TEST_F(ColouristTask, TakesAMagentaCastOut)
{
    Type(Control::Tint, L"-0.15");
    const PickedPixel coffee = Pick(kCoffee);
    EXPECT_GT(coffee.after[1], coffee.before[1]);
}

TEST_F(ColouristTask, MakesAPatchNeutral)
{
    constexpr POINT kWall{410, 80};
    const auto spread = [&] {
        const std::array<int, 3> codes = Pick(kWall).after;
        return *std::max_element(codes.begin(), codes.end()) -
               *std::min_element(codes.begin(), codes.end());
    };
    ASSERT_GT(spread(), 60);
    Editor().ClickInto(Editor().Number(Control::Temperature));
    while (Pick(kWall).after[0] > Pick(kWall).after[2] && Number(Control::Temperature) > -3.0F)
    {
        Editor().PressKey(VK_DOWN, {VK_CONTROL});
    }
    Editor().ClickInto(Editor().Number(Control::Tint));
    while (Pick(kWall).after[1] > Pick(kWall).after[0] && Number(Control::Tint) < 2.0F)
    {
        Editor().PressKey(VK_UP, {});
    }
    while (Pick(kWall).after[1] < Pick(kWall).after[0] && Number(Control::Tint) > -2.0F)
    {
        Editor().PressKey(VK_DOWN, {});
    }
    EXPECT_LE(spread(), 6);
}

TEST_F(ColouristTask, OpensUpByAStop)
{
    Type(Control::Exposure, L"1");
    const PickedPixel saucer = Pick(kSaucer);
    // Twice the light of a picture that is encoded with 1 / 2.2.
    EXPECT_NEAR(saucer.after[0], saucer.before[0] * 1.37, 1.0);
}

TEST_F(ColouristTask, ClosesDownALittleWithTheWheelOfTheMouse)
{
    const HWND slider = Editor().Slider(Control::Exposure);
    Editor().ClickInto(Editor().Number(Control::Exposure));
    Editor().ClickInto(slider);
    Wheel(slider, MiddleOf(slider), -10);
    EXPECT_NEAR(Number(Control::Exposure), -0.1F, 0.02F);
}

TEST_F(ColouristTask, GivesMoreContrast)
{
    DragSlider(Control::Contrast, 0.2);
    EXPECT_GT(Pick(kCupRim).after[1], Pick(kCupRim).before[1] - 1);
    EXPECT_LT(Pick(kSaucer).after[0], Pick(kSaucer).before[0]);
}

TEST_F(ColouristTask, TurnsTheContrastAboutAValueOfThePicture)
{
    const int coffee = Pick(kCoffee).before[1]; // 151
    Type(Control::Pivot, Wide(NumberText(static_cast<float>(coffee) / 255.0F)));
    Type(Control::Contrast, L"1.5");
    EXPECT_NEAR(Pick(kCoffee).after[1], coffee, 1);
    EXPECT_LT(Pick(kSaucer).after[0], Pick(kSaucer).before[0]);
}

TEST_F(ColouristTask, LiftsTheBlacks)
{
    Letter('w');
    DragSlider(Control::LiftGreen, 0.1, MK_CONTROL);
    EXPECT_NEAR(Number(Control::LiftRed), 0.1, 0.01);
    EXPECT_NEAR(Number(Control::LiftBlue), 0.1, 0.01);
    EXPECT_GT(Pick(kSaucer).after[2], Pick(kSaucer).before[2] + 15);
    EXPECT_NEAR(Pick(kCupRim).after[1], Pick(kCupRim).before[1], 2) << "white stays";
}

TEST_F(ColouristTask, CrushesTheBlacks)
{
    Letter('w');
    Letter('f');
    for (int i = 0; i < 8; ++i)
    {
        Editor().PressKey(VK_LEFT, {VK_CONTROL, VK_SHIFT}); // all channels
    }
    EXPECT_EQ(Editor().NumberText(Control::LiftBlue), "-0.080");
    EXPECT_EQ(Pick(kSaucer).after[2], 0);
}

TEST_F(ColouristTask, PushesTheHighlightsToOrange)
{
    Letter('w');
    DragWheel(kGainWheel, {-15, -15}); // between red above and green at the left
    const PickedPixel rim = Pick(kCupRim);
    EXPECT_GE(rim.after[0], rim.after[1]); // both may be white's
    EXPECT_GT(rim.after[1], rim.after[2] + 20);
}

TEST_F(ColouristTask, PushesTheShadowsToTeal)
{
    Letter('w');
    DragWheel(kLiftWheel, {5, 20}); // against red
    const PickedPixel saucer = Pick(kSaucer);
    EXPECT_LT(saucer.after[0], saucer.before[0]);
    EXPECT_GT(saucer.after[1], saucer.before[1]);
    EXPECT_GT(saucer.after[2], saucer.before[2]);
}

TEST_F(ColouristTask, BalancesWithTheWheelOfLight)
{
    DragWheel(kBalanceWheel, {12, 0});
    EXPECT_LT(Number(Control::Temperature), -0.05F) << "towards blue";
    EXPECT_NEAR(Number(Control::Exposure), 0.0, 0.002);
}

TEST_F(ColouristTask, GoesToBlackAndWhite)
{
    Letter('u');
    Editor().PressKey(VK_HOME, {});
    const PickedPixel coffee = Pick(kCoffee);
    EXPECT_EQ(coffee.after[0], coffee.after[1]);
    EXPECT_EQ(coffee.after[1], coffee.after[2]);
}

TEST_F(ColouristTask, GivesMoreColour)
{
    Type(Control::Saturation, L"1.15");
    const PickedPixel coffee = Pick(kCoffee);
    EXPECT_GT(coffee.after[0] - coffee.after[2], coffee.before[0] - coffee.before[2]);
}

TEST_F(ColouristTask, UndoesTheLastThreeAndOneOfThemBack)
{
    Type(Control::Exposure, L"0.5");
    Type(Control::Contrast, L"1.2");
    Type(Control::Saturation, L"0.8");
    for (int i = 0; i < 3; ++i)
    {
        Editor().PressKey('Z', {VK_CONTROL});
    }
    EXPECT_EQ(Pick(kCoffee).after, Pick(kCoffee).before);
    Editor().PressKey('Y', {VK_CONTROL});
    EXPECT_EQ(Editor().NumberText(Control::Exposure), "0.500");
    EXPECT_EQ(Editor().NumberText(Control::Contrast), "1.000");
}

TEST_F(ColouristTask, PutsTheOriginalBesideTheGrade)
{
    Type(Control::Exposure, L"-1");
    Letter('s');
    const HWND picture = Editor().Child(IDC_PICTURE);
    Drag(picture, MiddleOf(picture), {-100, 0});
    const auto brightness = [&](LONG x) {
        const HDC dc = ::GetDC(picture);
        const COLORREF pixel = ::GetPixel(dc, x, OnPicture(kCoffee).y);
        ::ReleaseDC(picture, dc);
        return GetRValue(pixel);
    };
    const LONG line = MiddleOf(picture).x - 100;
    ::RedrawWindow(picture, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_GT(brightness(line - 12), brightness(line + 12)) << "the original is at the left";
}

TEST_F(ColouristTask, LooksAtTheOriginalAndBack)
{
    Type(Control::Exposure, L"-2");
    const auto shown = [&] { return PixelShown(Editor(), 0.5, 0.5); };
    const COLORREF graded = shown();
    Letter('o');
    const COLORREF original = shown();
    EXPECT_NE(original, graded);
    Letter('g');
    EXPECT_EQ(shown(), graded);
}

TEST_F(ColouristTask, KeepsTwoVersionsAndGoesBetweenThem)
{
    Type(Control::Temperature, L"0.4");
    Editor().PressKey(VK_F7, {});
    Type(Control::Temperature, L"-0.4");
    const PickedPixel cold = Pick(kCoffee);
    Editor().PressKey(VK_F8, {});
    EXPECT_GT(Pick(kCoffee).after[0], cold.after[0]);
    Editor().PressKey(VK_F8, {});
    EXPECT_EQ(Pick(kCoffee).after, cold.after);
}

TEST_F(ColouristTask, SeesHowFarOverTheWhiteIs)
{
    Type(Control::Exposure, L"1.5");
    const std::string said = Scope(VK_F2);
    EXPECT_TRUE(Eventually([&] { return TextOf(IDC_SCOPE).find("255: R ") != std::string::npos; }))
        << said;
}

TEST_F(ColouristTask, SeesOnTheWaveformThatNothingIsClipped)
{
    Type(Control::Exposure, L"-0.5");
    Scope(VK_F3);
    EXPECT_TRUE(Eventually([&] { return TextOf(IDC_SCOPE).find("255:") == std::string::npos; }));
}

TEST_F(ColouristTask, SeesWhereTheColoursLieOnTheVectorscope)
{
    Type(Control::Saturation, L"1.4");
    Scope(VK_F4);
    EXPECT_EQ(TextOf(IDC_SCOPE).find("Vectorscope"), 0U);
}

TEST_F(ColouristTask, SeesTheBlacksPileUpInTheHistogram)
{
    Letter('w');
    DragSlider(Control::LiftGreen, -0.1, MK_CONTROL);
    Scope(VK_F5);
    EXPECT_TRUE(Eventually([&] { return TextOf(IDC_SCOPE).find(", 0: R ") != std::string::npos; }))
        << TextOf(IDC_SCOPE);
}

TEST_F(ColouristTask, LooksForNoiseAtItsOwnSize)
{
    Editor().Resize(560, 500); // the picture does not fit
    Editor().PressKey('1', {VK_CONTROL});
    const HWND picture = Editor().Child(IDC_PICTURE);
    Editor().Mouse(picture, WM_MOUSEMOVE, MiddleOf(picture));
    const std::string before = TextOf(IDC_PIXEL);
    Drag(picture, MiddleOf(picture), {40, 20});
    Editor().Mouse(picture, WM_MOUSEMOVE, MiddleOf(picture));
    EXPECT_NE(TextOf(IDC_PIXEL), before);
}

TEST_F(ColouristTask, GoesNearTheSpoon)
{
    const HWND picture = Editor().Child(IDC_PICTURE);
    const POINT spoon = OnPicture({370, 330});
    Editor().Mouse(picture, WM_MOUSEMOVE, spoon);
    const std::string before = TextOf(IDC_PIXEL);
    Wheel(picture, spoon, 4);
    Editor().Mouse(picture, WM_MOUSEMOVE, spoon);
    EXPECT_EQ(TextOf(IDC_PIXEL).substr(0, 8), before.substr(0, 8)) << "under the pointer";
    Editor().PressKey('0', {VK_CONTROL});
}

TEST_F(ColouristTask, ShowsThePictureAloneToSomebody)
{
    Type(Control::Exposure, L"0.3");
    Editor().PressKey(VK_F11, {});
    EXPECT_FALSE(::IsWindowVisible(Editor().Child(IDOK)));
}

TEST_F(ColouristTask, TakesOneNumberBackByADoubleClick)
{
    Type(Control::Exposure, L"0.7");
    Type(Control::Tint, L"0.2");
    const HWND slider = Editor().Slider(Control::Exposure);
    for (const UINT message :
         std::initializer_list<UINT>{WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
    {
        Editor().Mouse(slider, message, MiddleOf(slider));
    }
    EXPECT_EQ(Editor().NumberText(Control::Exposure), "0.000");
    EXPECT_EQ(Editor().NumberText(Control::Tint), "0.200");
}

TEST_F(ColouristTask, StartsOver)
{
    Type(Control::Exposure, L"0.7");
    Letter('w');
    DragWheel(kGainWheel, {10, 10});
    Letter('a');
    EXPECT_EQ(Editor().Status(), L"All numbers are neutral");
    EXPECT_EQ(Pick(kCoffee).after, Pick(kCoffee).before);
}

TEST_F(ColouristTask, TakesALookFromOneShotToTheNext)
{
    Type(Control::Temperature, L"0.3");
    const std::array<int, 3> graded = Pick(kCoffee).after;
    Letter('h'); // out of the number
    Editor().PressKey('C', {VK_CONTROL});
    ASSERT_EQ(Editor().Status().find(L"The look is copied"), 0U);
    Letter('a');
    ASSERT_NE(Pick(kCoffee).after, graded);
    Letter('h');
    Editor().PressKey('V', {VK_CONTROL});
    EXPECT_EQ(Pick(kCoffee).after, graded);
}

TEST_F(ColouristTask, AcceptsTheLookWithEnter)
{
    Type(Control::Exposure, L"1");
    Editor().PostKey(VK_RETURN);
    EXPECT_EQ(Editor().Result(), RendererAPI::kEditorAccepted);
    EXPECT_NEAR(Produced()->cdl.slope[0], 1.37035, 1e-4);
}

} // namespace

} // namespace ReferenceRenderer
