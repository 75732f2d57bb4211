#include "tools/glazelhost/validate/machine_facts.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/plugin/library_file.h"

#include <windows.h>

#include <bcrypt.h>
#include <cpuid.h>

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>

namespace GlazelHost
{

namespace
{

template <typename Function>
Function* SystemFunction(const char* name) noexcept
{
    return std::bit_cast<Function*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name));
}

// The version functions of kernel32 tell what a program's manifest wants to hear.
std::string SystemVersion()
{
    RTL_OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    auto* const tell = SystemFunction<LONG WINAPI(RTL_OSVERSIONINFOW*)>("RtlGetVersion");
    if (tell == nullptr || tell(&version) != 0)
    {
        return "Windows";
    }
    return "Windows " + std::to_string(version.dwMajorVersion) + "." +
           std::to_string(version.dwMinorVersion) + "." + std::to_string(version.dwBuildNumber);
}

std::string WineVersion()
{
    auto* const tell = SystemFunction<const char*()>("wine_get_version");
    return tell != nullptr ? tell() : "";
}

std::string ProcessorName()
{
    std::array<unsigned, 12> name{};
    for (unsigned part = 0; part < 3; ++part)
    {
        unsigned* const words = &name[std::size_t{part} * 4];
        if (__get_cpuid(0x80000002U + part, &words[0], &words[1], &words[2], &words[3]) == 0)
        {
            return {};
        }
    }
    std::array<char, sizeof name + 1> text{};
    std::memcpy(text.data(), name.data(), sizeof name);
    return text.data();
}

std::string LocaleName()
{
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    ::GetUserDefaultLocaleName(name.data(), static_cast<int>(name.size()));
    return Utf8(name.data());
}

struct AlgorithmCloser
{
    void operator()(void* algorithm) const noexcept
    {
        ::BCryptCloseAlgorithmProvider(algorithm, 0);
    }
};

std::string Sha256(std::span<std::byte> bytes, const std::string& path)
{
    std::array<UCHAR, 32> hash{};
    BCRYPT_ALG_HANDLE opened = nullptr;
    const NTSTATUS found =
        ::BCryptOpenAlgorithmProvider(&opened, BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    const std::unique_ptr<void, AlgorithmCloser> algorithm(opened);
    if (found != 0 || ::BCryptHash(opened, nullptr, 0, reinterpret_cast<UCHAR*>(bytes.data()),
                                   static_cast<ULONG>(bytes.size()), hash.data(),
                                   static_cast<ULONG>(hash.size())) != 0)
    {
        throw HostError(path, "the system does not hash it", "use a newer Windows");
    }
    std::string text;
    for (const UCHAR byte : hash)
    {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", static_cast<unsigned>(byte));
        text += digits.data();
    }
    return text;
}

} // namespace

MachineFacts FactsOfThisMachine()
{
    SYSTEM_INFO system{};
    ::GetSystemInfo(&system);
    return {SystemVersion(), WineVersion(), ProcessorName(), system.dwNumberOfProcessors,
            LocaleName()};
}

JudgedFile FactsOfFile(const char* role, const std::string& path)
{
    const std::string full = FullPath(path);
    std::vector<std::byte> bytes = ReadWholeFile(full);
    return {role, full, FileVersion(full), Sha256(bytes, full)};
}

std::string TimeText()
{
    SYSTEMTIME now{};
    ::GetSystemTime(&now);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02uZ", unsigned{now.wYear},
                  unsigned{now.wMonth}, unsigned{now.wDay}, unsigned{now.wHour},
                  unsigned{now.wMinute}, unsigned{now.wSecond});
    return text.data();
}

} // namespace GlazelHost
