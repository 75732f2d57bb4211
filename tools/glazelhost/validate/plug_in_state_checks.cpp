// What an effect keeps of a look: streams, storages, keyframes and what it tells of changes.
#include "contract/class_ids.h"
#include "contract/host_interfaces.h"
#include "contract/option_chunk.h"
#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/validate/fake_stream.h"
#include "tools/glazelhost/validate/judged_plug_in.h"
#include "tools/glazelhost/validate/plug_in_checks.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kLargestStored = 131072; // bytes
constexpr std::size_t kRendererHeader = kOptionChunk;

std::vector<std::uint8_t> Octets(const Record& record)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(record.data());
    return {bytes, bytes + record.size()};
}

// Stores what the effect holds through `persist`.
Record SavedBy(Check& check, IPersistStreamInit& persist, BOOL clearsDirty)
{
    const CComPtr<CMemoryStream> stream = StreamOf();
    check.Answers(S_OK, persist.Save(stream, clearsDirty), "IPersistStreamInit::Save");
    return stream->Bytes();
}

// Counts what it is told. Lives on the stack.
class CCountingSink final : public ISfChangeSink
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        *object = riid == IID_IUnknown ? this : nullptr;
        return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return --references; }
    HRESULT STDMETHODCALLTYPE OnPropsChanged() noexcept override
    {
        ++changes;
        return S_OK;
    }

    ULONG references = 1;
    unsigned changes = 0;
};

} // namespace

void CheckEffectState(Check& check)
{
    JudgedEffect judged(check);
    const auto persist =
        judged.As<IPersistStreamInit>(IID_IPersistStreamInit, "IPersistStreamInit");
    const auto automation = judged.As<IDXTSfAutomation>(IID_IDXTSfAutomation, "IDXTSfAutomation");
    const Record look = judged.plugIn.LookOf();

    CLSID classId{};
    check.Answers(S_OK, persist->GetClassID(&classId), "GetClassID");
    check.That(classId == CLSID_Plugin, "GetClassID tells another class");
    check.Answers(E_POINTER, persist->GetClassID(nullptr), "GetClassID(null)");
    ULARGE_INTEGER largest{};
    check.Answers(S_OK, persist->GetSizeMax(&largest), "GetSizeMax");
    check.That(largest.QuadPart == kLargestStored, "GetSizeMax tells another size than 131072");
    check.Answers(E_INVALIDARG, persist->GetSizeMax(nullptr), "GetSizeMax(null)");
    check.Answers(E_POINTER, persist->Load(nullptr), "Load(null)");

    check.That(SavedBy(check, *persist, TRUE).empty(), "a new effect stores something");
    check.Answers(S_FALSE, persist->IsDirty(), "IsDirty after Save");
    for (const bool on : {true, false})
    {
        const Record record = WithOption(look, on);
        check.Answers(S_OK, persist->Load(StreamOf(record)), "IPersistStreamInit::Load");
        check.Answers(S_OK, persist->IsDirty(), "IsDirty after Load");
        check.That(SavedBy(check, *persist, FALSE) == record,
                   "what Load was given is not what Save writes");
        check.Answers(S_OK, persist->IsDirty(), "IsDirty after Save that clears nothing");
        check.That(judged.controls.StoredLook() == record,
                   "what Load was given is not what SaveProps writes");
    }
    check.Answers(S_OK, persist->InitNew(), "InitNew");
    check.That(SavedBy(check, *persist, TRUE) == WithOption(look, true),
               "InitNew does more, or less, than turn the look's option on");
    const Record other = judged.plugIn.LookOf(kOtherCubeText);
    check.Answers(S_OK, automation->LoadProps(StreamOf(other)), "LoadProps");
    check.That(SavedBy(check, *persist, TRUE) == other,
               "what LoadProps was given is not what Save writes");
    check.Answers(S_OK, persist->Load(StreamOf()), "Load of an empty stream");
    check.That(SavedBy(check, *persist, TRUE) == other, "an empty stream changes the look");
}

void CheckEffectStorage(Check& check)
{
    JudgedEffect judged(check);
    const auto persist = judged.As<IPersistStorage>(IID_IPersistStorage, "IPersistStorage");
    const auto bag = judged.As<IPersistPropertyBag>(IID_IPersistPropertyBag, "IPersistPropertyBag");
    const Record look = judged.plugIn.LookOf();
    check.Answers(E_INVALIDARG, persist->Load(nullptr), "IPersistStorage::Load(null)");
    check.Answers(E_INVALIDARG, persist->Save(nullptr, TRUE), "IPersistStorage::Save(null)");
    CComPtr<IStorage> storage;
    if (FAILED(::StgCreateDocfile(
            nullptr, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_DELETEONRELEASE, 0,
            &storage)))
    {
        check.Skip("the system makes no storage");
        return;
    }
    check.Fails(persist->Load(storage), "IPersistStorage::Load without the stream \"Contents\"");
    judged.controls.LoadLook(look);
    check.Answers(S_OK, persist->Save(storage, TRUE), "IPersistStorage::Save");
    check.Answers(S_FALSE, persist->IsDirty(), "IPersistStorage::IsDirty after Save");
    judged.controls.LoadLook(judged.plugIn.LookOf(kOtherCubeText));
    check.Answers(S_OK, persist->Load(storage), "IPersistStorage::Load");
    check.That(judged.controls.StoredLook() == look, "a storage gives another look back");
    check.Answers(S_OK, persist->SaveCompleted(nullptr), "SaveCompleted");
    check.Answers(S_OK, persist->HandsOffStorage(), "HandsOffStorage");
    check.Answers(S_OK, bag->InitNew(), "IPersistPropertyBag::InitNew");
    check.That(judged.controls.StoredLook() == look,
               "IPersistPropertyBag::InitNew changes the look");
}

void CheckEffectStreams(Check& check)
{
    JudgedEffect judged(check);
    const auto persist =
        judged.As<IPersistStreamInit>(IID_IPersistStreamInit, "IPersistStreamInit");
    const auto automation = judged.As<IDXTSfAutomation>(IID_IDXTSfAutomation, "IDXTSfAutomation");
    const Record look = judged.plugIn.LookOf();

    judged.controls.LoadLook(WithOption(look, false));
    FakeStream silent(Octets(look));
    silent.statResult = STG_E_READFAULT;
    check.Answers(STG_E_READFAULT, automation->LoadProps(&silent),
                  "LoadProps of a stream that does not tell its size");
    check.That(judged.controls.StoredLook() == WithOption(look, true),
               "after LoadProps that failed the look is not that of preset 0");
    check.Answers(STG_E_READFAULT, persist->Load(&silent),
                  "Load of a stream that does not tell its size");
    check.Answers(S_OK, persist->IsDirty(), "IsDirty after Load that failed");

    FakeStream broken(Octets(look));
    broken.readResult = STG_E_READFAULT;
    check.Answers(STG_E_READFAULT, persist->Load(&broken), "Load of a stream that cannot be read");
    judged.controls.LoadLook(look);
    FakeStream full;
    full.writeResult = STG_E_MEDIUMFULL;
    check.Answers(STG_E_MEDIUMFULL, persist->Save(&full, TRUE), "Save to a stream that is full");
    check.Answers(STG_E_MEDIUMFULL, automation->SaveProps(&full), "SaveProps to a full stream");
    check.Answers(S_OK, persist->IsDirty(), "IsDirty after Save that failed");

    FakeStream slow(Octets(look));
    slow.mostBytesRead = 7;
    check.Answers(S_OK, persist->Load(&slow), "Load of a stream that gives few bytes at a time");
    const Record stored = judged.controls.StoredLook();
    check.That(stored.size() == look.size() &&
                   std::equal(look.begin(), look.begin() + 7, stored.begin()),
               "of a stream that gives few bytes at a time the first ones are lost");
    for (const FakeStream* stream : {&silent, &broken, &full, &slow})
    {
        check.That(stream->references == 0, "a stream is held after the call");
    }
}

void CheckEffectHostileState(Check& check)
{
    JudgedPlugIn plugIn(check);
    EffectSession session(plugIn.module);
    EffectControls controls(session.Effect(), check.File());
    const Record look = plugIn.LookOf();
    Image picture{16, 4, SampleType::Byte, true, {std::size_t{16} * 4 * 4, std::byte{}}};
    Image expected;
    Image output;
    std::ranges::copy(check.RandomBytes(picture.pixels.size()), picture.pixels.begin());
    controls.LoadLook(look);
    session.Render(picture, expected, {});

    const auto keep = [&](const char* kind, const Record& record) {
        controls.LoadLook(record);
        check.That(controls.StoredLook() == record,
                   std::string(kind) + " is not stored as it was loaded");
        session.Render(picture, output, {});
    };
    for (const std::size_t size : {1U, 8U, 19U, 20U, 21U, 1000U, 65536U, 131072U})
    {
        keep("a record of random bytes", check.RandomBytes(size));
        Record cut = look;
        cut.resize(std::min(size, cut.size()));
        keep("a record that was cut", cut);
    }
    for (unsigned flip = 0; flip < 100; ++flip)
    {
        Record flipped = look;
        const std::size_t at =
            flip < 50 ? check.Random(256) : check.Random(static_cast<std::uint32_t>(look.size()));
        flipped[at] ^= static_cast<std::byte>(1U << check.Random(8));
        keep("a record with a flipped bit", flipped);
    }
    for (std::size_t at = 0; at < kRendererHeader; ++at)
    {
        Record later = look;
        later[at] = static_cast<std::byte>(std::to_integer<unsigned>(later[at]) + 1);
        keep("a record of another version", later);
    }
    Record longer = look;
    std::ranges::copy(check.RandomBytes(std::min<std::size_t>(64, kLargestStored - look.size())),
                      std::back_inserter(longer));
    keep("a record with more behind it", longer);
    controls.LoadLook(Record(kLargestStored + 1));
    check.That(controls.StoredLook().empty(), "a record of more than 131072 bytes is stored");
    controls.LoadLook(look);
    session.Render(picture, output, {});
    check.That(output.pixels == expected.pixels, "after hostile records a look renders otherwise");
}

void CheckEffectKeyframes(Check& check)
{
    JudgedEffect judged(check);
    const auto automation = judged.As<IDXTSfAutomation>(IID_IDXTSfAutomation, "IDXTSfAutomation");
    const Record first = WithOption(judged.plugIn.LookOf(), false);
    const Record last = WithOption(judged.plugIn.LookOf(kOtherCubeText), true);
    struct End
    {
        double fraction;
        bool isLast;
    };
    for (const End end : {End{0.0, false}, End{-0.5, false}, End{1.0, true}, End{2.0, true}})
    {
        check.That(judged.controls.Blend(first, last, end.fraction) == (end.isLast ? last : first),
                   std::string("a blend at ") + (end.isLast ? "1" : "0") +
                       " or beyond is not the record there");
    }
    const JudgedRenderer renderer(judged.plugIn.renderer.State().path);
    Record expected(first.size());
    renderer.Calls().interpolateSessionData(first.data(), static_cast<std::uint32_t>(first.size()),
                                            last.data(), static_cast<std::uint32_t>(last.size()),
                                            0.25, expected.data());
    check.That(judged.controls.Blend(first, last, 0.25) == WithOption(expected, true),
               "a blend between is not the renderer's, with the option on");
    const Record shorter(first.begin(), first.end() - 1);
    check.That(judged.controls.Blend(shorter, last, 0.9) == shorter,
               "records of two sizes: before 1 it is not the earlier one");
    check.That(judged.controls.Blend(shorter, last, 1.0) == last,
               "records of two sizes: at 1 it is not the later one");

    FakeStream broken(Octets(first));
    broken.statResult = STG_E_READFAULT;
    FakeStream whole(Octets(last));
    FakeStream output;
    check.Answers(STG_E_READFAULT, automation->InterpolateStreams(&output, &broken, &whole, 0.5),
                  "InterpolateStreams with an earlier stream that cannot be read");
    check.Answers(STG_E_READFAULT, automation->InterpolateStreams(&output, &whole, &broken, 0.5),
                  "InterpolateStreams with a later stream that cannot be read");
    check.That(output.writes == 0, "InterpolateStreams that failed writes all the same");
    check.Answers(STG_E_READFAULT, automation->SetKeyframeProps(&whole, &broken),
                  "SetKeyframeProps with a stream that cannot be read");
    check.Answers(S_OK, automation->SetKeyframeFraction(7.5), "SetKeyframeFraction(7.5)");
}

void CheckEffectExchange(Check& check)
{
    JudgedPlugIn plugIn(check);
    EffectSession session(plugIn.module);
    EffectControls controls(session.Effect(), check.File());
    // The record's type is between the effect and its page.
    const auto exchange = QueryEffect<ISfExchangeProps<void>>(
        session.Effect(), IID_ISfExchangeProps, "ISfExchangeProps", check.File());
    check.Answers(E_FAIL, exchange->GetProps(nullptr), "GetProps(null)");
    check.Answers(E_FAIL, exchange->SetProps(nullptr), "SetProps(null)");
    check.Answers(S_OK, exchange->SetNotifyWindow(nullptr, 0), "SetNotifyWindow(null)");

    Image picture{5, 3, SampleType::Byte, true, {std::size_t{5} * 3 * 4, std::byte{}}};
    std::ranges::copy(check.RandomBytes(picture.pixels.size()), picture.pixels.begin());
    Image output;
    session.Render(picture, output, {});
    const FrameBufferDesc* const preview = exchange->GetPreviewFrame();
    check.That(preview != nullptr && preview->IsValid() && preview->width == 5 &&
                   preview->height == 3 && preview->format == kFormatBgra8 &&
                   std::equal(picture.pixels.begin(), picture.pixels.end(),
                              static_cast<const std::byte*>(preview->pixels)),
               "GetPreviewFrame is not the frame that was rendered last");

    CCountingSink sink;
    controls.SetChangeSink(&sink);
    controls.LoadLook(plugIn.LookOf());
    check.That(sink.changes == 1, "Load tells the change sink " + std::to_string(sink.changes) +
                                      " times instead of once");
    controls.ApplyPreset(0);
    check.That(sink.changes == 2, "ApplyPreset does not tell the change sink once");
    std::ignore = controls.StoredLook();
    check.That(sink.changes == 2, "SaveProps tells the change sink");
    controls.SetChangeSink(nullptr);
    check.That(sink.references == 1, "a change sink that was taken away is held");
}

} // namespace GlazelHost
