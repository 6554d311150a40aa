#pragma once
// A connection to the KNX daemon (knxd) through its client library, with the group socket open:
// every group telegram on the bus comes in, group telegrams go out.
#include "knx/GroupTelegram.h"

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

struct _EIBConnection;

namespace TavKnx
{
// The daemon cannot be reached, refused the group socket, or went away.
class KnxdError : public std::runtime_error
{
public:
    explicit KnxdError(const std::string& message) : std::runtime_error(message) {}
};

class KnxdConnection
{
public:
    // Connects to `url` (knxd's client forms: "local:/run/knx", "ip:HOST[:PORT]") and opens the
    // group socket; a write-only socket gets no telegrams from the bus. Throws KnxdError.
    KnxdConnection(const std::string& url, bool writeOnly);
    ~KnxdConnection();
    KnxdConnection(const KnxdConnection&) = delete;
    KnxdConnection& operator=(const KnxdConnection&) = delete;

    // Waits at most `wait` for the next telegram. False when none came in that time; throws
    // KnxdError when the connection is lost.
    bool Receive(std::chrono::milliseconds wait, GroupTelegram& telegram);
    // Sends one APDU to a group address. Throws KnxdError.
    void Send(std::uint16_t groupAddress, const std::vector<std::uint8_t>& apdu);
    // The socket to poll(2) for telegrams, for a caller that waits on other things too.
    int PollFd() const;

private:
    _EIBConnection* connection_;
    std::string url_;
};
} // namespace TavKnx
