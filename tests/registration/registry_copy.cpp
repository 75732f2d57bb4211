// registry_copy FOLDER: writes all lasting keys of the registry to files in FOLDER, which must not
// hold them yet: machine and users. The system does each in one step, in a form of its own. Ends
// with 0, or prints what failed and ends with 1; with 2 on wrong usage.
#include <windows.h>

#include <array>
#include <cstdio>
#include <string>

namespace
{

struct Root
{
    HKEY key;
    const wchar_t* file;
};

const std::array kRoots{Root{HKEY_LOCAL_MACHINE, L"machine"}, Root{HKEY_USERS, L"users"}};

// False when the system refuses.
bool TakeRightToSave()
{
    HANDLE token = nullptr;
    TOKEN_PRIVILEGES rights{1, {{{}, SE_PRIVILEGE_ENABLED}}};
    return ::OpenProcessToken(::GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, &token) &&
           ::LookupPrivilegeValueW(nullptr, L"SeBackupPrivilege", &rights.Privileges[0].Luid) &&
           ::AdjustTokenPrivileges(token, FALSE, &rights, 0, nullptr, nullptr) &&
           ::GetLastError() == ERROR_SUCCESS; // the system closes the handle
}

} // namespace

int wmain(int count, wchar_t** words)
{
    if (count != 2)
    {
        return 2;
    }
    if (!TakeRightToSave())
    {
        std::printf("no right to save: %lu\n", ::GetLastError());
        return 1;
    }
    for (const Root& root : kRoots)
    {
        const std::wstring path = std::wstring(words[1]) + L"\\" + root.file;
        const LSTATUS status = ::RegSaveKeyW(root.key, path.c_str(), nullptr);
        if (status != ERROR_SUCCESS)
        {
            std::printf("%ls cannot be saved: %ld\n", root.file, status);
            return 1;
        }
    }
    return 0;
}
