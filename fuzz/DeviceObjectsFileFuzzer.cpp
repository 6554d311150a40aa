// The device stack's objects file on any content.
// Layout: the content, as a whole.
#include "FuzzSupport.h"

#include <devicestack/DeviceObjectsFile.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

namespace
{
bool HasControlBytes(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F;
    });
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string content(reinterpret_cast<const char*>(data), size);
    std::vector<TavKnx::MapProblem> problems;
    const std::vector<Lumo::DeviceObject> objects = Lumo::ParseDeviceObjects(content, problems);

    // Problems name lines of the content, stay printable and few; objects are at most one a
    // line, with distinct numbers that have value ids, a group address and flags that read back.
    const std::size_t lines = static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n')) + 1;
    if (problems.size() > 101 || objects.size() > lines)
    {
        std::abort();
    }
    for (const TavKnx::MapProblem& problem : problems)
    {
        if (problem.line < 1 || problem.line > lines || HasControlBytes(problem.message))
        {
            std::abort();
        }
    }
    std::set<unsigned short> numbers;
    for (const Lumo::DeviceObject& object : objects)
    {
        unsigned flags = 0;
        if (!numbers.insert(object.co).second || Lumo::ObjectValueId(object.co) == 0 ||
            object.groupAddresses.empty() || HasControlBytes(object.name) ||
            !Lumo::ParseObjectFlags(Lumo::FormatObjectFlags(object.flags), flags) || flags != object.flags)
        {
            std::abort();
        }
    }
    return 0;
}
