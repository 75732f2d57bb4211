// What the recording renderer notes of every call, for the tests to read and steer.
// The renderer exports "GetRecording", which answers the one Recording of the process.
#pragma once

#include "contract/entry_points.h"
#include "tests/doubles/foreign_exception.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

enum class Call : std::uint32_t
{
#define CALL(pointer, name, required) name,
    RENDERER_ENTRY_POINTS(CALL)
#undef CALL
};

// The arguments of one call; what the entry point does not have stays 0.
struct RecordedCall
{
    Call call{};
    std::array<std::byte, 72> source{}; // the frame record as the renderer saw it
    std::array<std::byte, 72> destination{};
    const void* recordA = nullptr; // addresses only, to compare
    const void* recordB = nullptr;
    std::uint32_t sizeA = 0;
    std::uint32_t sizeB = 0;
    std::array<std::uint8_t, 32> bytesA{}; // the first bytes of the record
    std::uint32_t word1 = 0;               // integers in the order of the arguments
    std::uint32_t word2 = 0;
    std::int32_t frameNumber = 0;
    double number = 0.0;
    const void* caller = nullptr; // of RenderFrame: the instruction that it returns to
};

// What the renderer answers.
struct RecordingAnswers
{
    std::int32_t initResult = 0;
    std::int32_t renderResult = 0;
    bool rendersPixels = true; // false: RenderFrame only notes the call
    std::int32_t editorResult = 0;
    void (*onEdit)(void* context) = nullptr; // called while an editor is open
    void* editContext = nullptr;
    std::int32_t iconResult = 1;
    void* iconPixels = nullptr; // handed out by GetSessionIcon
    std::uint32_t iconWidth = 0;
    std::uint32_t iconHeight = 0;
    void (*onExit)(void* context) = nullptr; // called by ExitRenderer
    void* exitContext = nullptr;
    const std::uint8_t* sessionData = nullptr; // handed out by GetSessionData
    std::uint32_t sessionDataSize = 0;
    std::int32_t sessionDataResult = 1; // 0: GetSessionData copies nothing
    Throws throws = Throws::Nothing;    // out of the entry point below, whenever it is called
    Call throwsFrom{};
    bool (*isDue)(Call call) = nullptr; // asked at each call: whether that one throws
};

struct Recording : RecordingAnswers
{
    static constexpr std::size_t kCapacity = 4096;

    std::array<RecordedCall, kCapacity> calls{}; // later calls are counted but not kept
    std::atomic<std::size_t> count = 0;
    std::atomic<bool> detached = false; // the library's own process-detach has run

    // For the next test in the same process.
    void Reset() noexcept
    {
        static_cast<RecordingAnswers&>(*this) = {};
        count = 0;
    }
};

using GetRecordingFunction = Recording*();
