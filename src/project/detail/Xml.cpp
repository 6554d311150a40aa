#include <project/detail/Xml.h>

#include <project/ProjectError.h>

#include <TavObjectModel/XmlNesting.h>

#include <cstring>

namespace TavProject
{
namespace detail
{
namespace
{
// Text content is never read: skipping it saves the parser work on large programs.
constexpr int kParseFlags = rapidxml::parse_no_data_nodes | rapidxml::parse_no_element_values;
} // namespace

XmlDocument::XmlDocument(std::string text, const std::string& what)
    : text_(std::move(text)), document_(std::make_unique<rapidxml::xml_document<char>>())
{
    // RapidXml needs the terminating zero and stops at the first one; a zero inside the
    // document would hide the rest from the guard and the parser alike, so both see the same.
    if (Okaro::XmlNestingDepth(text_.c_str(), kMaxXmlDepth) > kMaxXmlDepth)
    {
        throw ProjectError(ProjectErrorKind::TooDeep,
            what + ": XML nested deeper than " + std::to_string(kMaxXmlDepth) + " levels");
    }
    try
    {
        document_->parse<kParseFlags>(&text_[0]);
    }
    catch (const rapidxml::parse_error& error)
    {
        throw ProjectError(ProjectErrorKind::Corrupt, what + ": not well-formed XML: " + error.what());
    }
}

const XmlNode* XmlDocument::Root() const
{
    return document_->first_node();
}

const char* LocalName(const XmlNode& node)
{
    const char* name = node.name();
    const char* colon = std::strchr(name, ':');
    return colon == nullptr ? name : colon + 1;
}

bool IsElement(const XmlNode& node, const char* localName)
{
    return node.type() == rapidxml::node_element && std::strcmp(LocalName(node), localName) == 0;
}

const XmlNode* Child(const XmlNode& node, const char* localName)
{
    for (const XmlNode* child = node.first_node(); child != nullptr; child = child->next_sibling())
    {
        if (IsElement(*child, localName))
            return child;
    }
    return nullptr;
}

const char* AttributeOrNull(const XmlNode& node, const char* name)
{
    const rapidxml::xml_attribute<char>* attribute = node.first_attribute(name);
    return attribute == nullptr ? nullptr : attribute->value();
}

std::string Attribute(const XmlNode& node, const char* name)
{
    const char* value = AttributeOrNull(node, name);
    return value == nullptr ? std::string() : std::string(value);
}
} // namespace detail
} // namespace TavProject
