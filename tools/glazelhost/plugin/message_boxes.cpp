#include "tools/glazelhost/plugin/message_boxes.h"

#include "support/win32/slim_lock.h"
#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/one_line.h"
#include "tools/glazelhost/plugin/pe_image.h"

#include <mutex>
#include <psapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

namespace GlazelHost
{

namespace
{

SlimLock recordLock;
std::vector<std::string> recordedTexts; // guarded by recordLock
std::atomic<bool> boxesAppear = false;

void Record(const std::wstring& text) noexcept
{
    try
    {
        std::string line = OneLine(Utf8(text));
        const std::lock_guard guard(recordLock);
        recordedTexts.push_back(std::move(line));
    }
    catch (...)
    {
        // Out of memory in foreign code's call: the box is answered without its text.
        return;
    }
}

std::wstring FromAnsi(const char* text)
{
    if (text == nullptr)
    {
        return {};
    }
    const int length = ::MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(length, 1)), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), length);
    wide.pop_back(); // the terminator
    return wide;
}

std::wstring FromWide(const wchar_t* text)
{
    return text != nullptr ? text : L"";
}

// The button that changes least: cancelling where there is such a button, else "no", else the only
// one.
int AnswerTo(UINT type) noexcept
{
    switch (type & MB_TYPEMASK)
    {
    case MB_OK:
        return IDOK;
    case MB_YESNO:
        return IDNO;
    case MB_ABORTRETRYIGNORE:
        return IDABORT;
    default:
        return IDCANCEL;
    }
}

template <typename Character>
std::wstring TextFrom(const Character* text)
{
    if constexpr (std::is_same_v<Character, char>)
    {
        return FromAnsi(text);
    }
    else
    {
        return FromWide(text);
    }
}

template <typename Character>
int WINAPI RecordBox(HWND, const Character* text, const Character*, UINT type) noexcept
{
    try
    {
        Record(TextFrom(text));
    }
    catch (...)
    {
        return AnswerTo(type);
    }
    return AnswerTo(type);
}

template <typename Character>
int WINAPI RecordBoxEx(HWND owner, const Character* text, const Character* caption, UINT type,
                       WORD) noexcept
{
    return RecordBox(owner, text, caption, type);
}

template <typename Parameters>
int WINAPI RecordBoxIndirect(const Parameters* parameters) noexcept
{
    using Character = std::remove_cvref_t<decltype(*parameters->lpszText)>;
    if (parameters == nullptr)
    {
        return 0;
    }
    const Character* text = IS_INTRESOURCE(parameters->lpszText) ? nullptr : parameters->lpszText;
    return RecordBox<Character>(nullptr, text, nullptr, parameters->dwStyle);
}

struct Replacement
{
    const char* function;
    std::uint64_t address;
};

// Cannot be constexpr: addresses of functions are known when the program is loaded.
const std::array kReplacements{
    Replacement{"MessageBoxA", std::bit_cast<std::uint64_t>(&RecordBox<char>)},
    Replacement{"MessageBoxW", std::bit_cast<std::uint64_t>(&RecordBox<wchar_t>)},
    Replacement{"MessageBoxExA", std::bit_cast<std::uint64_t>(&RecordBoxEx<char>)},
    Replacement{"MessageBoxExW", std::bit_cast<std::uint64_t>(&RecordBoxEx<wchar_t>)},
    Replacement{"MessageBoxIndirectA",
                std::bit_cast<std::uint64_t>(&RecordBoxIndirect<MSGBOXPARAMSA>)},
    Replacement{"MessageBoxIndirectW",
                std::bit_cast<std::uint64_t>(&RecordBoxIndirect<MSGBOXPARAMSW>)},
};

std::span<std::byte> MemoryOf(HMODULE module)
{
    MODULEINFO info{};
    if (!::GetModuleInformation(::GetCurrentProcess(), module, &info, sizeof(info)))
    {
        return {};
    }
    return {static_cast<std::byte*>(info.lpBaseOfDll), info.SizeOfImage};
}

void Patch(std::byte* slot, std::uint64_t address)
{
    DWORD old = 0;
    if (::VirtualProtect(slot, sizeof(address), PAGE_READWRITE, &old))
    {
        std::memcpy(slot, &address, sizeof(address));
        ::VirtualProtect(slot, sizeof(address), old, &old);
    }
}

bool IsInside(const std::wstring& path, const std::wstring& folder)
{
    return path.size() > folder.size() &&
           ::CompareStringOrdinal(path.data(), static_cast<int>(folder.size()), folder.data(),
                                  static_cast<int>(folder.size()), TRUE) == CSTR_EQUAL;
}

} // namespace

void LetMessageBoxesAppear() noexcept
{
    boxesAppear = true;
}

void RedirectMessageBoxes(HMODULE module)
{
    if (boxesAppear)
    {
        return;
    }
    const std::span<std::byte> memory = MemoryOf(module);
    const auto image = ReadPeImage(memory, PeLayout::Loaded);
    if (!image)
    {
        return;
    }
    const auto patchAll = [memory](const std::vector<ImportedLibrary>& libraries) {
        for (const ImportedLibrary& library : libraries)
        {
            for (const ImportSlot& slot : library.slots)
            {
                const auto replacement = std::find_if(
                    kReplacements.begin(), kReplacements.end(),
                    [&slot](const Replacement& row) { return slot.function == row.function; });
                if (replacement != kReplacements.end())
                {
                    Patch(memory.data() + slot.slotOffset, replacement->address);
                }
            }
        }
    };
    patchAll(image->imports);
    patchAll(image->delayedImports);
}

void RedirectMessageBoxesOfLoadedModules()
{
    std::vector<HMODULE> modules(256);
    DWORD bytes = 0;
    while (::EnumProcessModules(::GetCurrentProcess(), modules.data(),
                                static_cast<DWORD>(modules.size() * sizeof(HMODULE)), &bytes) &&
           bytes > modules.size() * sizeof(HMODULE))
    {
        modules.resize(bytes / sizeof(HMODULE));
    }
    modules.resize(bytes / sizeof(HMODULE));

    std::wstring systemFolder(MAX_PATH, L'\0');
    systemFolder.resize(::GetSystemDirectoryW(systemFolder.data(), MAX_PATH));
    for (HMODULE module : modules)
    {
        std::wstring path(32768, L'\0');
        path.resize(::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
        if (module != ::GetModuleHandleW(nullptr) && !IsInside(path, systemFolder))
        {
            RedirectMessageBoxes(module);
        }
    }
}

std::vector<std::string> TakeMessageBoxes()
{
    const std::lock_guard guard(recordLock);
    return std::exchange(recordedTexts, {});
}

void ThrowRecordedMessageBoxes(const std::string& what)
{
    const std::vector<std::string> texts = TakeMessageBoxes();
    if (texts.empty())
    {
        return;
    }
    std::string list;
    for (const std::string& text : texts)
    {
        list += (list.empty() ? "\"" : ", \"") + text + "\"";
    }
    throw HostError(what, "it wanted to show a message box: " + list,
                    "run \"glazelhost info\" to see what the plug-in and the renderer lack");
}

} // namespace GlazelHost
