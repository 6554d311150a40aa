#pragma once
// Blocking device-stack requests on top of the asynchronous messenger: one docket per
// request, a time-out per attempt and a bounded number of attempts.
#include <TavObjectModel/Docket.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>

#include <platform/DeviceStackClient.h>
#include <platform/OkaValue.h>

#include <boost/chrono/system_clocks.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/optional.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <log4cplus/logger.h>

#include <cstdint>
#include <map>
#include <string>

namespace Okaro
{
class DscAsyncRequestMessenger : public Lumo::IDeviceStackClient::IResponseHandler
{
public:
    // Waits are measured on this clock only, so wall-clock jumps (NTP on a controller
    // without a real-time clock) neither stretch nor cut them.
    using WaitClock = boost::chrono::steady_clock;

    // Each request is sent at most retries + 1 times (32-bit unsigned: 4294967295 retries
    // means no attempt at all). Does not register itself as the messenger's handler.
    DscAsyncRequestMessenger(RequestMessengerDeviceStack& messenger, boost::posix_time::time_duration timeout,
                             std::uint32_t retries, const log4cplus::Logger& logger);
    DscAsyncRequestMessenger(const DscAsyncRequestMessenger&) = delete;
    DscAsyncRequestMessenger& operator=(const DscAsyncRequestMessenger&) = delete;

    // Answers arrive on the client's callback thread.
    void OnResponse(Lumo::IDeviceStackClient& sender, const std::string& requestId, const std::string& response,
                    const Lumo::ResponseError& error) override;
    void OnRegisterApplication(Lumo::IDeviceStackClient& sender, const std::string& requestId,
                               const Lumo::ResponseError& error) override;
    void OnGetConfiguration(Lumo::IDeviceStackClient& sender, const std::string& requestId,
                            const std::string& configuration, const Lumo::ResponseError& error) override;
    void OnSetConfiguration(Lumo::IDeviceStackClient& sender, const std::string& requestId,
                            const Lumo::ResponseError& error) override;
    void OnGetValue(Lumo::IDeviceStackClient& sender, const std::string& requestId, unsigned long id,
                    const std::string& urn, const std::string& value, const Lumo::ResponseError& error) override;
    void OnSetValue(Lumo::IDeviceStackClient& sender, const std::string& requestId, unsigned long id,
                    const std::string& urn, const std::string& value, const Lumo::ResponseError& error) override;
    // Does not detach: call UnsetAsResponseHandler first.
    ~DscAsyncRequestMessenger() override = default;

    void SetAsResponseHandler();
    void UnsetAsResponseHandler();

    // Blocking requests. The docket is the answer, or a default (unanswered) docket when
    // every attempt failed. A zero timeout argument means the default time-out.
    Docket RegisterApplication(const std::string& first, const std::string& second, const std::string& third);
    Docket GetValue(unsigned long id, bool flag);
    Docket SetValue(unsigned long id, const OKAVALUE& value, bool flag);
    Docket SetConfiguration(const std::string& configuration, boost::posix_time::time_duration timeout);
    Docket Request(const std::string& request, boost::posix_time::time_duration timeout);

    // Synchronous on the client side: one call, no lock, no retry; always an answered docket.
    Docket SetConfiguration(unsigned long id, const Lumo::IDeviceStackClient::PropertyMap& properties, bool flag);
    bool GetDeviceConfig(std::string& configuration, bool flag);
    bool SetDeviceConfig(const std::map<std::string, std::string>& configuration);
    bool EnableNativeFormat();

    // Sends once and does not wait; true when the request was sent.
    bool SetValueAndIgnoreResponse(unsigned long id, const OKAVALUE& value, bool flag);

private:
    boost::unique_lock<boost::mutex> LockRequests(const char* function);
    template <typename Send>
    Docket SynchronizeRequest(Send send, const boost::posix_time::time_duration& requestTimeout);
    boost::optional<Docket> WaitForDocket(const std::string& requestId,
                                          const boost::posix_time::time_duration& requestTimeout,
                                          boost::unique_lock<boost::mutex>& docketLock);
    // Before the wait proper: a few looks at the docket with the lock released in between.
    void LookAgainBriefly(const std::string& requestId, const boost::optional<WaitClock::time_point>& deadline,
                          boost::unique_lock<boost::mutex>& docketLock);
    bool WaitForAnswer(const std::string& requestId, const boost::posix_time::time_duration& effectiveTimeout,
                       boost::unique_lock<boost::mutex>& docketLock);
    bool IsAnswered(const std::string& requestId) const;
    void UpdateDocketList(const std::string& requestId, const std::string& reply, const Lumo::ResponseError& error);

    log4cplus::Logger logger;
    RequestMessengerDeviceStack& messenger;
    boost::posix_time::time_duration timeout;
    std::uint32_t attempts;
    boost::mutex docketMutex;
    boost::condition_variable answerCondition;
    // Points at dockets on the waiting callers' stacks; never owns them.
    std::map<std::string, Docket*> dockets;
    boost::mutex requestMutex;
};
} // namespace Okaro
