#include "platform/atl/dialog_template.h"

#include <bit>
#include <cstring>

// Templates are little-endian; so is every system that this is built for.
static_assert(std::endian::native == std::endian::little);

namespace
{

constexpr std::uint32_t kSetFont = 0x40; // the style DS_SETFONT

// Takes values off the front. Once they run out every further one is 0 and `complete` is false.
class TemplateReader
{
public:
    explicit TemplateReader(std::span<const std::byte> bytes) : m_rest(bytes) {}

    template <typename Value>
    Value Take()
    {
        Value value{};
        if (m_rest.size() < sizeof value)
        {
            complete = false;
            m_rest = {};
            return value;
        }
        std::memcpy(&value, m_rest.data(), sizeof value);
        m_rest = m_rest.subspan(sizeof value);
        return value;
    }
    std::u16string TakeText()
    {
        std::u16string text;
        while (const auto unit = Take<char16_t>())
        {
            text += unit;
        }
        return text;
    }
    // A menu or a class: nothing, a number after 0xFFFF, or a name.
    void SkipNameOrNumber()
    {
        constexpr std::uint16_t numberFollows = 0xFFFF;
        const auto first = Take<std::uint16_t>();
        if (first == numberFollows)
        {
            Take<std::uint16_t>();
        }
        else if (first != 0)
        {
            TakeText();
        }
    }

    bool complete = true;

private:
    std::span<const std::byte> m_rest;
};

bool IsExtended(std::span<const std::byte> bytes)
{
    TemplateReader reader(bytes);
    const auto version = reader.Take<std::uint16_t>();
    const auto signature = reader.Take<std::uint16_t>();
    return version == 1 && signature == 0xFFFF;
}

} // namespace

std::optional<DialogMeasure> MeasureDialogTemplate(std::span<const std::byte> bytes)
{
    const bool extended = IsExtended(bytes);
    TemplateReader reader(bytes);
    if (extended)
    {
        reader.Take<std::uint32_t>(); // version and signature
        reader.Take<std::uint32_t>(); // help id
        reader.Take<std::uint32_t>(); // extended style
    }
    const auto style = reader.Take<std::uint32_t>();
    if (!extended)
    {
        reader.Take<std::uint32_t>(); // extended style
    }
    reader.Take<std::uint16_t>(); // number of controls
    reader.Take<std::uint32_t>(); // x and y
    DialogMeasure measure;
    measure.width = reader.Take<std::int16_t>();
    measure.height = reader.Take<std::int16_t>();
    reader.SkipNameOrNumber(); // menu
    reader.SkipNameOrNumber(); // class
    reader.TakeText();         // title
    if ((style & kSetFont) != 0)
    {
        DialogFont& font = measure.font.emplace();
        font.points = reader.Take<std::uint16_t>();
        if (extended)
        {
            font.weight = reader.Take<std::uint16_t>();
            font.italic = reader.Take<std::uint8_t>() != 0;
            font.charset = reader.Take<std::uint8_t>();
        }
        font.face = reader.TakeText();
    }
    return reader.complete ? std::optional(std::move(measure)) : std::nullopt;
}
