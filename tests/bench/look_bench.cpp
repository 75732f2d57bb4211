// What it costs to make a look ready for its first frame, and to blend two for a frame of an
// animation, beside a plain copy of its nodes. Prints medians and ratios and judges nothing.
#include "reference_renderer/core/table_coding.h"
#include "tests/bench/timing.h"
#include "tests/reference_renderer/core/lut_set.h"

#include <cstdio>
#include <cstring>
#include <vector>

using namespace ReferenceRenderer;

namespace
{

constexpr int kRuns = 31;

std::vector<std::uint8_t> RecordOfSet(const char* name, std::uint32_t size)
{
    for (const LutOfSet& lut : LutSet())
    {
        if (lut.name == name)
        {
            return RecordOf(CubeLook(CubeOf(size, lut.grading)));
        }
    }
    return {};
}

void Measure(const char* nameA, const char* nameB, std::uint32_t size)
{
    const std::vector<std::uint8_t> a = RecordOfSet(nameA, size);
    const std::vector<std::uint8_t> b = RecordOfSet(nameB, size);
    PreparedLook lookA;
    PreparedLook lookB;
    PreparedLook blend;
    TableEncoder encoder(NodeCount(kStoredCubeSize));
    std::vector<std::uint8_t> record(kRecordSize);
    lookA.Read(a);
    lookB.Read(b);

    const std::size_t bytes = 3 * NodeCount(size) * sizeof(float);
    std::vector<float> target(3 * NodeCount(size));
    const double copy = MedianMicroseconds(kRuns, [&] {
        std::memcpy(target.data(), lookA.Stored().cubeNodes.data(), bytes);
        asm volatile("" : : "r"(target.data()) : "memory"); // the copy must really happen
    });
    const double prepare =
        MedianMicroseconds(2 * kRuns,
                           [&] {
                               blend.Read(a);
                               blend.Read(b); // other tables, so that each is decoded
                           }) /
        2.0;
    double fraction = 0.0;
    const double mix = MedianMicroseconds(kRuns, [&] {
        fraction += 1.0 / 64.0;
        blend.ReadBlend(lookA, lookB, fraction, encoder);
        WriteRecord(blend.Stored(), RecordBytes(record.data(), kRecordSize));
    });
    std::printf("%2u points, %s and %s\n", static_cast<unsigned>(size), nameA, nameB);
    std::printf("  copy of the nodes %8.2f ms\n", copy / 1e3);
    std::printf("  prepare           %8.2f ms   ratio %6.1f\n", prepare / 1e3, prepare / copy);
    std::printf("  blend             %8.2f ms   ratio %6.1f\n", mix / 1e3, mix / copy);
}

} // namespace

int main()
{
    std::printf("one thread, medians of %d runs\n", kRuns);
    for (const std::uint32_t size : {33U, 65U})
    {
        Measure("film print", "identity", size);
        Measure("Cineon to display", "film print", size);
        Measure("Cineon to display", "LogC to display", size);
    }
    return 0;
}
