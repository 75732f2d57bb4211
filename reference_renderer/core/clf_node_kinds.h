// The kinds of process nodes of CLF files, each made a step of a chain.
// Pure: no windows.h. Tests: tests/reference_renderer/core/clf_reader_test.cpp.
#pragma once

#include "reference_renderer/core/clf_node.h"
#include "reference_renderer/core/colour_chain.h"

#include <string_view>

namespace ReferenceRenderer
{

struct ClfNodeKind
{
    std::string_view name;
    ChainStep (*read)(const ClfNode& node); // throws ImportError
    std::string_view attributes;            // besides those of every node
    std::string_view elements;              // besides Description
};

// Null for kinds that are not read.
const ClfNodeKind* ClfNodeKindOf(const XmlNode& element) noexcept;

} // namespace ReferenceRenderer
