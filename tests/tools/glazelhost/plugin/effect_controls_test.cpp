#include "tests/tools/glazelhost/plugin/real_effect.h"

namespace GlazelHost
{

namespace
{

class EffectControl : public RealEffect
{
};

} // namespace

TEST_F(EffectControl, TheStoredLookIsTheRecordsBytes)
{
    EXPECT_TRUE(m_controls.StoredLook().empty());
    const Record record = AnyRecord(1000, 3);
    m_controls.LoadLook(record);
    EXPECT_EQ(m_controls.StoredLook(), record);
}

TEST_F(EffectControl, ALookBeyondTheLimitIsNotStored)
{
    EXPECT_EQ(m_controls.LargestStored(), 131072U);
    const Record largest = AnyRecord(131072, 3);
    m_controls.LoadLook(largest);
    EXPECT_EQ(m_controls.StoredLook(), largest);
    m_controls.LoadLook(AnyRecord(131073, 3));
    EXPECT_TRUE(m_controls.StoredLook().empty());
}

TEST_F(EffectControl, TheOnlyPresetKeepsTheLookAndTurnsItsOptionOn)
{
    ASSERT_EQ(m_controls.PresetNames(), std::vector<std::string>{"(Default)"});
    m_controls.LoadLook(AnyRecord(1000, 3, false));
    m_controls.ApplyPreset(0);
    EXPECT_EQ(m_controls.StoredLook(), AnyRecord(1000, 3, true));
}

TEST_F(EffectControl, APresetThatIsNotThereIsAnError)
{
    EXPECT_TRUE(Says(ErrorOf([this] { m_controls.ApplyPreset(1); }), "did not apply the preset"));
}

TEST_F(EffectControl, ABlendHasItsOptionOnWhateverTheLooksSay)
{
    const Record dark = LookOf(0.5, false);
    const Record bright = LookOf(1.5, false);
    const Record between = m_controls.Blend(dark, bright, 0.5);
    EXPECT_EQ(LinearOption(between), true);
    EXPECT_EQ(PlainRender(between), PlainRender(LookOf(1.0, true)));
}

TEST_F(EffectControl, ABlendAtAnEndIsThatLook)
{
    const Record dark = LookOf(0.5, false);
    EXPECT_EQ(m_controls.Blend(dark, LookOf(1.5), 0.0), dark);
    EXPECT_EQ(m_controls.Blend(LookOf(1.5), dark, 1.0), dark);
}

TEST_F(EffectControl, LooksOfTwoSizesAreNotBlendedButHold)
{
    EXPECT_EQ(m_controls.Blend(AnyRecord(40, 1), AnyRecord(60, 2), 0.9), AnyRecord(40, 1));
}

TEST_F(EffectControl, AnObjectThatIsNoEffectLacksTheInterface)
{
    CComPtr<IStream> other;
    ASSERT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, &other), S_OK);
    EffectControls controls(*other, "other.dll");
    EXPECT_TRUE(Says(ErrorOf([&] { controls.PresetNames(); }),
                     "other.dll: its effect has no IStaticFilterPreset"));
}

} // namespace GlazelHost
