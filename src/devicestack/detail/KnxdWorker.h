#pragma once
// The device stack's worker thread: the knxd connection and the delivery of answers
// (KnxdWorker.cpp), the callers' requests (KnxdWorkerRequests.cpp), the bus behaviour of the
// objects (KnxdWorkerBus.cpp). Internal to KnxdDeviceStackClient.
#include <devicestack/KnxdDeviceStackClient.h>

#include <knx/GroupTelegram.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace TavKnx
{
class KnxdConnection;
} // namespace TavKnx

namespace Lumo
{
struct KnxdDeviceStackClient::Job
{
    enum Kind : int
    {
        Request,
        RegisterApplication,
        SetConfiguration,
        GetValue,
        SetValue,
    };
    Kind kind = Request;
    std::string requestId;
    unsigned long id = 0;
    std::string text;
};

// A group read sent for a GetValueAsync (an object) or a "read GA" request (object null).
struct KnxdDeviceStackClient::PendingRead
{
    std::string requestId;
    const DeviceObject* object;
    std::uint16_t groupAddress;
    std::chrono::steady_clock::time_point deadline;
};

class KnxdDeviceStackClient::Worker
{
public:
    explicit Worker(KnxdDeviceStackClient& client);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    using Clock = std::chrono::steady_clock;

    void Run();
    // One attempt; on failure the next is due after the back-off.
    void Connect(Clock::time_point now);

private:
    void Disconnect(const std::string& reason);
    void ReadOnInit();
    void Wait(Clock::time_point now);
    void ReceiveAll();
    // False when the connection is lost (it is then closed and the reads answered).
    bool Send(std::uint16_t groupAddress, const std::vector<std::uint8_t>& apdu);
    void ExpireReads(Clock::time_point now);

    void Handle(const Job& job);
    void HandleSetValue(const Job& job);
    void HandleGetValue(const Job& job);
    void HandleRequest(const Job& job);
    void HandleTelegram(const TavKnx::GroupTelegram& telegram);
    void AnswerRead(const DeviceObject& object, std::size_t index);
    void Store(std::size_t index, const OKAVALUE& value, ChangeSource source);

    std::string Text(const OKAVALUE& value) const;
    ResponseError NotConnected() const;
    void AnswerValue(Job::Kind kind, const std::string& requestId, unsigned long id, const std::string& urn,
                     const std::string& value, const ResponseError& error);
    void AnswerResponse(const std::string& requestId, const std::string& response, const ResponseError& error);
    void AnswerRegisterApplication(const std::string& requestId, const ResponseError& error);
    void AnswerSetConfiguration(const std::string& requestId, const ResponseError& error);
    template <typename Call>
    void Deliver(Call call);

    KnxdDeviceStackClient& client_;
    std::unique_ptr<TavKnx::KnxdConnection> connection_;
    std::vector<PendingRead> reads_;
    Clock::time_point nextConnect_;
    std::chrono::milliseconds reconnectDelay_;
    std::string lastFailure_;
};
} // namespace Lumo
