#include "knx/GroupTelegram.h"

#include <algorithm>

namespace TavKnx
{
namespace
{
// The APCI bits of a group service: two in the first byte, two at the top of the second.
constexpr unsigned kApciRead = 0;
constexpr unsigned kApciResponse = 1;
constexpr unsigned kApciWrite = 2;
constexpr std::uint8_t kShortValueMask = 0x3F;
constexpr unsigned kShortValueBits = 6;

KnxStack::GroupValue MakeValue(const std::uint8_t* apdu, std::size_t length)
{
    if (length == 2)
    {
        const unsigned char shortValue = apdu[1] & kShortValueMask;
        return KnxStack::GroupValue(KnxStack::BinaryData(&shortValue, 1), kShortValueBits);
    }
    const auto count = static_cast<unsigned int>(length - 2);
    return KnxStack::GroupValue(KnxStack::BinaryData(apdu + 2, count), 8 * count);
}
} // namespace

const char* KindName(TelegramKind kind)
{
    switch (kind)
    {
    case TelegramKind::Read:
        return "read";
    case TelegramKind::Response:
        return "response";
    case TelegramKind::Write:
        return "write";
    case TelegramKind::Other:
        return "other";
    case TelegramKind::Invalid:
        break;
    }
    return "invalid";
}

GroupTelegram ParseGroupTelegram(std::uint16_t source, std::uint16_t destination, const std::uint8_t* apdu,
                                 std::size_t length)
{
    GroupTelegram telegram;
    telegram.source = source;
    telegram.destination = destination;
    if (apdu == nullptr || length < 2)
    {
        if (apdu != nullptr)
        {
            telegram.apdu.assign(apdu, apdu + length);
        }
        return telegram;
    }
    telegram.apdu.assign(apdu, apdu + length);
    const unsigned apci = ((apdu[0] & 0x03u) << 2) | (apdu[1] >> 6);
    switch (apci)
    {
    case kApciRead:
        telegram.kind = TelegramKind::Read;
        break;
    case kApciResponse:
        telegram.kind = TelegramKind::Response;
        telegram.value = MakeValue(apdu, length);
        break;
    case kApciWrite:
        telegram.kind = TelegramKind::Write;
        telegram.value = MakeValue(apdu, length);
        break;
    default:
        telegram.kind = TelegramKind::Other;
        break;
    }
    return telegram;
}

std::vector<std::uint8_t> MakeWriteApdu(const KnxStack::GroupValue& value)
{
    const KnxStack::BinaryData& raw = value.GetRawData();
    const bool shortForm = value.GetDefinedSize() <= kShortValueBits;
    // Sized at once: growing a two-byte vector by insert draws a false -Warray-bounds from GCC 12.
    std::vector<std::uint8_t> apdu(shortForm ? 2 : 2 + raw.GetSize(), 0);
    apdu[1] = static_cast<std::uint8_t>(kApciWrite << 6);
    if (shortForm)
    {
        if (raw.GetSize() > 0)
        {
            apdu[1] |= raw.GetData()[0] & kShortValueMask;
        }
        return apdu;
    }
    std::copy(raw.GetData(), raw.GetData() + raw.GetSize(), apdu.begin() + 2);
    return apdu;
}

std::vector<std::uint8_t> MakeReadApdu()
{
    return {0x00, 0x00};
}
} // namespace TavKnx
