#include "samples/renderer/cdl_reader.h"

#include "samples/renderer/import_error.h"
#include "samples/renderer/text_scanning.h"
#include "samples/renderer/xml_depth.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include <rapidxml/rapidxml.hpp>

namespace
{

using Document = rapidxml::xml_document<char>;
using Node = rapidxml::xml_node<char>;

// A parser that calls itself for every level must not be fed deeper documents than this.
constexpr std::size_t kDeepestElement = 64;
constexpr std::size_t kMostIdsShown = 8;

std::string_view LocalName(const Node& node) noexcept
{
    const std::string_view name(node.name(), node.name_size());
    return name.substr(name.find(':') + 1); // npos + 1 is 0: the whole name
}

bool Is(const Node& node, std::string_view name) noexcept
{
    return node.type() == rapidxml::node_element && EqualIgnoringCase(LocalName(node), name);
}

std::string AttributeOf(const Node& node, std::string_view name)
{
    const auto* const attribute = node.first_attribute(name.data(), name.size());
    return attribute == nullptr ? std::string()
                                : std::string(attribute->value(), attribute->value_size());
}

// All text directly inside the element, comments left out.
std::string TextOf(const Node& node)
{
    std::string text;
    for (const Node* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        if (child->type() == rapidxml::node_data || child->type() == rapidxml::node_cdata)
        {
            text.append(child->value(), child->value_size());
        }
    }
    return text;
}

void CollectCorrections(const Node& node, std::vector<const Node*>& corrections)
{
    if (Is(node, "ColorCorrection"))
    {
        corrections.push_back(&node);
        return;
    }
    for (const Node* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        CollectCorrections(*child, corrections);
    }
}

// Reads one correction; messages name it.
class CorrectionReader
{
public:
    CorrectionReader(const Node& correction, std::string_view path)
        : m_correction(correction), m_path(path)
    {
    }

    CdlFile Read() const
    {
        CdlFile file;
        file.id = CleanText(AttributeOf(m_correction, "id"));
        if (const Node* const sop = OnlyChild(m_correction, "SOPNode"))
        {
            ReadNumbers(*sop, "Slope", file.cdl.slope);
            ReadNumbers(*sop, "Offset", file.cdl.offset);
            ReadNumbers(*sop, "Power", file.cdl.power);
            if (const Node* const words = OnlyChild(*sop, "Description"))
            {
                file.description = CleanText(TextOf(*words));
            }
        }
        if (const Node* const sat = OnlyChild(m_correction, "SatNode"))
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
        const std::string id = AttributeOf(m_correction, "id");
        const std::string name =
            id.empty() ? "the correction without id" : "correction " + Quoted(id);
        throw Malformed(m_path, 0, name + ": " + cause);
    }

    const Node* OnlyChild(const Node& parent, std::string_view name) const
    {
        const Node* found = nullptr;
        for (const Node* child = parent.first_node(); child != nullptr;
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
    void ReadNumbers(const Node& parent, const char* name, std::array<float, Count>& numbers) const
    {
        const Node* const element = OnlyChild(parent, name);
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

    const Node& m_correction;
    std::string_view m_path;
};

std::string ListOfIds(const std::vector<const Node*>& corrections)
{
    std::string list;
    for (std::size_t i = 0; i < std::min(corrections.size(), kMostIdsShown); ++i)
    {
        const std::string id = AttributeOf(*corrections[i], "id");
        list += (i == 0 ? "" : ", ") + (id.empty() ? "(without id)" : Quoted(id));
    }
    return corrections.size() > kMostIdsShown ? list + ", ..." : list;
}

void Parse(Document& document, std::string& text, std::string_view path)
{
    const char* const start = text.data();
    try
    {
        document.parse<rapidxml::parse_validate_closing_tags>(text.data());
    }
    catch (const rapidxml::parse_error& error)
    {
        const char* const where = error.where<char>();
        const auto line = static_cast<std::uint64_t>(std::count(start, where, '\n') + 1);
        throw Malformed(path, line,
                        std::string("no well-formed XML: ") + error.what() +
                            "; export the correction again");
    }
}

} // namespace

bool LooksLikeXml(std::string_view text) noexcept
{
    return TakeWord(text).substr(0, 1) == "<";
}

CdlFile ReadCdl(std::string text, std::string_view path, std::string_view id)
{
    const std::size_t depth = DeepestElement(text);
    if (depth == kNotCountable)
    {
        throw Malformed(path, 0, "has a document type declaration, which no CDL needs; remove it");
    }
    if (depth > kDeepestElement)
    {
        throw Malformed(path, 0, "its elements are nested too deeply for a CDL; export it again");
    }
    const auto document = std::make_unique<Document>(); // its first block of 64 KB is part of it
    Parse(*document, text, path);

    const Node* root = document->first_node();
    while (root != nullptr && root->type() != rapidxml::node_element)
    {
        root = root->next_sibling();
    }
    if (root == nullptr || !(Is(*root, "ColorCorrection") || Is(*root, "ColorDecisionList") ||
                             Is(*root, "ColorCorrectionCollection")))
    {
        throw ImportError{RendererAPI::kImportUnrecognised,
                          std::string(path) +
                              ": this XML file holds no CDL (its root is none of "
                              "ColorCorrection, ColorCorrectionCollection, "
                              "ColorDecisionList); choose a .cc, .ccc or .cdl file"};
    }
    std::vector<const Node*> corrections;
    CollectCorrections(*root, corrections);
    if (corrections.empty())
    {
        throw Malformed(path, 0, "holds no ColorCorrection; export the correction again");
    }

    const auto chosen =
        std::find_if(corrections.begin(), corrections.end(), [&](const Node* correction) {
            return id.empty() || AttributeOf(*correction, "id") == id;
        });
    if (chosen == corrections.end())
    {
        throw ImportError{RendererAPI::kImportNotFound,
                          std::string(path) + ": no correction has the id " + Quoted(id) +
                              "; choose one of " + ListOfIds(corrections)};
    }
    CdlFile file = CorrectionReader(**chosen, path).Read();
    if (corrections.size() > 1 && id.empty())
    {
        file.warnings.push_back("holds " + std::to_string(corrections.size()) +
                                " corrections; the first was taken out of " +
                                ListOfIds(corrections));
    }
    return file;
}
