#pragma once
// Where knxd listens, in its client library's forms: "local:/PATH" (a unix socket) or
// "ip:HOST[:PORT]".
#include <string>

namespace TavKnx
{
// knxd's own default socket.
constexpr char kDefaultKnxdUrl[] = "local:/run/knx";

// One of the two forms, with something after the prefix and no NUL byte in it.
bool IsKnxdUrl(const std::string& url);
} // namespace TavKnx
