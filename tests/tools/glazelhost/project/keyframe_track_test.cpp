#include "tools/glazelhost/project/keyframe_track.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <cmath>

namespace GlazelHost
{

namespace
{

std::vector<Keyframe> KeysAt(const std::vector<const char*>& times)
{
    std::vector<Keyframe> keys;
    for (const char* time : times)
    {
        keys.push_back({ParseKeyTime(time).value(), {std::byte(keys.size())}});
    }
    return keys;
}

KeyframeTrack TrackAt(const std::vector<const char*>& times, Ease ease = Ease::Linear,
                      double rate = 25.0)
{
    auto keys = KeysAt(times);
    return KeyframeTrack(keys, rate, ease);
}

void ExpectPlace(const KeyPlace& place, std::size_t earlier, double fraction)
{
    EXPECT_EQ(place.earlier, earlier);
    EXPECT_DOUBLE_EQ(place.fraction, fraction);
}

std::string ErrorOf(std::vector<Keyframe> keys, double rate)
{
    try
    {
        const KeyframeTrack track(keys, rate, Ease::Linear);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return {};
}

} // namespace

TEST(KeyframeTracks, TheEndsHold)
{
    const KeyframeTrack track = TrackAt({"10f", "20f"});
    ExpectPlace(track.PlaceOf(0), 0, 0.0);
    EXPECT_EQ(track.PlaceOf(0).later, 0U);
    ExpectPlace(track.PlaceOf(20), 1, 0.0);
    EXPECT_EQ(track.PlaceOf(20).later, 1U);
    ExpectPlace(track.PlaceOf(1'000'000), 1, 0.0);
}

TEST(KeyframeTracks, OneKeyframeHoldsThroughout)
{
    const KeyframeTrack track = TrackAt({"1.5"});
    for (const std::int64_t frame : {0, 37, 38, 1000})
    {
        ExpectPlace(track.PlaceOf(frame), 0, 0.0);
        EXPECT_EQ(track.PlaceOf(frame).later, 0U);
    }
}

TEST(KeyframeTracks, AFrameAtAKeyframeIsTheEarlierOfItsPair)
{
    const KeyframeTrack track = TrackAt({"0f", "10f", "20f"});
    ExpectPlace(track.PlaceOf(10), 1, 0.0);
    EXPECT_EQ(track.PlaceOf(10).later, 2U);
}

TEST(KeyframeTracks, AFrameBetweenTwoHasItsShareOfTheWay)
{
    const KeyframeTrack track = TrackAt({"0f", "10f", "30f"});
    ExpectPlace(track.PlaceOf(9), 0, 0.9);
    ExpectPlace(track.PlaceOf(11), 1, 0.05);
    EXPECT_EQ(track.PlaceOf(11).later, 2U);
}

TEST(KeyframeTracks, AKeyframeBetweenFramesIsShownByNoFrameExactly)
{
    const KeyframeTrack track = TrackAt({"0f", "0.5", "20f"}); // 12.5 frames
    ExpectPlace(track.PlaceOf(12), 0, 12.0 / 12.5);
    ExpectPlace(track.PlaceOf(13), 1, 0.5 / 7.5);
}

TEST(KeyframeTracks, SmoothStartsAndEndsAtRest)
{
    EXPECT_EQ(Eased(Ease::Smooth, 0.0), 0.0);
    EXPECT_EQ(Eased(Ease::Smooth, 0.5), 0.5);
    EXPECT_EQ(Eased(Ease::Smooth, 1.0), 1.0);
    EXPECT_DOUBLE_EQ(Eased(Ease::Smooth, 0.25), 0.15625);
    EXPECT_EQ(Eased(Ease::Linear, 0.25), 0.25);
    ExpectPlace(TrackAt({"0f", "4f"}, Ease::Smooth).PlaceOf(1), 0, 0.15625);
}

TEST(KeyframeTracks, RoundingNeverTurnsAFrameBetweenIntoAKeyframe)
{
    const KeyframeTrack track = TrackAt({"0f", "1000000000f"}, Ease::Smooth);
    for (const std::int64_t frame : {1LL, 999'999'999LL})
    {
        EXPECT_GT(track.PlaceOf(frame).fraction, 0.0);
        EXPECT_LT(track.PlaceOf(frame).fraction, 1.0);
    }
}

TEST(KeyframeTracks, KeyframesAreSortedWithTheirRecords)
{
    auto keys = KeysAt({"20f", "0.4", "0f"}); // 0.4 s is frame 10
    const KeyframeTrack track(keys, 25.0, Ease::Linear);
    EXPECT_EQ(keys[0].record[0], std::byte{2});
    EXPECT_EQ(keys[1].record[0], std::byte{1});
    EXPECT_EQ(keys[2].record[0], std::byte{0});
    ExpectPlace(track.PlaceOf(15), 1, 0.5);
}

TEST(KeyframeTracks, TwoKeyframesAtOneFrameAreRefusedWhateverTheirUnits)
{
    EXPECT_NE(ErrorOf(KeysAt({"1f", "2f", "1f"}), 25.0).find("1f and 1f"), std::string::npos);
    EXPECT_NE(ErrorOf(KeysAt({"1", "25f"}), 25.0).find("1 and 25f"), std::string::npos);
    EXPECT_EQ(ErrorOf(KeysAt({"1", "24f"}), 25.0), "");
}

TEST(KeyframeTracks, SecondsNeedARateAndFramesDoNot)
{
    EXPECT_NE(ErrorOf(KeysAt({"1f", "2.5"}), 0.0).find("keyframe at 2.5"), std::string::npos);
    EXPECT_NE(ErrorOf(KeysAt({"1"}), 0.0).find("--fps"), std::string::npos);
    EXPECT_EQ(ErrorOf(KeysAt({"1f", "2f"}), 0.0), "");
}

} // namespace GlazelHost
