#include "reference_renderer/core/record_tables.h"

#include <algorithm>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

// In front of the coded tables, which follow one another.
struct TablesHead
{
    std::uint32_t sum; // of the record, 0 in StoredLook
    std::uint32_t curveBytes;
    std::uint32_t cubeBytes;
};

// What curves may take when there is a cube too: 4096 entries at worst, and more than 65536 of any
// smooth curve.
constexpr std::size_t kCurveShare = 32768;

// A plain cube of 27 nodes a side fills a record together with 2048 entries per curve.
constexpr std::uint32_t kPlainCubeSize = 27;
constexpr std::size_t kPlainTriples = kRecordTableSize / (3 * sizeof(std::uint16_t));
constexpr double kPlainTop = 65535.0;

// Steps over a range; in double, so that both of its ends come back exactly.
class Quantiser
{
public:
    Quantiser(const Interval& range, double top) noexcept
        : m_low(range.low), m_top(top), m_step((double{range.high} - double{range.low}) / top),
          m_inverse(m_step > 0.0 ? 1.0 / m_step : 0.0)
    {
    }

    float Encode(float value) const noexcept
    {
        const double steps = (double{value} - m_low) * m_inverse + 0.5;
        return static_cast<float>(static_cast<std::int32_t>(std::clamp(steps, 0.0, m_top)));
    }

    float Decode(float code) const noexcept
    {
        return static_cast<float>(m_low + m_step * double{code});
    }

private:
    double m_low;
    double m_top;
    double m_step;
    double m_inverse;
};

using Quantisers = std::array<Quantiser, 3>;

Quantisers QuantisersOf(const Domain& ranges, double top = kTopCode) noexcept
{
    return {Quantiser(ranges[0], top), Quantiser(ranges[1], top), Quantiser(ranges[2], top)};
}

TableShape CurveShape(const StoredLook& look) noexcept
{
    return {look.curveSize, 1, 1};
}

TableShape CubeShape(const StoredLook& look) noexcept
{
    return {look.cubeSize, look.cubeSize, look.cubeSize};
}

// Curves lie channel by channel, the nodes of a cube and of coded tables channel next to channel.
template <typename Convert>
void ForEachCurveValue(std::uint32_t size, Convert&& convert)
{
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        for (std::size_t i = 0; i < size; ++i)
        {
            convert(channel, channel * size + i, 3 * i + channel);
        }
    }
}

template <typename Convert>
void ForEachNodeValue(std::uint32_t size, Convert&& convert)
{
    const std::size_t end = 3 * NodeCount(size);
    for (std::size_t i = 0; i < end; i += 3)
    {
        convert(std::size_t{0}, i);
        convert(std::size_t{1}, i + 1);
        convert(std::size_t{2}, i + 2);
    }
}

void DecodeCurves(StoredLook& look, const float* codes) noexcept
{
    const Quantisers steps = QuantisersOf(look.curveRange);
    ForEachCurveValue(look.curveSize, [&](std::size_t channel, std::size_t to, std::size_t from) {
        look.curveValues[to] = steps[channel].Decode(codes[from]);
    });
}

void DecodeNodes(StoredLook& look, const float* codes) noexcept
{
    const Quantisers steps = QuantisersOf(look.cubeRange);
    ForEachNodeValue(look.cubeSize, [&](std::size_t channel, std::size_t i) {
        look.cubeNodes[i] = steps[channel].Decode(codes[i]);
    });
}

TablesHead HeadOf(std::span<const std::uint8_t> bytes) noexcept
{
    TablesHead head;
    std::memcpy(&head, bytes.data(), sizeof head);
    return head;
}

std::span<const std::uint8_t> CurveBytes(std::span<const std::uint8_t> bytes) noexcept
{
    return bytes.subspan(sizeof(TablesHead), HeadOf(bytes).curveBytes);
}

std::span<const std::uint8_t> CubeBytes(std::span<const std::uint8_t> bytes) noexcept
{
    const TablesHead head = HeadOf(bytes);
    return bytes.subspan(sizeof head + head.curveBytes, head.cubeBytes);
}

bool AreCodedTables(std::span<const std::uint8_t> bytes, std::uint32_t curveSize,
                    std::uint32_t cubeSize) noexcept
{
    const TablesHead head = HeadOf(bytes);
    const std::size_t room = bytes.size() - sizeof head;
    if (curveSize > kStoredCurveSize || cubeSize > kStoredCubeSize || head.curveBytes > room ||
        head.cubeBytes > room - head.curveBytes)
    {
        return false;
    }
    return (curveSize == 0 ? head.curveBytes == 0 : IsTable(CurveBytes(bytes))) &&
           (cubeSize == 0 ? head.cubeBytes == 0 : IsTable(CubeBytes(bytes)));
}

void DecodePlainTables(StoredLook& look) noexcept
{
    const auto codeAt = [&](std::size_t i) {
        std::uint16_t code;
        std::memcpy(&code, look.coded.data() + i * sizeof code, sizeof code);
        return static_cast<float>(code);
    };
    const Quantisers curveSteps = QuantisersOf(look.curveRange, kPlainTop);
    ForEachCurveValue(look.curveSize, [&](std::size_t channel, std::size_t i, std::size_t) {
        look.curveValues[i] = curveSteps[channel].Decode(codeAt(i));
    });
    const std::size_t first = std::size_t{3} * look.curveSize;
    const Quantisers nodeSteps = QuantisersOf(look.cubeRange, kPlainTop);
    ForEachNodeValue(look.cubeSize, [&](std::size_t channel, std::size_t i) {
        look.cubeNodes[i] = nodeSteps[channel].Decode(codeAt(first + i));
    });
}

// Codes the table in `encoder` in the finest steps with which it fits.
std::size_t EncodeToFit(const TableShape& shape, std::uint32_t step, std::span<std::uint8_t> bytes,
                        TableEncoder& encoder, const auto& fill) noexcept
{
    std::size_t used = 0;
    for (; used == 0 && step <= kCoarsestStep; ++step)
    {
        fill();
        used = encoder.Encode(shape, step, bytes);
    }
    return used;
}

} // namespace

std::size_t LargestTableOf(const StoredLook& look) noexcept
{
    return std::max<std::size_t>(look.curveSize, NodeCount(look.cubeSize));
}

bool AreTables(std::span<const std::uint8_t> bytes, std::uint32_t version, std::uint32_t curveSize,
               std::uint32_t cubeSize) noexcept
{
    if (curveSize == 1 || cubeSize == 1)
    {
        return false;
    }
    if (version == kPlainVersion)
    {
        return cubeSize <= kPlainCubeSize && curveSize <= kPlainTriples - NodeCount(cubeSize);
    }
    return AreCodedTables(bytes, curveSize, cubeSize);
}

void DecodeTables(StoredLook& look) noexcept
{
    if (look.codedVersion == kPlainVersion)
    {
        DecodePlainTables(look);
        return;
    }
    // The nodes of the cube come last: until then there is room for curves.
    float* const codes = look.cubeNodes.data();
    if (look.curveSize != 0)
    {
        DecodeTable(CurveBytes(look.coded), CurveShape(look), codes);
        DecodeCurves(look, codes);
    }
    if (look.cubeSize != 0)
    {
        DecodeTable(CubeBytes(look.coded), CubeShape(look), codes);
        DecodeNodes(look, codes);
    }
}

void FindRanges(StoredLook& look) noexcept
{
    const auto enclose = [](Interval& range, float value, bool isFirst) {
        range = isFirst ? Interval{value, value}
                        : Interval{std::min(range.low, value), std::max(range.high, value)};
    };
    ForEachCurveValue(look.curveSize, [&](std::size_t channel, std::size_t i, std::size_t place) {
        enclose(look.curveRange[channel], look.curveValues[i], place < 3);
    });
    ForEachNodeValue(look.cubeSize, [&](std::size_t channel, std::size_t i) {
        enclose(look.cubeRange[channel], look.cubeNodes[i], i < 3);
    });
}

void CodeTables(StoredLook& look, std::uint32_t cubeStep, TableEncoder& encoder) noexcept
{
    const std::span<std::uint8_t> room = std::span(look.coded).subspan(sizeof(TablesHead));
    TablesHead head{};
    float* const codes = encoder.Codes().data();
    if (look.curveSize != 0)
    {
        const Quantisers steps = QuantisersOf(look.curveRange);
        const auto fill = [&] {
            ForEachCurveValue(look.curveSize,
                              [&](std::size_t channel, std::size_t from, std::size_t to) {
                                  codes[to] = steps[channel].Encode(look.curveValues[from]);
                              });
        };
        const std::size_t share = look.cubeSize != 0 ? kCurveShare : room.size();
        head.curveBytes = static_cast<std::uint32_t>(
            EncodeToFit(CurveShape(look), kFinestStep, room.first(share), encoder, fill));
        DecodeCurves(look, codes);
    }
    if (look.cubeSize != 0)
    {
        const Quantisers steps = QuantisersOf(look.cubeRange);
        const auto fill = [&] {
            ForEachNodeValue(look.cubeSize, [&](std::size_t channel, std::size_t i) {
                codes[i] = steps[channel].Encode(look.cubeNodes[i]);
            });
        };
        head.cubeBytes = static_cast<std::uint32_t>(
            EncodeToFit(CubeShape(look), cubeStep, room.subspan(head.curveBytes), encoder, fill));
        DecodeNodes(look, codes);
    }
    look.codedVersion = kCodedVersion;
    std::memcpy(look.coded.data(), &head, sizeof head);
    std::fill(room.begin() + head.curveBytes + head.cubeBytes, room.end(), std::uint8_t{0});
}

std::uint32_t CubeStepOf(const StoredLook& look) noexcept
{
    const bool isCoded = look.codedVersion == kCodedVersion && look.cubeSize != 0;
    return isCoded ? StepOf(CubeBytes(look.coded)) : kFinestStep;
}

std::size_t CubeBytesOf(const StoredLook& look) noexcept
{
    return look.codedVersion == kCodedVersion ? HeadOf(look.coded).cubeBytes : 0;
}

} // namespace ReferenceRenderer
