#include "GroupTelegram.h"

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
    // Room for the payload first: appending to a vector built from a two-byte list makes
    // GCC 12 warn of a copy out of bounds that cannot happen.
    std::vector<std::uint8_t> apdu;
    apdu.reserve(2 + raw.GetSize());
    apdu.push_back(0x00);
    apdu.push_back(static_cast<std::uint8_t>(kApciWrite << 6));
    if (value.GetDefinedSize() <= kShortValueBits)
    {
        if (raw.GetSize() > 0)
        {
            apdu[1] |= raw.GetData()[0] & kShortValueMask;
        }
        return apdu;
    }
    apdu.insert(apdu.end(), raw.GetData(), raw.GetData() + raw.GetSize());
    return apdu;
}

std::vector<std::uint8_t> MakeReadApdu()
{
    return {0x00, 0x00};
}
} // namespace TavKnx
