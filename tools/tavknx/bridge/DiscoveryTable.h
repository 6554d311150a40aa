#pragma once
// Which Home Assistant entity a DPT becomes: the component, device class and unit, and whether
// the entity takes commands. One row per DPT or main number; docs/Bridge.md shows the table.
#include <platform/KnxDpt.h>

#include <string>

namespace TavKnx
{
struct DiscoveryEntity
{
    const char* component;     // "sensor", "binary_sensor", "switch", "number", "text"
    const char* deviceClass;   // "" for none
    const char* unit;          // "" for none
    bool command;              // the entity writes: a command topic
};

// The row for a DPT: the exact DPT's, else its main number's, else a plain sensor.
DiscoveryEntity DiscoveryEntityFor(const KNXDPT& dpt);
} // namespace TavKnx
