#pragma once
// A group telegram as the KNX daemon's group socket hands it over: source, destination and the
// APDU (two bytes of TPCI/APCI, the low 6 bits of the second holding a short value, then the
// bytes of a long value).
#include <platform/GroupValue.h>

#include <cstdint>
#include <string>
#include <vector>

namespace TavKnx
{
enum class TelegramKind
{
    Read,
    Response,
    Write,
    Other,    // another service on a group address (not a group value)
    Invalid,  // fewer than two bytes: no service at all
};

// "read", "response", "write", "other", "invalid".
const char* KindName(TelegramKind kind);

struct GroupTelegram
{
    std::uint16_t source = 0;
    std::uint16_t destination = 0;
    TelegramKind kind = TelegramKind::Invalid;
    std::vector<std::uint8_t> apdu;  // as received
    // The value of a write or response: a short value (APDU of two bytes) has defined size 6,
    // as the library expects from the bus; a long one 8 bits per byte after the APCI.
    KnxStack::GroupValue value;
    bool HasValue() const { return kind == TelegramKind::Write || kind == TelegramKind::Response; }
};

// Reads any bytes; never throws.
GroupTelegram ParseGroupTelegram(std::uint16_t source, std::uint16_t destination, const std::uint8_t* apdu,
                                 std::size_t length);

// The APDU of a group write of `value`: the short form when its defined size is 6 bits or less
// (the value in the low 6 bits of the second byte), else the bytes after the APCI.
std::vector<std::uint8_t> MakeWriteApdu(const KnxStack::GroupValue& value);
// The APDU of a read request.
std::vector<std::uint8_t> MakeReadApdu();
} // namespace TavKnx
