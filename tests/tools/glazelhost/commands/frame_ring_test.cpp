#include "tools/glazelhost/commands/frame_ring.h"

#include "tests/doubles/test_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>

#ifdef _WIN32
#include "tools/glazelhost/commands/stage_thread.h"
#else
#include <condition_variable>
#endif

namespace GlazelHost
{

namespace
{

#ifdef _WIN32
using Gate = StageGate;
#else
class Gate
{
public:
    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }
    void Wait() { m_changed.wait(m_mutex); }
    void WakeAll() { m_changed.notify_all(); }

private:
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
};
#endif

constexpr std::size_t kPlaces = 2;
using Ring = FrameRing<int, kPlaces, Gate>;

void Fill(Ring& ring, int value)
{
    *ring.Free() = value;
    ring.HandOver();
}

} // namespace

TEST(FrameRing, GivesOnEverythingInOrderAndNeverHasMoreThanItsPlacesUnderWay)
{
    constexpr int kItems = 2000;
    Ring ring;
    std::atomic<int> filled = 0;
    const TestThread filler([&] {
        for (int value = 0; value < kItems; ++value)
        {
            int* const place = ring.Free();
            ++filled;
            *place = value;
            ring.HandOver();
        }
        ring.End();
    });
    int taken = 0;
    std::set<const int*> places;
    while (const int* place = ring.Next())
    {
        EXPECT_EQ(*place, taken);
        EXPECT_LE(filled, taken + static_cast<int>(kPlaces));
        places.insert(place);
        ring.GiveBack();
        ++taken;
    }
    EXPECT_EQ(taken, kItems);
    EXPECT_EQ(places.size(), kPlaces);
}

TEST(FrameRing, WhatWasHandedOverBeforeTheEndIsStillTaken)
{
    Ring ring;
    Fill(ring, 1);
    Fill(ring, 2);
    ring.End();
    ASSERT_NE(ring.Next(), nullptr);
    EXPECT_EQ(*ring.Next(), 1) << "it stays the next one until it is given back";
    ring.GiveBack();
    EXPECT_EQ(*ring.Next(), 2);
    ring.GiveBack();
    EXPECT_EQ(ring.Next(), nullptr);
}

TEST(FrameRing, APlaceKeepsWhatItHeldForWhoFillsItNext)
{
    Ring ring;
    for (int value = 1; value <= static_cast<int>(kPlaces); ++value)
    {
        Fill(ring, value);
        ring.Next();
        ring.GiveBack();
    }
    EXPECT_EQ(*ring.Free(), 1);
}

TEST(FrameRing, ClosingWakesWhoWaitsForAFilledPlace)
{
    Ring ring;
    std::atomic<bool> gotOne = true;
    {
        const TestThread taker([&] { gotOne = ring.Next() != nullptr; });
        ring.Close();
    }
    EXPECT_FALSE(gotOne);
}

TEST(FrameRing, ClosingWakesWhoWaitsForAFreePlaceAndLeavesNothingToTake)
{
    Ring ring;
    Fill(ring, 1);
    Fill(ring, 2);
    std::atomic<bool> gotOne = true;
    {
        const TestThread filler([&] { gotOne = ring.Free() != nullptr; });
        ring.Close();
    }
    EXPECT_FALSE(gotOne);
    EXPECT_EQ(ring.Next(), nullptr);
    ring.WaitUntilEmpty(); // returns, though nobody will give anything back
}

TEST(FrameRing, IsEmptyOnlyWhenTheLastPlaceIsGivenBack)
{
    Ring ring;
    std::atomic<int> givenBack = 0;
    const TestThread taker([&] {
        while (ring.Next() != nullptr)
        {
            ++givenBack;
            ring.GiveBack();
        }
    });
    for (int round = 1; round <= 500; ++round)
    {
        Fill(ring, round);
        ring.WaitUntilEmpty();
        EXPECT_EQ(givenBack, round);
    }
    ring.End();
}

} // namespace GlazelHost
