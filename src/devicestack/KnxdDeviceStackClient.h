#pragma once
// A device stack on a live bus: the controller's communication objects, kept by a client of
// the KNX daemon (knxd) that behaves on the bus as a KNX device does, and reached through the
// asynchronous device-stack interface. docs/Messaging.md, "The device stack on knxd".
//
// One worker thread owns the knxd connection and the objects' values; it sends the requests
// that callers queue, takes the bus's telegrams, and delivers every answer to the response
// handler (so the handler runs on that thread). Callers on any number of threads only queue.
#include <devicestack/DeviceObject.h>
#include <platform/DeviceStackClient.h>
#include <platform/OkaValue.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Lumo
{
class KnxdDeviceStackClient : public IDeviceStackClient
{
public:
    // The codes of the errors the client answers with (ResponseError::GetCode()).
    enum ErrorCode : int
    {
        kUnknownId = 1,         // no object has the id
        kUnreadableValue = 2,   // the text is not in the value text form
        kValueRefused = 3,      // the object's DPT cannot carry the value
        kNotSendable = 4,       // the object lacks the C or T flag
        kNotConnected = 5,      // knxd is not reachable (now, or it went away while waiting)
        kNoResponse = 6,        // nobody answered a group read in the read time-out
        kBadRequest = 7,        // a RequestAsync text that is no command
        kNotSupported = 8,      // an operation the device stack does not have
    };

    struct Settings
    {
        // How long a group read waits for its response before "no response".
        std::chrono::milliseconds readTimeout{10000};
        // Reconnecting after knxd went away: the first wait, doubled up to the last.
        std::chrono::milliseconds firstReconnectDelay{50};
        std::chrono::milliseconds maxReconnectDelay{2000};
    };

    // Why an object's value changed.
    enum class ChangeSource
    {
        Application,  // SetValueAsync
        BusWrite,
        BusResponse,
    };
    // Called on the worker thread, after the value is stored; must not call back into the client.
    using ChangeObserver = std::function<void(const DeviceObject& object, const OKAVALUE& value, ChangeSource source)>;

    // Connects to `url` ("local:/PATH" or "ip:HOST[:PORT]") and starts the worker thread. When
    // knxd cannot be reached yet, or goes away later, the worker connects again with a bounded
    // back-off; requests meanwhile are answered kNotConnected. Objects without group addresses or with a CO already
    // given are left out.
    KnxdDeviceStackClient(std::string url, std::vector<DeviceObject> objects, Settings settings);
    KnxdDeviceStackClient(std::string url, std::vector<DeviceObject> objects);
    // Stops and joins the worker; requests still open are not answered.
    ~KnxdDeviceStackClient() override;
    KnxdDeviceStackClient(const KnxdDeviceStackClient&) = delete;
    KnxdDeviceStackClient& operator=(const KnxdDeviceStackClient&) = delete;

    const std::vector<DeviceObject>& Objects() const { return objects_; }
    // Null when no object has the id.
    const DeviceObject* FindObject(unsigned long id) const;
    // True while the group socket is open.
    bool IsConnected() const { return connected_.load(); }
    // Blocks until connected or the time passes; true when connected.
    bool WaitConnected(std::chrono::milliseconds limit) const;
    // Set before the first request; replaces the previous observer.
    void SetChangeObserver(ChangeObserver observer);

    // Answers come in the internal value text form while enabled, else the default one.
    bool SetInternalValueFormat(bool enable) override;
    // Not supported: false.
    bool SetConfiguration(unsigned long id, const PropertyMap& properties, bool flag) override;
    // The objects, their values and the connection as one JSON object; always true.
    bool GetDeviceConfig(std::string& configuration, bool flag) override;
    // Not supported: false.
    bool SetDeviceConfig(const std::map<std::string, std::string>& configuration) override;
    // Only the value text form is spoken: false for every other name.
    bool SetValueFormat(const std::string& formatName) override;
    // "read GA", "write GA HEX", "objects"; answered on OnResponse.
    std::string RequestAsync(const std::string& request) override;
    // Answered with success.
    std::string RegisterApplicationAsync(const std::string& first, const std::string& second,
                                         const std::string& third) override;
    // Answered with kNotSupported.
    std::string SetConfigurationAsync(const std::string& configuration) override;
    // The object's value, or a group read's response.
    std::string GetValueAsync(unsigned long id, bool flag) override;
    // A group write of the value on the object's sending address; answered with the stored text.
    std::string SetValueAsync(unsigned long id, const std::string& serializedValue, bool flag,
                              int reserved) override;
    // Off the worker thread, returns only once no answer is being delivered to the previous
    // handler, so that handler may be destroyed right after.
    void SetResponseHandler(IResponseHandler* handler, int reserved) override;

private:
    struct Job;
    struct PendingRead;
    class Worker;
    friend class Worker;

    // Queues a request for the worker; returns its request id.
    std::string Queue(int kind, unsigned long id, std::string text);

    const std::vector<DeviceObject> objects_;
    std::map<unsigned long, std::size_t> byId_;
    const std::string url_;
    const Settings settings_;
    std::atomic<bool> internalFormat_{false};
    std::atomic<bool> connected_{false};

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::deque<std::unique_ptr<Job>> jobs_;
    std::uint64_t lastRequest_ = 0;  // request ids count up from 1
    IResponseHandler* handler_ = nullptr;
    bool delivering_ = false;
    ChangeObserver observer_;
    std::vector<OKAVALUE> values_;  // by object; type ivtEmpty while it has none
    bool stopping_ = false;
    int wakeDescriptor_ = -1;

    std::unique_ptr<Worker> worker_;
    std::thread thread_;  // last: starts once everything above exists
};
} // namespace Lumo
