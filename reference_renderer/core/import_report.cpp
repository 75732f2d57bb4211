#include "reference_renderer/core/import_report.h"

#include "reference_renderer/core/text_scanning.h"

#include <array>
#include <charconv>

namespace ReferenceRenderer
{

namespace
{

template <typename Number>
void Append(std::string& text, Number number)
{
    std::array<char, 64> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), result.ptr);
}

void AppendTriple(std::string& text, const char* name, const std::array<float, 3>& triple)
{
    text += name;
    for (const float value : triple)
    {
        text += ' ';
        Append(text, value);
    }
}

void AppendDomain(std::string& text, const Domain& domain)
{
    const bool same = domain[0] == domain[1] && domain[1] == domain[2];
    text += ", domain";
    for (std::size_t channel = 0; channel < (same ? 1U : 3U); ++channel)
    {
        text += ' ';
        Append(text, domain[channel].low);
        text += "..";
        Append(text, domain[channel].high);
    }
}

// Appends a JSON string. The text becomes valid UTF-8 without control characters on the way, so
// only two characters are left to escape.
void AppendQuoted(std::string& json, std::string_view text)
{
    json += '"';
    for (const char c : CleanText(text))
    {
        if (c == '"' || c == '\\')
        {
            json += '\\';
        }
        json += c;
    }
    json += '"';
}

void AppendMember(std::string& json, const char* name, std::string_view text)
{
    AppendQuoted(json, name);
    json += ':';
    AppendQuoted(json, text);
}

} // namespace

std::string ContentsOf(const StoredLook& look)
{
    std::string text;
    const auto next = [&] { text += text.empty() ? "" : "; "; };
    if (look.cdlMode != CdlMode::None)
    {
        AppendTriple(text, "CDL: slope", look.cdl.slope);
        AppendTriple(text, ", offset", look.cdl.offset);
        AppendTriple(text, ", power", look.cdl.power);
        text += ", saturation ";
        Append(text, look.cdl.saturation);
        text += look.cdlMode == CdlMode::Clamped ? ", clamped" : ", not clamped";
    }
    if (look.curveSize != 0)
    {
        next();
        text += "1D LUT: ";
        Append(text, look.curveSize);
        text += " entries";
        AppendDomain(text, look.curveDomain);
    }
    if (look.cubeSize != 0)
    {
        next();
        text += "3D LUT: ";
        Append(text, look.cubeSize);
        text += " nodes a side";
        AppendDomain(text, look.cubeDomain);
    }
    if (look.HasTables() && look.strength != 1.0F)
    {
        next();
        text += "strength ";
        Append(text, look.strength);
    }
    return text.empty() ? "nothing: the look leaves pictures as they are" : text;
}

std::string DescribeAsJson(const ImportedLook& imported)
{
    std::string json = "{";
    AppendMember(json, "kind", imported.kind);
    json += ',';
    AppendMember(json, "title", imported.title);
    json += ',';
    AppendMember(json, "contents", imported.contents);
    json += ",\"warnings\":[";
    for (const std::string& warning : imported.warnings)
    {
        json += &warning == imported.warnings.data() ? "" : ",";
        AppendQuoted(json, warning);
    }
    json += "],\"largestError\":";
    Append(json, imported.largestError);
    return json + "}";
}

std::string DescribeAsJson(std::string_view error)
{
    std::string json = "{";
    AppendMember(json, "error", error);
    return json + "}";
}

} // namespace ReferenceRenderer
