#pragma once
// An integer that can only hold values in [Min, Max]; Tag keeps unrelated ranges apart.
#include <stdexcept>
#include <string>

namespace Okaro
{
template <typename T, T Min, T Max, typename Tag>
class BoundedInt
{
    static_assert(Min <= Max, "empty range");

public:
    // Refuses a value outside the range here, so every holder can rely on it.
    explicit BoundedInt(T value) : value_(value)
    {
        if (value < Min || value > Max)
        {
            throw std::out_of_range("BoundedInt: " + std::to_string(value) + " is outside [" +
                                    std::to_string(Min) + ", " + std::to_string(Max) + "]");
        }
    }

    T Get() const { return value_; }

    static constexpr T Minimum() { return Min; }
    static constexpr T Maximum() { return Max; }

    friend bool operator==(const BoundedInt& a, const BoundedInt& b) { return a.value_ == b.value_; }
    friend bool operator!=(const BoundedInt& a, const BoundedInt& b) { return a.value_ != b.value_; }

private:
    T value_;
};

struct LogicalDeviceIdTag
{
};

// The two logical KNX devices of the controller: 1 or 2.
using LogicalDeviceId = BoundedInt<int, 1, 2, LogicalDeviceIdTag>;
} // namespace Okaro
