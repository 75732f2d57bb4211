// One look and one frame on several threads at once, as a pool renders it.
#include "tests/doubles/test_thread.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include "reference_renderer/core/frame_render.h"

#include <gtest/gtest.h>

#include <atomic>
#include <list>

namespace ReferenceRenderer
{

namespace
{

constexpr std::uint32_t kWidth = 61;
constexpr std::uint32_t kHeight = 240;
constexpr int kThreads = 4;

struct Frame
{
    explicit Frame(std::uint32_t format)
        : bytes(std::size_t{kWidth} * kHeight * BytesPerPixel(format), std::byte{60})
    {
        desc.format = format;
        desc.pixels = bytes.data();
        desc.width = desc.rowPitch = kWidth;
        desc.height = kHeight;
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    std::vector<std::byte> bytes;
    FrameBufferDesc desc{};
};

} // namespace

TEST(SharedLook, RendersAFrameOnManyThreadsAsOnOne)
{
    Cdl cdl;
    cdl.slope[0] = 1.3F;
    for (const Look& sample : {CdlLook(cdl), CubeLook(CubeOf(9, Swirled)),
                               CurveLook(CurvesOf(33, [](double x) { return x * x; }))})
    {
        const auto look = Prepared(sample);
        for (const std::uint32_t format : {kFormatBgra8, kFormatBgraFloat})
        {
            Frame source(format);
            Frame alone(format);
            Frame together(format);
            FrameJob job;
            DescribeFrame(&source.desc, &alone.desc, look.get(), 0, job);
            job.RenderRows(0, kHeight);
            DescribeFrame(&source.desc, &together.desc, look.get(), 0, job);
            std::atomic<std::size_t> next = 0;
            {
                std::list<TestThread> threads;
                for (int thread = 0; thread < kThreads; ++thread)
                {
                    threads.emplace_back([&] {
                        for (std::size_t row = 0; (row = next.fetch_add(1)) < kHeight;)
                        {
                            job.RenderRows(row, row + 1);
                        }
                    });
                }
            }
            EXPECT_EQ(together.bytes, alone.bytes);
        }
    }
}

} // namespace ReferenceRenderer
