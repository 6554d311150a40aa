#pragma once
// Internal to the value model (not installed): broken-down local time into an OKATIME.
#include <platform/OkaTime.h>

#include <ctime>

// Reads the fields as local time through makeTime (mktime) and breaks the result down
// again. Where makeTime cannot represent the fields (-1 for anything but
// 1969-12-31 23:59:59, as before 1901-12-13 with a 32-bit time_t), the OKATIME is filled
// from the fields directly, so a 32-bit target shows the same dates as a 64-bit one.
OKATIME LocalTimeFromFields(const std::tm& fields, std::time_t (*makeTime)(std::tm*) = &std::mktime);
