#include <platform/GroupValue.h>

#include <platform/KnxFloat16.h>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace KnxStack
{
namespace
{
std::uint32_t ReadBigEndian(const unsigned char* bytes, unsigned int count)
{
    std::uint32_t value = 0;
    for (unsigned int i = 0; i < count; ++i)
    {
        value = (value << 8) | bytes[i];
    }
    return value;
}

void WriteBigEndian(std::uint32_t value, unsigned char* bytes, unsigned int count)
{
    for (unsigned int i = count; i-- > 0;)
    {
        bytes[i] = static_cast<unsigned char>(value & 0xFFu);
        value >>= 8;
    }
}

unsigned char LowBits(int value, unsigned int mask) { return static_cast<unsigned char>(static_cast<unsigned int>(value) & mask); }

constexpr unsigned int String14Length = 14;
} // namespace

// Out of line, so that the check itself stays a compare and a branch in every getter.
void GroupValue::ThrowTooShort(const char* accessor, unsigned int count) const
{
    std::ostringstream text;
    text << accessor << ": needs " << count << " bytes, has " << rawData_.GetSize();
    throw GroupValueException(text.str());
}

GroupValue::GroupValue(const BinaryData& rawData, unsigned int definedSize)
    : rawData_(rawData), definedSize_(definedSize)
{
}

void GroupValue::SetRawData(const BinaryData& rawData)
{
    rawData_ = rawData;
    definedSize_ = 8 * rawData.GetSize();
}

void GroupValue::SetBytes(const unsigned char* bytes, unsigned int count, unsigned int definedSize)
{
    // In place: a group value reused for sending keeps its buffer instead of allocating anew.
    rawData_.Assign(bytes, count);
    definedSize_ = definedSize;
}

void GroupValue::SetAsBoolean(bool value)
{
    const unsigned char byte = value ? 1 : 0;
    SetBytes(&byte, 1, 1);
}

void GroupValue::SetAsUnsigned2(unsigned char value)
{
    // Bit 4 marks the control-nibble form (16/17); otherwise bit 1 is the control bit.
    const unsigned char control = (value & 0x10u) != 0 ? 0x02u : (value & 0x02u);
    const unsigned char byte = static_cast<unsigned char>(control | (value & 0x01u));
    SetBytes(&byte, 1, 2);
}

void GroupValue::SetAsUnsigned4(unsigned char value)
{
    const unsigned char byte = value & 0x0Fu;
    SetBytes(&byte, 1, 4);
}

void GroupValue::SetAsUnsigned8(unsigned char value) { SetBytes(&value, 1, 8); }

void GroupValue::SetAsSigned8(signed char value)
{
    const auto byte = static_cast<unsigned char>(value);
    SetBytes(&byte, 1, 8);
}

void GroupValue::SetAsChar(char value)
{
    const auto byte = static_cast<unsigned char>(value);
    SetBytes(&byte, 1, 8);
}

void GroupValue::SetAsUnsigned16(unsigned short value)
{
    unsigned char bytes[2];
    WriteBigEndian(value, bytes, 2);
    SetBytes(bytes, 2, 16);
}

void GroupValue::SetAsSigned16(short value) { SetAsUnsigned16(static_cast<unsigned short>(value)); }

void GroupValue::SetAsUnsigned32(std::uint32_t value)
{
    unsigned char bytes[4];
    WriteBigEndian(value, bytes, 4);
    SetBytes(bytes, 4, 32);
}

void GroupValue::SetAsSigned32(std::int32_t value) { SetAsUnsigned32(static_cast<std::uint32_t>(value)); }

void GroupValue::SetAsFloat16(double value) { SetAsUnsigned16(EncodeKnxFloat16(value)); }

void GroupValue::SetAsFloat32(float value)
{
    static_assert(sizeof(float) == sizeof(std::uint32_t), "IEEE single expected");
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    SetAsUnsigned32(bits);
}

void GroupValue::SetAsDate(int day, int month, int year)
{
    const int yearInCentury = ((year % 100) + 100) % 100;  // also for a negative year
    const unsigned char bytes[3] = {LowBits(day, 0x1Fu), LowBits(month, 0x0Fu),
                                    static_cast<unsigned char>(yearInCentury)};
    SetBytes(bytes, 3, 24);
}

void GroupValue::SetAsTimeOfDay(int hour, int minute, int second, DayOfWeek day)
{
    const auto dayBits = static_cast<unsigned int>(day) & 0x07u;
    const unsigned char bytes[3] = {static_cast<unsigned char>((dayBits << 5) | LowBits(hour, 0x1Fu)),
                                    LowBits(minute, 0x3Fu), LowBits(second, 0x3Fu)};
    SetBytes(bytes, 3, 24);
}

void GroupValue::SetAsString14(const std::string& text)
{
    unsigned char bytes[String14Length] = {};
    std::memcpy(bytes, text.data(), std::min<std::size_t>(text.size(), String14Length));
    SetBytes(bytes, String14Length, 8 * String14Length);
}

bool GroupValue::GetAsBoolean() const { return (RequireBytes("GetAsBoolean", 1)[0] & 0x01u) != 0; }

unsigned char GroupValue::GetAsUnsigned2() const { return RequireBytes("GetAsUnsigned2", 1)[0] & 0x03u; }

unsigned char GroupValue::GetAsUnsigned3() const { return RequireBytes("GetAsUnsigned3", 1)[0] & 0x07u; }

unsigned char GroupValue::GetAsUnsigned4() const { return RequireBytes("GetAsUnsigned4", 1)[0] & 0x0Fu; }

unsigned char GroupValue::GetAsUnsigned8() const { return RequireBytes("GetAsUnsigned8", 1)[0]; }

signed char GroupValue::GetAsSigned8() const
{
    const unsigned char byte = RequireBytes("GetAsSigned8", 1)[0];
    return static_cast<signed char>(byte >= 0x80u ? byte - 0x100 : byte);
}

short GroupValue::GetAsSigned16() const
{
    const std::uint32_t bits = ReadBigEndian(RequireBytes("GetAsSigned16", 2), 2);
    return static_cast<short>(bits >= 0x8000u ? static_cast<std::int32_t>(bits) - 0x10000 : static_cast<std::int32_t>(bits));
}

std::uint32_t GroupValue::GetAsUnsigned32() const
{
    return ReadBigEndian(RequireBytes("GetAsUnsigned32", 4), 4);
}

std::int32_t GroupValue::GetAsSigned32() const
{
    const std::uint32_t bits = ReadBigEndian(RequireBytes("GetAsSigned32", 4), 4);
    std::int32_t value = 0;
    std::memcpy(&value, &bits, sizeof value);  // two's complement without implementation-defined casts
    return value;
}

float GroupValue::GetAsFloat32() const
{
    const std::uint32_t bits = ReadBigEndian(RequireBytes("GetAsFloat32", 4), 4);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void GroupValue::GetAsDate(int* day, int* month, int* year) const
{
    const unsigned char* bytes = RequireBytes("GetAsDate", 3);
    *day = bytes[0] & 0x1F;
    *month = bytes[1] & 0x0F;
    // The whole byte counts (100 reads as 2000), so a year byte beyond 99 stays visible.
    *year = bytes[2] < 90 ? 2000 + bytes[2] : 1900 + bytes[2];
}

void GroupValue::GetAsTimeOfDay(int* hour, int* minute, int* second, DayOfWeek* day) const
{
    const unsigned char* bytes = RequireBytes("GetAsTimeOfDay", 3);
    *hour = bytes[0] & 0x1F;
    *minute = bytes[1] & 0x3F;
    *second = bytes[2] & 0x3F;
    *day = static_cast<DayOfWeek>(bytes[0] >> 5);
}

std::string GroupValue::GetAsString14() const
{
    const auto* bytes = reinterpret_cast<const char*>(RequireBytes("GetAsString14", String14Length));
    return std::string(bytes, std::find(bytes, bytes + String14Length, '\0'));
}
} // namespace KnxStack
