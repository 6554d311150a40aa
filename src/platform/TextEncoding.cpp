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
} // namespace Okaro
