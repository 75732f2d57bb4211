#include "reference_renderer/core/clf_node.h"

#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/text_scanning.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ReferenceRenderer
{

namespace
{

struct BitDepth
{
    std::string_view name;
    double top; // the value that counts as 1
};

constexpr std::array kBitDepths{
    BitDepth{"8i", 255.0},    BitDepth{"10i", 1023.0}, BitDepth{"12i", 4095.0},
    BitDepth{"16i", 65535.0}, BitDepth{"16f", 1.0},    BitDepth{"32f", 1.0},
};

} // namespace

bool HasWord(std::string_view words, std::string_view wanted) noexcept
{
    for (std::string_view word = TakeWord(words); !word.empty(); word = TakeWord(words))
    {
        if (EqualIgnoringCase(word, wanted))
        {
            return true;
        }
    }
    return false;
}

ClfNode::ClfNode(const XmlNode& element, std::size_t number, std::string_view path)
    : m_element(element), m_path(path), m_number(number), m_inTop(TopOf("inBitDepth")),
      m_outTop(TopOf("outBitDepth"))
{
}

std::string ClfNode::Name() const
{
    return CleanText(NameOf(m_element)) + " (node " + std::to_string(m_number) + ")";
}

void ClfNode::Fail(const std::string& cause) const
{
    throw Malformed(m_path, 0, Name() + ": " + cause);
}

void ClfNode::RefuseStyle(const std::string& style) const
{
    Fail("the style " + Quoted(style) +
         " with these parameters is not read; export the node "
         "as a LUT");
}

void ClfNode::CheckParts(const XmlNode& element, std::string_view attributes,
                         std::string_view elements) const
{
    for (const auto* attribute = element.first_attribute(); attribute != nullptr;
         attribute = attribute->next_attribute())
    {
        const std::string_view name(attribute->name(), attribute->name_size());
        const bool isForeign = name.find(':') != std::string_view::npos || name == "xmlns";
        if (!isForeign && !HasWord(attributes, name))
        {
            Fail("the attribute " + Quoted(name) + " is not read; export the node without it");
        }
    }
    for (const XmlNode* child : ElementsOf(element))
    {
        if (!HasWord(elements, NameOf(*child)))
        {
            Fail("the element " + Quoted(NameOf(*child)) +
                 " is not read; export the node without it");
        }
    }
}

const XmlNode* ClfNode::Child(std::string_view name) const
{
    const XmlNode* found = nullptr;
    for (const XmlNode* child : ElementsOf(m_element))
    {
        if (Is(*child, name) && found != nullptr)
        {
            Fail("holds more than one " + std::string(name) + "; remove the surplus");
        }
        found = Is(*child, name) ? child : found;
    }
    return found;
}

double ClfNode::NumberOf(std::string_view text, std::string_view what) const
{
    const std::string_view word = TakeWord(text);
    const std::optional<float> number = ParseNumber(word);
    if (!number || !TakeWord(text).empty())
    {
        Fail(std::string(what) + " needs one number, but is " + Quoted(word) + "; correct it");
    }
    return *number;
}

std::vector<std::uint32_t> ClfNode::ArraySizes() const
{
    const std::string text = AttributeOf(Array(), "dim");
    std::string_view rest = text;
    std::vector<std::uint32_t> sizes;
    for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest))
    {
        sizes.push_back(ParseCount(word).value_or(0));
    }
    return sizes;
}

void ClfNode::RefuseSizes() const
{
    Fail("the sizes " + Quoted(AttributeOf(Array(), "dim")) +
         " of its Array are not read; export the node with others");
}

std::vector<float> ClfNode::ArrayNumbers(std::size_t count) const
{
    const std::string text = TextOf(Array());
    std::string_view rest = text;
    std::vector<float> numbers;
    numbers.reserve(std::min(count, text.size() / 2 + 1));
    for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest))
    {
        const std::optional<float> number = ParseNumber(word);
        if (!number)
        {
            Fail(Quoted(word) + " is not a number that can be used; correct it");
        }
        if (numbers.size() == count)
        {
            Fail("its Array holds more than the " + std::to_string(count) +
                 " numbers that dim asks for; export it again");
        }
        numbers.push_back(*number);
    }
    if (numbers.size() != count)
    {
        Fail("its Array holds " + std::to_string(numbers.size()) + " of the " +
             std::to_string(count) + " numbers that dim asks for; export it again");
    }
    return numbers;
}

const XmlNode& ClfNode::Array() const
{
    const XmlNode* const array = Child("Array");
    if (array == nullptr)
    {
        Fail("holds no Array; export it again");
    }
    CheckParts(*array, "dim", "");
    return *array;
}

double ClfNode::TopOf(const char* attribute) const
{
    const std::string text = Attribute(attribute);
    const auto* const depth =
        std::find_if(kBitDepths.begin(), kBitDepths.end(),
                     [&](const BitDepth& known) { return known.name == text; });
    if (depth == kBitDepths.end())
    {
        Fail(std::string(attribute) + " " + Quoted(text) +
             " is none of 8i, 10i, 12i, 16i, 16f and 32f; export the node with one of these");
    }
    return depth->top;
}

} // namespace ReferenceRenderer
