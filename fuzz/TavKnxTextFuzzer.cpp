// The text overloads of the string converter front, on any text and any bytes.
// Layout: mode (1), then
//   mode 0: DPT size (1), main (2), sub (2), value text (rest)
//   mode 1: bit size (4), value text (rest)
//   mode 2: defined size (1), internal form (1), raw bytes (rest)
#include "FuzzSupport.h"

#include <TavObjectModel/TavKnxValueConverter.h>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Okaro::TavKnxValueConverter converter;
    TavFuzz::Input input(data, size);
    switch (input.U8() % 3)
    {
    case 0:
    {
        KNXDPT dpt;
        dpt.size = input.U8();
        dpt.main = input.U16();
        dpt.sub = input.U16();
        KnxStack::GroupValue groupValue;
        converter.ToKnxValue(dpt, input.Rest(), groupValue);
        break;
    }
    case 1:
    {
        const unsigned long bitSize = input.U32();
        KnxStack::GroupValue groupValue;
        converter.ToKnxValue(input.Rest(), bitSize, groupValue);
        break;
    }
    default:
    {
        const unsigned definedSize = input.U8();
        const bool internalForm = (input.U8() & 1u) != 0;
        const std::string raw = input.Rest();
        const KnxStack::BinaryData bytes(reinterpret_cast<const unsigned char*>(raw.data()),
                                         static_cast<unsigned>(raw.size()));
        std::string text;
        converter.FromKnxValue(KnxStack::GroupValue(bytes, definedSize), text, internalForm);
        break;
    }
    }
    return 0;
}
