#include <TavObjectModel/DscAsyncRequestMessenger.h>

#include <TavObjectModel/Backtrace.h>
#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <boost/thread/lock_options.hpp>
#include <boost/thread/thread_only.hpp>

#include <algorithm>
#include <ostream>

namespace Okaro
{
namespace
{
using WaitClock = DscAsyncRequestMessenger::WaitClock;

// The head of a callback's error line; streamed so that nothing is built below ERROR.
struct DeviceStackErrorHead
{
    const std::string& requestId;
    const Lumo::ResponseError& error;
};

DeviceStackErrorHead ErrorHead(const std::string& requestId, const Lumo::ResponseError& error)
{
    return DeviceStackErrorHead{requestId, error};
}

std::ostream& operator<<(std::ostream& out, const DeviceStackErrorHead& head)
{
    return out << "LDS error for request " << head.requestId << ": " << head.error.GetCode() << "; "
               << head.error.GetFirstText() << "; " << head.error.GetSecondText();
}

// A single condition wait never reaches further than this, so the time handed to the C
// library stays small even with a 32-bit time_t; the wait loop simply waits again.
const WaitClock::duration kLongestSingleWait = boost::chrono::hours(24);

// How long a requester keeps looking at its docket before it sleeps on the condition.
const WaitClock::duration kLookAgainFor = boost::chrono::microseconds(20);

// The deadline of a wait, or none for "until answered": positive infinity, and finite
// durations so long that the clock could not represent their end.
boost::optional<WaitClock::time_point> DeadlineAfter(const boost::posix_time::time_duration& wait)
{
    const WaitClock::time_point now = WaitClock::now();
    if (wait.is_pos_infinity())
    {
        return boost::none;
    }
    if (wait.is_special() || wait.is_negative())
    {
        return now;
    }
    const boost::int64_t microseconds = wait.total_microseconds();
    const boost::int64_t room =
        boost::chrono::duration_cast<boost::chrono::microseconds>(WaitClock::time_point::max() - now).count();
    if (microseconds >= room)
    {
        return boost::none;
    }
    return now + boost::chrono::microseconds(microseconds);
}

// Removes the waiter's entry however the wait ends, so the list never points at a dead frame.
class DocketEntryEraser
{
public:
    DocketEntryEraser(std::map<std::string, Docket*>& dockets, const std::string& requestId)
        : dockets(dockets), requestId(requestId)
    {
    }
    ~DocketEntryEraser() { dockets.erase(requestId); }
    DocketEntryEraser(const DocketEntryEraser&) = delete;
    DocketEntryEraser& operator=(const DocketEntryEraser&) = delete;

private:
    std::map<std::string, Docket*>& dockets;
    const std::string& requestId;
};
} // namespace

DscAsyncRequestMessenger::DscAsyncRequestMessenger(RequestMessengerDeviceStack& messenger,
                                                   boost::posix_time::time_duration timeout,
                                                   std::uint32_t retries, const log4cplus::Logger& logger)
    : logger(logger), messenger(messenger), timeout(timeout), attempts(static_cast<std::uint32_t>(retries + 1u))
{
}

// --- answers, on the client's callback thread

void DscAsyncRequestMessenger::OnResponse(Lumo::IDeviceStackClient&, const std::string& requestId,
                                          const std::string& response, const Lumo::ResponseError& error)
{
    if (error.GetCode() != 0)
    {
        TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "OnResponse", LogFile::DscAsyncRequestMessenger, 275,
                        ErrorHead(requestId, error)
                            << "; response: " << response << FormatBacktraceSuffix());
    }
    UpdateDocketList(requestId, response, error);
}

void DscAsyncRequestMessenger::OnRegisterApplication(Lumo::IDeviceStackClient&, const std::string& requestId,
                                                     const Lumo::ResponseError& error)
{
    if (error.GetCode() != 0)
    {
        TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "OnRegisterApplication", LogFile::DscAsyncRequestMessenger, 286,
                        ErrorHead(requestId, error) << FormatBacktraceSuffix());
    }
    UpdateDocketList(requestId, std::string(), error);
}

void DscAsyncRequestMessenger::OnGetConfiguration(Lumo::IDeviceStackClient&, const std::string& requestId,
                                                  const std::string& configuration,
                                                  const Lumo::ResponseError& error)
{
    if (error.GetCode() != 0)
    {
        TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "OnGetConfiguration", LogFile::DscAsyncRequestMessenger, 297,
                        ErrorHead(requestId, error)
                            << "; config: " << configuration << FormatBacktraceSuffix());
    }
    UpdateDocketList(requestId, configuration, error);
}

void DscAsyncRequestMessenger::OnSetConfiguration(Lumo::IDeviceStackClient&, const std::string& requestId,
                                                  const Lumo::ResponseError& error)
{
    if (error.GetCode() != 0)
    {
        TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "OnSetConfiguration", LogFile::DscAsyncRequestMessenger, 332,
                        ErrorHead(requestId, error) << FormatBacktraceSuffix());
    }
    UpdateDocketList(requestId, std::string(), error);
}

void DscAsyncRequestMessenger::OnGetValue(Lumo::IDeviceStackClient&, const std::string& requestId,
                                          unsigned long id, const std::string& urn, const std::string& value,
                                          const Lumo::ResponseError& error)
{
    if (error.GetCode() != 0)
    {
        TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "OnGetValue", LogFile::DscAsyncRequestMessenger, 309,
                        ErrorHead(requestId, error) << "; id: " << id << "; urn: " << urn
                                                               << "; value: " << value << FormatBacktraceSuffix());
    }
    UpdateDocketList(requestId, value, error);
}

void DscAsyncRequestMessenger::OnSetValue(Lumo::IDeviceStackClient&, const std::string& requestId,
                                          unsigned long id, const std::string& urn, const std::string& value,
                                          const Lumo::ResponseError& error)
{
    if (error.GetCode() != 0)
    {
        TAV_LOG_FROM(logger, log4cplus::ERROR_LOG_LEVEL, "OnSetValue", LogFile::DscAsyncRequestMessenger, 321,
                        ErrorHead(requestId, error) << "; id: " << id << "; urn: " << urn
                                                               << "; value: " << value << FormatBacktraceSuffix());
    }
    UpdateDocketList(requestId, value, error);
}

void DscAsyncRequestMessenger::UpdateDocketList(const std::string& requestId, const std::string& reply,
                                                const Lumo::ResponseError& error)
{
    boost::lock_guard<boost::mutex> docketLock(docketMutex);
    const auto entry = dockets.find(requestId);
    if (entry == dockets.end())
    {
        // Late answers and answers nobody asked to see end here; routine, hence DEBUG.
        TAV_LOG_AT(logger, log4cplus::DEBUG_LOG_LEVEL, LogFile::DscAsyncRequestMessenger, 171, "No docket for response ID '" << requestId << "'");
        return;
    }
    if (error.GetCode() != 0)
    {
        TAV_LOG_AT(logger, log4cplus::ERROR_LOG_LEVEL, LogFile::DscAsyncRequestMessenger, 176,
                "Request " << requestId << ": Error '" << error.GetMessage() << "'" << FormatBacktraceSuffix());
    }
    Docket answer(reply, error.GetMessage(), error.GetCode() == 0, true);
    entry->second->swap(answer);
    // Every waiter wakes and looks at its own docket. Notified under the lock: a requester
    // cannot return (and its owner destroy this messenger) before the notification is done.
    answerCondition.notify_all();
}

// --- handler registration

void DscAsyncRequestMessenger::SetAsResponseHandler() { messenger.SetResponseHandler(this); }

void DscAsyncRequestMessenger::UnsetAsResponseHandler() { messenger.SetResponseHandler(nullptr); }

// --- blocking requests

Docket DscAsyncRequestMessenger::RegisterApplication(const std::string& first, const std::string& second,
                                                     const std::string& third)
{
    return SynchronizeRequest([&] { return messenger.RegisterApplicationAsync(first, second, third); },
                              boost::posix_time::time_duration());
}

Docket DscAsyncRequestMessenger::GetValue(unsigned long id, bool flag)
{
    return SynchronizeRequest([&] { return messenger.GetValueAsync(id, flag); },
                              boost::posix_time::time_duration());
}

Docket DscAsyncRequestMessenger::SetValue(unsigned long id, const OKAVALUE& value, bool flag)
{
    return SynchronizeRequest([&] { return messenger.SetValueAsync(id, value, flag); },
                              boost::posix_time::time_duration());
}

Docket DscAsyncRequestMessenger::SetConfiguration(const std::string& configuration,
                                                  boost::posix_time::time_duration requestTimeout)
{
    return SynchronizeRequest([&] { return messenger.SetConfigurationAsync(configuration); }, requestTimeout);
}

Docket DscAsyncRequestMessenger::Request(const std::string& request, boost::posix_time::time_duration requestTimeout)
{
    return SynchronizeRequest([&] { return messenger.RequestAsync(request); }, requestTimeout);
}

boost::unique_lock<boost::mutex> DscAsyncRequestMessenger::LockRequests(const char* function)
{
    boost::unique_lock<boost::mutex> requestLock(requestMutex, boost::try_to_lock);
    if (!requestLock.owns_lock())
    {
        TAV_LOG_FROM(logger, log4cplus::DEBUG_LOG_LEVEL, function, LogFile::DscAsyncRequestMessenger, 228,
                   "Running SynchronizeRequest concurrently (this log entry is temporarily here for debugging)");
        requestLock.lock();
    }
    return requestLock;
}

template <typename Send>
Docket DscAsyncRequestMessenger::SynchronizeRequest(Send send, const boost::posix_time::time_duration& requestTimeout)
{
    const boost::unique_lock<boost::mutex> requestLock = LockRequests("SynchronizeRequest");
    // Held while sending, so an answer that comes back at once waits for us in the dispatcher.
    boost::unique_lock<boost::mutex> docketLock(docketMutex);
    for (std::uint32_t attempt = 0; attempt < attempts; ++attempt)
    {
        const std::string requestId = send();
        if (requestId.empty())
        {
            continue;  // not sent: try again at once
        }
        if (boost::optional<Docket> docket = WaitForDocket(requestId, requestTimeout, docketLock))
        {
            return *docket;
        }
    }
    TAV_LOG_AT(logger, log4cplus::WARN_LOG_LEVEL, LogFile::DscAsyncRequestMessenger, 253,
            "Maximum number of retries (" << static_cast<std::uint32_t>(attempts - 1u) << ") reached.");
    return Docket();
}

boost::optional<Docket> DscAsyncRequestMessenger::WaitForDocket(const std::string& requestId,
                                                                const boost::posix_time::time_duration& requestTimeout,
                                                                boost::unique_lock<boost::mutex>& docketLock)
{
    Docket docket;
    // An existing entry is kept: request ids are unique, so it cannot belong to another waiter.
    dockets.emplace(requestId, &docket);
    const DocketEntryEraser eraser(dockets, requestId);
    const boost::posix_time::time_duration effectiveTimeout =
        requestTimeout == boost::posix_time::time_duration() ? timeout : requestTimeout;
    if (!WaitForAnswer(requestId, effectiveTimeout, docketLock))
    {
        return boost::none;
    }
    return docket;
}

bool DscAsyncRequestMessenger::IsAnswered(const std::string& requestId) const
{
    const auto entry = dockets.find(requestId);
    return entry != dockets.end() && entry->second->IsAnswered();
}

void DscAsyncRequestMessenger::LookAgainBriefly(const std::string& requestId,
                                                const boost::optional<WaitClock::time_point>& deadline,
                                                boost::unique_lock<boost::mutex>& docketLock)
{
    // A device stack in the same process answers within a few microseconds, sooner than a
    // sleep on the condition and the wake-up after it take. So for a moment the requester
    // behaves as if it had a run of spurious wake-ups: it lets the docket lock go, gives its
    // core away, takes the lock back and looks at its docket. Nothing can be missed: the
    // answer is filed in the docket under this lock and the docket is read under it, and the
    // wait on the condition that follows begins, as always, with a look at the docket.
    WaitClock::time_point until = WaitClock::now() + kLookAgainFor;
    if (deadline && *deadline < until)
    {
        until = *deadline;
    }
    while (!IsAnswered(requestId) && WaitClock::now() < until)
    {
        docketLock.unlock();
        // The dispatcher may hold the lock while it fills the docket: yield again rather than
        // sleep on the lock.
        do
        {
            boost::this_thread::yield();
        } while (!docketLock.try_lock() && WaitClock::now() < until);
        if (!docketLock.owns_lock())
        {
            docketLock.lock();
        }
    }
}

bool DscAsyncRequestMessenger::WaitForAnswer(const std::string& requestId,
                                             const boost::posix_time::time_duration& effectiveTimeout,
                                             boost::unique_lock<boost::mutex>& docketLock)
{
    const boost::optional<WaitClock::time_point> deadline = DeadlineAfter(effectiveTimeout);
    LookAgainBriefly(requestId, deadline, docketLock);
    // Spurious wake-ups and answers for other requests only lead to a new check.
    while (!IsAnswered(requestId))
    {
        if (!deadline)
        {
            answerCondition.wait(docketLock);
            continue;
        }
        const WaitClock::time_point now = WaitClock::now();
        if (now >= *deadline)
        {
            break;
        }
        answerCondition.wait_until(docketLock, std::min(*deadline, now + kLongestSingleWait));
    }
    if (IsAnswered(requestId))
    {
        return true;
    }
    TAV_LOG_AT(logger, log4cplus::WARN_LOG_LEVEL, LogFile::DscAsyncRequestMessenger, 305,
            "Timeout (" << effectiveTimeout << ") occured for request ID '" << requestId << "'");
    return false;
}

bool DscAsyncRequestMessenger::SetValueAndIgnoreResponse(unsigned long id, const OKAVALUE& value, bool flag)
{
    const boost::unique_lock<boost::mutex> requestLock = LockRequests("SetValueAndIgnoreResponse");
    return !messenger.SetValueAsync(id, value, flag).empty();
}

// --- operations that do not wait

Docket DscAsyncRequestMessenger::SetConfiguration(unsigned long id,
                                                  const Lumo::IDeviceStackClient::PropertyMap& properties, bool flag)
{
    return Docket(std::string(), std::string(), messenger.SetConfiguration(id, properties, flag), true);
}

bool DscAsyncRequestMessenger::GetDeviceConfig(std::string& configuration, bool flag)
{
    return messenger.GetDeviceConfig(configuration, flag);
}

bool DscAsyncRequestMessenger::SetDeviceConfig(const std::map<std::string, std::string>& configuration)
{
    return messenger.SetDeviceConfig(configuration);
}

bool DscAsyncRequestMessenger::EnableNativeFormat() { return messenger.EnableNativeFormat(); }
} // namespace Okaro
