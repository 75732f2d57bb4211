#include "reference_renderer/core/cdl_reader.h"

#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/text_scanning.h"
#include "reference_renderer/core/xml_document.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kMostIdsShown = 8;

void CollectCorrections(const XmlNode& node, std::vector<const XmlNode*>& corrections)
{
    if (Is(node, "ColorCorrection"))
    {
        corrections.push_back(&node);
        return;
    }
    for (const XmlNode* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        CollectCorrections(*child, corrections);
    }
}

// Reads one correction; messages call it `name`.
class CorrectionReader
{
public:
    CorrectionReader(const XmlNode& correction, std::string name, std::string_view path)
        : m_correction(correction), m_name(std::move(name)), m_path(path)
    {
    }

    CdlFile Read() const
    {
        CdlFile file;
        file.id = CleanText(AttributeOf(m_correction, "id"));
        if (const XmlNode* const sop = OnlyChild(m_correction, "SOPNode"))
        {
            ReadNumbers(*sop, "Slope", file.cdl.slope);
            ReadNumbers(*sop, "Offset", file.cdl.offset);
            ReadNumbers(*sop, "Power", file.cdl.power);
            if (const XmlNode* const words = OnlyChild(*sop, "Description"))
            {
                file.description = CleanText(TextOf(*words));
            }
        }
        if (const XmlNode* const sat = OnlyChild(m_correction, "SatNode"))
        {
            std::array<float, 1> saturation{file.cdl.saturation};
            ReadNumbers(*sat, "Saturation", saturation);
            file.cdl.saturation = saturation[0];
        }
        CheckRanges(file.cdl);
        return file;
    }

private:
    [[noreturn]] void Fail(const std::string& cause) const
    {
        throw Malformed(m_path, 0, m_name + ": " + cause);
    }

    const XmlNode* OnlyChild(const XmlNode& parent, std::string_view name) const
    {
        const XmlNode* found = nullptr;
        for (const XmlNode* child = parent.first_node(); child != nullptr;
             child = child->next_sibling())
        {
            if (!Is(*child, name))
            {
                continue;
            }
            if (found != nullptr && name != "Description")
            {
                Fail("holds more than one " + std::string(name) + "; remove the surplus");
            }
            found = found == nullptr ? child : found;
        }
        return found;
    }

    // Leaves `numbers` alone when there is no such element.
    template <std::size_t Count>
    void ReadNumbers(const XmlNode& parent, const char* name,
                     std::array<float, Count>& numbers) const
    {
        const XmlNode* const element = OnlyChild(parent, name);
        if (element == nullptr)
        {
            return;
        }
        const std::string text = TextOf(*element);
        std::string_view rest = text;
        for (float& number : numbers)
        {
            const std::string_view word = TakeWord(rest);
            const std::optional<float> value = ParseNumber(word);
            if (!value)
            {
                Fail(std::string(name) + " needs " + std::to_string(Count) +
                     (word.empty() ? " numbers; add the missing ones"
                                   : " numbers, but " + Quoted(word) + " is none; correct it"));
            }
            number = *value;
        }
        if (!TakeWord(rest).empty())
        {
            Fail(std::string(name) + " has more than " + std::to_string(Count) +
                 " numbers; remove the surplus");
        }
    }

    void CheckRanges(const Cdl& cdl) const
    {
        const auto negative = [](float value) { return value < 0.0F; };
        if (std::any_of(cdl.slope.begin(), cdl.slope.end(), negative))
        {
            Fail("Slope is negative; use values from 0 up");
        }
        if (std::any_of(cdl.power.begin(), cdl.power.end(), [](float v) { return v <= 0.0F; }))
        {
            Fail("Power is not above 0; use positive values");
        }
        if (negative(cdl.saturation))
        {
            Fail("Saturation is negative; use a value from 0 up");
        }
    }

    const XmlNode& m_correction;
    std::string m_name;
    std::string_view m_path;
};

std::string TitleOf(const XmlNode& correction)
{
    const std::string id = AttributeOf(correction, "id");
    return id.empty() ? "the correction without id" : "correction " + Quoted(id);
}

std::string ListOfIds(const std::vector<const XmlNode*>& corrections)
{
    std::string list;
    for (std::size_t i = 0; i < std::min(corrections.size(), kMostIdsShown); ++i)
    {
        const std::string id = AttributeOf(*corrections[i], "id");
        list += (i == 0 ? "" : ", ") + (id.empty() ? "(without id)" : Quoted(id));
    }
    return corrections.size() > kMostIdsShown ? list + ", ..." : list;
}

} // namespace

CdlFile ReadCorrection(const XmlNode& element, const std::string& name, std::string_view path)
{
    return CorrectionReader(element, name, path).Read();
}

CdlFile ReadCdl(std::string text, std::string_view path, std::string_view id)
{
    const XmlText document(std::move(text), path);
    const XmlNode* const root = document.Root();
    if (root == nullptr || !(Is(*root, "ColorCorrection") || Is(*root, "ColorDecisionList") ||
                             Is(*root, "ColorCorrectionCollection")))
    {
        throw ImportError{RendererAPI::kImportUnrecognised,
                          std::string(path) +
                              ": this XML file holds no CDL (its root is none of "
                              "ColorCorrection, ColorCorrectionCollection, "
                              "ColorDecisionList); choose a .cc, .ccc or .cdl file"};
    }
    std::vector<const XmlNode*> corrections;
    CollectCorrections(*root, corrections);
    if (corrections.empty())
    {
        throw Malformed(path, 0, "holds no ColorCorrection; export the correction again");
    }

    const auto chosen =
        std::find_if(corrections.begin(), corrections.end(), [&](const XmlNode* correction) {
            return id.empty() || AttributeOf(*correction, "id") == id;
        });
    if (chosen == corrections.end())
    {
        throw ImportError{RendererAPI::kImportNotFound,
                          std::string(path) + ": no correction has the id " + Quoted(id) +
                              "; choose one of " + ListOfIds(corrections)};
    }
    CdlFile file = ReadCorrection(**chosen, TitleOf(**chosen), path);
    if (corrections.size() > 1 && id.empty())
    {
        file.warnings.push_back("holds " + std::to_string(corrections.size()) +
                                " corrections; the first was taken out of " +
                                ListOfIds(corrections));
    }
    return file;
}

} // namespace ReferenceRenderer
