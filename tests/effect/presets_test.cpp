#include "effect/preset_table.h"
#include "tests/effect/effect_fixture.h"

#include <cmath>
#include <cstring>

namespace
{

class Presets : public EffectTest
{
};

} // namespace

TEST_F(Presets, ThereIsOneAndItsNameIsDefault)
{
    ULONG count = 0;
    EXPECT_EQ(effect->GetPresetCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    WCHAR name[32] = L"untouched";
    EXPECT_EQ(effect->GetPresetName(0, name, 32), S_OK);
    EXPECT_STREQ(name, L"(Default)");
}

TEST_F(Presets, AnIndexOutsideTheListIsRefusedAndTheNameNotTouched)
{
    WCHAR name[32] = L"untouched";
    EXPECT_EQ(effect->GetPresetName(1, name, 32), E_INVALIDARG);
    EXPECT_EQ(effect->GetPresetName(-1, name, 32), E_INVALIDARG);
    EXPECT_STREQ(name, L"untouched");
}

TEST_F(Presets, ANameThatFillsTheCapacityIsNotTerminated)
{
    WCHAR name[8] = L"#######";
    EXPECT_EQ(effect->GetPresetName(0, name, 4), S_OK);
    EXPECT_EQ(std::memcmp(name, L"(Def###", 8 * sizeof(WCHAR)), 0);
}

TEST_F(Presets, ANameWithoutAPlaceIsOnlyMeasured)
{
    EXPECT_EQ(effect->GetPresetName(0, nullptr, 32), S_OK);
    EXPECT_EQ(effect->GetPresetName(1, nullptr, 32), E_INVALIDARG);
}

TEST_F(Presets, APresetWithoutANameGivesAnEmptyOneAndFails)
{
    effect->m_presetCount = 2;
    WCHAR name[8] = L"#######";
    EXPECT_EQ(effect->GetPresetName(1, name, 8), E_FAIL);
    EXPECT_EQ(name[0], L'\0');
    EXPECT_EQ(name[1], L'#');
    effect->m_presetCount = 1;
}

TEST_F(Presets, ApplyingTheDefaultKeepsTheLookSetsTheOptionAndTellsEverybody)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    Listen();
    EXPECT_EQ(effect->ApplyPreset(0), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 1U);
    EXPECT_EQ(effect->IsDirty(), S_FALSE) << "the dirty mark is not changed";
    const std::vector<MSG> posts = postBox.Take();
    ASSERT_EQ(posts.size(), 1U);
    EXPECT_EQ(posts[0].wParam, kCommand);
    EXPECT_EQ(sink.calls, 1);
}

TEST_F(Presets, ApplyingAnIndexOutsideTheListDoesNothing)
{
    Listen();
    EXPECT_EQ(effect->ApplyPreset(1), E_INVALIDARG);
    EXPECT_EQ(effect->ApplyPreset(-1), E_INVALIDARG);
    EXPECT_TRUE(postBox.Take().empty());
    EXPECT_EQ(sink.calls, 0);
}

TEST_F(Presets, TheTableIsOnlyRead)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    FakeStream broken;
    broken.statResult = STG_E_ACCESSDENIED;
    effect->ApplyPreset(0);
    effect->m_current.SetFlag(0);
    effect->LoadProps(&broken);
    static_cast<IPersistStreamInit*>(effect.p)->InitNew();
    const SessionData& preset = *PresetTable();
    EXPECT_EQ(preset.data, nullptr);
    EXPECT_EQ(preset.size, 0U);
    EXPECT_EQ(preset.flag, 1U);
}

TEST_F(Presets, AFreshEffectHoldsTheEmptyPreset)
{
    EXPECT_EQ(effect->m_current.data, nullptr);
    EXPECT_EQ(effect->m_current.size, 0U);
    EXPECT_EQ(effect->m_current.flag, 1U);
}

TEST_F(Presets, TheExtensionRecordHasItsFixedContents)
{
    unsigned char info[32];
    std::memset(info, 0xEE, sizeof info);
    EXPECT_EQ(effect->GetExtensionInfo(info, sizeof info), S_OK);
    const unsigned char expected[32] = {2, 0, 0, 0, 0, 0, 0, 0, 0,    0,    0, 0, 0, 0, 0xF0, 0x3F,
                                        1, 0, 0, 0, 1, 0, 0, 0, 0x41, 0x08, 0, 0, 0, 0, 0,    0};
    EXPECT_EQ(std::memcmp(info, expected, sizeof info), 0);
}

TEST_F(Presets, TheExtensionRecordIsCopiedAsFarAsBothSidesReach)
{
    unsigned char info[64];
    std::memset(info, 0xEE, sizeof info);
    EXPECT_EQ(effect->GetExtensionInfo(info, 8), S_OK);
    EXPECT_EQ(info[0], 2);
    EXPECT_EQ(info[7], 0);
    EXPECT_EQ(info[8], 0xEE);
    EXPECT_EQ(effect->GetExtensionInfo(info, 64), S_OK);
    EXPECT_EQ(info[24], 0x41);
    EXPECT_EQ(info[32], 0xEE);
    EXPECT_EQ(effect->GetExtensionInfo(nullptr, 32), E_POINTER);
}

TEST_F(Presets, AnExtensionRecordOfNoBytesTouchesNothingAndStillNeedsAPlace)
{
    unsigned char info[2] = {0xEE, 0xEE};
    EXPECT_EQ(effect->GetExtensionInfo(info, 0), S_OK);
    EXPECT_EQ(info[0], 0xEE);
    EXPECT_EQ(effect->GetExtensionInfo(nullptr, 0), E_POINTER);
}

TEST_F(Presets, TheExtensionValueIsKeptBetweenZeroAndOne)
{
    EXPECT_EQ(effect->m_extensionValue, 1.0);
    const double cases[][2] = {{-3.0, 0.0}, {7.5, 1.0}, {0.25, 0.25}, {std::nan(""), 0.0}};
    for (const auto& [given, stored] : cases)
    {
        EXPECT_EQ(effect->SetExtensionValue(given), S_OK);
        EXPECT_EQ(effect->m_extensionValue, stored) << given;
    }
}

TEST_F(Presets, TheInterfacesOperationsStandInTheirSlots)
{
    IStaticFilterPreset* const presets = effect;
    ULONG count = 0;
    EXPECT_EQ((CallSlot<3>(presets, &count)), S_OK);
    EXPECT_EQ(count, 1U);
    WCHAR name[16] = L"";
    EXPECT_EQ((CallSlot<4>(presets, LONG{0}, static_cast<WCHAR*>(name), ULONG{16})), S_OK);
    EXPECT_STREQ(name, L"(Default)");
    EXPECT_EQ((CallSlot<5>(presets, LONG{1})), E_INVALIDARG);
    effect->m_current.SetFlag(0);
    EXPECT_EQ((CallSlot<6>(presets, LONG{0})), S_OK) << "LoadPreset";
    EXPECT_EQ(effect->m_current.flag, 1U);
    FakeStream stream(RecordBytes(7));
    SessionData record;
    EXPECT_EQ((CallSlot<7>(presets, static_cast<IStream*>(&stream), &record)), S_OK) << "ReadProps";
    EXPECT_EQ(BytesOf(record), RecordBytes(7));
    FakeStream written;
    EXPECT_EQ((CallSlot<8>(presets, static_cast<IStream*>(&written), &record)), S_OK);
    EXPECT_EQ(written.bytes, RecordBytes(7));
    SessionData later;
    Fill(later, RecordBytes(17));
    SessionData between;
    EXPECT_EQ((CallSlot<10>(presets, &between, &record, &later, 0.5)), S_OK);
    EXPECT_EQ(between.size, 64U);

    ISfVideoPluginExtension* const extension = effect;
    BYTE info[32] = {};
    EXPECT_EQ((CallSlot<3>(extension, static_cast<void*>(info), ULONG{32})), S_OK);
    EXPECT_EQ(info[0], 2);
    EXPECT_EQ((CallSlot<4>(extension, 0.25)), S_OK);
    EXPECT_EQ(effect->m_extensionValue, 0.25);
}

TEST_F(Presets, TheRecordOperationsFollowTheInterfaceInItsTable)
{
    // A caller that knows only slot numbers: 3 to 5 are the interface's own, 6 to 10 follow.
    using CopyFunction = HRESULT(STDMETHODCALLTYPE*)(void*, SessionData*, const SessionData*);
    IStaticFilterPreset* const presets = effect;
    void** const slots = *reinterpret_cast<void***>(presets);
    SessionData source;
    SessionData target;
    Fill(source, RecordBytes(7));
    constexpr int kCopyPropsSlot = 9;
    EXPECT_EQ(reinterpret_cast<CopyFunction>(slots[kCopyPropsSlot])(presets, &target, &source),
              S_OK);
    EXPECT_EQ(BytesOf(target), RecordBytes(7));
}
