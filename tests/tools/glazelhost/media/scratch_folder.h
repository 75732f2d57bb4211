// A folder of its own for one test, and what tests do with files and errors.
#pragma once

#include "support/win32/file_handle.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace GlazelHost
{

class ScratchFolder
{
public:
    ScratchFolder()
    {
        static unsigned counter = 0;
        wchar_t temporary[MAX_PATH + 1];
        ::GetTempPathW(MAX_PATH + 1, temporary);
        const std::wstring start = std::wstring(temporary) + L"glazelhost-test-" +
                                   std::to_wstring(::GetCurrentProcessId()) + L'-';
        bool made = false;
        do // past what a test that was ended left under the number of its process
        {
            m_path = start + std::to_wstring(++counter);
            made = ::CreateDirectoryW(m_path.c_str(), nullptr);
        } while (!made && ::GetLastError() == ERROR_ALREADY_EXISTS);
        EXPECT_TRUE(made);
    }
    ~ScratchFolder()
    {
        for (const std::wstring& name : Names())
        {
            ::DeleteFileW((m_path + L'\\' + name).c_str());
        }
        EXPECT_TRUE(::RemoveDirectoryW(m_path.c_str()));
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // Plain characters only, as the folder of temporary files of the test prefix has.
    std::string operator/(const std::string& name) const
    {
        std::string path;
        for (const wchar_t c : m_path)
        {
            path += static_cast<char>(c);
        }
        return path + '\\' + name;
    }

    std::vector<std::wstring> Names() const
    {
        std::vector<std::wstring> names;
        WIN32_FIND_DATAW found{};
        const FindHandle search(::FindFirstFileW((m_path + L"\\*").c_str(), &found));
        if (search.get() == INVALID_HANDLE_VALUE)
        {
            return names;
        }
        do
        {
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            {
                names.emplace_back(found.cFileName);
            }
        } while (::FindNextFileW(search.get(), &found) != 0);
        return names;
    }

    void Put(const std::string& name, const std::string& content) const
    {
        const FileHandle file(::CreateFileA((*this / name).c_str(), GENERIC_WRITE, 0, nullptr,
                                            CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD count = 0;
        ASSERT_TRUE(::WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()),
                                &count, nullptr));
    }

    std::string Content(const std::string& name) const
    {
        const FileHandle file(::CreateFileA((*this / name).c_str(), GENERIC_READ,
                                            FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file.get() == INVALID_HANDLE_VALUE)
        {
            return "(not there)";
        }
        std::string content(::GetFileSize(file.get(), nullptr), '\0');
        DWORD count = 0;
        EXPECT_TRUE(::ReadFile(file.get(), content.data(), static_cast<DWORD>(content.size()),
                               &count, nullptr));
        return content;
    }

private:
    std::wstring m_path;
};

// The line of the HostError that `operation` throws.
inline std::string ErrorOf(const std::function<void()>& operation)
{
    try
    {
        operation();
    }
    catch (const HostError& error)
    {
        const std::string line = error.what();
        EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
        return line;
    }
    return "no error";
}

inline bool Says(const std::string& message, const std::string& part)
{
    return message.find(part) != std::string::npos;
}

} // namespace GlazelHost
