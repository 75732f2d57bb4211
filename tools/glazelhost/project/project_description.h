// What a project says of itself, beside the looks that it holds: a short JSON text.
// Pure: no windows.h. Tests: tests/tools/glazelhost/project/project_description_test.cpp.
#pragma once

#include "tools/glazelhost/project/keyframe_track.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// The newest form that this program reads, and the one that it writes.
inline constexpr std::int64_t kProjectVersion = 1;

// Tells whether a record is still the one that was stored.
struct RecordSeal
{
    std::uint64_t size = 0; // bytes
    std::uint32_t crc32 = 0;

    bool operator==(const RecordSeal&) const = default;
};

RecordSeal SealOf(std::span<const std::byte> record) noexcept;

struct ProjectDescription
{
    struct Key
    {
        KeyTime time;
        RecordSeal seal;
        bool operator==(const Key&) const = default;
    };

    Ease ease = Ease::Linear;
    RecordSeal look;       // the effect's own
    std::vector<Key> keys; // none: the look stands alone

    bool operator==(const ProjectDescription&) const = default;
};

// The text carries a seal of its own.
std::string TextOf(const ProjectDescription& description);

// Throws HostError, naming `path`, for a text that is no project's, from a newer version, or not as
// it was written.
ProjectDescription ParseProjectDescription(std::string_view text, const std::string& path);

// The lines of everybody who finds these.
[[noreturn]] void ThrowNoProject(const std::string& path);
[[noreturn]] void ThrowDamagedProject(const std::string& path, const std::string& what);

} // namespace GlazelHost
