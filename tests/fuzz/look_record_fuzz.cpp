// Damaged records: every reader agrees on whether one is usable; a usable one grades to finite
// colours, keeps alpha, blends into a usable one and survives being written again.
#include "reference_renderer/core/look_blend.h"
#include "reference_renderer/core/look_icon.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/prepared_look.h"

#include "tests/fuzz/fuzz_input.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

using namespace ReferenceRenderer;

namespace
{

using Record = std::vector<std::uint8_t>;
using Pixels = std::array<float, 4 * 5>;

// A sound record: a correction, curves and a small cube.
Record SampleRecord()
{
    Look look;
    look.cdlMode = CdlMode::Clamped;
    look.cdl.slope = {1.1F, 0.9F, 1.0F};
    look.curves = Curves{4, {}, {}};
    for (std::size_t i = 0; i < 3 * std::size_t{look.curves->size}; ++i)
    {
        look.curves->values.push_back(static_cast<float>(i % 4) / 3.0F);
    }
    look.cube = Cube{3, {}, {}};
    for (std::size_t i = 0; i < 3 * NodeCount(3) + kNodePadding; ++i)
    {
        look.cube->nodes.push_back(static_cast<float>(i * 7 % 11) / 10.0F);
    }
    StoredLook stored;
    StoreLook(look, stored);
    Record record(kRecordSize);
    WriteRecord(stored, RecordBytes(record));
    return record;
}

void RequireWritesUsable(const StoredLook& look)
{
    Record record(kRecordSize);
    WriteRecord(look, RecordBytes(record));
    Require(CheckRecord(record) == RecordState::Usable);
}

void RequireGrades(const PreparedLook& look, const Pixels& source, bool linear)
{
    Pixels target{};
    look.RowFloat(linear)(look, reinterpret_cast<const std::byte*>(source.data()),
                          reinterpret_cast<std::byte*>(target.data()), source.size() / 4);
    for (std::size_t i = 0; i < target.size(); ++i)
    {
        const bool isAlpha = i % 4 == 3;
        Require(isAlpha ? std::memcmp(&target[i], &source[i], sizeof(float)) == 0
                        : std::isfinite(target[i]));
    }
}

void RequireGrades8(const PreparedLook& look, const Pixels& source)
{
    std::array<std::byte, sizeof(Pixels)> before{};
    std::memcpy(before.data(), source.data(), before.size());
    auto after = before;
    look.Row8()(look, after.data(), after.data(), after.size() / 4);
    for (std::size_t i = 3; i < after.size(); i += 4)
    {
        Require(after[i] == before[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Record sample = SampleRecord();
    // Made once: each takes a megabyte.
    static const auto look = std::make_unique<PreparedLook>();
    static const auto other = std::make_unique<PreparedLook>();
    static const auto blend = std::make_unique<StoredLook>();
    static TableEncoder encoder(NodeCount(kStoredCubeSize));

    FuzzedDataProvider input(data, size);
    Pixels source{std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                  -std::numeric_limits<float>::infinity()};
    for (std::size_t i = 3; i < source.size(); ++i)
    {
        source[i] = input.ConsumeFloatingPoint<float>();
    }
    const auto fraction = input.ConsumeFloatingPoint<double>();
    Record record = sample;
    // Cut now and then; otherwise damaged where the numbers and the tables are, or anywhere; mostly
    // with a sum that fits all the same.
    const auto kind = input.ConsumeIntegralInRange<int>(0, 7);
    const bool isPlain = input.ConsumeIntegralInRange<int>(0, 3) == 0;
    if (kind == 0)
    {
        record.resize(input.ConsumeIntegralInRange<std::size_t>(0, record.size()));
    }
    const auto bytes = std::as_writable_bytes(std::span(record));
    Damage(kind < 2 ? bytes : bytes.first(kRecordTableOffset + 600), input);
    if (kind > 1)
    {
        constexpr std::size_t kVersionOffset = 4;
        record[kVersionOffset] = static_cast<std::uint8_t>(isPlain ? kPlainVersion : kCodedVersion);
        SealRecord(RecordBytes(record));
    }

    const RecordState state = look->Read(record);
    Require(CheckRecord(record) == state);
    RequireGrades(*look, source, false);
    RequireGrades(*look, source, true);
    RequireGrades8(*look, source);
    std::array<std::uint32_t, kIconPixels> icon;
    DrawLookIcon(*look, icon);
    RequireWritesUsable(look->Stored());
    Require(other->Read(sample) == RecordState::Usable);
    BlendLooks(*look, *other, fraction, *blend, encoder);
    RequireWritesUsable(*blend);
    return 0;
}
