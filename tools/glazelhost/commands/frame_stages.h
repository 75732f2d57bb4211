// The two ends of a render, each on a thread of its own: frames are read ahead and written behind
// while others are rendered. Tests: tests/e2e/test_streams.py.
#pragma once

#include "tools/glazelhost/commands/frame_ring.h"
#include "tools/glazelhost/commands/stage_thread.h"
#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/media/frame_list.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace GlazelHost
{

// Enough that no stage waits for another one's slow frame; each place may hold a whole picture.
inline constexpr std::size_t kFramesAhead = 2;

// What the source gave for one number.
struct TakenFrame
{
    enum class Kind
    {
        Nothing, // not wanted
        Picture,
        Failed,
    };

    Kind kind = Kind::Nothing;
    std::int64_t index = 0; // counted from 0
    Image image;
    std::exception_ptr error; // of Failed
};

// Which frames of a source are wanted, and how.
struct FrameChoice
{
    FrameList frames;
    std::int64_t first = 1; // number of the source's first frame
    SampleType depth = SampleType::Byte;
    bool goesOnAfterBadFrames = false;
};

// One thread calls it; the source is nobody else's meanwhile, but for its Info.
class FrameReading
{
public:
    // On the calling thread where `ahead` is false: a single picture's memory is held once.
    FrameReading(std::shared_ptr<FrameSource> source, FrameChoice choice, bool ahead);
    // Ends the thread, or lets go of it where the system cannot break its reading off.
    ~FrameReading();
    FrameReading(const FrameReading&) = delete;
    FrameReading& operator=(const FrameReading&) = delete;

    // The next frame in order, until Done; null after the last one, and once broken off.
    TakenFrame* Next();
    void Done();
    // Any thread: Next waits no longer.
    void BreakOff();

private:
    struct Work;

    std::shared_ptr<Work> m_work; // the thread has it too
    StageThread m_thread;
};

// One thread calls it; the sink is nobody else's before Drain has returned.
class FrameWriting
{
public:
    // `onFailure` is called on any thread, as soon as a frame could not be written.
    FrameWriting(FrameSink& sink, bool behind, std::function<void()> onFailure);
    // Waits until what was given is written.
    ~FrameWriting();
    FrameWriting(const FrameWriting&) = delete;
    FrameWriting& operator=(const FrameWriting&) = delete;

    // Where the next picture is to be put, for Write. Both throw what an earlier frame's writing
    // threw.
    Image& Place();
    void Write();
    // FrameSink::Pass, in its order.
    void Pass();
    // Returns when all is written; throws what the first frame threw that could not be.
    void Drain();

    // Of the frames written so far.
    std::int64_t Written();
    std::vector<std::string> TakeRemarks();

private:
    struct GivenFrame
    {
        bool isPass = false;
        Image image;
    };

    GivenFrame& Free();
    void HandOver();
    void Take(const GivenFrame& frame) noexcept;
    void ThrowFailure();

    FrameSink& m_sink;
    std::function<void()> m_onFailure;
    FrameRing<GivenFrame, kFramesAhead, StageGate> m_ring;
    GivenFrame m_single;
    SlimLock m_lock;
    std::int64_t m_written = 0; // these three are guarded by m_lock
    std::vector<std::string> m_remarks;
    std::exception_ptr m_failure;
    StageThread m_thread;
};

} // namespace GlazelHost
