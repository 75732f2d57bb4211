#include "tests/effect/frame_fixture.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

FrameBufferDesc DescFrom(const std::array<std::byte, 72>& bytes)
{
    FrameBufferDesc desc;
    std::memcpy(static_cast<void*>(&desc), bytes.data(), bytes.size());
    return desc;
}

FrameTest::FrameTest()
{
    Fill(effect->m_current, RecordBytes(7));
    effect->m_current.GetFlag();
}

FakeSurfaceSettings FrameTest::Surface(const char* name, DXSAMPLEFORMATENUM format)
{
    FakeSurfaceSettings settings;
    settings.name = name;
    settings.width = 8;
    settings.height = 4;
    settings.format = format;
    settings.log = &log;
    return settings;
}

void FrameTest::SetUp(FakeSurfaceSettings inputSettings, FakeSurfaceSettings outputSettings)
{
    input = FakeSurface::Make(std::move(inputSettings));
    output = FakeSurface::Make(std::move(outputSettings));
    IUnknown* const inputs[] = {static_cast<IDXSurface*>(input.p)};
    IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
    ASSERT_EQ(effect->Setup(inputs, 1, outputs, 1, 0), S_OK);
    log.Clear();
}

void FrameTest::SetUp(DXSAMPLEFORMATENUM inputFormat, DXSAMPLEFORMATENUM outputFormat)
{
    SetUp(Surface("input", inputFormat), Surface("output", outputFormat));
}

HRESULT FrameTest::Work(const RECT& outputBounds)
{
    CDXTWorkInfoNTo1 work;
    work.OutputBnds = CDXDBnds(outputBounds);
    BOOL goOn = TRUE;
    return effect->WorkProc(work, &goOn);
}

std::size_t FrameTest::Renders() const
{
    const std::size_t kept = std::min(recording.count.load(), Recording::kCapacity);
    return static_cast<std::size_t>(
        std::count_if(recording.calls.begin(), recording.calls.begin() + kept,
                      [](const RecordedCall& call) { return call.call == Call::RenderFrame; }));
}

const RecordedCall& FrameTest::LastRender() const
{
    for (std::size_t index = recording.count; index > 0; --index)
    {
        if (recording.calls.at(index - 1).call == Call::RenderFrame)
        {
            return recording.calls.at(index - 1);
        }
    }
    throw std::runtime_error("RenderFrame was not called");
}

FrameBufferDesc FrameTest::LastSource() const
{
    return DescFrom(LastRender().source);
}

FrameBufferDesc FrameTest::LastDestination() const
{
    return DescFrom(LastRender().destination);
}

std::int32_t FrameTest::LastFrameNumber() const
{
    return LastRender().frameNumber;
}
