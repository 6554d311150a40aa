#include "KnxdUrl.h"

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
        return "local:/run/knx";
    }
    const std::string url = invocation.options["url"].as<std::string>();
    const bool local = url.rfind("local:", 0) == 0 && url.size() > 6;
    const bool remote = url.rfind("ip:", 0) == 0 && url.size() > 3;
    if ((!local && !remote) || url.find('\0') != std::string::npos)
    {
        throw UsageError("--url: expected local:/PATH or ip:HOST[:PORT], got " + Quote(url));
    }
    return url;
}
} // namespace TavKnx
