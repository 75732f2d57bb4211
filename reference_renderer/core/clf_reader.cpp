#include "reference_renderer/core/clf_reader.h"

#include "reference_renderer/core/chain_fitting.h"
#include "reference_renderer/core/clf_node_kinds.h"
#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/text_scanning.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kLargestFile = std::size_t{64} << 20; // a cube of 129 points takes 58 MB
constexpr std::ptrdiff_t kMostParts =
    16384; // elements and attributes; the parser has memory for each
constexpr std::size_t kMostNodes = 64;

class ClfReader
{
public:
    ClfReader(std::string text, std::string_view path)
        : m_document(std::move(text), path), m_path(path)
    {
    }

    ReadLook Read()
    {
        const XmlNode* const root = m_document.Root();
        if (root == nullptr || !Is(*root, "ProcessList"))
        {
            throw ImportError{RendererAPI::kImportUnrecognised,
                              std::string(m_path) + ": this XML file holds no ProcessList; choose "
                                                    "a .clf file"};
        }
        CheckVersion(AttributeOf(*root, "compCLFversion"));
        std::string description;
        for (const XmlNode* element : ElementsOf(*root))
        {
            if (Is(*element, "Description"))
            {
                description = description.empty() ? CleanText(TextOf(*element)) : description;
            }
            else if (!HasWord("InputDescriptor OutputDescriptor Info", NameOf(*element)))
            {
                AddNode(*element);
            }
        }
        if (m_chain.empty())
        {
            throw Malformed(m_path, 0, "holds no process node; export the transform again");
        }
        ReadLook read = LookOfChain(std::move(m_chain), m_path);
        for (const std::string& title : {CleanText(AttributeOf(*root, "name")), description,
                                         CleanText(AttributeOf(*root, "id"))})
        {
            read.look.title = read.look.title.empty() ? title : read.look.title;
        }
        return read;
    }

private:
    void CheckVersion(const std::string& version) const
    {
        if (version.empty())
        {
            return;
        }
        const std::optional<float> number = ParseNumber(version);
        if (!number || !(*number < 4.0F))
        {
            throw Malformed(m_path, 0,
                            "is of version " + Quoted(version) +
                                ", and versions up to 3 are known; export it as one of these");
        }
    }

    void AddNode(const XmlNode& element)
    {
        const ClfNodeKind* const kind = ClfNodeKindOf(element);
        if (kind == nullptr)
        {
            throw Malformed(m_path, 0,
                            "the node " + Quoted(NameOf(element)) +
                                " is not read; export the transform with LUTs in its place");
        }
        if (m_chain.size() == kMostNodes)
        {
            throw Malformed(m_path, 0,
                            "holds more than " + std::to_string(kMostNodes) +
                                " process nodes; export them as fewer");
        }
        const ClfNode node(element, m_chain.size() + 1, m_path);
        node.CheckParts(element,
                        "id name inBitDepth outBitDepth bypass " + std::string(kind->attributes),
                        "Description " + std::string(kind->elements));
        if (node.Attribute("bypass") == "true")
        {
            node.Fail("is bypassed, which is not read; export the transform without the node");
        }
        if (m_lastTop && *m_lastTop != node.InTop())
        {
            node.Fail("its inBitDepth is not the outBitDepth of the node before; correct the two");
        }
        m_lastTop = node.OutTop();
        m_chain.push_back(kind->read(node));
    }

    XmlText m_document;
    std::string_view m_path;
    ColourChain m_chain;
    std::optional<double> m_lastTop; // of the node before
};

} // namespace

bool LooksLikeClf(std::string_view text) noexcept
{
    return LooksLikeXml(text) && EqualIgnoringCase(RootNameOf(text), "ProcessList");
}

ReadLook ReadClf(std::string text, std::string_view path)
{
    const auto isPart = [](char c) { return c == '<' || c == '='; };
    if (text.size() > kLargestFile || std::count_if(text.begin(), text.end(), isPart) > kMostParts)
    {
        throw Malformed(path, 0,
                        "is larger than 64 MB, or of more than 16384 elements and attributes; "
                        "export it with fewer points or nodes");
    }
    return ClfReader(std::move(text), path).Read();
}

} // namespace ReferenceRenderer
