// A process node of a CLF file: its depths, and what nodes of all kinds read.
// Pure: no windows.h. Tests: tests/reference_renderer/core/clf_reader_test.cpp.
#pragma once

#include "reference_renderer/core/xml_document.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// Every failure throws an ImportError that names the node. Element and path must outlive this.
class ClfNode
{
public:
    // `number` counts the nodes of the file from 1.
    ClfNode(const XmlNode& element, std::size_t number, std::string_view path);

    const XmlNode& Element() const noexcept { return m_element; }
    std::string_view Path() const noexcept { return m_path; }
    // The values that count as 1 where they go in and come out.
    double InTop() const noexcept { return m_inTop; }
    double OutTop() const noexcept { return m_outTop; }
    // For messages.
    std::string Name() const;

    [[noreturn]] void Fail(const std::string& cause) const;
    [[noreturn]] void RefuseStyle(const std::string& style) const;
    [[noreturn]] void RefuseSizes() const;
    // Refuses what would change the node, or one of its elements, in ways that are not known.
    void CheckParts(const XmlNode& element, std::string_view attributes,
                    std::string_view elements) const;

    std::string Attribute(const char* name) const { return AttributeOf(m_element, name); }
    // Null when there is none.
    const XmlNode* Child(std::string_view name) const;
    // The one number in `text`, which messages call `what`.
    double NumberOf(std::string_view text, std::string_view what) const;
    // The sizes of the Array, such as 17 17 17 3; 0 for what is no size.
    std::vector<std::uint32_t> ArraySizes() const;
    // Its `count` numbers.
    std::vector<float> ArrayNumbers(std::size_t count) const;

private:
    const XmlNode& Array() const;
    double TopOf(const char* attribute) const;

    const XmlNode& m_element;
    std::string_view m_path;
    std::size_t m_number;
    double m_inTop;
    double m_outTop;
};

// Whether `wanted` is one of the words, in any case.
bool HasWord(std::string_view words, std::string_view wanted) noexcept;

} // namespace ReferenceRenderer
