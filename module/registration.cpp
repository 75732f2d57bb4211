#include "module/registration.h"

#include "module/resource.h"
#include "platform/atl/atlregistrar.h"

#include <objbase.h>

#include <memory>
#include <type_traits>

namespace
{

constexpr UINT kScripts[]{IDR_PLUGIN, IDR_PLUGINPP};

// What the system writes for the type library's interfaces, for programs of both kinds, whoever had
// registered the same interface before.
constexpr const wchar_t* kInterfaces[]{
    L"Interface\\{E31FB81B-1335-11D1-8189-0000F87557DB}",
    L"Interface\\{A947DD96-CD97-4958-B026-BFE1CB8646EE}",
    L"Wow6432Node\\Interface\\{E31FB81B-1335-11D1-8189-0000F87557DB}",
    L"Wow6432Node\\Interface\\{A947DD96-CD97-4958-B026-BFE1CB8646EE}",
};

// Where those of somebody else stay meanwhile, under the same names.
constexpr wchar_t kReplaced[] = L"BrellinGlazel_x64.Replaced";

struct CloseKey
{
    using pointer = HKEY;
    void operator()(HKEY key) const noexcept { ::RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

// Null when there is none.
Key Open(HKEY root, const wchar_t* path) noexcept
{
    HKEY key = nullptr;
    const LSTATUS status = ::RegOpenKeyExW(root, path, 0, KEY_READ | KEY_WRITE, &key);
    return Key(status == ERROR_SUCCESS ? key : nullptr);
}

bool IsOurs(const Key& interfaceKey) noexcept
{
    wchar_t text[39] = L""; // as long as an identifier in braces
    DWORD size = sizeof text;
    GUID library{};
    return ::RegGetValueW(interfaceKey.get(), L"TypeLib", nullptr, RRF_RT_REG_SZ, nullptr, text,
                          &size) == ERROR_SUCCESS &&
           ::CLSIDFromString(text, &library) == S_OK && library == LIBID_MAINLib;
}

// The key `path` with all below it, in place of what is there.
LSTATUS Copy(HKEY fromRoot, HKEY toRoot, const wchar_t* path) noexcept
{
    ::RegDeleteTreeW(toRoot, path);
    HKEY copy = nullptr;
    const LSTATUS status =
        ::RegCreateKeyExW(toRoot, path, 0, nullptr, 0, KEY_WRITE, nullptr, &copy, nullptr);
    if (status != ERROR_SUCCESS)
    {
        return status;
    }
    return ::RegCopyTreeW(fromRoot, path, Key(copy).get());
}

// Before the system writes or removes the type library's interfaces, which it does whosever they
// are.
HRESULT KeepInterfacesOfOthers() noexcept
{
    for (const wchar_t* path : kInterfaces)
    {
        const Key present = Open(HKEY_CLASSES_ROOT, path);
        if (present == nullptr || IsOurs(present))
        {
            continue;
        }
        HKEY replaced = nullptr;
        LSTATUS status = ::RegCreateKeyExW(HKEY_CLASSES_ROOT, kReplaced, 0, nullptr, 0,
                                           KEY_READ | KEY_WRITE, nullptr, &replaced, nullptr);
        if (status == ERROR_SUCCESS)
        {
            status = Copy(HKEY_CLASSES_ROOT, Key(replaced).get(), path);
        }
        if (status != ERROR_SUCCESS)
        {
            return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
        }
    }
    return S_OK;
}

HRESULT GiveBackInterfaces() noexcept
{
    Key replaced = Open(HKEY_CLASSES_ROOT, kReplaced);
    if (replaced == nullptr)
    {
        return S_OK;
    }
    for (const wchar_t* path : kInterfaces)
    {
        const LSTATUS status = Open(replaced.get(), path) == nullptr
                                   ? ERROR_SUCCESS
                                   : Copy(replaced.get(), HKEY_CLASSES_ROOT, path);
        if (status != ERROR_SUCCESS)
        {
            return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
        }
    }
    replaced.reset();
    return HRESULT_FROM_WIN32(static_cast<DWORD>(::RegDeleteTreeW(HKEY_CLASSES_ROOT, kReplaced)));
}

HRESULT FirstFailure(HRESULT first, HRESULT second) noexcept
{
    return FAILED(first) ? first : second;
}

} // namespace

HRESULT RegisterModule(HINSTANCE module) noexcept
{
    for (const UINT script : kScripts)
    {
        const HRESULT result = AtlUpdateRegistryFromResource(module, script, true);
        if (FAILED(result))
        {
            return result;
        }
    }
    const HRESULT kept = KeepInterfacesOfOthers();
    return FAILED(kept) ? kept : AtlRegisterTypeLib(module);
}

HRESULT UnregisterModule(HINSTANCE module) noexcept
{
    HRESULT first = S_OK;
    for (const UINT script : kScripts)
    {
        first = FirstFailure(first, AtlUpdateRegistryFromResource(module, script, false));
    }
    // What cannot be kept aside is not to be removed either.
    const HRESULT kept = KeepInterfacesOfOthers();
    first = FirstFailure(first, FAILED(kept) ? kept : AtlUnregisterTypeLib(module));
    return FirstFailure(first, GiveBackInterfaces());
}
