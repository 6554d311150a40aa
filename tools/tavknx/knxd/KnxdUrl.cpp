#include "knxd/KnxdUrl.h"

namespace TavKnx
{
bool IsKnxdUrl(const std::string& url)
{
    const bool local = url.rfind("local:", 0) == 0 && url.size() > 6;
    const bool remote = url.rfind("ip:", 0) == 0 && url.size() > 3;
    return (local || remote) && url.find('\0') == std::string::npos;
}
} // namespace TavKnx
