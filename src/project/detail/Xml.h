#pragma once
// RapidXml behind the nesting guard: documents are scanned for their depth before the parser,
// which recurses once per level, ever sees them.
#include <rapidxml/rapidxml.hpp>

#include <cstddef>
#include <memory>
#include <string>

namespace TavProject
{
namespace detail
{
using XmlNode = rapidxml::xml_node<char>;

// Deeper than anything the project schema nests (about 15 levels in 0.xml, a few dozen in the
// dynamic part of an application program), shallow enough for a thread's stack.
constexpr std::size_t kMaxXmlDepth = 128;

class XmlDocument
{
public:
    // Parses `text` in place; `what` names the document in messages. Throws ProjectError:
    // TooDeep past kMaxXmlDepth, Corrupt when not well-formed.
    XmlDocument(std::string text, const std::string& what);
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;

    // The root element, or null when there is none.
    const XmlNode* Root() const;

private:
    std::string text_;
    // Off the stack: the document holds a 64 KiB pool.
    std::unique_ptr<rapidxml::xml_document<char>> document_;
};

// The element name without a namespace prefix.
const char* LocalName(const XmlNode& node);
bool IsElement(const XmlNode& node, const char* localName);
// The first child element of that local name, or null.
const XmlNode* Child(const XmlNode& node, const char* localName);
// The attribute's value; null when absent.
const char* AttributeOrNull(const XmlNode& node, const char* name);
// The attribute's value; empty when absent.
std::string Attribute(const XmlNode& node, const char* name);
} // namespace detail
} // namespace TavProject
