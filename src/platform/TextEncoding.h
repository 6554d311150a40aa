#pragma once
// Byte strings that say which encoding they hold, and the conversions between them.
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
} // namespace Okaro
