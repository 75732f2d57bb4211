// The one error of the host program: a line for the user and an exit code.
// Pure: no windows.h.
#pragma once

#include <stdexcept>
#include <string>

namespace GlazelHost
{

enum class ExitCode
{
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
    OverWarning = 3, // compared pictures differ by more than --warn-over
    OverLimit = 4,   // and by more than --fail-over
};

// `what` names the file or object, `why` the cause in words, `remedy` what the user can do. The
// message is one line in UTF-8 without a final stop or line feed: "WHAT: WHY; REMEDY".
class HostError : public std::runtime_error
{
public:
    HostError(const std::string& what, const std::string& why, const std::string& remedy,
              ExitCode code = ExitCode::Failed)
        : std::runtime_error(what + ": " + why + "; " + remedy), m_code(code)
    {
    }
    // A line that somebody else has put together already.
    explicit HostError(const std::string& line, ExitCode code = ExitCode::Failed)
        : std::runtime_error(line), m_code(code)
    {
    }
    ExitCode Code() const noexcept { return m_code; }

private:
    ExitCode m_code;
};

} // namespace GlazelHost
