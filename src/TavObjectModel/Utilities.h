#pragma once
// Small helpers shared by the library: whole-file reading and byte-level text conversions.
#include <boost/optional.hpp>

#include <string>
#include <vector>

namespace Okaro
{
// The file's bytes; empty when it cannot be opened (the caller reports).
boost::optional<std::vector<char>> LoadFile(const std::string& path);

// Valid UTF-8 comes back unchanged; each invalid sequence becomes one "?".
std::string RepairUTF8(std::string text);

// Each byte of 0x80 or more becomes its two-byte UTF-8 sequence.
std::string Latin1ToUTF8(const char* latin1);

// Joins each two-byte sequence (110xxxxx 10xxxxxx) into one byte and copies every other
// byte; deliberately lossy, without validation.
std::string UTF8ToLatin1(const char* utf8);
} // namespace Okaro
