// The standard rows of the DPT value map: per DPT the bit size, value type, sub-type and the
// converter with its range. Nothing here logs.
#include <TavObjectModel/detail/DptValueTable.h>

#include <algorithm>

namespace Okaro
{
namespace
{
template <typename Converter>
std::unique_ptr<KnxConverter> Plain()
{
    return std::make_unique<Converter>();
}

// Both ranges given; the scale factor is computed from them right away.
template <typename Converter, typename... Bounds>
std::unique_ptr<KnxConverter> Ranged(Bounds... bounds)
{
    return std::make_unique<Converter>(Converter::Range::CreateScaled(bounds...));
}

// Internal and external range equal (scale 1.0).
template <typename Converter, typename Bound>
std::unique_ptr<KnxConverter> Same(Bound minimum, Bound maximum)
{
    return Ranged<Converter>(minimum, maximum, minimum, maximum);
}

using C = std::unique_ptr<KnxConverter>;
constexpr auto kBool = ivtBool;
constexpr auto kFloat = ivtFloat;
constexpr auto kInteger = ivtInteger;
constexpr auto kByte = ivtByte;
constexpr auto kWord = ivtWord;
constexpr auto kDWord = ivtDWord;
constexpr auto kString = ivtString;
constexpr auto kGeneric = OkaDP::istGeneric;
constexpr auto kQuantity = OkaDP::istPhysicalQuantity;
constexpr auto kAscii = OkaDP::istAsciiText;
constexpr auto kLatin1 = OkaDP::istLatin1Text;
constexpr auto kScene = OkaDP::istSceneNumber;
constexpr double kFloat16Minimum = -671088.64;
constexpr double kFloat16Maximum = 670760.96;
constexpr double kFloat16Bound = 670760.0;
constexpr double kFloat32Maximum = 3.40282346638528860e+38;  // largest finite single

// Registration order matters only for the order of failure messages; 232.x follows 236.x.
const DptValueRow kStandardRows[] = {
    {1, 0, 1, kBool, kGeneric, "1.x", [] { return Plain<KnxConverter1Bit>(); }},
    // The 2-bit converter wants a byte value, the front lets only bool values through: no
    // 2.x value ever reaches the bus through the front. Kept as registered.
    {2, 0, 2, kBool, kGeneric, "2.x", [] { return Plain<KnxConverter2Bit>(); }},
    {3, 0, 4, kFloat, OkaDP::istStepControl, "3.x", [] { return Ranged<KnxConverter4Bit>(-100.0, 100.0, 0, 15); }},
    {4, 0, 8, kString, kAscii, "4.x", [] { return Same<KnxConverter8BitString>(0, 127); }},
    {4, 1, 8, kString, kAscii, "4.001", [] { return Same<KnxConverter8BitString>(0, 127); }},
    {4, 2, 8, kString, kLatin1, "4.002", [] { return Same<KnxConverter8BitString>(0, 255); }},
    // 5.1 (percent) and 5.3 (angle) take the unscaled wildcard on purpose.
    {5, 0, 8, kByte, kGeneric, "5.x", [] { return Same<KnxConverterByte8BitUnsigned>(0, 255); }},
    {5, 6, 8, kByte, kGeneric, "5.006", [] { return Same<KnxConverterByte8BitUnsigned>(0, 254); }},
    {6, 0, 8, kInteger, kGeneric, "6.x", [] { return Same<KnxConverterInteger8BitSigned>(-128, 127); }},
    {6, 20, 8, kByte, OkaDP::istStatusWithMode, "6.020", [] { return Same<KnxConverterStatus8Bit>(0, 255); }},
    {7, 0, 16, kWord, kGeneric, "7.x", [] { return Same<KnxConverterInteger16BitUnsigned>(0, 65535); }},
    {8, 0, 16, kInteger, kGeneric, "8.x", [] { return Same<KnxConverterInteger16BitSigned>(-32768, 32767); }},
    {9, 0, 16, kFloat, kGeneric, "9.x", [] { return Same<KnxConverterFloat16BitFloat>(kFloat16Minimum, kFloat16Maximum); }},
    {9, 1, 16, kFloat, kQuantity, "9.001", [] { return Same<KnxConverterFloat16BitFloat>(-273.0, kFloat16Bound); }},
    {9, 2, 16, kFloat, kQuantity, "9.002", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 3, 16, kFloat, kQuantity, "9.003", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 4, 16, kFloat, kQuantity, "9.004", [] { return Same<KnxConverterFloat16BitFloat>(0.0, kFloat16Bound); }},
    {9, 5, 16, kFloat, kQuantity, "9.005", [] { return Same<KnxConverterFloat16BitFloat>(0.0, kFloat16Bound); }},
    {9, 6, 16, kFloat, kQuantity, "9.006", [] { return Same<KnxConverterFloat16BitFloat>(0.0, kFloat16Bound); }},
    {9, 7, 16, kFloat, kQuantity, "9.007", [] { return Same<KnxConverterFloat16BitFloat>(0.0, kFloat16Bound); }},
    {9, 8, 16, kFloat, kQuantity, "9.008", [] { return Same<KnxConverterFloat16BitFloat>(0.0, kFloat16Bound); }},
    {9, 10, 16, kFloat, kQuantity, "9.010", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 11, 16, kFloat, kQuantity, "9.011", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 20, 16, kFloat, kQuantity, "9.020", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 21, 16, kFloat, kQuantity, "9.021", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 22, 16, kFloat, kQuantity, "9.022", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 23, 16, kFloat, kQuantity, "9.023", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 24, 16, kFloat, kQuantity, "9.024", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 25, 16, kFloat, kQuantity, "9.025", [] { return Same<KnxConverterFloat16BitFloat>(-kFloat16Bound, kFloat16Bound); }},
    {9, 26, 16, kFloat, kQuantity, "9.026", [] { return Same<KnxConverterFloat16BitFloat>(kFloat16Minimum, kFloat16Maximum); }},
    {9, 27, 16, kFloat, kQuantity, "9.027", [] { return Same<KnxConverterFloat16BitFloat>(-459.6, kFloat16Maximum); }},
    {9, 28, 16, kFloat, kQuantity, "9.028", [] { return Same<KnxConverterFloat16BitFloat>(0.0, kFloat16Maximum); }},
    {10, 0, 24, ivtTime, kGeneric, "10.x", [] { return Plain<KnxConverterTimeOfDay>(); }},
    {11, 0, 24, ivtDate, kGeneric, "11.x", [] { return Plain<KnxConverterDate>(); }},
    {12, 0, 32, kDWord, kGeneric, "12.x", [] { return Same<KnxConverterInteger32BitUnsigned>(std::int64_t{0}, std::int64_t{4294967295}); }},
    {13, 0, 32, kInteger, kGeneric, "13.x", [] { return Same<KnxConverterInteger32BitSigned>(INT32_MIN, INT32_MAX); }},
    {14, 0, 32, kFloat, kGeneric, "14.x", [] { return Same<KnxConverterFloat32BitFloat>(-kFloat32Maximum, kFloat32Maximum); }},
    {15, 0, 32, kDWord, kGeneric, "15.x", [] { return Same<KnxConverterInteger32BitUnsigned>(std::int64_t{0}, std::int64_t{4294967295}); }},
    {16, 0, 112, kString, kAscii, "16.x", [] { return Same<KnxConverter14ByteString>(0, 127); }},
    {16, 1, 112, kString, kLatin1, "16.001", [] { return Same<KnxConverter14ByteString>(0, 255); }},
    {17, 0, 8, kInteger, kScene, "17.x", [] { return Same<KnxConverterSceneNumber>(0, 63); }},
    {18, 0, 8, kInteger, kScene, "18.x", [] { return Same<KnxConverterSceneControl>(0, 63); }},
    {19, 0, 64, ivtDateTime, kGeneric, "19.x", [] { return Plain<KnxConverterDateTime>(); }},
    {20, 0, 8, kByte, kGeneric, "20.x", [] { return Same<KnxConverterByte8BitUnsigned>(0, 255); }},
    {20, 102, 8, kByte, kGeneric, "20.102", [] { return Same<KnxConverterByte8BitUnsigned>(0, 4); }},
    {20, 103, 8, kByte, kGeneric, "20.103", [] { return Same<KnxConverterByte8BitUnsigned>(0, 4); }},
    {21, 0, 8, kByte, kGeneric, "21.x", [] { return Same<KnxConverterByte8BitUnsigned>(0, 255); }},
    {23, 0, 8, kByte, kGeneric, "23.x", [] { return Same<KnxConverterByte8BitUnsigned>(0, 255); }},
    // Internal [-64, 64] against external [0, 255]: scale 255/128 on purpose.
    {26, 0, 8, kByte, kGeneric, "26.x", [] { return Ranged<KnxConverterSceneInfo>(-64, 64, 0, 255); }},
    {27, 0, 32, kDWord, kGeneric, "27.x", [] { return Same<KnxConverterInteger32BitUnsigned>(std::int64_t{0}, std::int64_t{4294967295}); }},
    {236, 0, 8, kByte, kGeneric, "236.x", [] { return Same<KnxConverterByte8BitUnsigned>(0, 255); }},
    {232, 0, 24, kDWord, kGeneric, "232.x", [] { return Same<KnxConverterInteger24BitUnsigned>(std::int64_t{0}, std::int64_t{16777215}); }},
    {238, 0, 8, kByte, kGeneric, "238.x", [] { return Same<KnxConverterByte8BitUnsigned>(0, 255); }},
};
} // namespace

DptValueRows GetStandardDptValueRows()
{
    return DptValueRows{kStandardRows, sizeof(kStandardRows) / sizeof(kStandardRows[0])};
}

const std::vector<DptValueMap::Row>& GetStandardMapRows()
{
    static const std::vector<std::unique_ptr<KnxConverter>> converters = [] {
        std::vector<std::unique_ptr<KnxConverter>> made;
        for (const DptValueRow& row : GetStandardDptValueRows())
        {
            made.push_back(row.makeConverter());
        }
        return made;
    }();
    static const std::vector<DptValueMap::Row> rows = [] {
        std::vector<DptValueMap::Row> sorted;
        std::size_t index = 0;
        for (const DptValueRow& row : GetStandardDptValueRows())
        {
            sorted.push_back(DptValueMap::Row{KNXDPT{row.bitSize, row.mainNumber, row.subNumber}, row.valueType,
                                              row.valueSubType, converters[index++].get()});
        }
        std::stable_sort(sorted.begin(), sorted.end(), [](const DptValueMap::Row& a, const DptValueMap::Row& b) {
            return a.dpt.main < b.dpt.main || (a.dpt.main == b.dpt.main && a.dpt.sub < b.dpt.sub);
        });
        return sorted;
    }();
    return rows;
}
} // namespace Okaro
