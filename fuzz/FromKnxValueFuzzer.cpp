// Table-driven decoding of any bytes, of any defined size, for any DPT.
// Layout: DPT size (1), main (2), sub (2), defined size (1), raw bytes (rest).
#include "FuzzSupport.h"

#include <TavObjectModel/KnxValueConverter.h>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Okaro::KnxValueConverter converter;
    TavFuzz::Input input(data, size);
    KNXDPT dpt;
    dpt.size = input.U8();
    dpt.main = input.U16();
    dpt.sub = input.U16();
    const unsigned definedSize = input.U8();
    const std::string raw = input.Rest();
    const KnxStack::BinaryData bytes(reinterpret_cast<const unsigned char*>(raw.data()),
                                     static_cast<unsigned>(raw.size()));
    const KnxStack::GroupValue groupValue(bytes, definedSize);
    OKAVALUE value;
    converter.FromKnxValue(dpt, groupValue, value);
    return 0;
}
