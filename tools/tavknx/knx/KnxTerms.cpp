#include "knx/KnxTerms.h"

#include "knx/DptNames.h"
#include "knx/ValueText.h"

#include <platform/OkaValueFamily.h>

#include <cmath>
#include <iomanip>
#include <sstream>

namespace TavKnx
{
namespace
{
// DPTs whose raw number is a multiple of the unit: 7.003 counts 10 ms steps.
double Scale(const KNXDPT& dpt)
{
    struct Row
    {
        std::uint16_t main;
        std::uint16_t sub;
        double factor;
    };
    static const Row rows[] = {
        {5, 1, 100.0 / 255.0}, {5, 3, 360.0 / 255.0}, {7, 3, 10.0}, {7, 4, 100.0},
        {8, 3, 10.0},          {8, 4, 100.0},         {8, 10, 0.01}, {13, 2, 0.0001},
    };
    for (const Row& row : rows)
    {
        if (row.main == dpt.main && row.sub == dpt.sub)
        {
            return row.factor;
        }
    }
    return 1.0;
}

std::string Fixed(double number, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << number;
    return text.str();
}

// Plain decimals up to ten digits: 500, 1.23, never 5e+02.
std::string Plain(double number)
{
    std::ostringstream text;
    text << std::setprecision(10) << number;
    return text.str();
}

std::string WithUnit(const std::string& number, const DptName& row)
{
    return *row.unit == '\0' ? number : number + " " + row.unit;
}

// A whole number of the value model as the DPT counts it.
boost::optional<std::string> NumberText(const KNXDPT& dpt, const DptName& row, double raw)
{
    const double factor = Scale(dpt);
    if (factor == 1.0)
    {
        return *row.unit == '\0' ? boost::none : boost::optional<std::string>(WithUnit(Plain(raw), row));
    }
    // The scaled DPTs of a byte have one decimal, as their resolution is below 1.
    return WithUnit(dpt.main == 5 ? Fixed(raw * factor, 1) : Plain(raw * factor), row);
}
} // namespace

boost::optional<std::string> KnxTermsText(const KNXDPT& dpt, const OKAVALUE& value)
{
    const DptName* row = FindDptName(dpt);
    if (row == nullptr)
    {
        return boost::none;
    }
    const OKATIME& time = value.numeric.time;
    switch (GetValueFamily(value.type))
    {
    case OkaValueFamily::Bool:
        if (row->zero != nullptr)
        {
            return std::string(value.numeric.boolean ? row->one : row->zero);
        }
        return boost::none;
    case OkaValueFamily::Float:
        if (std::isnan(value.numeric.real))
        {
            return std::string("no value (the invalid code)");
        }
        if (*row->unit == '\0')
        {
            return boost::none;
        }
        // DPT 9 has a resolution of a hundredth: two decimals, as KNX writes it.
        return WithUnit(dpt.main == 9 ? Fixed(value.numeric.real, 2) : Plain(value.numeric.real), *row);
    case OkaValueFamily::Byte:
        return NumberText(dpt, *row, value.numeric.byte);
    case OkaValueFamily::Word:
        return NumberText(dpt, *row, value.numeric.word);
    case OkaValueFamily::DWord:
        return NumberText(dpt, *row, value.numeric.dword);
    case OkaValueFamily::Integer:
        return NumberText(dpt, *row, value.numeric.integer);
    case OkaValueFamily::Time:
        if (value.type == ivtTime || value.type == ivtDayTime)
        {
            const std::string clock = ValueText(value).substr(0, 8);
            return time.weekday < 7 ? WeekdayName(time.weekday) + " " + clock : clock + ", no day";
        }
        return boost::none;
    case OkaValueFamily::String:
    case OkaValueFamily::Empty:
    case OkaValueFamily::Raw:
        break;
    }
    return boost::none;
}
std::string DescribeValueInKnxTerms(const KNXDPT& dpt, const OKAVALUE& value)
{
    const boost::optional<std::string> knx = KnxTermsText(dpt, value);
    return (knx ? *knx + " = " : std::string()) + DescribeValue(value);
}
} // namespace TavKnx
