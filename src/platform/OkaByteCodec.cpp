// The value model's generic byte codec: numbers big-endian, as KNX puts them on the wire.
#include <platform/OkaValue.h>
#include <platform/OkaValueFamily.h>
#include <platform/detail/FloatNarrowing.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace
{
void PutBigEndian(std::uint32_t number, unsigned char* bytes, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i)
    {
        bytes[count - 1 - i] = static_cast<unsigned char>(number >> (8 * i));
    }
}

std::uint32_t GetBigEndian(const unsigned char* bytes, unsigned int count)
{
    std::uint32_t number = 0;
    for (unsigned int i = 0; i < count; ++i)
    {
        number = (number << 8) | bytes[i];
    }
    return number;
}

// Writes `count` bytes when they fit in `length`; on success `length` becomes `count`.
bool PutNumber(std::uint32_t number, unsigned int count, unsigned char* bytes, unsigned int& length)
{
    if (length < count)
    {
        return false;
    }
    PutBigEndian(number, bytes, count);
    length = count;
    return true;
}

std::uint32_t SingleBits(double value)
{
    const float single = Okaro::NarrowToFloat(value);
    std::uint32_t bits = 0;
    std::memcpy(&bits, &single, sizeof bits);
    return bits;
}

// Rounded to nearest and clamped to what `count` unsigned bytes hold (NaN gives 0).
std::uint32_t ClampedUnsigned(double value, unsigned int count)
{
    const double maximum = std::ldexp(1.0, static_cast<int>(8 * count)) - 1.0;
    const double rounded = std::round(value);
    if (!(rounded > 0.0))
    {
        return 0;
    }
    return rounded >= maximum ? static_cast<std::uint32_t>(maximum) : static_cast<std::uint32_t>(rounded);
}

bool PutReal(double value, unsigned char* bytes, unsigned int& length)
{
    if (length >= 4)
    {
        return PutNumber(SingleBits(value), 4, bytes, length);
    }
    if (length == 0)
    {
        return false;
    }
    return PutNumber(ClampedUnsigned(value, length), length, bytes, length);
}

bool PutText(const oka_string& text, unsigned char* bytes, unsigned int& length)
{
    if (text.length() > length)
    {
        return false;
    }
    if (text.length() > 0)
    {
        std::memcpy(bytes, text.c_str(), text.length());
    }
    length = static_cast<unsigned int>(text.length());
    return true;
}

bool PutTime(const OKATIME& time, unsigned char* bytes, unsigned int& length)
{
    if (length < 8)
    {
        return false;
    }
    PutBigEndian(time.year, bytes, 2);
    bytes[2] = time.month;
    bytes[3] = time.day;
    bytes[4] = time.hour;
    bytes[5] = time.minute;
    bytes[6] = time.second;
    bytes[7] = static_cast<unsigned char>(time.weekday);
    length = 8;
    return true;
}
} // namespace

bool OkaValueToByteArray(const OKAVALUE& value, unsigned char* bytes, unsigned int& length)
{
    const OkaNumeric& numeric = value.numeric;
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Bool:
        return PutNumber(numeric.byte != 0 ? 1u : 0u, 1, bytes, length);
    case OkaValueFamily::Byte:
        return PutNumber(numeric.byte, 1, bytes, length);
    case OkaValueFamily::Word:
        return PutNumber(numeric.word, 2, bytes, length);
    case OkaValueFamily::Integer:
        return PutNumber(static_cast<std::uint32_t>(numeric.integer), 4, bytes, length);
    case OkaValueFamily::DWord:
        return PutNumber(numeric.dword, 4, bytes, length);
    case OkaValueFamily::Float:
        return PutReal(numeric.real, bytes, length);
    case OkaValueFamily::String:
        return PutText(value.text, bytes, length);
    case OkaValueFamily::Time:
        return PutTime(numeric.time, bytes, length);
    case OkaValueFamily::Empty:
    case OkaValueFamily::Raw:
        break;
    }
    return false;
}

bool ByteArrayToOkaValue(const unsigned char* bytes, unsigned int count, OKAVALUE& value, bool asText)
{
    if (bytes == nullptr && count > 0)
    {
        return false;
    }
    if (asText)
    {
        value.Reset(ivtString);
        value.text.assign(reinterpret_cast<const char*>(bytes), count);
        return true;
    }
    switch (count)
    {
    case 1:
        value.Reset(ivtByte);
        value.numeric.byte = bytes[0];
        return true;
    case 2:
        value.Reset(ivtWord);
        value.numeric.word = static_cast<std::uint16_t>(GetBigEndian(bytes, 2));
        return true;
    case 3:
    case 4:
        value.Reset(ivtDWord);
        value.numeric.dword = GetBigEndian(bytes, count);
        return true;
    default:
        return false;
    }
}
