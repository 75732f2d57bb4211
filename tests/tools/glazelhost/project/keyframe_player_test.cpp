#include "tools/glazelhost/project/keyframe_player.h"

#include "tests/tools/glazelhost/plugin/real_effect.h"

namespace GlazelHost
{

namespace
{

constexpr double kRate = 25.0;

class KeyframePlayers : public RealEffect
{
protected:
    void AddKey(const char* time, Record record)
    {
        m_keyframes.push_back({ParseKeyTime(time).value(), std::move(record)});
    }

    // The pictures of these frames, in this order, by an effect of their own.
    std::vector<PixelBuffer> Play(const std::vector<std::int64_t>& frames, Ease ease = Ease::Linear)
    {
        EffectSession session(m_plugin);
        EffectControls controls(session.Effect(), "the effect");
        KeyframeTrack track(m_keyframes, kRate, ease);
        KeyframePlayer player(session, controls, m_keyframes, track);
        std::vector<PixelBuffer> pictures;
        for (const std::int64_t frame : frames)
        {
            Image output;
            player.Render(frame, Grey(), output, {});
            pictures.push_back(output.pixels);
        }
        return pictures;
    }

    std::vector<Keyframe> m_keyframes;
};

Record WithOption(Record record, bool on)
{
    EXPECT_TRUE(SetLinearOption(record, on));
    return record;
}

} // namespace

TEST_F(KeyframePlayers, TheOptionShowsInThePictures)
{
    // Otherwise the tests below would prove nothing.
    EXPECT_NE(PlainRender(LookOf(0.5, true)), PlainRender(LookOf(0.5, false)));
}

TEST_F(KeyframePlayers, FramesAtKeyframesAreThoseOfTheLooksWhateverTheirOptions)
{
    const std::vector<Record> looks{LookOf(0.5, false), LookOf(1.5, true), LookOf(0.8, false)};
    AddKey("2f", looks[0]);
    AddKey("6f", looks[1]);
    AddKey("10f", looks[2]);
    const auto pictures = Play({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    EXPECT_EQ(pictures[0], PlainRender(looks[0]));
    EXPECT_EQ(pictures[2], PlainRender(looks[0]));
    EXPECT_EQ(pictures[6], PlainRender(looks[1]));
    EXPECT_EQ(pictures[10], PlainRender(looks[2]));
    EXPECT_EQ(pictures[11], PlainRender(looks[2]));
}

TEST_F(KeyframePlayers, FramesBetweenShowTheBlendWithTheEarlierOption)
{
    const Record dark = LookOf(0.5, false);
    const Record bright = LookOf(1.5, true);
    AddKey("0f", dark);
    AddKey("4f", bright);
    AddKey("8f", dark);
    const auto pictures = Play({0, 1, 4, 5});
    EXPECT_EQ(pictures[1], PlainRender(WithOption(m_controls.Blend(dark, bright, 0.25), false)));
    EXPECT_EQ(pictures[3], PlainRender(WithOption(m_controls.Blend(bright, dark, 0.25), true)));
}

TEST_F(KeyframePlayers, AFrameIsTheSameWhicheverWereRenderedBefore)
{
    AddKey("0f", LookOf(0.5, false));
    AddKey("0.18", LookOf(1.5, true)); // between the frames 4 and 5
    AddKey("9f", LookOf(0.8, false));
    const auto inOrder = Play({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    for (std::int64_t frame = 0; frame <= 10; ++frame)
    {
        EXPECT_EQ(Play({frame})[0], inOrder[static_cast<std::size_t>(frame)]) << frame;
    }
    const auto backwards = Play({10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
    EXPECT_TRUE(std::equal(inOrder.begin(), inOrder.end(), backwards.rbegin()));
}

TEST_F(KeyframePlayers, EasingMovesTheBlend)
{
    const Record dark = LookOf(0.5);
    const Record bright = LookOf(1.5);
    AddKey("0f", dark);
    AddKey("4f", bright);
    EXPECT_EQ(Play({1}, Ease::Smooth)[0], PlainRender(m_controls.Blend(dark, bright, 0.15625)));
}

TEST_F(KeyframePlayers, LooksOfTwoSizesHoldUntilTheNextKeyframe)
{
    Record longer = LookOf(1.5);
    longer.resize(longer.size() + 1); // which this renderer does not take: frames stay as they are
    AddKey("0f", LookOf(0.5));
    AddKey("4f", longer);
    const auto pictures = Play({0, 3, 4});
    EXPECT_EQ(pictures[1], pictures[0]);
    EXPECT_EQ(pictures[2], Grey().pixels);
}

} // namespace GlazelHost
