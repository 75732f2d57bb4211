// Names of numbered pictures: "shots/shot_%04d.png". Pure: no windows.h.
// Tests: tests/tools/glazelhost/media/sequence_pattern_test.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace GlazelHost
{

// %d is the number, %0Nd or N times # the number with zeros in front up to N digits, %% a per cent
// sign; the number is in the file's name, not in a folder's.
class SequencePattern
{
public:
    // None when the file name of `path` has no number: then it is an ordinary name, per cent signs
    // and all. Throws HostError (WrongUsage) for two numbers and for forms like %5d.
    static std::optional<SequencePattern> Parse(const std::string& path);

    // `number` >= 0.
    std::string PathOf(std::int64_t number) const;
    // The number of a file of this name (without folder); none for foreign names. The letters of
    // the name count without case, as Windows takes them.
    std::optional<std::int64_t> NumberOf(std::string_view fileName) const;

    const std::string& Path() const noexcept { return m_path; }
    // With its separator at the end; empty for the current folder.
    const std::string& Folder() const noexcept { return m_folder; }

private:
    SequencePattern() = default;
    std::string FileNameOf(std::int64_t number) const;

    std::string m_path;
    std::string m_folder;
    std::string m_before; // of the number, in the file name
    std::string m_after;
    std::size_t m_digits = 1; // at least so many
};

} // namespace GlazelHost
