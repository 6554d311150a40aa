#include <platform/TextEncoding.h>

#include <platform/Utf8Sequence.h>

#include <utf8cpp/utf8.h>

#include <iterator>

namespace Okaro
{
UTF8String getUTF8FromLatin1(const KnxStyleString& latin1)
{
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char byte : latin1)
    {
        // Latin-1 is the first 256 code points of Unicode.
        utf8::append(static_cast<unsigned char>(byte), std::back_inserter(utf8));
    }
    return UTF8String(std::move(utf8));
}

KnxStyleString getLatin1FromUTF8Lossy(const UTF8String& utf8)
{
    std::string latin1;
    latin1.reserve(utf8.size());
    const char* position = utf8.data();
    const char* const end = position + utf8.size();
    while (position != end)
    {
        const Utf8Sequence sequence = ReadUtf8Sequence(position, end);
        const bool representable = sequence.fault == Utf8Fault::None && sequence.codePoint <= 0xFFu;
        latin1 += representable ? static_cast<char>(static_cast<unsigned char>(sequence.codePoint)) : '?';
        position += sequence.length;
    }
    return KnxStyleString(std::move(latin1));
}

std::string RepairUTF8(std::string text)
{
    if (utf8::is_valid(text.begin(), text.end()))
    {
        return text;
    }
    // The sentinel makes a sequence cut off at the end read as incomplete instead of
    // running past the end.
    text.push_back('\0');
    std::string repaired;
    repaired.reserve(text.size());
    const char* position = text.data();
    const char* const end = position + text.size();
    while (position != end)
    {
        const Utf8Sequence sequence = ReadUtf8Sequence(position, end);
        switch (sequence.fault)
        {
        case Utf8Fault::None:
            utf8::append(sequence.codePoint, std::back_inserter(repaired));
            break;
        case Utf8Fault::NotEnoughRoom:
            throw utf8::not_enough_room();  // the sentinel rules this out
        default:
            repaired += '?';
            break;
        }
        position += sequence.length;
    }
    if (!repaired.empty() && repaired.back() == '\0')
    {
        repaired.pop_back();
    }
    return repaired;
}

std::string Latin1ToUTF8(const char* latin1)
{
    return getUTF8FromLatin1(KnxStyleString(latin1));
}

std::string UTF8ToLatin1(const char* utf8)
{
    std::string latin1;
    for (const char* p = utf8; *p != '\0'; ++p)
    {
        const auto byte = static_cast<unsigned char>(*p);
        // A lead byte right before the terminator has no partner: it is copied as it is,
        // and the terminator still ends the text.
        if ((byte & 0xE0u) == 0xC0u && p[1] != '\0')
        {
            ++p;
            latin1 += static_cast<char>(static_cast<unsigned char>((byte << 6) | (static_cast<unsigned char>(*p) & 0x3Fu)));
        }
        else
        {
            latin1 += *p;
        }
    }
    return latin1;
}
} // namespace Okaro
