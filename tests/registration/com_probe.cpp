// Does one thing with COM for the tests that register the plug-in, and prints what came of it.
// Ends with 0 when the thing could be tried, whatever its result; with 2 on wrong usage.
#include "platform/atl/atlcomcli.h"
#include "tests/registration/type_library_text.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <array>
#include <cstdio>
#include <cwchar>
#include <string>

namespace
{

void Print(const char* what, HRESULT result)
{
    std::printf("%s %08lX\n", what, static_cast<unsigned long>(result));
}

// A class identifier in braces, or a ProgID.
HRESULT ClassOf(const wchar_t* name, CLSID& classId)
{
    return name[0] == L'{' ? ::CLSIDFromString(name, &classId) : ::CLSIDFromProgID(name, &classId);
}

CComPtr<IUnknown> Create(const wchar_t* name)
{
    CLSID classId{};
    HRESULT result = ClassOf(name, classId);
    CComPtr<IUnknown> object;
    if (SUCCEEDED(result))
    {
        result = ::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                    reinterpret_cast<void**>(&object));
    }
    Print("create", result);
    return object;
}

// The file that serves the class, in UTF-8 for whoever reads the output.
void PrintModule()
{
    WCHAR path[MAX_PATH] = L"";
    ::GetModuleFileNameW(::GetModuleHandleW(L"GlazelDX_x64.dll"), path, MAX_PATH);
    std::array<char, 4 * MAX_PATH> text{};
    ::WideCharToMultiByte(CP_UTF8, 0, path, -1, text.data(), static_cast<int>(text.size()), nullptr,
                          nullptr);
    std::printf("module %s\n", text.data());
}

// Reads and writes the effect's progress as a script does.
void UseDispatch(IUnknown* object)
{
    CComPtr<IDispatch> dispatch;
    Print("dispatch", object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)));
    if (dispatch == nullptr)
    {
        return;
    }
    UINT count = 9;
    Print("type-info-count", dispatch->GetTypeInfoCount(&count));
    std::printf("count %u\n", count);
    CComPtr<ITypeInfo> info;
    Print("type-info", dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info));
    WCHAR progress[] = L"Progress";
    LPOLESTR names[] = {progress};
    DISPID id = DISPID_UNKNOWN;
    Print("name", dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    std::printf("id %ld\n", id);
    VARIANT value;
    ::VariantInit(&value);
    value.vt = VT_R4;
    value.fltVal = 0.25F;
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS put{&value, &named, 1, 1};
    Print("put", dispatch->Invoke(10001, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &put,
                                  nullptr, nullptr, nullptr));
    DISPPARAMS none{};
    VARIANT answer;
    ::VariantInit(&answer);
    Print("get", dispatch->Invoke(10001, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                  &answer, nullptr, nullptr));
    std::printf("value %g\n", answer.vt == VT_R4 ? static_cast<double>(answer.fltVal) : -1.0);
}

// Until whoever started this program closes its standard input.
void Hold()
{
    std::puts("holding");
    std::fflush(stdout);
    while (std::fgetc(stdin) != EOF)
    {
    }
}

// As a user who is no administrator. The exit code of the program, or 100 when it could not start.
DWORD RunWithoutRights(std::wstring command)
{
    constexpr DWORD kNotStarted = 100;
    std::array<BYTE, SECURITY_MAX_SID_SIZE> administrators{};
    DWORD size = static_cast<DWORD>(administrators.size());
    HANDLE own = nullptr;
    HANDLE restricted = nullptr;
    SID_AND_ATTRIBUTES denied{administrators.data(), 0};
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators.data(), &size) ||
        !::OpenProcessToken(::GetCurrentProcess(), TOKEN_ALL_ACCESS, &own) ||
        !::CreateRestrictedToken(own, 0, 1, &denied, 0, nullptr, 0, nullptr, &restricted) ||
        !::CreateProcessAsUserW(restricted, nullptr, command.data(), nullptr, nullptr, FALSE, 0,
                                nullptr, nullptr, &startup, &process))
    {
        return kNotStarted;
    }
    DWORD code = kNotStarted;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::GetExitCodeProcess(process.hProcess, &code);
    return code; // the system closes the handles
}

int Run(int count, wchar_t** words)
{
    const std::wstring deed = count == 3 ? words[1] : L"";
    if (deed == L"hold")
    {
        const CComPtr<IUnknown> object = Create(words[2]);
        Hold();
        return 0;
    }
    if (deed == L"hold-mutex")
    {
        const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, words[2]);
        Print("mutex", mutex != nullptr ? S_OK : E_FAIL);
        Hold();
        return 0; // the system closes the handle
    }
    if (deed == L"hold-file")
    {
        const HANDLE file = ::CreateFileW(words[2], GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, 0, nullptr);
        Print("file", file != INVALID_HANDLE_VALUE ? S_OK : E_FAIL);
        Hold();
        return 0; // the system closes the handle
    }
    if (deed == L"run-without-rights")
    {
        std::printf("exit %lu\n", static_cast<unsigned long>(RunWithoutRights(words[2])));
        return 0;
    }
    if (deed == L"create" || deed == L"dispatch")
    {
        const CComPtr<IUnknown> object = Create(words[2]);
        if (object != nullptr)
        {
            PrintModule();
        }
        if (object != nullptr && deed == L"dispatch")
        {
            UseDispatch(object);
        }
        return 0;
    }
    CComPtr<ITypeLib> library;
    if (deed == L"typelib")
    {
        Print("load", ::LoadTypeLibEx(words[2], REGKIND_NONE, &library));
        if (library != nullptr)
        {
            std::fputs(TextOf(library).c_str(), stdout);
        }
        return 0;
    }
    if (deed == L"register-typelib")
    {
        Print("register", ::LoadTypeLibEx(words[2], REGKIND_REGISTER, &library));
        return 0;
    }
    if (deed == L"unregister-typelib")
    {
        HRESULT result = ::LoadTypeLibEx(words[2], REGKIND_NONE, &library);
        TLIBATTR* attributes = nullptr;
        if (SUCCEEDED(result) && SUCCEEDED(result = library->GetLibAttr(&attributes)))
        {
            result = ::UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum,
                                         attributes->wMinorVerNum, attributes->lcid,
                                         attributes->syskind);
            library->ReleaseTLibAttr(attributes);
        }
        Print("unregister", result);
        return 0;
    }
    return 2;
}

} // namespace

int wmain(int count, wchar_t** words)
{
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)))
    {
        return 3;
    }
    const int code = Run(count, words);
    ::CoUninitialize();
    return code;
}
