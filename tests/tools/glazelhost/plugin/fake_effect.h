// A plug-in for tests whose effect keeps or breaks the promises that a host checks.
#pragma once

#include <cstdint>

// What the effect does in its next calls. The DLL exports "SetBehaviour", which takes one of these;
// the environment variable FAKE_EFFECT may hold the first one's number.
enum class Behaviour : std::int32_t
{
    Inverts,             // 8-bit samples become 255 minus themselves, alpha kept
    WritesNothing,       // Execute succeeds without a write lock
    FailsInExecute,      // with DXTERR_UNINITIALIZED
    FailsInSetup,        // with E_INVALIDARG
    ShowsABox,           // in Execute
    WritesOutside,       // packs one sample right of the locked area
    OverrunsMemory,      // writes one byte behind the surface's memory
    KeepsItsLock,        // never releases the output's lock
    FailsInCreation,     // the class object creates nothing
    ShowsABoxInCreation, // and creates nothing
    Crashes,             // in Execute
};

using SetBehaviourFunction = void(std::int32_t);

// How often the effect was set up with surfaces, and the frame information of the last Execute.
struct FakeEffectNotes
{
    std::int32_t setups = 0;
    double pixelAspect = 0.0;
    double framesPerSecond = 0.0;
    std::int64_t frameTime = 0;
    std::uint32_t loadedBytes = 0; // through IPersistStreamInit
    std::uint32_t firstByte = 0;
    std::int32_t inputPitch = 0;
    std::uint32_t inputFormat = 0;
    std::int32_t liveEffects = 0;
};

using GetNotesFunction = FakeEffectNotes*();
