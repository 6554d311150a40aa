// Switch-driven encoding, for any packed DPT, of any value the text form can describe.
// Layout: packed DPT (4), value text (rest).
#include "FuzzSupport.h"

#include <TavObjectModel/GroupValueOkaValue.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TavFuzz::Input input(data, size);
    const unsigned long packedDpt = input.U32();
    const std::string text = input.Rest();
    OKAVALUE value;
    value.Deserialize(oka_string(text.data(), text.size()));
    const unsigned main = static_cast<unsigned>(packedDpt >> 16 & 0xFFFFu);
    // Only DPT 19 builds a calendar date when encoding.
    try
    {
        Okaro::OkaValueToGroupValue(value, packedDpt);
    }
    catch (const boost::gregorian::bad_year&)
    {
        if (main != 19)
            std::abort();
    }
    catch (const boost::gregorian::bad_month&)
    {
        if (main != 19)
            std::abort();
    }
    catch (const boost::gregorian::bad_day_of_month&)
    {
        if (main != 19)
            std::abort();
    }
    return 0;
}
