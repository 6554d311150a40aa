#pragma once
// The day of week in the KNX numbering (DPT 10): one type for the group value's time of day
// and the value model's TimeOfDay, known there as KnxStack::GroupValue::DayOfWeek and
// TavApp::DayOfWeek, so a weekday passes between them without a cast.
#include <cstdint>

namespace KnxStack
{
enum class DayOfWeek : std::uint8_t
{
    NoDay = 0,
    Monday = 1,
    Tuesday = 2,
    Wednesday = 3,
    Thursday = 4,
    Friday = 5,
    Saturday = 6,
    Sunday = 7,
};
} // namespace KnxStack
