#include "reference_renderer/core/cdl_writer.h"

#include "reference_renderer/core/number_words.h"
#include "reference_renderer/core/text_scanning.h"
#include "support/xml_text.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

bool IsLetter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsNameCharacter(char c) noexcept
{
    return IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

std::string IdOf(std::string_view title)
{
    std::string id(title);
    std::replace_if(
        id.begin(), id.end(), [](char c) { return !IsNameCharacter(c); }, '_');
    return id.empty() || !IsLetter(id[0]) ? "look_" + id : id;
}

void AppendElement(std::string& text, const char* name, const float* numbers, std::size_t count)
{
    text += std::string("        <") + name + ">";
    AppendFloats(text, numbers, count);
    text += std::string("</") + name + ">\n";
}

} // namespace

std::string CorrectionFileText(const Cdl& cdl, std::string_view title)
{
    const std::string clean = CleanText(title);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<ColorCorrection xmlns=\"urn:ASC:CDL:v1.2\" id=\"" +
                       IdOf(clean) + "\">\n    <SOPNode>\n";
    if (!clean.empty())
    {
        text += "        <Description>" + XmlEscaped(clean) + "</Description>\n";
    }
    AppendElement(text, "Slope", cdl.slope.data(), cdl.slope.size());
    AppendElement(text, "Offset", cdl.offset.data(), cdl.offset.size());
    AppendElement(text, "Power", cdl.power.data(), cdl.power.size());
    text += "    </SOPNode>\n    <SatNode>\n";
    AppendElement(text, "Saturation", &cdl.saturation, 1);
    text += "    </SatNode>\n</ColorCorrection>\n";
    return text;
}

} // namespace ReferenceRenderer
