// The value model's text reader on any text: text it cannot read leaves the value as it was,
// and whatever it reads can be written again.
#include "FuzzSupport.h"

#include <platform/OkaValue.h>

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const oka_string text(reinterpret_cast<const char*>(data), size);
    OKAVALUE value(ivtWord);
    value.numeric.word = 4711;
    const OKAVALUE before = value;
    if (!value.Deserialize(text))
    {
        if (value != before)
            std::abort();
        return 0;
    }
    // Whatever was read must read back the same from either written form.
    for (const bool internal : {false, true})
    {
        oka_string written;
        value.Serialize(written, internal);
        OKAVALUE again;
        if (!again.Deserialize(written) || again != value)
            std::abort();
    }
    value.ToString();
    return 0;
}
