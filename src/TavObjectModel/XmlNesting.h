#pragma once
// Element nesting depth of an XML text as RapidXml's parser would see it. The parser recurses
// once per nesting level without a limit, so a hostile file can overflow the stack; this scan
// finds the depth first, without recursion.
#include <cstddef>

namespace Okaro
{
// Follows RapidXml's grammar for its default flags (byte order mark, element and attribute
// names, quoted attribute values, comments, CDATA, processing instructions, DOCTYPE) so that
// no element the parser would open is overlooked. Stops at the terminating zero, where the
// parser would report a syntax error, or as soon as the depth exceeds `stopAbove`.
// Returns the deepest level reached; `text` must be zero-terminated.
std::size_t XmlNestingDepth(const char* text, std::size_t stopAbove);
} // namespace Okaro
