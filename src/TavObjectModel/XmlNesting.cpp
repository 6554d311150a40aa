#include <TavObjectModel/XmlNesting.h>

#include <algorithm>
#include <cstring>

namespace Okaro
{
namespace
{
// Character classes of RapidXml's lookup tables.
bool IsWhitespace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool IsNodeNameChar(char c) { return c != '\0' && !IsWhitespace(c) && c != '/' && c != '>' && c != '?'; }

bool IsAttributeNameChar(char c) { return IsNodeNameChar(c) && c != '!' && c != '<' && c != '='; }

const char* SkipNodeName(const char* p)
{
    while (IsNodeNameChar(*p))
    {
        ++p;
    }
    return p;
}

const char* SkipWhitespace(const char* p)
{
    while (IsWhitespace(*p))
    {
        ++p;
    }
    return p;
}

// Past the next `terminator`, or nullptr at the end of the text.
const char* SkipPast(const char* p, const char* terminator)
{
    const char* found = std::strstr(p, terminator);
    return found == nullptr ? nullptr : found + std::strlen(terminator);
}

const char* SkipDoctype(const char* p)
{
    while (*p != '>')
    {
        if (*p == '\0')
        {
            return nullptr;
        }
        if (*p == '[')
        {
            ++p;
            for (int brackets = 1; brackets > 0; ++p)
            {
                if (*p == '[')
                {
                    ++brackets;
                }
                else if (*p == ']')
                {
                    --brackets;
                }
                else if (*p == '\0')
                {
                    return nullptr;
                }
            }
            continue;
        }
        ++p;
    }
    return p + 1;
}

// `p` points behind "<?" or "<!": skips a declaration, processing instruction, comment, CDATA
// section, DOCTYPE or other "<!...>" construct; nullptr at the end of the text.
const char* SkipMarkup(const char* p)
{
    if (*p == '?')
    {
        return SkipPast(p + 1, "?>");
    }
    if (std::strncmp(p, "!--", 3) == 0)
    {
        return SkipPast(p + 3, "-->");
    }
    if (std::strncmp(p, "![CDATA[", 8) == 0)
    {
        return SkipPast(p + 8, "]]>");
    }
    if (std::strncmp(p, "!DOCTYPE", 8) == 0 && IsWhitespace(p[8]))
    {
        return SkipDoctype(p + 9);
    }
    return SkipPast(p + 1, ">");
}

// `p` points behind the element name; skips the attributes. nullptr on a syntax error.
const char* SkipAttributes(const char* p)
{
    while (IsAttributeNameChar(*p))
    {
        while (IsAttributeNameChar(*p))
        {
            ++p;
        }
        p = SkipWhitespace(p);
        if (*p != '=')
        {
            return nullptr;
        }
        p = SkipWhitespace(p + 1);
        const char quote = *p;
        if (quote != '"' && quote != '\'')
        {
            return nullptr;
        }
        ++p;
        while (*p != quote && *p != '\0')
        {
            ++p;
        }
        if (*p != quote)
        {
            return nullptr;
        }
        p = SkipWhitespace(p + 1);
    }
    return p;
}
} // namespace

std::size_t XmlNestingDepth(const char* text, std::size_t stopAbove)
{
    const char* p = text;
    if (std::strncmp(p, "\xEF\xBB\xBF", 3) == 0)
    {
        p += 3;
    }
    std::size_t depth = 0;
    std::size_t deepest = 0;
    while (p != nullptr)
    {
        p = SkipWhitespace(p);
        if (*p != '<')
        {
            if (depth == 0 || *p == '\0')
            {
                break;  // end of the document, or where the parser fails
            }
            while (*p != '<' && *p != '\0')
            {
                ++p;  // character data
            }
            continue;
        }
        ++p;
        if (*p == '/' && depth > 0)
        {
            p = SkipWhitespace(SkipNodeName(p + 1));
            if (*p != '>')
            {
                break;
            }
            ++p;
            --depth;
            continue;
        }
        if (*p == '?' || *p == '!')
        {
            p = SkipMarkup(p);
            continue;
        }
        const char* name = p;
        p = SkipNodeName(p);
        if (p == name)
        {
            break;
        }
        ++depth;
        deepest = std::max(deepest, depth);
        if (deepest > stopAbove)
        {
            break;
        }
        p = SkipAttributes(SkipWhitespace(p));
        if (p == nullptr)
        {
            break;
        }
        if (*p == '>')
        {
            ++p;
        }
        else if (p[0] == '/' && p[1] == '>')
        {
            p += 2;
            --depth;
        }
        else
        {
            break;
        }
    }
    return deepest;
}
} // namespace Okaro
