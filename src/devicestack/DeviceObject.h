#pragma once
// The controller's own communication objects as a KNX device has them: a number, a DPT, the
// group addresses (the first sends, all are listened to), the flags and a name. Each object's
// value id is KnxLdsMapping's CO value id on logical device 1.
#include <platform/KnxDpt.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Lumo
{
// The communication flags as the commissioning software names them.
enum DeviceObjectFlag : unsigned
{
    kFlagCommunication = 1u << 0,  // C: takes part in bus traffic at all
    kFlagRead = 1u << 1,           // R: answers read requests
    kFlagWrite = 1u << 2,          // W: takes writes from the bus
    kFlagTransmit = 1u << 3,       // T: may send
    kFlagUpdate = 1u << 4,         // U: takes responses from the bus
    kFlagReadOnInit = 1u << 5,     // I: reads its value at start
};

struct DeviceObject
{
    unsigned short co = 0;
    std::vector<std::uint16_t> groupAddresses;  // raw; the first is the sending address
    KNXDPT dpt{0, 0, 0};
    unsigned flags = 0;
    std::string name;

    bool Has(DeviceObjectFlag flag) const { return (flags & flag) != 0; }
};

// "CRWTUI" in that order, only the set ones ("CWT"); empty when none is set.
std::string FormatObjectFlags(unsigned flags);
// Any order, each letter of "CRWTUI" at most once, upper or lower case; false for anything
// else, leaving `flags` untouched.
bool ParseObjectFlags(const std::string& text, unsigned& flags);

// KnxLdsMapping's CO value id on logical device 1 (CO 1 is 100101); 0 for a CO it cannot map.
unsigned long ObjectValueId(unsigned short co);

// "1/2/3": the three-level form.
std::string FormatObjectGroupAddress(std::uint16_t address);
// main in the high 16 bits, sub in the low ones, as the codec takes it.
inline std::uint32_t PackedObjectDpt(const KNXDPT& dpt)
{
    return (static_cast<std::uint32_t>(dpt.main) << 16) | dpt.sub;
}
} // namespace Lumo
