#pragma once
// Decimal numbers as arguments and files spell them: digits only, no sign (but a '-' where a
// negative is allowed), no blanks, no other characters.
#include <cstdint>
#include <string>

namespace TavKnx
{
// At least one character, and only '0'-'9'.
bool IsDecimalDigits(const std::string& text);
// Within [0, max]; throws TextError naming `what` otherwise.
std::uint64_t ParseUnsigned(const std::string& text, std::uint64_t max, const char* what);
// Within [min, max]; throws TextError naming `what` otherwise.
std::int64_t ParseSigned(const std::string& text, std::int64_t min, std::int64_t max, const char* what);
} // namespace TavKnx
