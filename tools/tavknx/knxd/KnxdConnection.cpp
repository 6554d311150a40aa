#include "knxd/KnxdConnection.h"

#include <eibclient.h>

#include <poll.h>

#include <cerrno>
#include <cstring>

namespace TavKnx
{
namespace
{
// The largest APDU a group telegram can carry, with room to spare.
constexpr int kMaxApdu = 512;

std::string ErrnoText(int error)
{
    return error == 0 ? std::string("connection closed") : std::string(std::strerror(error));
}
} // namespace

KnxdConnection::KnxdConnection(const std::string& url, bool writeOnly) : connection_(nullptr), url_(url)
{
    errno = 0;
    connection_ = EIBSocketURL(url.c_str());
    if (connection_ == nullptr)
    {
        throw KnxdError("cannot connect to knxd at '" + url + "': " + ErrnoText(errno));
    }
    errno = 0;
    if (EIBOpen_GroupSocket(connection_, writeOnly ? 1 : 0) == -1)
    {
        const int error = errno;
        EIBClose(connection_);
        throw KnxdError("knxd at '" + url + "' refused the group socket: " + ErrnoText(error));
    }
}

KnxdConnection::~KnxdConnection()
{
    EIBClose(connection_);
}

bool KnxdConnection::Receive(std::chrono::milliseconds wait, GroupTelegram& telegram)
{
    errno = 0;
    int complete = EIB_Poll_Complete(connection_);
    if (complete == 0)
    {
        pollfd descriptor{EIB_Poll_FD(connection_), POLLIN, 0};
        const int ready = poll(&descriptor, 1, static_cast<int>(wait.count()));
        if (ready < 0 && errno != EINTR)
        {
            throw KnxdError("waiting for knxd at '" + url_ + "' failed: " + ErrnoText(errno));
        }
        if (ready <= 0)
        {
            return false;
        }
        errno = 0;
        complete = EIB_Poll_Complete(connection_);
    }
    if (complete == -1)
    {
        throw KnxdError("connection to knxd at '" + url_ + "' lost: " + ErrnoText(errno));
    }
    if (complete == 0)
    {
        return false;  // part of a packet so far
    }
    std::uint8_t apdu[kMaxApdu];
    eibaddr_t source = 0;
    eibaddr_t destination = 0;
    errno = 0;
    const int length = EIBGetGroup_Src(connection_, kMaxApdu, apdu, &source, &destination);
    if (length < 0)
    {
        throw KnxdError("connection to knxd at '" + url_ + "' lost: " + ErrnoText(errno));
    }
    // A longer packet is cut to the buffer; never trust the length beyond what was copied.
    const auto copied = static_cast<std::size_t>(length < kMaxApdu ? length : kMaxApdu);
    telegram = ParseGroupTelegram(source, destination, apdu, copied);
    return true;
}

int KnxdConnection::PollFd() const
{
    return EIB_Poll_FD(connection_);
}

void KnxdConnection::Send(std::uint16_t groupAddress, const std::vector<std::uint8_t>& apdu)
{
    errno = 0;
    if (EIBSendGroup(connection_, groupAddress, static_cast<int>(apdu.size()), apdu.data()) == -1)
    {
        throw KnxdError("sending to knxd at '" + url_ + "' failed: " + ErrnoText(errno));
    }
}
} // namespace TavKnx
