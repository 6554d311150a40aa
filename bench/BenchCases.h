#pragma once
// One representative DPT per converter family, with a valid telegram and a valid value in
// the value model's text form.
#include <platform/GroupValue.h>
#include <platform/KnxDpt.h>
#include <platform/OkaValue.h>

#include <cstdint>
#include <string>
#include <vector>

namespace TavBench
{
struct DptCase
{
    const char* name;
    KNXDPT dpt;
    std::vector<std::uint8_t> bytes;
    const char* valueText;
    // False where the front never encodes the family (3.x wants a byte its float entry
    // refuses, 5.x refuses bytes): only decoding is measured.
    bool encodes = true;

    KnxStack::GroupValue Telegram() const
    {
        return KnxStack::GroupValue(KnxStack::BinaryData(bytes.data(), static_cast<unsigned>(bytes.size())), dpt.size);
    }
    OKAVALUE Value() const
    {
        OKAVALUE value;
        value.Deserialize(oka_string(valueText));
        return value;
    }
    std::uint32_t Packed() const { return static_cast<std::uint32_t>(dpt.main) << 16 | dpt.sub; }
};

inline const std::vector<DptCase>& FamilyCases()
{
    static const std::vector<DptCase> cases = {
        {"1.001", {1, 1, 1}, {0x01}, "2/2001:true"},
        {"3.007", {4, 3, 7}, {0x0B}, "3/3002:50", false},
        {"4.001", {8, 4, 1}, {0x41}, "10/8001:A"},
        {"5.010", {8, 5, 10}, {0x80}, "6:128", false},
        {"6.010", {8, 6, 10}, {0xFB}, "4:-5"},
        {"7.001", {16, 7, 1}, {0x12, 0x34}, "7:4660"},
        {"8.001", {16, 8, 1}, {0xFF, 0xFE}, "4:-2"},
        {"9.001", {16, 9, 1}, {0x0C, 0x1A}, "3/3003:21.5"},
        {"10.001", {24, 10, 1}, {0x2D, 0x1E, 0x0F}, "12:2000-01-01T13:30:15.00;w=1;k=1;l=1;d=0"},
        {"11.001", {24, 11, 1}, {0x1F, 0x0C, 0x18}, "11:2024-12-31T00:00:00.00;w=2;k=0;l=1;d=0"},
        {"12.001", {32, 12, 1}, {0x00, 0x01, 0x02, 0x03}, "8:66051"},
        {"13.001", {32, 13, 1}, {0xFF, 0xFF, 0xFF, 0xFE}, "4:-2"},
        {"14.056", {32, 14, 56}, {0x41, 0xAC, 0x00, 0x00}, "3:21.5"},
        {"16.001", {112, 16, 1}, {'H', 'a', 'l', 'l', 'o', 0, 0, 0, 0, 0, 0, 0, 0, 0}, "10/8002:Hallo"},
        {"17.001", {8, 17, 1}, {0x05}, "4/4001:5"},
        {"19.001", {64, 19, 1}, {0x7C, 0x05, 0x01, 0x2D, 0x1E, 0x0F, 0x20, 0x00},
         "13:2024-05-01T13:30:15.00;w=3;k=0;l=1;d=0"},
        {"232.600", {24, 232, 600}, {0x10, 0x20, 0x30}, "8:1056816"},
    };
    return cases;
}

inline const DptCase& FindCase(const std::string& name)
{
    for (const DptCase& c : FamilyCases())
        if (name == c.name)
            return c;
    return FamilyCases().front();
}
} // namespace TavBench
