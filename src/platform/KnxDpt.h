#pragma once
// A KNX datapoint type: group value size in bits, main number and sub number.
#include <cstdint>

struct KNXDPT
{
    std::uint8_t size;   // bits of the group value; 0 = not known
    std::uint16_t main;  // DPT main number; 0 = no DPT given
    std::uint16_t sub;   // DPT sub number; 0 also serves as the ".x" wildcard
};
