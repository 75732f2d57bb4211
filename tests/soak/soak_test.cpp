// What hours in a host bring together: frames while everything else changes, thousands of effects
// and of pages. Afterwards the process holds what it held before. A hundredth of it runs with the
// tests; GLAZEL_SOAK_PERCENT=100, which ./soak.sh sets, runs all.
#include "support/win32/com_scope.h"
#include "tests/doubles/deadline.h"
#include "tests/doubles/test_thread.h"
#include "tests/tools/glazelhost/plugin/real_effect.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/page/page_container.h"
#include "tools/glazelhost/plugin/com_calls.h"
#include "tools/glazelhost/validate/process_census.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <deque>
#include <functional>

namespace GlazelHost
{

namespace
{

constexpr unsigned kFrames = 100000;
constexpr unsigned kEffects = 20000;
constexpr unsigned kPages = 2000;
// The heap keeps what several threads' records took at once. A loss shows in the blocks first.
constexpr std::size_t kMemorySlack = std::size_t{64} << 20;

// Of a whole number, what this run does.
unsigned ShareOf(unsigned whole)
{
    const char* const percent = std::getenv("GLAZEL_SOAK_PERCENT");
    return whole / 100 *
           static_cast<unsigned>(std::clamp(percent ? std::atoi(percent) : 1, 1, 100));
}

// A window of this thread, for as long as this lives.
class PageHost
{
public:
    PageHost()
        : m_window(::CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 700, 120,
                                     nullptr, nullptr, nullptr, nullptr))
    {
    }
    ~PageHost() { ::DestroyWindow(m_window); }
    PageHost(const PageHost&) = delete;
    PageHost& operator=(const PageHost&) = delete;

    HWND Window() const noexcept { return m_window; }
    // False when there is no message.
    static bool DispatchNext()
    {
        MSG message{};
        const bool isOne = ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE;
        if (isOne)
        {
            ::DispatchMessageW(&message);
        }
        return isOne;
    }
    static void DispatchAll()
    {
        while (DispatchNext())
        {
        }
    }

private:
    HWND m_window;
};

class Soak : public RealEffect
{
protected:
    // On a thread of its own, which is to raise `m_progress` again and again.
    void Watch(const std::function<void()>& work)
    {
        TestThread thread(Guarded(work));
        unsigned before = m_progress;
        while (!thread.Join(kDeadlineMs))
        {
            if (m_progress == before)
            {
                ADD_FAILURE() << "nothing goes on after " << before;
                std::abort(); // the threads use what would be destroyed next
            }
            before = m_progress;
        }
    }

    static std::function<void()> Guarded(const std::function<void()>& work)
    {
        return [&work] {
            try
            {
                const ComScope com(true);
                work();
            }
            catch (const HostError& error)
            {
                ADD_FAILURE() << error.what();
            }
        };
    }

    // `work` for a while, then so many times more: what that leaves would be seen `times` times.
    void ExpectFlat(unsigned times, const std::function<void(unsigned count)>& work)
    {
        const unsigned warmUp = std::max(10U, times / 10);
        work(warmUp);
        TakeCensus(m_plugin.Get()); // what taking it needs itself stays
        const ProcessCensus before = TakeCensus(m_plugin.Get());
        work(times);
        const ProcessCensus after = TakeCensus(m_plugin.Get());
        SCOPED_TRACE(testing::Message() << "before: " << before << "; after: " << after);
        const std::size_t some = times / 2;
        EXPECT_LT(after.handles, before.handles + std::min<std::size_t>(some, 20));
        EXPECT_LT(after.heapBlocks, before.heapBlocks + std::min<std::size_t>(some, 500));
        EXPECT_LE(after.privateBytes, before.privateBytes + kMemorySlack);
        EXPECT_EQ(after.freeTlsSlots, before.freeTlsSlots);
        EXPECT_EQ(after.freeFlsSlots, before.freeFlsSlots);
        EXPECT_EQ(after.classes, before.classes);
        EXPECT_EQ(after.modules, before.modules);
        EXPECT_EQ(after.threads, before.threads);
        EXPECT_LE(after.gdiObjects, before.gdiObjects + 5);
        EXPECT_LE(after.userObjects, before.userObjects + 5);
    }

    float RedOf(const PixelBuffer& pixel)
    {
        constexpr std::size_t kRed = 2;
        float red = 0.0F;
        std::memcpy(&red, pixel.data() + kRed * sizeof red, sizeof red);
        return red;
    }

    std::atomic<unsigned> m_progress = 0;
};

} // namespace

TEST_F(Soak, FramesGoOnWhileLooksAndKeyframesChangeThePageIsOpenAndProjectsAreSaved)
{
    const Record dark = LookOf(0.5);
    const Record bright = LookOf(2.0);
    const float darkest = RedOf(PlainRender(dark));
    const float brightest = RedOf(PlainRender(bright));
    ASSERT_LT(darkest, brightest);
    m_controls.LoadLook(dark);

    const auto persist = QueryEffect<IPersistStreamInit>(
        m_session->Effect(), IID_IPersistStreamInit, "IPersistStreamInit", "the effect");
    std::atomic<unsigned> strangeFrames = 0;
    std::atomic<unsigned> strangeSaves = 0;
    const auto play = [&](unsigned frames) {
        std::atomic<bool> isOver = false;
        // How often the look, the keyframes and the project had a turn, and the page a message.
        std::array<std::atomic<unsigned>, 4> turns{};
        const auto isOneWithoutATurn = [&turns] {
            return std::ranges::any_of(turns,
                                       [](const std::atomic<unsigned>& of) { return of == 0; });
        };
        const auto changing = [&](std::size_t which,
                                  const std::function<void(EffectControls&, unsigned)>& change) {
            return std::function<void()>([&, which, change] {
                EffectControls controls(m_session->Effect(), "the effect");
                for (unsigned round = 0; !isOver; ++round)
                {
                    change(controls, round);
                    ++turns[which];
                    ::SwitchToThread();
                }
            });
        };
        const std::array<std::function<void()>, 4> others{
            changing(0, [&](EffectControls& controls,
                            unsigned round) { controls.LoadLook(round % 2 == 0 ? dark : bright); }),
            changing(1,
                     [&](EffectControls& controls, unsigned round) {
                         controls.SetKeyframes(*StreamOf(round % 3 == 0 ? bright : dark),
                                               *StreamOf(round % 5 == 0 ? dark : bright));
                         controls.SetFraction(round % 11 / 10.0);
                         controls.SetAutomation(round % 4 != 0);
                     }),
            changing(2,
                     [&](EffectControls& controls, unsigned round) {
                         const auto project = StreamOf();
                         EXPECT_EQ(persist->Save(project, TRUE), S_OK);
                         const Record saved =
                             round % 2 == 0 ? controls.StoredLook() : project->TakeBytes();
                         strangeSaves += saved == dark || saved == bright ? 0U : 1U;
                     }),
            [&] {
                const PageHost host;
                PageContainer page(m_plugin, m_session->Effect());
                page.Activate(host.Window(), {0, 0, 700, 120});
                while (!isOver)
                {
                    ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
                    // Each change gives the next one to paint: they end when the changes do.
                    while (PageHost::DispatchNext())
                    {
                        ++turns[3];
                    }
                }
                page.Deactivate();
                PageHost::DispatchAll();
            },
        };
        std::deque<TestThread> threads;
        for (const std::function<void()>& other : others)
        {
            threads.emplace_back(Guarded(other));
        }
        const Image grey = Grey();
        Watch([&] {
            Image output;
            // On a busy machine a thread may start when so many frames are long done.
            const ULONGLONG deadline = ::GetTickCount64() + kDeadlineMs;
            for (unsigned frame = 0;
                 frame < frames || (isOneWithoutATurn() && ::GetTickCount64() < deadline); ++frame)
            {
                m_session->Render(grey, output, {1.0, 25.0, std::int64_t{frame} * 400000});
                const float red = RedOf(output.pixels);
                strangeFrames += red >= darkest && red <= brightest ? 0U : 1U;
                ++m_progress;
            }
        });
        isOver = true;
        for (TestThread& thread : threads)
        {
            if (!thread.Join(kDeadlineMs))
            {
                ADD_FAILURE() << "a thread beside the frames does not end";
                std::abort();
            }
        }
        EXPECT_FALSE(isOneWithoutATurn()) << "nothing else went on beside the frames";
    };
    ExpectFlat(ShareOf(kFrames), play);
    EXPECT_EQ(strangeFrames, 0U) << "frames that show neither look nor a blend";
    EXPECT_EQ(strangeSaves, 0U) << "saved looks that nobody set";
}

TEST_F(Soak, ThousandsOfEffectsLeaveNothing)
{
    const Record look = LookOf(0.5);
    ExpectFlat(ShareOf(kEffects), [&](unsigned count) {
        Watch([&, count] {
            const Image grey = Grey();
            Image output;
            for (unsigned effect = 0; effect < count; ++effect)
            {
                EffectSession session(m_plugin);
                EffectControls controls(session.Effect(), "the effect");
                controls.LoadLook(look);
                session.Render(grey, output, {});
                EXPECT_EQ(controls.StoredLook(), look);
                ++m_progress;
            }
        });
    });
}

TEST_F(Soak, ThousandsOfPagesLeaveNothing)
{
    m_controls.LoadLook(LookOf(0.5));
    ExpectFlat(ShareOf(kPages), [&](unsigned count) {
        Watch([&, count] {
            const PageHost host;
            for (unsigned number = 0; number < count; ++number)
            {
                PageContainer page(m_plugin, m_session->Effect());
                page.Activate(host.Window(), {0, 0, 700, 120});
                ::UpdateWindow(::GetWindow(host.Window(), GW_CHILD));
                PageHost::DispatchAll();
                page.Deactivate();
                ++m_progress;
            }
        });
    });
}

} // namespace GlazelHost
