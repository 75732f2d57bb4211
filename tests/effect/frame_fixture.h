// An effect that holds a look and works on one frame between two fake surfaces of 8 x 4 samples.
#pragma once

#include "tests/doubles/fake_surface.h"
#include "tests/effect/effect_fixture.h"

#include <array>
#include <cstddef>

// A frame record as the renderer saw it.
FrameBufferDesc DescFrom(const std::array<std::byte, 72>& bytes);

class FrameTest : public EffectTest
{
protected:
    FrameTest();

    FakeSurfaceSettings Surface(const char* name, DXSAMPLEFORMATENUM format);
    // Puts two surfaces into the transform; both are logged from then on.
    void SetUp(FakeSurfaceSettings inputSettings, FakeSurfaceSettings outputSettings);
    void SetUp(DXSAMPLEFORMATENUM inputFormat, DXSAMPLEFORMATENUM outputFormat);

    HRESULT Execute() { return effect->Execute(nullptr, nullptr, nullptr); }
    // The frame's work alone, without what the transform base does around it.
    HRESULT Work(const RECT& outputBounds = {0, 0, 8, 4});

    std::size_t Renders() const;
    const RecordedCall& LastRender() const; // the last call of RenderFrame
    FrameBufferDesc LastSource() const;
    FrameBufferDesc LastDestination() const;
    std::int32_t LastFrameNumber() const;

    CallLog log;
    CComPtr<FakeSurface> input;
    CComPtr<FakeSurface> output;
};
