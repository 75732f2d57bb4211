#include "tools/glazelhost/validate/check.h"

#include "platform/dxtransform/dxtrans.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace GlazelHost
{

namespace
{

struct NamedResult
{
    HRESULT result;
    const char* name;
};

#define NAMED_RESULT(result)                                                                       \
    NamedResult                                                                                    \
    {                                                                                              \
        result, #result                                                                            \
    }
constexpr std::array kResults{
    NAMED_RESULT(S_OK),
    NAMED_RESULT(S_FALSE),
    NAMED_RESULT(E_NOTIMPL),
    NAMED_RESULT(E_NOINTERFACE),
    NAMED_RESULT(E_POINTER),
    NAMED_RESULT(E_ABORT),
    NAMED_RESULT(E_FAIL),
    NAMED_RESULT(E_UNEXPECTED),
    NAMED_RESULT(E_ACCESSDENIED),
    NAMED_RESULT(E_OUTOFMEMORY),
    NAMED_RESULT(E_INVALIDARG),
    NAMED_RESULT(CLASS_E_CLASSNOTAVAILABLE),
    NAMED_RESULT(CLASS_E_NOAGGREGATION),
    NAMED_RESULT(STG_E_MEDIUMFULL),
    NAMED_RESULT(STG_E_READFAULT),
    NAMED_RESULT(STG_E_WRITEFAULT),
    NAMED_RESULT(DXTERR_UNINITIALIZED),
    NAMED_RESULT(DXTERR_INVALID_BOUNDS),
};
#undef NAMED_RESULT

} // namespace

std::string ResultName(HRESULT result)
{
    const auto* const row = std::ranges::find(kResults, result, &NamedResult::result);
    if (row != kResults.end())
    {
        return row->name;
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(result));
    return text.data();
}

bool Check::That(bool holds, const std::string& otherwise)
{
    if (!holds)
    {
        m_findings.Fail(otherwise);
    }
    return holds;
}

bool Check::Answers(HRESULT wanted, HRESULT result, const std::string& call)
{
    return That(result == wanted,
                call + " answers " + ResultName(result) + " instead of " + ResultName(wanted));
}

bool Check::Fails(HRESULT result, const std::string& call)
{
    return That(FAILED(result), call + " answers " + ResultName(result) + " instead of a failure");
}

bool Check::Succeeds(HRESULT result, const std::string& call)
{
    return That(SUCCEEDED(result),
                call + " answers " + ResultName(result) + " instead of a success");
}

std::vector<std::byte> Check::RandomBytes(std::size_t count)
{
    std::vector<std::byte> bytes(count);
    std::ranges::generate(bytes, [this] { return static_cast<std::byte>(Random(256)); });
    return bytes;
}

} // namespace GlazelHost
