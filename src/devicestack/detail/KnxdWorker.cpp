#include <devicestack/detail/KnxdWorker.h>

#include <devicestack/detail/KnxdWorkerSupport.h>

#include <knxd/KnxdConnection.h>

#include <log4cplus/loggingmacros.h>

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <deque>

namespace Lumo
{
namespace
{
// The longest the worker sleeps without looking at its queue and deadlines.
constexpr std::chrono::milliseconds kMaxWait{1000};
// Telegrams taken from knxd before the worker looks at its queue again.
constexpr int kMaxTelegramsAtOnce = 64;
} // namespace

using detail::StackError;
using detail::KnxdLog;

KnxdDeviceStackClient::Worker::Worker(KnxdDeviceStackClient& client)
    : client_(client), nextConnect_(Clock::now()), reconnectDelay_(client.settings_.firstReconnectDelay)
{
}

KnxdDeviceStackClient::Worker::~Worker() = default;

void KnxdDeviceStackClient::Worker::Run()
{
    // Writing to a knxd that went away must fail with EPIPE, not end the program: sends happen
    // on this thread only, so the signal is blocked here alone.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    for (;;)
    {
        std::deque<std::unique_ptr<Job>> jobs;
        {
            std::lock_guard<std::mutex> lock(client_.mutex_);
            if (client_.stopping_)
            {
                break;
            }
            jobs.swap(client_.jobs_);
        }
        const Clock::time_point now = Clock::now();
        if (!connection_ && now >= nextConnect_)
        {
            Connect(now);
        }
        for (const std::unique_ptr<Job>& job : jobs)
        {
            Handle(*job);
        }
        ExpireReads(Clock::now());
        Wait(Clock::now());
    }
    connection_.reset();
    client_.connected_.store(false);
}

void KnxdDeviceStackClient::Worker::Connect(Clock::time_point now)
{
    try
    {
        connection_.reset(new TavKnx::KnxdConnection(client_.url_, false));
    }
    catch (const TavKnx::KnxdError& error)
    {
        // Said once per outage, not on every attempt.
        if (lastFailure_ != error.what())
        {
            LOG4CPLUS_WARN(KnxdLog(), "Connect - " << error.what() << "; retrying");
            lastFailure_ = error.what();
        }
        nextConnect_ = now + reconnectDelay_;
        reconnectDelay_ = std::min(reconnectDelay_ * 2, client_.settings_.maxReconnectDelay);
        return;
    }
    lastFailure_.clear();
    reconnectDelay_ = client_.settings_.firstReconnectDelay;
    LOG4CPLUS_INFO(KnxdLog(), "Connect - connected to knxd at '" << client_.url_ << "'");
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        client_.connected_.store(true);
    }
    client_.changed_.notify_all();
    ReadOnInit();
}

void KnxdDeviceStackClient::Worker::Disconnect(const std::string& reason)
{
    LOG4CPLUS_WARN(KnxdLog(), "Disconnect - " << reason << "; reconnecting");
    connection_.reset();
    client_.connected_.store(false);
    lastFailure_.clear();
    nextConnect_ = Clock::now() + reconnectDelay_;
    // Nothing will answer these now: say so at once, so the callers can try again.
    std::vector<PendingRead> reads;
    reads.swap(reads_);
    for (const PendingRead& read : reads)
    {
        if (read.object != nullptr)
        {
            AnswerValue(Job::GetValue, read.requestId, ObjectValueId(read.object->co), read.object->name, "",
                        NotConnected());
        }
        else
        {
            AnswerResponse(read.requestId, "", NotConnected());
        }
    }
}

void KnxdDeviceStackClient::Worker::Wait(Clock::time_point now)
{
    Clock::time_point until = now + kMaxWait;
    if (!connection_)
    {
        until = std::min(until, nextConnect_);
    }
    for (const PendingRead& read : reads_)
    {
        until = std::min(until, read.deadline);
    }
    const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(until - now) + std::chrono::milliseconds(1);
    pollfd descriptors[2] = {{client_.wakeDescriptor_, POLLIN, 0}, {-1, POLLIN, 0}};
    if (connection_)
    {
        descriptors[1].fd = connection_->Descriptor();
    }
    const int ready = poll(descriptors, connection_ ? 2 : 1, static_cast<int>(std::max<long long>(0, wait.count())));
    if (ready <= 0)
    {
        return;
    }
    if ((descriptors[0].revents & POLLIN) != 0)
    {
        std::uint64_t count = 0;
        (void)!read(client_.wakeDescriptor_, &count, sizeof count);
    }
    if (connection_ && descriptors[1].revents != 0)
    {
        ReceiveAll();
    }
}

void KnxdDeviceStackClient::Worker::ReceiveAll()
{
    try
    {
        TavKnx::GroupTelegram telegram;
        // A busy bus must not starve the callers' queue: the rest comes after it.
        for (int count = 0; count < kMaxTelegramsAtOnce && connection_ &&
                            connection_->Receive(std::chrono::milliseconds(0), telegram);
             ++count)
        {
            HandleTelegram(telegram);
        }
    }
    catch (const TavKnx::KnxdError& error)
    {
        Disconnect(error.what());
    }
}

bool KnxdDeviceStackClient::Worker::Send(std::uint16_t groupAddress, const std::vector<std::uint8_t>& apdu)
{
    try
    {
        connection_->Send(groupAddress, apdu);
        return true;
    }
    catch (const TavKnx::KnxdError& error)
    {
        Disconnect(error.what());
        return false;
    }
}

void KnxdDeviceStackClient::Worker::ExpireReads(Clock::time_point now)
{
    std::vector<PendingRead> expired;
    auto keep = std::stable_partition(reads_.begin(), reads_.end(),
                                      [now](const PendingRead& read) { return read.deadline > now; });
    expired.assign(keep, reads_.end());
    reads_.erase(keep, reads_.end());
    for (const PendingRead& read : expired)
    {
        const ResponseError error = StackError(kNoResponse, "no response",
                                          "nobody answered the read of " +
                                              FormatObjectGroupAddress(read.groupAddress));
        if (read.object != nullptr)
        {
            AnswerValue(Job::GetValue, read.requestId, ObjectValueId(read.object->co), read.object->name, "", error);
        }
        else
        {
            AnswerResponse(read.requestId, "", error);
        }
    }
}

template <typename Call>
void KnxdDeviceStackClient::Worker::Deliver(Call call)
{
    IResponseHandler* handler = nullptr;
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        handler = client_.handler_;
        if (handler == nullptr)
        {
            return;
        }
        client_.delivering_ = true;
    }
    try
    {
        call(*handler);
    }
    catch (...)
    {
        // The handler's exceptions must not end the worker: the device stack would go silent.
        LOG4CPLUS_ERROR(KnxdLog(), "Deliver - the response handler threw");
    }
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        client_.delivering_ = false;
    }
    client_.changed_.notify_all();
}

std::string KnxdDeviceStackClient::Worker::Text(const OKAVALUE& value) const
{
    oka_string text;
    value.Serialize(text, client_.internalFormat_.load());
    return std::string(text.c_str(), text.length());
}

ResponseError KnxdDeviceStackClient::Worker::NotConnected() const
{
    return StackError(kNotConnected, "not connected", "knxd at '" + client_.url_ + "' is not reachable");
}

void KnxdDeviceStackClient::Worker::AnswerValue(Job::Kind kind, const std::string& requestId, unsigned long id,
                                                const std::string& urn, const std::string& value,
                                                const ResponseError& error)
{
    Deliver([&](IResponseHandler& handler) {
        if (kind == Job::SetValue)
        {
            handler.OnSetValue(client_, requestId, id, urn, value, error);
        }
        else
        {
            handler.OnGetValue(client_, requestId, id, urn, value, error);
        }
    });
}

void KnxdDeviceStackClient::Worker::AnswerResponse(const std::string& requestId, const std::string& response,
                                                   const ResponseError& error)
{
    Deliver([&](IResponseHandler& handler) { handler.OnResponse(client_, requestId, response, error); });
}

void KnxdDeviceStackClient::Worker::AnswerRegisterApplication(const std::string& requestId,
                                                              const ResponseError& error)
{
    Deliver([&](IResponseHandler& handler) { handler.OnRegisterApplication(client_, requestId, error); });
}

void KnxdDeviceStackClient::Worker::AnswerSetConfiguration(const std::string& requestId, const ResponseError& error)
{
    Deliver([&](IResponseHandler& handler) { handler.OnSetConfiguration(client_, requestId, error); });
}


} // namespace Lumo
