// The tags and marks that picture files state their colours and resolution with, for their reader
// and their writer. Pure: no windows.h.
#pragma once

#include <cstdint>
#include <string_view>

namespace GlazelHost
{

// Of TIFF directories and EXIF blocks.
inline constexpr std::uint16_t kTagAcross = 282; // pixels for each unit
inline constexpr std::uint16_t kTagDown = 283;
inline constexpr std::uint16_t kTagUnit = 296;
inline constexpr std::uint32_t kUnitNone = 1;
inline constexpr std::uint32_t kUnitInch = 2;
inline constexpr std::uint32_t kUnitCentimetre = 3;
inline constexpr std::uint16_t kTagTransferFunction = 301;
inline constexpr std::uint16_t kTagWhitePoint = 318;
inline constexpr std::uint16_t kTagPrimaries = 319;
inline constexpr std::uint16_t kTagProfile = 34675;
inline constexpr std::uint16_t kTagExif = 34665; // points to the directory of the following ones
inline constexpr std::uint16_t kTagExifVersion = 36864;
inline constexpr std::uint16_t kTagColourSpace = 40961;
inline constexpr std::uint32_t kColourSpaceSrgb = 1;
inline constexpr std::uint32_t kColourSpaceAdobe = 2; // in no standard, but written
inline constexpr std::uint32_t kColourSpaceOther = 0xFFFF;
inline constexpr std::uint16_t kTagGamma = 42240;
inline constexpr std::uint16_t kTagInteroperability = 40965; // points to the one of the following
inline constexpr std::uint16_t kTagInteroperabilityIndex = 1;

// Of JPEG segments.
inline constexpr std::uint32_t kJpegJfif = 0xE0;
inline constexpr std::uint32_t kJpegExif = 0xE1;
inline constexpr std::uint32_t kJpegProfile = 0xE2;
inline constexpr std::string_view kJpegExifMark{"Exif\0\0", 6};
inline constexpr std::string_view kJpegProfileMark{"ICC_PROFILE\0", 12};

} // namespace GlazelHost
