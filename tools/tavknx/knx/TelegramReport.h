#pragma once
// One line per group telegram for `tavknx monitor`: time, source, group address (with its name
// where the map has one), kind, the
// value's bytes and, where the map gives the group address a DPT, the value decoded by the
// switch-driven codec (GroupValueToOkaValue) and by the table-driven front (FromKnxValue).
#include "knx/GroupAddressMap.h"
#include "knx/GroupTelegram.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <chrono>
#include <string>

namespace TavKnx
{
// "2026-11-21T03:41:00.123Z": UTC, milliseconds.
std::string FormatTime(std::chrono::system_clock::time_point time);

class TelegramReporter
{
public:
    explicit TelegramReporter(const GroupAddressMap& map) : map_(map) {}

    // The line for one telegram, without the line end: text, or one JSON object.
    std::string Report(const GroupTelegram& telegram, std::chrono::system_clock::time_point received, bool json);

private:
    const GroupAddressMap& map_;
    Okaro::KnxValueConverter converter_;
};
} // namespace TavKnx
