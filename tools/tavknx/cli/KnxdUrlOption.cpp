#include "cli/KnxdUrlOption.h"

#include "knx/TextError.h"
#include "knxd/KnxdUrl.h"

#include <boost/program_options.hpp>

namespace TavKnx
{
void AddKnxdUrlOption(boost::program_options::options_description& options)
{
    options.add_options()("url", boost::program_options::value<std::string>()->value_name("URL"),
                          "knxd to connect to: local:/PATH or ip:HOST[:PORT] (default local:/run/knx)");
}

std::string KnxdUrl(const Invocation& invocation)
{
    if (!invocation.options.count("url"))
    {
        return kDefaultKnxdUrl;
    }
    const std::string url = invocation.options["url"].as<std::string>();
    if (!IsKnxdUrl(url))
    {
        throw UsageError("--url: expected local:/PATH or ip:HOST[:PORT], got " + Quote(url));
    }
    return url;
}
} // namespace TavKnx
