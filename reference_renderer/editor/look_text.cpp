#include "reference_renderer/editor/look_text.h"

#include "reference_renderer/core/base64.h"
#include "reference_renderer/core/look_record.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr std::string_view kHead = "glazel-look:";

} // namespace

std::string LookText(std::span<const std::uint8_t> record)
{
    const auto last =
        std::find_if(record.rbegin(), record.rend(), [](std::uint8_t byte) { return byte != 0; });
    const auto length = static_cast<std::size_t>(record.rend() - last);
    return std::string(kHead) + Base64Of(std::as_bytes(record.first(length)));
}

std::optional<std::vector<std::uint8_t>> RecordOfText(std::string_view text)
{
    std::string dense;
    std::copy_if(text.begin(), text.end(), std::back_inserter(dense), [](char letter) {
        return std::string_view(" \t\r\n").find(letter) == std::string_view::npos;
    });
    if (!dense.starts_with(kHead))
    {
        return {};
    }
    const auto bytes = ParseBase64(std::string_view(dense).substr(kHead.size()));
    if (!bytes || bytes->size() > kRecordSize)
    {
        return {};
    }
    std::vector<std::uint8_t> record(kRecordSize);
    std::transform(bytes->begin(), bytes->end(), record.begin(),
                   [](std::byte byte) { return std::to_integer<std::uint8_t>(byte); });
    return CheckRecord(record) == RecordState::Usable ? std::optional(std::move(record))
                                                      : std::nullopt;
}

} // namespace ReferenceRenderer
