#include "support/ScopedTimeZone.h"

#include <cstdlib>
#include <ctime>

namespace TavTest
{
ScopedTimeZone::ScopedTimeZone(const char* zone)
{
    const char* previous = std::getenv("TZ");
    hadZone_ = previous != nullptr;
    if (hadZone_)
    {
        previousZone_ = previous;
    }
    Use(zone);
}

ScopedTimeZone::~ScopedTimeZone()
{
    if (hadZone_)
    {
        setenv("TZ", previousZone_.c_str(), 1);
    }
    else
    {
        unsetenv("TZ");
    }
    tzset();
}

void ScopedTimeZone::Use(const char* zone)
{
    setenv("TZ", zone, 1);
    tzset();
}

void ScopedTimeZone::UseSystemDefault()
{
    unsetenv("TZ");
    tzset();
}
} // namespace TavTest
