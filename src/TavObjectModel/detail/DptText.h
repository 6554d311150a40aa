#pragma once
// How log lines write a DPT: main "." sub, decimal, no leading zeros. Not installed.
#include <platform/KnxDpt.h>

#include <ostream>

namespace Okaro
{
namespace detail
{
struct DptText
{
    const KNXDPT& dpt;
};

inline std::ostream& operator<<(std::ostream& out, const DptText& text)
{
    return out << static_cast<unsigned int>(text.dpt.main) << '.' << static_cast<unsigned int>(text.dpt.sub);
}
} // namespace detail
} // namespace Okaro
