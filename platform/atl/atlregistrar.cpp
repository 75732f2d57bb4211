#include "platform/atl/atlregistrar.h"

#include "platform/atl/atlcomcli.h"

#include <oleauto.h>

#include <bit>
#include <memory>
#include <string>
#include <type_traits>

// Not in the unnamed namespace: the compiler would see that nothing here implements it and call
// nothing at all.
struct IRegistrar : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE AddReplacement(LPCOLESTR key, LPCOLESTR item) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearReplacements() = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegisterSz(LPCOLESTR file, LPCOLESTR id,
                                                         LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(LPCOLESTR file, LPCOLESTR id,
                                                           LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileRegister(LPCOLESTR file) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileUnregister(LPCOLESTR file) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringRegister(LPCOLESTR text) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringUnregister(LPCOLESTR text) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegister(LPCOLESTR file, UINT id, LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregister(LPCOLESTR file, UINT id,
                                                         LPCOLESTR type) = 0;
};

namespace
{

// clang-format off
constexpr CLSID kRegistrarClass{0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
constexpr IID kRegistrarInterface{0x44EC053B, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
// clang-format on

HRESULT LastError() noexcept
{
    return HRESULT_FROM_WIN32(::GetLastError());
}

HRESULT ModulePath(HINSTANCE module, std::wstring& path)
{
    constexpr std::size_t kLongestPath = 32768;
    for (std::size_t size = MAX_PATH; size <= kLongestPath; size *= 2)
    {
        path.resize(size);
        const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(size));
        if (length == 0)
        {
            return LastError();
        }
        if (length < size)
        {
            path.resize(length);
            return S_OK;
        }
    }
    return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
}

// A script writes a quote inside quotes as two.
std::wstring InsideQuotes(const std::wstring& text)
{
    std::wstring quoted;
    quoted.reserve(2 * text.size());
    for (const wchar_t character : text)
    {
        quoted.append(character == L'\'' ? 2 : 1, character);
    }
    return quoted;
}

struct FreeLibraryOf
{
    using pointer = HMODULE;
    void operator()(HMODULE library) const noexcept { ::FreeLibrary(library); }
};
using Library = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeLibraryOf>;

// The system's registrar. Where COM does not give it, because the class is not registered or COM is
// not started on this thread, it comes from its DLL, which `library` then keeps loaded.
HRESULT CreateRegistrar(CComPtr<IRegistrar>& registrar, Library& library)
{
    const HRESULT created =
        ::CoCreateInstance(kRegistrarClass, nullptr, CLSCTX_INPROC_SERVER, kRegistrarInterface,
                           reinterpret_cast<void**>(&registrar));
    if (SUCCEEDED(created))
    {
        return created;
    }
    library.reset(::LoadLibraryExW(L"atl.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    using GetClassObjectFunction = HRESULT WINAPI(REFCLSID, REFIID, void**);
    const auto getClassObject = library == nullptr
                                    ? nullptr
                                    : std::bit_cast<GetClassObjectFunction*>(
                                          ::GetProcAddress(library.get(), "DllGetClassObject"));
    if (getClassObject == nullptr)
    {
        return created;
    }
    CComPtr<IClassFactory> factory;
    const HRESULT found =
        getClassObject(kRegistrarClass, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    return SUCCEEDED(found) ? factory->CreateInstance(nullptr, kRegistrarInterface,
                                                      reinterpret_cast<void**>(&registrar))
                            : found;
}

HRESULT RunScript(HINSTANCE module, UINT id, bool registering)
{
    std::wstring path;
    HRESULT result = ModulePath(module, path);
    if (FAILED(result))
    {
        return result;
    }
    Library library; // outlives the registrar
    CComPtr<IRegistrar> registrar;
    result = CreateRegistrar(registrar, library);
    if (SUCCEEDED(result))
    {
        result = registrar->AddReplacement(L"Module", InsideQuotes(path).c_str());
    }
    if (SUCCEEDED(result))
    {
        result = registrar->AddReplacement(L"Module_Raw", path.c_str());
    }
    if (FAILED(result))
    {
        return result;
    }
    return registering ? registrar->ResourceRegister(path.c_str(), id, L"REGISTRY")
                       : registrar->ResourceUnregister(path.c_str(), id, L"REGISTRY");
}

HRESULT UpdateTypeLib(HINSTANCE module, bool registering)
{
    std::wstring path;
    HRESULT result = ModulePath(module, path);
    if (FAILED(result))
    {
        return result;
    }
    CComPtr<ITypeLib> library;
    result = ::LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library);
    if (FAILED(result))
    {
        return result;
    }
    if (registering)
    {
        return ::RegisterTypeLib(library, path.data(), nullptr);
    }
    TLIBATTR* attributes = nullptr;
    result = library->GetLibAttr(&attributes);
    if (FAILED(result))
    {
        return result;
    }
    result = ::UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum,
                                 attributes->wMinorVerNum, attributes->lcid, attributes->syskind);
    library->ReleaseTLibAttr(attributes);
    return result;
}

// Only strings can throw here.
template <typename Operation>
HRESULT Guarded(Operation&& operation) noexcept
{
    try
    {
        return operation();
    }
    catch (...)
    {
        return E_OUTOFMEMORY;
    }
}

} // namespace

HRESULT AtlUpdateRegistryFromResource(HINSTANCE module, UINT id, bool registering) noexcept
{
    return Guarded([&] { return RunScript(module, id, registering); });
}

HRESULT AtlRegisterTypeLib(HINSTANCE module) noexcept
{
    return Guarded([&] { return UpdateTypeLib(module, true); });
}

HRESULT AtlUnregisterTypeLib(HINSTANCE module) noexcept
{
    return Guarded([&] { return UpdateTypeLib(module, false); });
}
