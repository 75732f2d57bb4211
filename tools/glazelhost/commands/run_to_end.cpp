#include "tools/glazelhost/commands/commands.h"

#include "support/win32/com_scope.h"
#include "tools/glazelhost/one_line.h"
#include "tools/glazelhost/ui/console.h"
#include "tools/glazelhost/ui/reporter.h"

#include <exception>
#include <new>
#include <variant>

namespace GlazelHost
{

void RunCommand(const TextCommand& command, Reporter& /*reporter*/)
{
    WriteStandardOutput(command.text);
}

ExitCode ResultOf(Reporter& reporter, const std::function<void()>& operation)
{
    try
    {
        operation();
        return ExitCode::Done;
    }
    catch (const HostError& error)
    {
        reporter.Fail(OneLine(error.what()));
        return error.Code();
    }
    catch (const std::bad_alloc&)
    {
        reporter.Fail("this job: there is not enough memory; render a smaller picture");
    }
    catch (const std::exception& error)
    {
        reporter.Fail("this job: " + OneLine(error.what()) + "; report this to the makers");
    }
    return ExitCode::Failed;
}

ExitCode RunToEnd(const Command& command, Reporter& reporter)
{
    return ResultOf(reporter, [&] {
        const ComScope com(std::holds_alternative<PageCommand>(command));
        std::visit([&](const auto& chosen) { RunCommand(chosen, reporter); }, command);
    });
}

} // namespace GlazelHost
