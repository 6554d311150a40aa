#include <platform/LocalDeviceStackClient.h>

#include <utility>

namespace Lumo
{
namespace
{
std::string UrnOf(unsigned long id) { return "local:object:" + std::to_string(id); }
} // namespace

LocalDeviceStackClient::LocalDeviceStackClient() { callbackThread = std::thread(&LocalDeviceStackClient::Run, this); }

LocalDeviceStackClient::~LocalDeviceStackClient()
{
    {
        std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
    }
    changed.notify_all();
    callbackThread.join();
}

// --- settings

void LocalDeviceStackClient::SetAnswerPlan(const AnswerPlan& plan)
{
    std::lock_guard<std::mutex> lock(mutex);
    fixedPlan = plan;
}

void LocalDeviceStackClient::SetLatency(std::chrono::microseconds latency)
{
    std::lock_guard<std::mutex> lock(mutex);
    fixedPlan.latency = latency;
}

void LocalDeviceStackClient::SetDropAnswers(bool drop)
{
    std::lock_guard<std::mutex> lock(mutex);
    fixedPlan.drop = drop;
}

void LocalDeviceStackClient::SetDuplicateAnswers(bool duplicate)
{
    std::lock_guard<std::mutex> lock(mutex);
    fixedPlan.duplicate = duplicate;
}

void LocalDeviceStackClient::SetAnswerBeforeReturn(bool beforeReturn)
{
    std::lock_guard<std::mutex> lock(mutex);
    fixedPlan.beforeReturn = beforeReturn;
}

void LocalDeviceStackClient::SetErrorAnswer(int code, std::string firstText, std::string secondText,
                                            std::string message)
{
    std::lock_guard<std::mutex> lock(mutex);
    fixedPlan.errorCode = code;
    fixedPlan.errorFirstText = std::move(firstText);
    fixedPlan.errorSecondText = std::move(secondText);
    fixedPlan.errorMessage = std::move(message);
}

void LocalDeviceStackClient::SetAnswerPlanner(AnswerPlanner newPlanner)
{
    std::lock_guard<std::mutex> lock(mutex);
    planner = std::move(newPlanner);
}

void LocalDeviceStackClient::SetEmptyRequestIds(bool empty)
{
    std::lock_guard<std::mutex> lock(mutex);
    emptyRequestIds = empty;
}

// --- inspection

LocalDeviceStackClient::Counters LocalDeviceStackClient::GetCounters() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return counters;
}

bool LocalDeviceStackClient::WaitUntilIdle(std::chrono::milliseconds limit) const
{
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, limit, [this] { return pending.empty() && !delivering; });
}

std::string LocalDeviceStackClient::ReadValue(unsigned long id) const
{
    std::lock_guard<std::mutex> lock(mutex);
    const auto entry = values.find(id);
    return entry == values.end() ? std::string() : entry->second;
}

std::string LocalDeviceStackClient::ReadConfiguration() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return configuration;
}

IDeviceStackClient::PropertyMap LocalDeviceStackClient::ReadProperties(unsigned long id) const
{
    std::lock_guard<std::mutex> lock(mutex);
    const auto entry = properties.find(id);
    return entry == properties.end() ? PropertyMap() : entry->second;
}

std::string LocalDeviceStackClient::ReadValueFormat() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return valueFormat;
}

bool LocalDeviceStackClient::IsInternalValueFormat() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return internalValueFormat;
}

// --- synchronous operations

bool LocalDeviceStackClient::SetInternalValueFormat(bool enable)
{
    std::lock_guard<std::mutex> lock(mutex);
    internalValueFormat = enable;
    return true;
}

bool LocalDeviceStackClient::SetConfiguration(unsigned long id, const PropertyMap& newProperties, bool)
{
    std::lock_guard<std::mutex> lock(mutex);
    properties[id] = newProperties;
    return true;
}

bool LocalDeviceStackClient::GetDeviceConfig(std::string& out, bool)
{
    std::lock_guard<std::mutex> lock(mutex);
    out.clear();
    for (const auto& entry : deviceConfig)
    {
        out += entry.first + "=" + entry.second + "\n";
    }
    return true;
}

bool LocalDeviceStackClient::SetDeviceConfig(const std::map<std::string, std::string>& newConfig)
{
    std::lock_guard<std::mutex> lock(mutex);
    deviceConfig = newConfig;
    return true;
}

bool LocalDeviceStackClient::SetValueFormat(const std::string& formatName)
{
    std::lock_guard<std::mutex> lock(mutex);
    valueFormat = formatName;
    return true;
}

// --- asynchronous requests

std::string LocalDeviceStackClient::RequestAsync(const std::string& request)
{
    const std::string requestId = Accept(RequestKind::Request);
    if (!requestId.empty())
    {
        Schedule(PlanFor({RequestKind::Request, requestId, request, 0}),
                 [requestId, request](IDeviceStackClient& sender, IResponseHandler& target,
                                      const ResponseError& error) {
                     target.OnResponse(sender, requestId, request, error);
                 });
    }
    return requestId;
}

std::string LocalDeviceStackClient::RegisterApplicationAsync(const std::string&, const std::string&,
                                                             const std::string&)
{
    const std::string requestId = Accept(RequestKind::RegisterApplication);
    if (!requestId.empty())
    {
        Schedule(PlanFor({RequestKind::RegisterApplication, requestId, std::string(), 0}),
                 [requestId](IDeviceStackClient& sender, IResponseHandler& target, const ResponseError& error) {
                     target.OnRegisterApplication(sender, requestId, error);
                 });
    }
    return requestId;
}

std::string LocalDeviceStackClient::SetConfigurationAsync(const std::string& newConfiguration)
{
    const std::string requestId = Accept(RequestKind::SetConfiguration);
    if (!requestId.empty())
    {
        const AnswerPlan plan = PlanFor({RequestKind::SetConfiguration, requestId, newConfiguration, 0});
        if (plan.errorCode == 0)
        {
            std::lock_guard<std::mutex> lock(mutex);
            configuration = newConfiguration;
        }
        Schedule(plan, [requestId](IDeviceStackClient& sender, IResponseHandler& target, const ResponseError& error) {
            target.OnSetConfiguration(sender, requestId, error);
        });
    }
    return requestId;
}

std::string LocalDeviceStackClient::GetValueAsync(unsigned long id, bool)
{
    const std::string requestId = Accept(RequestKind::GetValue);
    if (!requestId.empty())
    {
        const std::string value = ReadValue(id);
        Schedule(PlanFor({RequestKind::GetValue, requestId, value, id}),
                 [requestId, id, value](IDeviceStackClient& sender, IResponseHandler& target,
                                        const ResponseError& error) {
                     target.OnGetValue(sender, requestId, id, UrnOf(id), value, error);
                 });
    }
    return requestId;
}

std::string LocalDeviceStackClient::SetValueAsync(unsigned long id, const std::string& serializedValue, bool, int)
{
    const std::string requestId = Accept(RequestKind::SetValue);
    if (!requestId.empty())
    {
        const AnswerPlan plan = PlanFor({RequestKind::SetValue, requestId, serializedValue, id});
        if (plan.errorCode == 0)
        {
            std::lock_guard<std::mutex> lock(mutex);
            values[id] = serializedValue;
        }
        Schedule(plan, [requestId, id, serializedValue](IDeviceStackClient& sender, IResponseHandler& target,
                                                        const ResponseError& error) {
            target.OnSetValue(sender, requestId, id, UrnOf(id), serializedValue, error);
        });
    }
    return requestId;
}

void LocalDeviceStackClient::SetResponseHandler(IResponseHandler* newHandler, int)
{
    std::unique_lock<std::mutex> lock(mutex);
    handler = newHandler;
    if (std::this_thread::get_id() != callbackThread.get_id())
    {
        changed.wait(lock, [this] { return !delivering; });
    }
}

// --- machinery

std::string LocalDeviceStackClient::Accept(RequestKind kind)
{
    std::lock_guard<std::mutex> lock(mutex);
    ++counters.requests;
    ++counters.byKind[static_cast<int>(kind)];
    if (emptyRequestIds)
    {
        ++counters.notSent;
        return std::string();
    }
    return std::to_string(++nextRequestId);
}

LocalDeviceStackClient::AnswerPlan LocalDeviceStackClient::PlanFor(const RequestInfo& info) const
{
    AnswerPlanner currentPlanner;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (!planner)
        {
            return fixedPlan;
        }
        currentPlanner = planner;
    }
    return currentPlanner(info);
}

void LocalDeviceStackClient::Schedule(const AnswerPlan& plan, Delivery deliver)
{
    std::unique_lock<std::mutex> lock(mutex);
    if (plan.errorCode != 0)
    {
        ++counters.errorAnswers;
    }
    if (plan.drop)
    {
        ++counters.answersDropped;
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    const auto due = plan.beforeReturn ? now : now + plan.latency;
    const ResponseError error(plan.errorCode, plan.errorFirstText, plan.errorSecondText, plan.errorMessage);
    const bool idle = pending.empty() && !delivering;
    const std::uint64_t first = ++nextSequence;
    pending.push(PendingAnswer{due, first, deliver, error});
    ++counters.answersScheduled;
    if (plan.duplicate)
    {
        pending.push(PendingAnswer{due, ++nextSequence, deliver, error});
        ++counters.answersScheduled;
    }
    const std::uint64_t last = nextSequence;
    scheduledAnswers.fetch_add(1, std::memory_order_release);

    // The requester may hold a lock the handler needs (the docket mutex) until after we
    // return, so we wait only for the answer to start, and only when the callback thread is
    // idle: then nothing but our own answer stands before it. Once anything starts we return.
    if (!plan.beforeReturn || !idle || std::this_thread::get_id() == callbackThread.get_id())
    {
        // Woken after the lock is released: the callback thread does not wake into a held lock.
        lock.unlock();
        changed.notify_all();
        return;
    }
    changed.notify_all();
    {
        const std::uint64_t startedBefore = startedCount;
        changed.wait(lock, [&] { return startedCount != startedBefore || stopping; });
        if (lastStartedSequence >= first && lastStartedSequence <= last)
        {
            ++counters.earlyAnswers;
        }
    }
}

bool LocalDeviceStackClient::AwaitNextRequest(std::unique_lock<std::mutex>& lock)
{
    // A blocking requester sends its next request right after its answer, and several
    // requesters queue behind each other: looking again for a moment (giving the core away
    // meanwhile) spares the callback thread a sleep and a wake-up per request.
    constexpr std::chrono::microseconds kLookAgainFor(50);
    const std::uint64_t seen = scheduledAnswers.load(std::memory_order_acquire);
    lock.unlock();
    const auto until = std::chrono::steady_clock::now() + kLookAgainFor;
    bool scheduled = false;
    while (!scheduled && std::chrono::steady_clock::now() < until)
    {
        std::this_thread::yield();
        scheduled = scheduledAnswers.load(std::memory_order_acquire) != seen;
    }
    lock.lock();
    return scheduled || !pending.empty() || stopping;
}

void LocalDeviceStackClient::Run()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (!stopping)
    {
        if (pending.empty())
        {
            if (!AwaitNextRequest(lock))
            {
                changed.wait(lock);
            }
            continue;
        }
        const auto due = pending.top().due;
        if (std::chrono::steady_clock::now() < due)
        {
            changed.wait_until(lock, due);
            continue;
        }
        const PendingAnswer answer = pending.top();
        pending.pop();
        IResponseHandler* const target = handler;
        delivering = true;
        ++startedCount;
        lastStartedSequence = answer.sequence;
        changed.notify_all();
        lock.unlock();
        if (target != nullptr)
        {
            try
            {
                answer.deliver(*this, *target, answer.error);
            }
            catch (...)
            {
                // A failing handler must not take the callback thread down with it.
            }
        }
        lock.lock();
        delivering = false;
        ++(target != nullptr ? counters.answersDelivered : counters.answersWithoutHandler);
        changed.notify_all();
    }
}
} // namespace Lumo
