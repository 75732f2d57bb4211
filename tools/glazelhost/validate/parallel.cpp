#include "tools/glazelhost/validate/parallel.h"

#include "support/win32/file_handle.h"
#include "tools/glazelhost/host_error.h"

#include <vector>

namespace GlazelHost
{

namespace
{

struct Task
{
    const std::function<void(unsigned)>* work;
    unsigned number;
};

DWORD WINAPI Run(void* parameter) noexcept
{
    const auto& task = *static_cast<const Task*>(parameter);
    (*task.work)(task.number);
    return 0;
}

} // namespace

void OnThreads(unsigned count, const std::function<void(unsigned)>& work)
{
    std::vector<Task> tasks;
    tasks.reserve(count);
    for (unsigned number = 0; number < count; ++number)
    {
        tasks.push_back({&work, number});
    }
    std::vector<FileHandle> threads;
    threads.reserve(count);
    for (Task& task : tasks)
    {
        threads.emplace_back(::CreateThread(nullptr, 0, Run, &task, 0, nullptr));
    }
    bool all = true;
    for (const FileHandle& thread : threads)
    {
        all = all && thread != nullptr;
        if (thread)
        {
            ::WaitForSingleObject(thread.get(), INFINITE);
        }
    }
    if (!all)
    {
        throw HostError("a thread", "the system does not start it", "end other programs");
    }
}

} // namespace GlazelHost
