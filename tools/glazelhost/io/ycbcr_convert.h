// Between an Image and the planes of a Y4M frame: Y, then Cb, then Cr, 8 bits a sample, rows
// top-down without padding. Pure: no windows.h.
// Tests: tests/tools/glazelhost/io/ycbcr_convert_test.cpp.
//
// With Kr and Kb of the matrix, Kg = 1 - Kr - Kb, and R, G, B from 0 to 1:
//   Y = Kr R + Kg G + Kb B,  Cb = (B - Y) / (2 - 2 Kb),  Cr = (R - Y) / (2 - 2 Kr)
// Limited codes are 16 + 219 Y and 128 + 224 C, full codes 255 Y and 128 + 255 C.
#pragma once

#include "tools/glazelhost/io/chroma_resample.h"
#include "tools/glazelhost/io/frame_io.h"
#include "tools/glazelhost/io/ycbcr_encoding.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Bytes of all planes of one frame.
std::size_t YCbCrFrameBytes(int width, int height, ChromaSampling sampling) noexcept;

// Converts frames of one size and encoding; keeps its working rows between them. Not thread-safe.
class YCbCrConverter
{
public:
    // 1 to kLargestSide each.
    YCbCrConverter(int width, int height, const YCbCrEncoding& encoding);

    std::size_t FrameBytes() const noexcept;

    // Chroma is interpolated linearly. Byte images get the nearest codes, clamped to 0 to 255;
    // Float images keep what lies outside 0 to 1. `image` gets size, type and opaque alpha.
    void Decode(const std::uint8_t* planes, Image& image, SampleType type);

    // Chroma is averaged where it has its samples. Codes are rounded to the nearest and clamped to
    // 0 to 255, so that head room and foot room of limited range survive; NaN becomes 0. Alpha is
    // dropped. `image` has the converter's size.
    void Encode(const Image& image, std::uint8_t* planes);

private:
    // A chroma plane's geometry; sites count only where the plane is of half size.
    struct Plane
    {
        std::size_t offset; // bytes from the beginning of the frame
        ChromaSite rowSite;
    };
    void LoadChromaRow(const std::uint8_t* planes, const Plane& plane, int y, float* full);
    void StoreChromaPlane(const std::vector<float>& rows, const Plane& plane, std::uint8_t* planes);
    template <typename Channel>
    void DecodeRows(const std::uint8_t* planes, Image& image);
    template <typename Channel>
    void EncodeRows(const Image& image, std::uint8_t* planes);

    int m_width;
    int m_height;
    YCbCrEncoding m_encoding;
    bool m_halfWidth;
    bool m_halfHeight;
    int m_chromaWidth;
    int m_chromaHeight;
    ChromaSite m_columnSite;
    Plane m_cb{};
    Plane m_cr{};

    // Chroma around 0, in codes: one row of half width, and a row of full width for each plane.
    std::vector<float> m_halfRow;
    std::vector<float> m_cbRow;
    std::vector<float> m_crRow;
    // While encoding: rows of chroma width for the whole height.
    std::vector<float> m_cbRows;
    std::vector<float> m_crRows;
};
