#include "platform/atl/atlpropertypage.h"

#include <cstring>

LPOLESTR AtlLoadTaskString(HINSTANCE module, UINT id) noexcept
{
    const WCHAR* text = nullptr; // in the resource itself, not terminated
    const int length = ::LoadStringW(module, id, reinterpret_cast<LPWSTR>(&text), 0);
    if (length <= 0)
    {
        return nullptr;
    }
    const std::size_t units = static_cast<std::size_t>(length);
    auto* const copy = static_cast<LPOLESTR>(::CoTaskMemAlloc((units + 1) * sizeof(WCHAR)));
    if (copy != nullptr)
    {
        std::memcpy(copy, text, units * sizeof(WCHAR));
        copy[units] = L'\0';
    }
    return copy;
}
