#pragma once
// An in-process device stack: keeps object-model values by id in memory and answers every
// asynchronous request on its own callback thread. It can be told to answer late, not at
// all, twice, with an error, or before the request call has returned, so that programs and
// tests can run the request front against every answer pattern of a real stack.
#include <platform/DeviceStackClient.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <queue>
#include <string>
#include <thread>
#include <vector>

namespace Lumo
{
class LocalDeviceStackClient : public IDeviceStackClient
{
public:
    enum class RequestKind
    {
        Request,
        RegisterApplication,
        SetConfiguration,
        GetValue,
        SetValue,
    };

    // How one request is answered.
    struct AnswerPlan
    {
        std::chrono::microseconds latency{0};
        bool drop = false;          // no answer at all
        bool duplicate = false;     // the same answer twice
        bool beforeReturn = false;  // start the answer before the request call returns (no latency)
        int errorCode = 0;          // non-zero: answer with this error
        std::string errorFirstText;
        std::string errorSecondText;
        std::string errorMessage;
    };

    struct RequestInfo
    {
        RequestKind kind;
        std::string requestId;
        std::string text;  // the request, configuration or value text; empty otherwise
        unsigned long id;  // the object-model id of value requests, else 0
    };

    // Decides per request; called on the requesting thread without any lock of the client.
    using AnswerPlanner = std::function<AnswerPlan(const RequestInfo&)>;

    struct Counters
    {
        std::uint64_t requests = 0;            // asynchronous requests received, sent or not
        std::uint64_t notSent = 0;             // of which answered with an empty request id
        std::uint64_t byKind[5] = {0, 0, 0, 0, 0};  // requests received, indexed by RequestKind
        std::uint64_t answersScheduled = 0;    // duplicates count twice
        std::uint64_t answersDropped = 0;      // requests left unanswered on purpose
        std::uint64_t answersDelivered = 0;    // handler calls made
        std::uint64_t answersWithoutHandler = 0;  // due while no handler was set
        std::uint64_t errorAnswers = 0;        // requests answered with an error
        std::uint64_t earlyAnswers = 0;        // answers that began before their request call returned

        std::uint64_t Received(RequestKind kind) const { return byKind[static_cast<int>(kind)]; }
    };

    // Answers every request promptly and without error.
    LocalDeviceStackClient();
    // Joins the callback thread; answers still pending are discarded.
    ~LocalDeviceStackClient() override;
    LocalDeviceStackClient(const LocalDeviceStackClient&) = delete;
    LocalDeviceStackClient& operator=(const LocalDeviceStackClient&) = delete;

    // The plan used for every request while no planner is set.
    void SetAnswerPlan(const AnswerPlan& plan);
    void SetLatency(std::chrono::microseconds latency);
    void SetDropAnswers(bool drop);
    void SetDuplicateAnswers(bool duplicate);
    void SetAnswerBeforeReturn(bool beforeReturn);
    // Code 0 answers without error again.
    void SetErrorAnswer(int code, std::string firstText, std::string secondText, std::string message);
    // A planner overrides the fixed plan; an empty one restores it.
    void SetAnswerPlanner(AnswerPlanner planner);
    // While set, asynchronous requests return an empty id and nothing is sent.
    void SetEmptyRequestIds(bool empty);

    Counters GetCounters() const;
    // Blocks until no answer is pending or being delivered, or the time passes; true when idle.
    bool WaitUntilIdle(std::chrono::milliseconds limit) const;

    // The text last stored for an id (empty when none), and the other state the calls set.
    std::string ReadValue(unsigned long id) const;
    std::string ReadConfiguration() const;
    PropertyMap ReadProperties(unsigned long id) const;
    std::string ReadValueFormat() const;
    bool IsInternalValueFormat() const;

    bool SetInternalValueFormat(bool enable) override;
    bool SetConfiguration(unsigned long id, const PropertyMap& properties, bool flag) override;
    // The device configuration as "key=value" lines.
    bool GetDeviceConfig(std::string& configuration, bool flag) override;
    bool SetDeviceConfig(const std::map<std::string, std::string>& configuration) override;
    bool SetValueFormat(const std::string& formatName) override;
    // Answered with the request text itself.
    std::string RequestAsync(const std::string& request) override;
    std::string RegisterApplicationAsync(const std::string& first, const std::string& second,
                                         const std::string& third) override;
    std::string SetConfigurationAsync(const std::string& configuration) override;
    // Answered with the text last stored for the id when the request arrived.
    std::string GetValueAsync(unsigned long id, bool flag) override;
    // Stores the text (unless the answer is an error) and answers with it.
    std::string SetValueAsync(unsigned long id, const std::string& serializedValue, bool flag,
                              int reserved) override;
    // When called off the callback thread, returns only once no answer is being delivered to
    // the previous handler, so that handler may be destroyed right after.
    void SetResponseHandler(IResponseHandler* handler, int reserved) override;

private:
    using Delivery = std::function<void(IDeviceStackClient&, IResponseHandler&, const ResponseError&)>;
    struct PendingAnswer
    {
        std::chrono::steady_clock::time_point due;
        std::uint64_t sequence;
        Delivery deliver;
        ResponseError error;
    };
    struct LaterFirst
    {
        bool operator()(const PendingAnswer& a, const PendingAnswer& b) const
        {
            return a.due != b.due ? a.due > b.due : a.sequence > b.sequence;
        }
    };

    // Returns the request id, or empty when nothing may be sent.
    std::string Accept(RequestKind kind);
    AnswerPlan PlanFor(const RequestInfo& info) const;
    void Schedule(const AnswerPlan& plan, Delivery deliver);
    void Run();
    // With the lock held and nothing pending: true when an answer was scheduled (or the
    // client stops) within a short moment, false when the callback thread should sleep.
    bool AwaitNextRequest(std::unique_lock<std::mutex>& lock);

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    IResponseHandler* handler = nullptr;
    AnswerPlan fixedPlan;
    AnswerPlanner planner;
    bool emptyRequestIds = false;
    std::uint64_t nextRequestId = 0;
    std::uint64_t nextSequence = 0;
    std::uint64_t startedCount = 0;
    std::uint64_t lastStartedSequence = 0;
    bool delivering = false;
    bool stopping = false;
    std::priority_queue<PendingAnswer, std::vector<PendingAnswer>, LaterFirst> pending;
    Counters counters;
    std::map<unsigned long, std::string> values;
    std::map<unsigned long, PropertyMap> properties;
    std::map<std::string, std::string> deviceConfig;
    std::string configuration;
    std::string valueFormat;
    bool internalValueFormat = false;
    // Counts the answers scheduled; read without the lock by the callback thread.
    std::atomic<std::uint64_t> scheduledAnswers{0};
    std::thread callbackThread;  // last: starts once everything above exists
};
} // namespace Lumo
