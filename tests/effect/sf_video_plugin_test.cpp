// The template base on its own, without what an effect overrides.
#include "tests/effect/effect_fixture.h"

#include <cstring>

namespace
{

SessionData emptyPreset;

class BareEffect : public CSFVideoPlugin<SessionData>
{
public:
    explicit BareEffect(std::int32_t presetCount)
        : CSFVideoPlugin(&emptyPreset, nullptr, 0, presetCount, &IID_NULL)
    {
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; } // lives on the test's stack
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    FrameBufferDesc* STDMETHODCALLTYPE GetPreviewFrame() override { return nullptr; }

    using CSFVideoPlugin::m_current;
};

} // namespace

TEST(TemplateBase, BeginsWithItsFirstPreset)
{
    const BareEffect effect(1);
    EXPECT_EQ(effect.m_current.data, nullptr);
    EXPECT_EQ(effect.m_current.flag, 1U);
}

TEST(TemplateBase, WithoutPresetsBeginsWithARecordOfZeros)
{
    const BareEffect effect(0);
    EXPECT_EQ(effect.m_current.data, nullptr);
    EXPECT_EQ(effect.m_current.size, 0U);
    EXPECT_EQ(effect.m_current.flag, 0U);
}

TEST(TemplateBase, ItsExtensionRecordClaimsOneInputAndNoCapabilities)
{
    BareEffect effect(1);
    unsigned char info[32];
    std::memset(info, 0xEE, sizeof info);
    EXPECT_EQ(effect.GetExtensionInfo(info, sizeof info), S_OK);
    const unsigned char expected[32] = {2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F,
                                        1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,    0};
    EXPECT_EQ(std::memcmp(info, expected, sizeof info), 0);
}

TEST(TemplateBase, MovesRecordsAsPlainData)
{
    BareEffect effect(1);
    SessionData given;
    given.flag = 5;
    FakeStream written;
    EXPECT_EQ(effect.WriteProps(&written, &given), S_OK);
    EXPECT_EQ(written.bytes.size(), sizeof(SessionData));
    FakeStream stored(written.bytes);
    SessionData read;
    EXPECT_EQ(effect.ReadProps(&stored, &read), S_OK);
    EXPECT_EQ(read.flag, 5U);
    SessionData copy;
    EXPECT_EQ(effect.CopyProps(&copy, &given), S_OK);
    EXPECT_EQ(copy.flag, 5U);
}

TEST(TemplateBase, InterpolatesByTakingTheEarlierRecord)
{
    BareEffect effect(1);
    SessionData earlier;
    SessionData later;
    SessionData output;
    earlier.flag = 5;
    later.flag = 6;
    EXPECT_EQ(effect.InterpolateProps(&output, &earlier, &later, 1.0), S_OK);
    EXPECT_EQ(output.flag, 5U);
}
