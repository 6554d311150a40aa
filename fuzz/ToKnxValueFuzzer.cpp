// Table-driven encoding, for any DPT, of any value the text form can describe.
// Layout: DPT size (1), main (2), sub (2), value text (rest).
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
    const std::string text = input.Rest();
    OKAVALUE value;
    value.Deserialize(oka_string(text.data(), text.size()));
    KnxStack::GroupValue groupValue;
    converter.ToKnxValue(dpt, value, groupValue);
    return 0;
}
