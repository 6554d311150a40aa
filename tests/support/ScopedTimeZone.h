#pragma once
// Sets the process's local time zone (TZ) for a scope and restores the previous one, unset
// included, when the scope ends. Dates read back through mktime depend on it.
#include <gtest/gtest.h>

#include <string>

namespace TavTest
{
// Central European time with daylight saving from the last Sunday of March to the last
// Sunday of October.
constexpr const char* kCentralEuropeanZone = "CET-1CEST,M3.5.0,M10.5.0/3";

class ScopedTimeZone
{
public:
    explicit ScopedTimeZone(const char* zone);
    ~ScopedTimeZone();
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

    // Switches to another zone; the destructor still restores the zone from before the scope.
    static void Use(const char* zone);
    // Leaves TZ unset: the system's default zone.
    static void UseSystemDefault();

private:
    bool hadZone_ = false;
    std::string previousZone_;
};

// A fixture whose tests run in one local time zone, UTC unless the derived fixture names
// another; the zone from before is back after each test.
class TimeZoneFixture : public ::testing::Test
{
protected:
    explicit TimeZoneFixture(const char* zone = "UTC0") : zone_(zone) {}

    static void UseZone(const char* zone) { ScopedTimeZone::Use(zone); }

private:
    ScopedTimeZone zone_;
};
} // namespace TavTest
