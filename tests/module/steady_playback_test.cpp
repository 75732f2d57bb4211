// After the first frame, frames of the same size make the plug-in allocate nothing.
#include "contract/host_interfaces.h"
#include "effect/iplugin.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tests/module/heap_watch.h"
#include "tests/module/plugin_module.h"
#include "tools/glazelhost/surface/host_surface.h"

#include <gtest/gtest.h>

#include <objidl.h>
#include <ocidl.h>
#include <ole2.h>

#include <vector>

using namespace GlazelHost;

namespace
{

class SteadyPlayback : public testing::TestWithParam<SurfaceFormat>
{
protected:
    SteadyPlayback()
    {
        UseRenderer(L"complete");
        EXPECT_EQ(m_module.CreateEffect(IID_IDXTransform, reinterpret_cast<void**>(&transform)),
                  S_OK);
    }

    void SetUp(int width, int height)
    {
        const SurfaceLayout layout{width, height, GetParam()};
        const CComPtr<IDXSurface> input = new CHostSurface(layout);
        const CComPtr<IDXSurface> output = new CHostSurface(layout);
        IUnknown* const inputs[] = {input};
        IUnknown* const outputs[] = {output};
        ASSERT_EQ(transform->Setup(inputs, 1, outputs, 1, 0), S_OK);
    }

    // A stream that holds a record of the size of real looks.
    static CComPtr<IStream> Record(std::uint8_t fill)
    {
        const std::vector<std::uint8_t> bytes(131000, fill);
        CComPtr<IStream> stream;
        EXPECT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, &stream), S_OK);
        EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr), S_OK);
        EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
        return stream;
    }

    PluginModule m_module;
    CComPtr<IDXTransform> transform;
};

} // namespace

TEST_P(SteadyPlayback, AHundredFramesAfterTheFirstAllocateNothing)
{
    SetUp(64, 36);
    CComPtr<IPersistStreamInit> persist;
    ASSERT_EQ(transform.QueryInterface(&persist), S_OK);
    ASSERT_EQ(persist->Load(Record(7)), S_OK);
    ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    const HeapWatch watch(m_module.Handle());
    for (int frame = 0; frame < 100; ++frame)
    {
        ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    }
    EXPECT_EQ(watch.Allocations(), 0U);
}

TEST_P(SteadyPlayback, AHundredAnimatedFramesAfterTheFirstAllocateNothing)
{
    SetUp(64, 36);
    CComPtr<IDXTSfAutomation> automation;
    ASSERT_EQ(transform.QueryInterface(&automation), S_OK);
    ASSERT_EQ(automation->SetKeyframeProps(Record(7), Record(9)), S_OK);
    ASSERT_EQ(automation->SetAutomationActive(1), S_OK);
    ASSERT_EQ(automation->SetKeyframeFraction(0.5), S_OK);
    ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    const HeapWatch watch(m_module.Handle());
    for (int frame = 0; frame < 100; ++frame)
    {
        ASSERT_EQ(automation->SetKeyframeFraction(frame / 100.0), S_OK);
        ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    }
    EXPECT_EQ(watch.Allocations(), 0U);
}

TEST_P(SteadyPlayback, AChangeOfSizeIsSeenByTheCounter)
{
    SetUp(64, 36);
    ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    SetUp(65, 36);
    const HeapWatch watch(m_module.Handle());
    ASSERT_EQ(transform->Execute(nullptr, nullptr, nullptr), S_OK);
    EXPECT_GT(watch.Allocations(), 0U);
}

INSTANTIATE_TEST_SUITE_P(BufferedAndDirect, SteadyPlayback,
                         testing::Values(SurfaceFormat::Straight8, SurfaceFormat::StraightFloat),
                         [](const auto& format) {
                             return format.param == SurfaceFormat::Straight8 ? "Buffered"
                                                                             : "Direct";
                         });
