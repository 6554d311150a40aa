#include "cli/CommandLine.h"

#include "knx/DptText.h"
#include "knx/TextError.h"

#include <sstream>

namespace TavKnx
{
void Invocation::RequireArgs(std::size_t min, std::size_t max, const char* names) const
{
    if (args.size() < min || args.size() > max)
    {
        std::ostringstream message;
        message << "expected " << (max == 0 ? "no arguments" : names) << ", got " << args.size() << " argument" << (args.size() == 1 ? "" : "s");
        if (args.size() > max)
        {
            message << " (first extra: " << Quote(args[max]) << ")";
        }
        throw UsageError(message.str());
    }
}

bool Invocation::HasBits() const
{
    return options.count("bits") != 0;
}

std::uint32_t Invocation::Bits() const
{
    return ParseBits(options["bits"].as<std::string>());
}
} // namespace TavKnx
