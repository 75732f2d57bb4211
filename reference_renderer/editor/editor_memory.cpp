#include "reference_renderer/editor/editor_memory.h"

#include <algorithm>
#include <tuple>

#include <windows.h>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kLongestList = std::size_t{1} << 16; // characters

bool IsSameFile(const std::wstring& a, const std::wstring& b) noexcept
{
    return ::CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_EQUAL;
}

std::wstring WholePath(const std::wstring& path)
{
    const DWORD length = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring whole(length, L'\0'); // with its final 0
    const DWORD written = ::GetFullPathNameW(path.c_str(), length, whole.data(), nullptr);
    whole.resize(written < length ? written : 0);
    return whole.empty() ? path : whole;
}

} // namespace

std::vector<std::wstring> RecentLooks()
{
    std::wstring list(kLongestList, L'\0');
    auto bytes = static_cast<DWORD>(list.size() * sizeof(wchar_t));
    if (::RegGetValueW(HKEY_CURRENT_USER, kEditorKey, kRecentValue, RRF_RT_REG_MULTI_SZ, nullptr,
                       list.data(), &bytes) != ERROR_SUCCESS)
    {
        return {};
    }
    std::vector<std::wstring> looks;
    for (const wchar_t* next = list.c_str(); *next != L'\0'; next += looks.back().size() + 1)
    {
        looks.emplace_back(next);
    }
    looks.resize(std::min(looks.size(), kMostRecentLooks));
    return looks;
}

void RememberLook(const std::wstring& path)
{
    const std::wstring whole = WholePath(path);
    std::vector<std::wstring> looks = RecentLooks();
    std::erase_if(looks, [&](const std::wstring& known) { return IsSameFile(known, whole); });
    looks.insert(looks.begin(), whole);
    looks.resize(std::min(looks.size(), kMostRecentLooks));
    std::wstring list;
    for (const std::wstring& look : looks)
    {
        list += look + L'\0';
    }
    std::ignore =
        ::RegSetKeyValueW(HKEY_CURRENT_USER, kEditorKey, kRecentValue, REG_MULTI_SZ, list.c_str(),
                          static_cast<DWORD>((list.size() + 1) * sizeof(wchar_t)));
}

View LastView() noexcept
{
    DWORD view = 0;
    DWORD bytes = sizeof view;
    const LSTATUS read = ::RegGetValueW(HKEY_CURRENT_USER, kEditorKey, kViewValue, RRF_RT_REG_DWORD,
                                        nullptr, &view, &bytes);
    return read == ERROR_SUCCESS && view < kViewCount ? static_cast<View>(view) : View::Light;
}

void RememberView(View view) noexcept
{
    const auto value = static_cast<DWORD>(view);
    std::ignore = ::RegSetKeyValueW(HKEY_CURRENT_USER, kEditorKey, kViewValue, REG_DWORD, &value,
                                    sizeof value);
}

} // namespace ReferenceRenderer
