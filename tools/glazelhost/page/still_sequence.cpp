#include "tools/glazelhost/page/still_sequence.h"

#include "tools/glazelhost/media/open_frames.h"

#include <utility>

namespace GlazelHost
{

StillSequence::StillSequence(std::string path, std::int64_t first, std::int64_t last,
                             SampleType type)
    : m_path(std::move(path)), m_first(first), m_last(last), m_type(type)
{
}

std::optional<StillSequence::Shown> StillSequence::Nearest(std::int64_t number, bool forwards,
                                                           std::string& remark) const
{
    for (; number >= m_first && number <= m_last; number += forwards ? 1 : -1)
    {
        try
        {
            SourceOptions options;
            options.path = m_path;
            options.firstNumber = number;
            const std::unique_ptr<FrameSource> source = OpenSource(options);
            Shown shown{number, {}, {}};
            if (source->Read(shown.image, m_type))
            {
                shown.name = source->FrameName();
                return shown;
            }
        }
        catch (const HostError& error)
        {
            if (remark.empty())
            {
                remark = error.what();
            }
        }
    }
    return std::nullopt;
}

} // namespace GlazelHost
