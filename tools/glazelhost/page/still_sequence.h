// The pictures of a sequence, one at a time, as the page's window steps through them.
// Tests: tests/tools/glazelhost/page/page_command_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <optional>
#include <string>

namespace GlazelHost
{

// On one thread, which has initialised COM.
class StillSequence
{
public:
    // `path` names a sequence with pictures of the numbers `first` to `last`.
    StillSequence(std::string path, std::int64_t first, std::int64_t last, SampleType type);

    struct Shown
    {
        std::int64_t number = 0;
        std::string name; // of the file
        Image image;
    };
    // The first that can be read of `number` and those beyond it, forwards or back; none when there
    // is none. `remark` gets why the first one on the way could not be read, where that was so.
    std::optional<Shown> Nearest(std::int64_t number, bool forwards, std::string& remark) const;

    std::int64_t First() const noexcept { return m_first; }
    std::int64_t Last() const noexcept { return m_last; }

private:
    std::string m_path;
    std::int64_t m_first;
    std::int64_t m_last;
    SampleType m_type;
};

} // namespace GlazelHost
