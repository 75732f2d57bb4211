// Keeps setup programs from something, until its standard input ends:
// foreign-mutex NAME   a mutex that nobody else may open, as one of another account is
// locked-key KEY       a key of HKEY_LOCAL_MACHINE whose values can be read, and nothing else done
// read-only-key KEY    one that can be read, with all below it
// volatile-key KEY     a new one in which only values can be written, and no lasting keys
// Ends with 0 when that could be done, with 1 when not, with 2 on wrong usage. In the place of
// regsvr32, which is started with /s FILE, it ends the setup program with kEndedCode.
#include <windows.h>

#include <tlhelp32.h>

#include <cstdio>
#include <string>
#include <vector>

namespace
{

constexpr UINT kEndedCode = 77;

void Hold()
{
    std::puts("holding");
    std::fflush(stdout);
    while (std::fgetc(stdin) != EOF)
    {
    }
}

// A DACL with room for one entry; empty, it lets nobody in. The descriptor points to it.
class Lock
{
public:
    Lock()
    {
        ::InitializeAcl(&m_list.acl, sizeof m_list, ACL_REVISION);
        ::InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION);
        ::SetSecurityDescriptorDacl(&m_descriptor, TRUE, &m_list.acl, FALSE);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    // False when the system refuses.
    bool AllowEverybody(DWORD access)
    {
        DWORD size = sizeof m_everybody;
        return ::CreateWellKnownSid(WinWorldSid, nullptr, m_everybody, &size) &&
               ::AddAccessAllowedAce(&m_list.acl, ACL_REVISION, access, m_everybody);
    }

    PSECURITY_DESCRIPTOR Descriptor() { return &m_descriptor; }

private:
    struct
    {
        ACL acl;
        BYTE entries[sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE];
    } m_list{};
    BYTE m_everybody[SECURITY_MAX_SID_SIZE]{};
    SECURITY_DESCRIPTOR m_descriptor{};
};

int HoldForeignMutex(const wchar_t* name)
{
    Lock lock;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, lock.Descriptor(), FALSE};
    if (::CreateMutexW(&attributes, FALSE, name) == nullptr)
    {
        return 1;
    }
    Hold();
    return 0; // the system closes the handle
}

int HoldLockedKey(const wchar_t* name, DWORD access)
{
    constexpr DWORD kRights = READ_CONTROL | WRITE_DAC;
    HKEY key = nullptr;
    DWORD size = 0;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, name, 0, kRights, &key) != ERROR_SUCCESS ||
        ::RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, nullptr, &size) !=
            ERROR_INSUFFICIENT_BUFFER)
    {
        return 1;
    }
    std::vector<BYTE> before(size);
    Lock lock;
    if (!lock.AllowEverybody(access) ||
        ::RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, before.data(), &size) !=
            ERROR_SUCCESS ||
        ::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, lock.Descriptor()) != ERROR_SUCCESS)
    {
        return 1;
    }
    Hold();
    return ::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, before.data()) == ERROR_SUCCESS ? 0
                                                                                               : 1;
}

int HoldVolatileKey(const wchar_t* name)
{
    HKEY key = nullptr;
    if (::RegCreateKeyExW(HKEY_LOCAL_MACHINE, name, 0, nullptr, REG_OPTION_VOLATILE, KEY_READ,
                          nullptr, &key, nullptr) != ERROR_SUCCESS)
    {
        return 1;
    }
    Hold();
    return ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, name) == ERROR_SUCCESS ? 0 : 1;
}

int EndParent()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    BOOL found = ::Process32FirstW(snapshot, &entry);
    while (found && entry.th32ProcessID != ::GetCurrentProcessId())
    {
        found = ::Process32NextW(snapshot, &entry);
    }
    const HANDLE parent =
        found ? ::OpenProcess(PROCESS_TERMINATE, FALSE, entry.th32ParentProcessID) : nullptr;
    return ::TerminateProcess(parent, kEndedCode) ? 0 : 1; // the system closes the handles
}

} // namespace

int wmain(int count, wchar_t** words)
{
    const std::wstring deed = count == 3 ? words[1] : L"";
    if (deed == L"foreign-mutex")
    {
        return HoldForeignMutex(words[2]);
    }
    // Wine 8 lets DELETE pass whatever the list says, but not a look at the keys below, which
    // whoever deletes a key with them needs as well.
    if (deed == L"locked-key")
    {
        return HoldLockedKey(words[2], KEY_QUERY_VALUE);
    }
    if (deed == L"read-only-key")
    {
        return HoldLockedKey(words[2], KEY_READ);
    }
    if (deed == L"volatile-key")
    {
        return HoldVolatileKey(words[2]);
    }
    return deed == L"/s" ? EndParent() : 2;
}
