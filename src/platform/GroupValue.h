#pragma once
// A KNX group value: raw bytes and the defined size in bits, with typed accessors that
// encode and decode the KNX datapoint formats of each size.
#include <platform/BinaryData.h>
#include <platform/DayOfWeek.h>
#include <platform/KnxFloat16.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace KnxStack
{
// Thrown by the accessors when the raw data holds fewer bytes than the encoding reads.
class GroupValueException : public std::runtime_error
{
public:
    explicit GroupValueException(const std::string& what) : std::runtime_error(what) {}
};

class GroupValue
{
public:
    // KNX numbering of the day of week in a DPT 10 time of day.
    using DayOfWeek = KnxStack::DayOfWeek;

    GroupValue() = default;  // no bytes, defined size 0
    GroupValue(const BinaryData& rawData, unsigned int definedSize);
    virtual ~GroupValue() = default;
    GroupValue(const GroupValue&) = default;
    GroupValue& operator=(const GroupValue&) = default;

    // Bits of the value; a short value of up to 6 bits is reported as 6 when it comes
    // from the bus.
    unsigned int GetDefinedSize() const { return definedSize_; }
    const BinaryData& GetRawData() const { return rawData_; }
    // Takes the bytes; the defined size becomes 8 bits a byte.
    void SetRawData(const BinaryData& rawData);

    // Setters mask or clamp to their encoding, never throw, and set the defined size.
    void SetAsBoolean(bool value);                 // 1 bit
    // 2 bits: plain form 0..3 (bit 1 control, bit 0 value), or the control-nibble form
    // 16/17 (bit 4 control, bit 0 value).
    void SetAsUnsigned2(unsigned char value);
    void SetAsUnsigned4(unsigned char value);      // 4 bits (DPT 3: bit 3 direction, bits 0..2 step)
    void SetAsUnsigned8(unsigned char value);      // 8 bits
    void SetAsSigned8(signed char value);          // 8 bits, two's complement
    void SetAsChar(char value);                    // 8 bits
    void SetAsUnsigned16(unsigned short value);    // 16 bits, big endian
    void SetAsSigned16(short value);               // 16 bits, big endian
    void SetAsUnsigned32(std::uint32_t value);     // 32 bits, big endian
    void SetAsSigned32(std::int32_t value);        // 32 bits, big endian
    // 2-octet KNX float (DPT 9), rounded to the nearest representable value; NaN and
    // 32767.0 write the invalid code 0x7FFF; other values outside the range clamp to
    // 0x7FFE or 0xF800.
    void SetAsFloat16(double value);
    void SetAsFloat32(float value);                // IEEE 754 single, big endian
    void SetAsDate(int day, int month, int year);  // 3 octets; the year byte is year mod 100
    void SetAsTimeOfDay(int hour, int minute, int second, DayOfWeek day);  // 3 octets
    void SetAsString14(const std::string& text);   // 14 octets, cut or padded with zeros

    // Getters read the low bits of the bytes they need from the start of the raw data,
    // whatever the defined size, and throw GroupValueException only on truncated data.
    bool GetAsBoolean() const;
    unsigned char GetAsUnsigned2() const;  // plain form 0..3
    unsigned char GetAsUnsigned3() const;
    unsigned char GetAsUnsigned4() const;
    unsigned char GetAsUnsigned8() const;
    signed char GetAsSigned8() const;
    unsigned short GetAsUnsigned16() const
    {
        const unsigned char* bytes = RequireBytes("GetAsUnsigned16", 2);
        return static_cast<unsigned short>((bytes[0] << 8) | bytes[1]);
    }
    short GetAsSigned16() const;
    std::uint32_t GetAsUnsigned32() const;
    std::int32_t GetAsSigned32() const;
    double GetAsFloat16() const  // NaN for the invalid code 0x7FFF
    {
        const unsigned char* bytes = RequireBytes("GetAsFloat16", 2);
        return DecodeKnxFloat16(static_cast<std::uint16_t>((bytes[0] << 8) | bytes[1]));
    }
    float GetAsFloat32() const;
    // Bytes 0..2 only; year byte < 90 is 2000 + byte, else 1900 + byte.
    void GetAsDate(int* day, int* month, int* year) const;
    void GetAsTimeOfDay(int* hour, int* minute, int* second, DayOfWeek* day) const;
    std::string GetAsString14() const;  // up to 14 bytes, ends at the first zero byte

    bool operator==(const GroupValue& other) const
    {
        return definedSize_ == other.definedSize_ && rawData_ == other.rawData_;
    }
    bool operator!=(const GroupValue& other) const { return !(*this == other); }

private:
    // The first `count` bytes; throws GroupValueException, naming `accessor`, when there are
    // fewer. Inline where the 2-octet getters use it: they are on every DPT 7, 8 and 9
    // telegram's path.
    const unsigned char* RequireBytes(const char* accessor, unsigned int count) const
    {
        if (rawData_.GetSize() < count)
        {
            ThrowTooShort(accessor, count);
        }
        return rawData_.GetData();
    }
    [[noreturn]] [[gnu::cold]] void ThrowTooShort(const char* accessor, unsigned int count) const;
    void SetBytes(const unsigned char* bytes, unsigned int count, unsigned int definedSize);

    BinaryData rawData_;
    unsigned int definedSize_ = 0;
};
} // namespace KnxStack
