#include "reference_renderer/core/cube_writer.h"

#include "reference_renderer/core/number_words.h"
#include "reference_renderer/core/text_scanning.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

bool IsSame(const Domain& domain) noexcept
{
    return domain[0] == domain[1] && domain[1] == domain[2];
}

void AppendTitle(std::string& text, std::string title)
{
    if (!title.empty())
    {
        title = CleanText(title);
        std::replace(title.begin(), title.end(), '"', '\''); // nothing escapes a quote
        text += "TITLE \"" + title + "\"\n";
    }
}

void AppendSize(std::string& text, const char* keyword, std::uint32_t size)
{
    text += keyword + (' ' + std::to_string(size)) + '\n';
}

void AppendRange(std::string& text, const char* keyword, const Domain& domain)
{
    if (domain != Domain{})
    {
        text += keyword;
        text += ' ';
        AppendFloats(text, std::array{domain[0].low, domain[0].high}.data(), 2);
        text += '\n';
    }
}

void AppendDomain(std::string& text, const Domain& domain)
{
    if (domain != Domain{})
    {
        text += "DOMAIN_MIN ";
        AppendFloats(text, std::array{domain[0].low, domain[1].low, domain[2].low}.data(), 3);
        text += "\nDOMAIN_MAX ";
        AppendFloats(text, std::array{domain[0].high, domain[1].high, domain[2].high}.data(), 3);
        text += '\n';
    }
}

void AppendHeader(std::string& text, const Look& look)
{
    AppendTitle(text, look.title);
    if (look.curves)
    {
        AppendSize(text, "LUT_1D_SIZE", look.curves->size);
    }
    if (look.curves && look.cube)
    {
        AppendRange(text, "LUT_1D_INPUT_RANGE", look.curves->domain);
    }
    if (look.cube)
    {
        AppendSize(text, "LUT_3D_SIZE", look.cube->size);
    }
    if (look.curves && look.cube)
    {
        AppendRange(text, "LUT_3D_INPUT_RANGE", look.cube->domain);
    }
    else
    {
        AppendDomain(text, look.curves ? look.curves->domain : look.cube->domain);
    }
}

} // namespace

bool FitsCubeFile(const Look& look) noexcept
{
    return !(look.curves && look.cube) ||
           (IsSame(look.curves->domain) && IsSame(look.cube->domain));
}

std::string CubeFileText(const Look& look)
{
    std::string text;
    AppendHeader(text, look);
    if (look.curves)
    {
        const std::size_t size = look.curves->size;
        const float* const values = look.curves->values.data();
        for (std::size_t i = 0; i < size; ++i)
        {
            const std::array entry{values[i], values[size + i], values[2 * size + i]};
            AppendFloats(text, entry.data(), entry.size());
            text += '\n';
        }
    }
    if (look.cube)
    {
        const std::vector<float>& nodes = look.cube->nodes;
        for (std::size_t i = 0; i + kNodePadding < nodes.size(); i += 3)
        {
            AppendFloats(text, nodes.data() + i, 3);
            text += '\n';
        }
    }
    return text;
}

} // namespace ReferenceRenderer
