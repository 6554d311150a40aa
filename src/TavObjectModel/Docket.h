#pragma once
// The outcome of one device-stack request, handed from the callback thread to the waiter.
#include <string>
#include <utility>

namespace Okaro
{
class Docket
{
public:
    Docket() : replyValid(false), answered(false) {}
    Docket(std::string reply, std::string deliveryError, bool replyValid, bool answered)
        : reply(std::move(reply)), deliveryError(std::move(deliveryError)), replyValid(replyValid), answered(answered)
    {
    }

    // True when the answer reported no error.
    bool IsReplyValid() const { return replyValid; }
    // False for a request that got no answer at all (time-out or not sent).
    bool IsAnswered() const { return answered; }
    const std::string& ReadReply() const { return reply; }
    const std::string& ReadDeliveryError() const { return deliveryError; }

    void swap(Docket& other) noexcept
    {
        using std::swap;
        swap(reply, other.reply);
        swap(deliveryError, other.deliveryError);
        swap(replyValid, other.replyValid);
        swap(answered, other.answered);
    }

private:
    std::string reply;
    std::string deliveryError;
    bool replyValid;
    bool answered;
};

inline void swap(Docket& a, Docket& b) noexcept { a.swap(b); }
} // namespace Okaro
