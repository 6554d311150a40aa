#include "bridge/DiscoveryTable.h"

#include <cstdint>

namespace TavKnx
{
namespace
{
constexpr std::uint16_t kAnySub = 0xFFFF;

struct Row
{
    std::uint16_t main;
    std::uint16_t sub;  // kAnySub: the main number's row
    DiscoveryEntity entity;
};

// Exact DPTs first: the lookup takes the first row that matches.
constexpr Row kRows[] = {
    {1, 1, {"switch", "", "", true}},
    {1, kAnySub, {"binary_sensor", "", "", false}},
    {5, 1, {"number", "", "%", true}},
    {9, 1, {"sensor", "temperature", "\xC2\xB0" "C", false}},
    {9, 4, {"sensor", "illuminance", "lx", false}},
    {9, 7, {"sensor", "humidity", "%", false}},
    {10, kAnySub, {"sensor", "", "", false}},
    {11, kAnySub, {"sensor", "date", "", false}},
    {14, 7, {"sensor", "", "\xC2\xB0", false}},
    {14, 19, {"sensor", "current", "A", false}},
    {14, 27, {"sensor", "voltage", "V", false}},
    {14, 31, {"sensor", "energy", "J", false}},
    {14, 33, {"sensor", "frequency", "Hz", false}},
    {14, 39, {"sensor", "distance", "m", false}},
    {14, 51, {"sensor", "weight", "kg", false}},
    {14, 56, {"sensor", "power", "W", false}},
    {14, 58, {"sensor", "pressure", "Pa", false}},
    {14, 65, {"sensor", "speed", "m/s", false}},
    {14, 68, {"sensor", "temperature", "\xC2\xB0" "C", false}},
    {14, 76, {"sensor", "volume", "m\xC2\xB3", false}},
    {14, 77, {"sensor", "", "m\xC2\xB3/s", false}},
    {16, kAnySub, {"text", "", "", true}},
    {19, kAnySub, {"sensor", "", "", false}},
};
} // namespace

DiscoveryEntity DiscoveryEntityFor(const KNXDPT& dpt)
{
    for (const Row& row : kRows)
    {
        if (row.main == dpt.main && (row.sub == kAnySub || row.sub == dpt.sub))
        {
            return row.entity;
        }
    }
    return {"sensor", "", "", false};
}
} // namespace TavKnx
