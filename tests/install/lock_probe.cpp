// Keeps setup programs from something, until its standard input ends:
// foreign-mutex NAME   a mutex that nobody else may open, as one of another account is
// locked-key KEY       a key of HKEY_LOCAL_MACHINE whose values can be read, and nothing else done
// Ends with 0 when that could be done, with 1 when not, with 2 on wrong usage.
#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

namespace
{

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

int HoldLockedKey(const wchar_t* name)
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
    // Wine 8 lets DELETE pass whatever the list says, but not a look at the keys below, which
    // whoever deletes a key with them needs as well.
    if (!lock.AllowEverybody(KEY_QUERY_VALUE) ||
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

} // namespace

int wmain(int count, wchar_t** words)
{
    const std::wstring deed = count == 3 ? words[1] : L"";
    if (deed == L"foreign-mutex")
    {
        return HoldForeignMutex(words[2]);
    }
    if (deed == L"locked-key")
    {
        return HoldLockedKey(words[2]);
    }
    return 2;
}
