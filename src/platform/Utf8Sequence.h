#pragma once
// Splits UTF-8 bytes into sequences, one at a time, so that every converter skips a bad
// sequence the same way.
#include <cstddef>
#include <cstdint>

namespace Okaro
{
enum class Utf8Fault
{
    None,
    InvalidLead,       // a byte that cannot start a sequence; skipped alone
    Incomplete,        // a continuation byte is missing
    Overlong,          // a code point written with more bytes than it needs
    InvalidCodePoint,  // a surrogate or above U+10FFFF
    NotEnoughRoom,     // the bytes end inside the sequence
};

struct Utf8Sequence
{
    std::uint32_t codePoint;  // meaningful only without a fault
    std::size_t length;       // bytes taken by the sequence; for a fault, the bytes to skip
    Utf8Fault fault;
};

// Reads the sequence starting at `begin` (begin < end). A faulty sequence other than an
// invalid lead byte spans the lead byte and every continuation byte (10xxxxxx) after it.
Utf8Sequence ReadUtf8Sequence(const char* begin, const char* end);
} // namespace Okaro
