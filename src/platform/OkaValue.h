#pragma once
// The controller's typed value: a type code, a numeric payload, a text and a sub-type.
#include <platform/OkaString.h>
#include <platform/OkaTime.h>
#include <platform/OkaValueType.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <string>

union OkaNumeric
{
    bool boolean;
    std::uint8_t byte;
    std::uint16_t word;
    std::int32_t integer;
    std::uint32_t dword;
    double real;
    OKATIME time;
};
static_assert(sizeof(OkaNumeric) == 16, "the numeric union is 16 bytes");
static_assert(alignof(OkaNumeric) == 8, "the numeric union is 8-byte aligned");

class OKAVALUE
{
public:
    OKAVALUE();  // type ivtEmpty, numeric part zero, empty text, sub-type 0
    explicit OKAVALUE(OkaValueType type, OkaDP::OkaValueSubType subType = OkaDP::istGeneric);
    OKAVALUE(const OKAVALUE& other) = default;
    OKAVALUE& operator=(const OKAVALUE& other) = default;

    // Sets the type, zeroes the whole numeric union, clears the text and sets the sub-type
    // for the type (Generic for every type).
    void Reset(OkaValueType newType);

    // Printable text for log messages, for example "Float 21.5" or "String \"abc\"".
    std::string ToString() const;

    // Writes the value in the value model's text form (docs/ValueTextForm.md);
    // internal selects the internal form.
    void Serialize(oka_string& out, bool internal) const;
    // Reads either text form. On text it cannot read it returns false and leaves the value
    // exactly as it was.
    bool Deserialize(const oka_string& in);

    static const char* GetNameFromValueType(OkaValueType type);

    // An OKAVALUE of the given type holding a point in time, read as local time. After
    // 2038-01-19 03:14:07 the result is a default value (type ivtEmpty, no time).
    // A not-a-date-time or infinite point throws std::out_of_range ("tm unable to handle ...").
    static OKAVALUE FromPointInTime(OkaValueType type, const boost::posix_time::ptime& when);

    // The default value of ivtDayTime: 2000-01-01 00:00:00, weekday 7 (no day), kind 1,
    // sub-type istDefaultValue.
    static OKAVALUE DefaultDayTime();

    OkaValueType type;
    OkaNumeric numeric;
    oka_string text;
    OkaDP::OkaValueSubType subType;
};

bool operator==(const OKAVALUE& a, const OKAVALUE& b);  // type, sub-type, payload and text
inline bool operator!=(const OKAVALUE& a, const OKAVALUE& b) { return !(a == b); }

// The value model's generic byte codec (docs/ValueTextForm.md, "Generic byte codec").
// length: room in bytes on entry, bytes written on return.
bool OkaValueToByteArray(const OKAVALUE& value, unsigned char* bytes, unsigned int& length);
// asText: read the bytes as a string value instead of as a number.
bool ByteArrayToOkaValue(const unsigned char* bytes, unsigned int count, OKAVALUE& value, bool asText);
