// UTF-8 repair and the Latin-1 conversions on any bytes, with the properties callers rely on:
// repaired text is valid UTF-8, and Latin-1 survives the way to UTF-8 and back.
#include "FuzzSupport.h"

#include <TavObjectModel/Utilities.h>

#include <utf8.h>

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);

    const std::string repaired = Okaro::RepairUTF8(bytes);
    if (!utf8::is_valid(repaired.begin(), repaired.end()))
        std::abort();
    if (utf8::is_valid(bytes.begin(), bytes.end()) && repaired != bytes)
        std::abort();

    // The C-string conversions end at the first zero byte.
    const std::string text(bytes.c_str());
    const std::string utf8Text = Okaro::Latin1ToUTF8(text.c_str());
    if (!utf8::is_valid(utf8Text.begin(), utf8Text.end()))
        std::abort();
    if (Okaro::UTF8ToLatin1(utf8Text.c_str()) != text)
        std::abort();
    Okaro::UTF8ToLatin1(text.c_str());
    return 0;
}
