// Switch-driven decoding and the validity check of any bytes for any packed DPT.
// Layout: packed DPT (4), defined size (1), raw bytes (rest).
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
    const unsigned definedSize = input.U8();
    const std::string raw = input.Rest();
    const KnxStack::BinaryData bytes(reinterpret_cast<const unsigned char*>(raw.data()),
                                     static_cast<unsigned>(raw.size()));
    const KnxStack::GroupValue groupValue(bytes, definedSize);
    Okaro::CheckGroupValue(groupValue, packedDpt);
    const unsigned main = static_cast<unsigned>(packedDpt >> 16 & 0xFFFFu);
    try
    {
        Okaro::GroupValueToOkaValue(groupValue, packedDpt);
    }
    // Only dates (11) and dates with time (19) may meet an impossible calendar day.
    catch (const boost::gregorian::bad_month&)
    {
        if (main != 19)
            std::abort();
    }
    catch (const boost::gregorian::bad_day_of_month&)
    {
        if (main != 11 && main != 19)
            std::abort();
    }
    return 0;
}
