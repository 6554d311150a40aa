#include <TavObjectModel/Utilities.h>

#include <platform/Utf8Sequence.h>

#include <utf8cpp/utf8.h>

#include <fstream>
#include <iterator>

namespace Okaro
{
boost::optional<std::vector<char>> LoadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::in | std::ios::binary);
    if (!file)
    {
        return boost::none;
    }
    // A path that opens but cannot be read (a directory) makes the stream buffer throw;
    // for the caller that is a file that could not be read.
    try
    {
        return std::vector<char>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    catch (const std::ios_base::failure&)
    {
        return boost::none;
    }
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
    std::string utf8;
    for (const char* p = latin1; *p != '\0'; ++p)
    {
        const auto byte = static_cast<unsigned char>(*p);
        if (byte < 0x80u)
        {
            utf8 += *p;
        }
        else
        {
            utf8 += static_cast<char>(0xC0u | (byte >> 6));
            utf8 += static_cast<char>(0x80u | (byte & 0x3Fu));
        }
    }
    return utf8;
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
