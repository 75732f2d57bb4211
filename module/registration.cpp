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
LSTATUS Open(HKEY root, const wchar_t* path, Key& key) noexcept
{
    HKEY opened = nullptr;
    const LSTATUS status = ::RegOpenKeyExW(root, path, 0, KEY_READ, &opened);
    key.reset(opened);
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_KEY_DELETED ? ERROR_SUCCESS : status;
}

// The type library for which the system wrote an interface; GUID_NULL when that does not stand
// there.
LSTATUS ReadLibrary(const Key& interfaceKey, GUID& library) noexcept
{
    library = GUID_NULL;
    wchar_t text[39] = L""; // as long as an identifier in braces
    DWORD size = sizeof text;
    const LSTATUS status = ::RegGetValueW(interfaceKey.get(), L"TypeLib", nullptr, RRF_RT_REG_SZ,
                                          nullptr, text, &size);
    if (status == ERROR_FILE_NOT_FOUND || status == ERROR_MORE_DATA ||
        status == ERROR_UNSUPPORTED_TYPE)
    {
        return ERROR_SUCCESS;
    }
    if (status == ERROR_SUCCESS && FAILED(::CLSIDFromString(text, &library)))
    {
        library = GUID_NULL;
    }
    return status;
}

LSTATUS Remove(HKEY root, const wchar_t* path) noexcept
{
    const LSTATUS status = ::RegDeleteTreeW(root, path);
    return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

// The key `path` with all below it, in place of what is there; whole or not at all.
LSTATUS Copy(HKEY fromRoot, HKEY toRoot, const wchar_t* path) noexcept
{
    LSTATUS status = Remove(toRoot, path);
    HKEY copy = nullptr;
    if (status == ERROR_SUCCESS)
    {
        status = ::RegCreateKeyExW(toRoot, path, 0, nullptr, 0, KEY_WRITE, nullptr, &copy, nullptr);
    }
    if (status == ERROR_SUCCESS)
    {
        status = ::RegCopyTreeW(fromRoot, path, Key(copy).get());
        if (status != ERROR_SUCCESS)
        {
            ::RegDeleteTreeW(toRoot, path);
        }
    }
    return status;
}

LSTATUS KeepIfOfOthers(const wchar_t* path) noexcept
{
    Key present;
    LSTATUS status = Open(HKEY_CLASSES_ROOT, path, present);
    GUID library = LIBID_MAINLib;
    if (status == ERROR_SUCCESS && present != nullptr)
    {
        status = ReadLibrary(present, library);
    }
    if (status != ERROR_SUCCESS || library == LIBID_MAINLib)
    {
        return status;
    }
    HKEY created = nullptr;
    status = ::RegCreateKeyExW(HKEY_CLASSES_ROOT, kReplaced, 0, nullptr, 0, KEY_READ | KEY_WRITE,
                               nullptr, &created, nullptr);
    const Key replaced(created);
    Key kept;
    if (status == ERROR_SUCCESS && library == GUID_NULL)
    {
        status = Open(replaced.get(), path, kept);
    }
    // A key that names no library is what is left of giving one back that failed: the kept one
    // counts.
    return status == ERROR_SUCCESS && kept == nullptr
               ? Copy(HKEY_CLASSES_ROOT, replaced.get(), path)
               : status;
}

LSTATUS GiveBack(const Key& replaced, const wchar_t* path) noexcept
{
    Key kept;
    const LSTATUS status = Open(replaced.get(), path, kept);
    return status == ERROR_SUCCESS && kept != nullptr
               ? Copy(replaced.get(), HKEY_CLASSES_ROOT, path)
               : status;
}

// Before the system writes or removes the type library's interfaces, which it does whosever they
// are.
HRESULT KeepInterfacesOfOthers() noexcept
{
    LSTATUS status = ERROR_SUCCESS;
    for (const wchar_t* path : kInterfaces)
    {
        if (status == ERROR_SUCCESS)
        {
            status = KeepIfOfOthers(path);
        }
    }
    return HRESULT_FROM_WIN32(status);
}

HRESULT GiveBackInterfaces() noexcept
{
    Key replaced;
    LSTATUS status = Open(HKEY_CLASSES_ROOT, kReplaced, replaced);
    for (const wchar_t* path : kInterfaces)
    {
        if (status == ERROR_SUCCESS && replaced != nullptr)
        {
            status = GiveBack(replaced, path);
        }
    }
    replaced.reset();
    if (status == ERROR_SUCCESS)
    {
        status = Remove(HKEY_CLASSES_ROOT, kReplaced);
    }
    return HRESULT_FROM_WIN32(status);
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
