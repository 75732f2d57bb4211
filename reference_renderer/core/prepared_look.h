// A look made ready for pixels: tables decoded, the first steps of 8-bit values looked up, and the
// row functions chosen.
// Pure: no windows.h. Tests: tests/reference_renderer/core/prepared_look_test.cpp.
#pragma once

#include "reference_renderer/core/code_look.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/lut_sampling.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ReferenceRenderer
{

class PreparedLook;
class TableEncoder;

// Renders `width` pixels of blue, green, red, alpha from `source` to `target`, which are the same
// memory or do not overlap. Alpha is copied as it is.
using RowFunction = void(const PreparedLook& look, const std::byte* source, std::byte* target,
                         std::size_t width);

// Allocates in its constructor only. Not thread-safe while it is read into; any thread may render
// with it afterwards.
class PreparedLook
{
public:
    PreparedLook() = default;
    PreparedLook(const PreparedLook&) = delete; // its views point into itself
    PreparedLook& operator=(const PreparedLook&) = delete;

    // Anything but Usable leaves a neutral look without tables.
    RecordState Read(std::span<const std::uint8_t> bytes) noexcept;
    // What reading the record of the blend of two other looks gives.
    void ReadBlend(const PreparedLook& a, const PreparedLook& b, double fraction,
                   TableEncoder& encoder) noexcept;

    const StoredLook& Stored() const noexcept { return m_stored; }
    const CurveView& CurvesView() const noexcept { return m_curves; }
    const CubeView& CubesView() const noexcept { return m_cube; }
    // After slope, offset and power.
    const ValuesOfCodes& FirstSteps() const noexcept { return m_firstSteps; }
    const CodeLook& Codes() const noexcept { return m_codes; }

    // One value through the tables at full strength; the value itself when there are none.
    Rgb SampleTables(const Rgb& value) const noexcept;
    // One display value through the whole look.
    Rgb Grade(const Rgb& value) const noexcept;

    // 8 bits per channel, 4 bytes a pixel, rounded to nearest.
    RowFunction* Row8() const noexcept { return m_row8; }
    // Floats, 16 bytes a pixel. Colours come out finite: NaN counts as 0, infinities as the largest
    // float. Linear rows are encoded with the sRGB curve before the look and decoded after it.
    RowFunction* RowFloat(bool linear) const noexcept;

private:
    void Prepare() noexcept;

    StoredLook m_stored;
    CurveView m_curves;
    CubeView m_cube;
    ValuesOfCodes m_firstSteps{};
    CodeLook m_codes;
    RowFunction* m_row8 = nullptr;
};

} // namespace ReferenceRenderer
