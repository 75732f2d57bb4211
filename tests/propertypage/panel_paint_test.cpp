// The page on the screen, pixel by pixel.
#include "tests/doubles/failing_allocation.h"
#include "tests/platform/atl/import_patch.h"
#include "tests/propertypage/page_fixture.h"

#include <cstring>

// NOLINTNEXTLINE(bugprone-reserved-identifier): the linker's name for the import
extern "C" decltype(&::SetDIBitsToDevice) __imp_SetDIBitsToDevice;

namespace
{

class PanelPaint : public PageTest
{
protected:
    std::string Difference(const PanelState& state) const
    {
        const Picture screen = ScreenOf(PageWindow());
        return FirstDifference(screen, ExpectedPanel(screen.size, state));
    }

    // Both controls and the thumbnail in all their states, each painted as a whole and, for the
    // button, also drawn alone.
    void ExpectAllStates(Geometry::Extent size)
    {
        Thumbnail thumbnail = SampleThumbnail({120, 60});
        for (const bool checked : {false, true})
        {
            for (const bool withThumbnail : {false, true})
            {
                recording.iconPixels = nullptr;
                if (withThumbnail)
                {
                    Show(thumbnail);
                }
                exchange.bytes = PageRecord(1, checked ? 1 : 0);
                Open(size);
                PanelState state{false, checked, withThumbnail ? &thumbnail : nullptr};
                EXPECT_EQ(Difference(state), "")
                    << "check box " << checked << ", thumbnail " << withThumbnail << ", normal";
                MovePointer(PageWindow(), kOnEdit);
                ::SendMessageW(PageWindow(), WM_LBUTTONDOWN, 0, 0);
                state.editPressed = true;
                EXPECT_EQ(Difference(state), "") << "check box " << checked << ", thumbnail "
                                                 << withThumbnail << ", drawn as pressed";
                Repaint();
                EXPECT_EQ(Difference(state), "") << "check box " << checked << ", thumbnail "
                                                 << withThumbnail << ", painted as pressed";
                MovePointer(PageWindow(), kElsewhere);
                ::SendMessageW(PageWindow(), WM_MOUSEMOVE, 0, 0);
                ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, 0);
                state.editPressed = false;
                EXPECT_EQ(Difference(state), "") << "check box " << checked << ", thumbnail "
                                                 << withThumbnail << ", drawn as normal";
                Close();
            }
        }
    }
};

FrameBufferDesc DescFrom(const std::array<std::byte, 72>& bytes)
{
    FrameBufferDesc desc{};
    std::memcpy(static_cast<void*>(&desc), bytes.data(), bytes.size());
    return desc;
}

} // namespace

TEST_F(PanelPaint, AllStatesOfThePanelAreExactOnALargePage)
{
    ExpectAllStates({300, 120});
}

TEST_F(PanelPaint, AllStatesOfThePanelAreExactOnAPageThatCutsEverything)
{
    ExpectAllStates({100, 60});
}

TEST_F(PanelPaint, APageNarrowerThan51PixelsIsExactAndShowsNoThumbnail)
{
    ExpectAllStates({50, 120});
}

TEST_F(PanelPaint, APageLowerThan19PixelsIsExactAndShowsNoThumbnail)
{
    ExpectAllStates({300, 18});
}

TEST_F(PanelPaint, ThePageOfOnePixelIsItsFrame)
{
    Open({1, 1});
    EXPECT_EQ(Difference({}), "");
}

TEST_F(PanelPaint, AThumbnailLargerThanThePageIsCutOnePixelInsideTheFrame)
{
    Thumbnail thumbnail = SampleThumbnail({400, 400});
    Show(thumbnail);
    exchange.bytes = PageRecord(1, 0);
    Open({300, 120});
    EXPECT_EQ(Difference({.thumbnail = &thumbnail}), "");
}

TEST_F(PanelPaint, TheRendererIsAskedForTheThumbnailOfThePagesRecordWithAnEmptyFrame)
{
    exchange.bytes = PageRecord(0x42, 1, 80);
    Open();
    const RecordedCall call = LastOf(Call::GetSessionIcon);
    EXPECT_EQ(call.sizeA, 80U);
    EXPECT_EQ(call.bytesA[31], 0x42);
    const FrameBufferDesc desc = DescFrom(call.destination);
    EXPECT_EQ(desc.format, 1U);
    EXPECT_EQ(desc.pixels, nullptr);
    EXPECT_EQ(desc.width, 0U);
    EXPECT_EQ(desc.height, 0U);
    EXPECT_EQ(desc.rowPitch, 0U);
    EXPECT_EQ(desc.scale, 1.0F);
    EXPECT_EQ(desc.sw, 0U);
    EXPECT_EQ(desc.aspect, 1.0F);
    EXPECT_EQ(desc.texture, 0U);
    EXPECT_EQ(desc.minValue, -1000.0F);
    EXPECT_EQ(desc.maxValue, 1000.0F);
}

TEST_F(PanelPaint, EveryPictureIsATopDown32BitBitmapAt96DotsPerInch)
{
    struct Drawn
    {
        Geometry::Point at;
        Geometry::Extent size;
        BITMAPINFOHEADER header;
        UINT firstLine;
        UINT lines;
        UINT usage;
    };
    static std::vector<Drawn> drawn;
    Thumbnail thumbnail = SampleThumbnail({120, 60});
    Show(thumbnail);
    Open({100, 60});
    {
        const ImportPatch drawing(
            __imp_SetDIBitsToDevice,
            +[](HDC, int x, int y, DWORD width, DWORD height, int sourceX, int sourceY, UINT start,
                UINT lines, const void* bits, const BITMAPINFO* info, UINT usage) WINAPI -> int {
                EXPECT_EQ(sourceX, 0);
                EXPECT_EQ(sourceY, 0);
                EXPECT_NE(bits, nullptr);
                drawn.push_back({{x, y},
                                 {static_cast<int>(width), static_cast<int>(height)},
                                 info->bmiHeader,
                                 start,
                                 lines,
                                 usage});
                return static_cast<int>(lines);
            });
        Repaint();
    }
    ASSERT_EQ(drawn.size(), 3U);
    EXPECT_EQ(drawn[0].at, (Geometry::Point{5, 25}));
    EXPECT_EQ(drawn[0].size, (Geometry::Extent{40, 20}));
    EXPECT_EQ(drawn[1].at, (Geometry::Point{7, 70}));
    EXPECT_EQ(drawn[1].size, (Geometry::Extent{125, 16}));
    EXPECT_EQ(drawn[2].at, (Geometry::Point{50, 18}));
    EXPECT_EQ(drawn[2].size, (Geometry::Extent{49, 41})) << "cut to the page";
    for (const Drawn& one : drawn)
    {
        const BITMAPINFOHEADER& header = one.header;
        EXPECT_EQ(header.biSize, 40U);
        EXPECT_EQ(header.biWidth, one.size.width);
        EXPECT_EQ(header.biHeight, -one.size.height);
        EXPECT_EQ(header.biPlanes, 1U);
        EXPECT_EQ(header.biBitCount, 32U);
        EXPECT_EQ(header.biCompression, static_cast<DWORD>(BI_RGB));
        EXPECT_EQ(header.biSizeImage, static_cast<DWORD>(one.size.width * one.size.height * 4));
        EXPECT_EQ(header.biXPelsPerMeter, 3780);
        EXPECT_EQ(header.biYPelsPerMeter, 3780);
        EXPECT_EQ(header.biClrUsed, 0U);
        EXPECT_EQ(header.biClrImportant, 0U);
        EXPECT_EQ(one.firstLine, 0U);
        EXPECT_EQ(one.lines, static_cast<UINT>(one.size.height));
        EXPECT_EQ(one.usage, static_cast<UINT>(DIB_RGB_COLORS));
    }
}

TEST_F(PanelPaint, TheRendererWorksOnACopyOfTheRecordAndWithoutMemoryForItOnTheRecordItself)
{
    exchange.bytes = PageRecord(0x42, 1, 80);
    Open();
    EXPECT_NE(LastOf(Call::GetSessionIcon).recordA, exchange.recordBlock);
    const std::size_t before = CallsOf(Call::GetSessionIcon);
    {
        const NoMemory noMemory;
        Repaint();
    }
    EXPECT_EQ(CallsOf(Call::GetSessionIcon), before + 1);
    EXPECT_EQ(LastOf(Call::GetSessionIcon).recordA, exchange.recordBlock);
    EXPECT_EQ(LastOf(Call::GetSessionIcon).sizeA, 80U);
}

TEST_F(PanelPaint, EveryPaintAsksForTheThumbnailAgain)
{
    Open();
    const std::size_t before = CallsOf(Call::GetSessionIcon);
    Repaint();
    Repaint();
    EXPECT_EQ(CallsOf(Call::GetSessionIcon), before + 2);
}

TEST_F(PanelPaint, AnEmptyRecordHasNoThumbnailAndIsNotShownToTheRenderer)
{
    Thumbnail thumbnail = SampleThumbnail({20, 20});
    Show(thumbnail);
    exchange.bytes.clear();
    Open();
    EXPECT_EQ(CallsOf(Call::GetSessionIcon), 0U);
    EXPECT_EQ(Difference({.checked = true}), "");
}

TEST_F(PanelPaint, AThumbnailThatFailsLeavesThePanelGrey)
{
    recording.iconResult = 0;
    Open();
    EXPECT_EQ(CallsOf(Call::GetSessionIcon), 1U);
    EXPECT_EQ(Difference({.checked = true}), "");
}

TEST_F(PanelPaint, AThumbnailIsDrawnWhateverTheRendererAnswers)
{
    Thumbnail thumbnail = SampleThumbnail({20, 20});
    Show(thumbnail);
    recording.iconResult = 0;
    Open();
    EXPECT_EQ(Difference({.checked = true, .thumbnail = &thumbnail}), "");
}

TEST_F(PanelPaint, AThumbnailWithoutPixelsLeavesThePanelGrey)
{
    recording.iconWidth = 20;
    recording.iconHeight = 20;
    Open();
    EXPECT_EQ(Difference({.checked = true}), "");
}

TEST_F(PanelPaint, TheCheckBoxIsCheckedOnlyForTheValue1)
{
    for (const std::uint32_t flag : {0U, 1U, 2U, 3U})
    {
        exchange.bytes = PageRecord(1, flag);
        Open();
        EXPECT_EQ(Difference({.checked = flag == 1}), "") << flag;
        Close();
    }
}

TEST_F(PanelPaint, ARecordWithoutAnOptionChunkShowsItsOptionWord)
{
    for (const std::uint32_t flag : {0U, 1U})
    {
        exchange.bytes = std::vector<std::uint8_t>(19, 9);
        exchange.flag = flag;
        Open();
        EXPECT_EQ(Difference({.checked = flag == 1}), "") << flag;
        Close();
    }
}
