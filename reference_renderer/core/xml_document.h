// The XML of looks: parsed within limits, namespace prefixes left out, names in any case.
// Pure: no windows.h. Tests: tests/reference_renderer/core/cdl_reader_test.cpp and
// clf_reader_test.cpp.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <rapidxml/rapidxml.hpp>

namespace ReferenceRenderer
{

using XmlNode = rapidxml::xml_node<char>;

// True when `text` starts as an XML document does.
bool LooksLikeXml(std::string_view text) noexcept;

// The name of the first element of an XML text, which is not parsed; empty when there is none.
std::string_view RootNameOf(std::string_view text) noexcept;

class XmlText
{
public:
    // Refuses document type declarations and deep nesting. `path` is for messages. Throws
    // ImportError.
    XmlText(std::string text, std::string_view path);
    XmlText(const XmlText&) = delete; // its nodes point into it
    XmlText& operator=(const XmlText&) = delete;

    // Null when there is no element.
    const XmlNode* Root() const noexcept;

private:
    std::string m_text;
    std::unique_ptr<rapidxml::xml_document<char>> m_document;
};

// Without its prefix.
std::string_view NameOf(const XmlNode& node) noexcept;
// Whether it is an element of that name.
bool Is(const XmlNode& node, std::string_view name) noexcept;
// Empty when there is none.
std::string AttributeOf(const XmlNode& node, std::string_view name);
// All text directly inside the element, comments left out.
std::string TextOf(const XmlNode& node);
// The elements inside it, one level deep.
std::vector<const XmlNode*> ElementsOf(const XmlNode& node);

} // namespace ReferenceRenderer
