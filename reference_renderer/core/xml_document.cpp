#include "reference_renderer/core/xml_document.h"

#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/text_scanning.h"
#include "reference_renderer/core/xml_depth.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

// A parser that calls itself for every level must not be fed deeper documents than this.
constexpr std::size_t kDeepestElement = 64;

std::string_view LocalName(std::string_view name) noexcept
{
    return name.substr(name.find(':') + 1); // npos + 1 is 0: the whole name
}

} // namespace

bool LooksLikeXml(std::string_view text) noexcept
{
    return TakeWord(text).substr(0, 1) == "<";
}

std::string_view RootNameOf(std::string_view text) noexcept
{
    while (true)
    {
        text.remove_prefix(std::min(text.find('<'), text.size()));
        const bool isComment = text.substr(0, 4) == "<!--";
        if (!isComment && text.substr(0, 2) != "<?" && text.substr(0, 2) != "<!")
        {
            text.remove_prefix(std::min<std::size_t>(1, text.size()));
            return LocalName(text.substr(0, text.find_first_of(" \t\r\n/>")));
        }
        const std::string_view end = isComment ? "-->" : ">";
        const std::size_t found = text.find(end);
        text.remove_prefix(found == std::string_view::npos ? text.size() : found + end.size());
    }
}

XmlText::XmlText(std::string text, std::string_view path)
    : m_text(std::move(text)), // its first block of 64 KB is part of the document
      m_document(std::make_unique<rapidxml::xml_document<char>>())
{
    const std::size_t depth = DeepestElement(m_text);
    if (depth == kNotCountable)
    {
        throw Malformed(path, 0, "has a document type declaration, which no look needs; remove it");
    }
    if (depth > kDeepestElement)
    {
        throw Malformed(path, 0, "its elements are nested too deeply for a look; export it again");
    }
    const char* const start = m_text.data();
    try
    {
        m_document->parse<rapidxml::parse_validate_closing_tags>(m_text.data());
    }
    catch (const rapidxml::parse_error& error)
    {
        const char* const where = error.where<char>();
        const auto line = static_cast<std::uint64_t>(std::count(start, where, '\n') + 1);
        throw Malformed(path, line,
                        std::string("no well-formed XML: ") + error.what() +
                            "; export the look again");
    }
}

const XmlNode* XmlText::Root() const noexcept
{
    const XmlNode* root = m_document->first_node();
    while (root != nullptr && root->type() != rapidxml::node_element)
    {
        root = root->next_sibling();
    }
    return root;
}

std::string_view NameOf(const XmlNode& node) noexcept
{
    return LocalName({node.name(), node.name_size()});
}

bool Is(const XmlNode& node, std::string_view name) noexcept
{
    return node.type() == rapidxml::node_element && EqualIgnoringCase(NameOf(node), name);
}

std::string AttributeOf(const XmlNode& node, std::string_view name)
{
    const auto* const attribute = node.first_attribute(name.data(), name.size());
    return attribute == nullptr ? std::string()
                                : std::string(attribute->value(), attribute->value_size());
}

std::string TextOf(const XmlNode& node)
{
    std::string text;
    for (const XmlNode* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        if (child->type() == rapidxml::node_data || child->type() == rapidxml::node_cdata)
        {
            text.append(child->value(), child->value_size());
        }
    }
    return text;
}

std::vector<const XmlNode*> ElementsOf(const XmlNode& node)
{
    std::vector<const XmlNode*> elements;
    for (const XmlNode* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        if (child->type() == rapidxml::node_element)
        {
            elements.push_back(child);
        }
    }
    return elements;
}

} // namespace ReferenceRenderer
