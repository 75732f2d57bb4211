// How pixels are graded. Pure: no windows.h.
#pragma once

namespace ReferenceRenderer
{

enum class PixelKind
{
    Codes,        // 8 bits a channel; never linear light
    Floats,       // display values
    LinearFloats, // linear light
};

} // namespace ReferenceRenderer
