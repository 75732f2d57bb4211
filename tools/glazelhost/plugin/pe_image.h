// Reads what the host needs of an executable image: for which machine it is, what it imports and
// what it exports.
// Pure: no windows.h; works on a file's bytes and on a loaded module's memory, and on damaged ones
// without reading outside them. Tests: tests/tools/glazelhost/plugin/pe_image_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

inline constexpr std::uint16_t kMachineX64 = 0x8664;
inline constexpr std::uint16_t kMachineX86 = 0x014C;
inline constexpr std::uint16_t kMachineArm64 = 0xAA64;

// One imported function.
struct ImportSlot
{
    std::string function;     // empty when imported by number
    std::uint32_t slotOffset; // of the 8-byte address slot, inside a loaded module, from its start
};

struct ImportedLibrary
{
    std::string name; // "KERNEL32.dll"
    std::vector<ImportSlot> slots;
};

struct PeImage
{
    std::uint16_t machine = 0;
    bool isDll = false;
    // Only of 64-bit images. Cut where the tables are damaged.
    std::vector<ImportedLibrary> imports;
    std::vector<ImportedLibrary> delayedImports; // loaded at the first call: may be missing
    std::vector<std::string> exports;            // those that have a name
};

enum class PeLayout
{
    File,   // sections stand where the file has them
    Loaded, // sections stand at their addresses
};

// None when the bytes are not an executable image.
std::optional<PeImage> ReadPeImage(std::span<const std::byte> bytes, PeLayout layout);

// "32-bit (x86)", "64-bit (x64)", ...
std::string MachineName(std::uint16_t machine);

} // namespace GlazelHost
