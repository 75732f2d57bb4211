#include "reference_renderer/editor/scope_reader.h"

#include "tests/doubles/test_thread.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

// A frame of `width` x `height`, 0xFF112233 all over but for its pixel in column 1 of row 1 and its
// last row.
class Frame
{
public:
    Frame(std::uint32_t width, std::uint32_t height)
        : m_pixels(std::size_t{width} * height, 0xFF112233),
          picture(Described(width, height), false)
    {
    }

private:
    const FrameBufferDesc* Described(std::uint32_t width, std::uint32_t height)
    {
        m_pixels[width + 1] = 0xFFFF0000;
        std::fill_n(m_pixels.rbegin(), width, 0xFF113333);
        m_frame.format = kFormatBgra8;
        m_frame.pixels = m_pixels.data();
        m_frame.width = width;
        m_frame.height = height;
        m_frame.rowPitch = width;
        return &m_frame;
    }

    std::vector<std::uint32_t> m_pixels;
    FrameBufferDesc m_frame;

public:
    PreviewPicture picture;
};

constexpr ScopeView kView{ScopeKind::Parade, {400, 200}, 96};
const std::atomic<bool> g_never = false;

TEST(ScopeReader, ASmallFrameIsCountedWhole)
{
    const Frame frame(512, 288);
    ScopeReader reader(frame.picture);
    EXPECT_EQ(reader.Step(), 1U);
    ASSERT_TRUE(reader.Count(kView, *Prepared(Look()), Detail::Coarse, g_never));
    EXPECT_EQ(reader.After().Pixels(), std::uint64_t{512} * 288);
    EXPECT_EQ(reader.After().Histogram(0)[255], 1U);
}

// The window counts roughly while a thread counts every pixel.
TEST(ScopeReader, TwoReadersCountOnePictureAtOnce)
{
    const Frame frame(1600, 900);
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    ScopeReader coarse(frame.picture);
    ScopeReader fine(frame.picture);
    {
        const TestThread thread(
            [&] { EXPECT_TRUE(fine.Count(kView, *look, Detail::Fine, g_never)); });
        EXPECT_TRUE(coarse.Count(kView, *look, Detail::Coarse, g_never));
    }
    ScopeReader alone(frame.picture);
    EXPECT_TRUE(alone.Count(kView, *look, Detail::Fine, g_never));
    EXPECT_EQ(fine.After().Histogram(0), alone.After().Histogram(0));
}

TEST(ScopeReader, ACountThatIsStoppedByAnotherThreadEnds)
{
    const Frame frame(1600, 900);
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    ScopeReader reader(frame.picture);
    std::atomic<bool> stop = false;
    const TestThread thread([&] {
        while (reader.Count(kView, *look, Detail::Fine, stop))
        {
        }
    });
    stop = true;
}

TEST(ScopeReader, OfALargeFrameSomePixelsAreCountedAtFirstAndThenAllOfThem)
{
    const Frame frame(1001, 601);
    ScopeReader reader(frame.picture);
    ASSERT_EQ(reader.Step(), 3U);
    const auto neutral = Prepared(Look());
    ASSERT_TRUE(reader.Count(kView, *neutral, Detail::Coarse, g_never));
    EXPECT_EQ(reader.After().Width(), 334U);
    EXPECT_EQ(reader.After().Rows(), 201U);
    EXPECT_EQ(reader.After().Histogram(0)[0x11], reader.After().Pixels());
    EXPECT_EQ(reader.After().Histogram(1)[0x33], 334U) << "one row";
    ASSERT_TRUE(reader.Count(kView, *neutral, Detail::Fine, g_never));
    EXPECT_EQ(reader.After().Pixels(), std::uint64_t{1001} * 601);
    EXPECT_EQ(reader.After().Histogram(0)[255], 1U) << "the codes of the frame, without a mean";
    EXPECT_EQ(reader.After().Histogram(0)[0x11], reader.After().Pixels() - 1);
}

TEST(ScopeReader, TheLookCountsAfterwardsAndNotBefore)
{
    const Frame frame(1001, 601);
    const auto inverting = Prepared(CubeLook(CubeOf(2, Inverted)));
    const auto neutral = Prepared(Look());
    std::vector<std::uint32_t> first(std::size_t{400} * 200);
    std::vector<std::uint32_t> again(first.size());
    for (const Detail detail : {Detail::Coarse, Detail::Fine})
    {
        ScopeReader reader(frame.picture);
        ASSERT_TRUE(reader.Count(kView, *inverting, detail, g_never));
        EXPECT_GE(reader.After().Histogram(0)[0xEE] + 1, reader.After().Pixels());
        reader.Draw(first);
        ASSERT_TRUE(reader.Count(kView, *neutral, detail, g_never));
        reader.Draw(again);
        EXPECT_NE(first, again);
        ASSERT_TRUE(reader.Count(kView, *inverting, detail, g_never)); // the original is known
        reader.Draw(again);
        EXPECT_EQ(first, again);
    }
}

TEST(ScopeReader, AnotherKindOrRoomIsCountedAnew)
{
    const Frame frame(100, 480); // as many columns for any plot
    const auto neutral = Prepared(Look());
    ScopeReader reader(frame.picture);
    for (const ScopeView& view : {kView, ScopeView{ScopeKind::Waveform, {400, 200}, 96},
                                  ScopeView{ScopeKind::Vectors, {400, 200}, 96},
                                  ScopeView{ScopeKind::Histogram, {900, 300}, 144},
                                  ScopeView{ScopeKind::Parade, {900, 300}, 144}})
    {
        ASSERT_TRUE(reader.Count(view, *neutral, Detail::Coarse, g_never));
        EXPECT_EQ(reader.After().Kind(), view.kind);
        std::vector<std::uint32_t> pixels(
            static_cast<std::size_t>(view.size.width * view.size.height));
        reader.Draw(pixels);
        ScopeReader another(frame.picture);
        ASSERT_TRUE(another.Count(view, *neutral, Detail::Coarse, g_never));
        std::vector<std::uint32_t> expected(pixels.size());
        another.Draw(expected);
        EXPECT_EQ(pixels, expected);
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 0U), 0) << "all of it is drawn";
    }
}

TEST(ScopeReader, ACountThatIsStoppedLeavesNothingBehind)
{
    const Frame frame(1001, 601);
    const auto neutral = Prepared(Look());
    const std::atomic<bool> stop = true;
    for (const Detail detail : {Detail::Coarse, Detail::Fine})
    {
        ScopeReader reader(frame.picture);
        EXPECT_FALSE(reader.Count(kView, *neutral, detail, stop));
        ASSERT_TRUE(reader.Count(kView, *neutral, detail, g_never));
        EXPECT_GE(reader.After().Histogram(2)[0x33] + 1, reader.After().Pixels());
    }
}

} // namespace

} // namespace ReferenceRenderer
