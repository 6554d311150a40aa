#pragma once
// Byte strings that say which encoding they hold, and every conversion between UTF-8 and
// Latin-1 that the platform and the library use.
#include <string>
#include <utility>

namespace Okaro
{
// Bytes holding UTF-8 text.
class UTF8String : public std::string
{
public:
    UTF8String() = default;
    explicit UTF8String(std::string bytes) : std::string(std::move(bytes)) {}
    explicit UTF8String(const char* bytes) : std::string(bytes) {}
};

// Bytes holding Latin-1 text, as KNX strings carry it.
class KnxStyleString : public std::string
{
public:
    KnxStyleString() = default;
    explicit KnxStyleString(std::string bytes) : std::string(std::move(bytes)) {}
    explicit KnxStyleString(const char* bytes) : std::string(bytes) {}
};

// Every Latin-1 byte becomes its UTF-8 sequence.
UTF8String getUTF8FromLatin1(const KnxStyleString& latin1);
// Characters up to U+00FF become their Latin-1 byte; any other character and every
// invalid sequence becomes one "?".
KnxStyleString getLatin1FromUTF8Lossy(const UTF8String& utf8);

// Valid UTF-8 comes back unchanged; each invalid sequence becomes one "?".
std::string RepairUTF8(std::string text);

// Each byte of 0x80 or more becomes its two-byte UTF-8 sequence; getUTF8FromLatin1 up to
// the terminator.
std::string Latin1ToUTF8(const char* latin1);

// Joins each two-byte sequence (110xxxxx 10xxxxxx) into one byte and copies every other
// byte; deliberately lossy, without validation (unlike getLatin1FromUTF8Lossy).
std::string UTF8ToLatin1(const char* utf8);
} // namespace Okaro
