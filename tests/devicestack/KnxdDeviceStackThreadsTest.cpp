// The device stack on a private knxd under load, from several threads, and across a restart
// of the daemon.
#include "KnxdTestSupport.h"

#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <map>
#include <set>
#include <thread>

namespace
{
using namespace TavTest;
using KnxdDeviceStackClientThreads = KnxdDeviceStackClientOnKnxd;

// Calls at a time from several threads: every request answered once, with its own value.
TEST_F(KnxdDeviceStackClientThreads, SeveralCallerThreadsGetTheirOwnAnswersOnce)
{
    client = Start();
    constexpr int kThreads = 4;
    constexpr int kCalls = 200;
    std::mutex sentMutex;
    std::map<std::string, std::string> sent;  // request id -> the value text it carried
    std::vector<std::thread> callers;
    for (int thread = 0; thread < kThreads; ++thread)
    {
        callers.emplace_back([&, thread] {
            for (int call = 0; call < kCalls; ++call)
            {
                const std::string text = std::to_string(thread * 100 + call % 100) + ".5";
                const std::string requestId = call % 4 == 3 ? client->GetValueAsync(100101, false)
                                                            : client->SetValueAsync(100101, text, false, 0);
                std::lock_guard<std::mutex> lock(sentMutex);
                sent[requestId] = call % 4 == 3 ? "" : text;
            }
        });
    }
    for (std::thread& caller : callers)
    {
        caller.join();
    }
    ASSERT_TRUE(handler.WaitForCount(kThreads * kCalls, 10000ms));
    std::this_thread::sleep_for(100ms);
    const std::vector<Answer> answers = handler.All();
    ASSERT_EQ(static_cast<std::size_t>(kThreads * kCalls), answers.size());
    std::set<std::string> seen;
    for (const Answer& answer : answers)
    {
        EXPECT_TRUE(seen.insert(answer.requestId).second) << "twice: " << answer.requestId;
        ASSERT_EQ(1u, sent.count(answer.requestId)) << answer.requestId;
        EXPECT_EQ(0, answer.code);
        if (answer.kind == "set")
        {
            EXPECT_EQ(sent[answer.requestId], answer.value);
        }
    }
}

// Forwards to the messenger and counts the answers per request id.
class CountingHandler : public Lumo::IDeviceStackClient::IResponseHandler
{
public:
    explicit CountingHandler(Okaro::DscAsyncRequestMessenger& target) : target_(target) {}
    void OnResponse(Lumo::IDeviceStackClient& x, const std::string& id, const std::string& response,
                    const Lumo::ResponseError& error) override
    {
        Count(id);
        target_.OnResponse(x, id, response, error);
    }
    void OnRegisterApplication(Lumo::IDeviceStackClient& x, const std::string& id,
                               const Lumo::ResponseError& error) override
    {
        Count(id);
        target_.OnRegisterApplication(x, id, error);
    }
    void OnGetConfiguration(Lumo::IDeviceStackClient& x, const std::string& id, const std::string& configuration,
                            const Lumo::ResponseError& error) override
    {
        Count(id);
        target_.OnGetConfiguration(x, id, configuration, error);
    }
    void OnSetConfiguration(Lumo::IDeviceStackClient& x, const std::string& id,
                            const Lumo::ResponseError& error) override
    {
        Count(id);
        target_.OnSetConfiguration(x, id, error);
    }
    void OnGetValue(Lumo::IDeviceStackClient& x, const std::string& id, unsigned long objectId, const std::string& urn,
                    const std::string& value, const Lumo::ResponseError& error) override
    {
        Count(id);
        target_.OnGetValue(x, id, objectId, urn, value, error);
    }
    void OnSetValue(Lumo::IDeviceStackClient& x, const std::string& id, unsigned long objectId, const std::string& urn,
                    const std::string& value, const Lumo::ResponseError& error) override
    {
        Count(id);
        target_.OnSetValue(x, id, objectId, urn, value, error);
    }
    std::size_t Twice() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::size_t twice = 0;
        for (const auto& entry : counts_)
        {
            twice += entry.second > 1 ? 1 : 0;
        }
        return twice;
    }
    std::size_t Total() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return counts_.size();
    }

private:
    void Count(const std::string& id)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++counts_[id];
    }
    Okaro::DscAsyncRequestMessenger& target_;
    mutable std::mutex mutex_;
    std::map<std::string, int> counts_;
};

// 10,000 blocking SetValue calls from four threads through the library's messenger (fewer
// under sanitizers and emulation, TAV_DEVICESTACK_LOAD_CALLS): none lost on the way or on the
// bus, none answered twice; the latencies are printed.
TEST_F(KnxdDeviceStackClientThreads, LoadOfBlockingSetValueCallsFromFourThreads)
{
    const char* configured = std::getenv("TAV_DEVICESTACK_LOAD_CALLS");
    const int total = configured != nullptr ? std::atoi(configured) : TAV_DEVICESTACK_LOAD_CALLS;
    constexpr int kThreads = 4;
    const int perThread = total / kThreads;
    std::vector<Lumo::DeviceObject> objects;
    for (unsigned short co = 1; co <= kThreads; ++co)
    {
        objects.push_back(Object(co, static_cast<std::uint16_t>(0x0B00 + co), 13, 1, "CRWTU", "Counter"));
    }
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    std::atomic<int> onBus{0};
    std::atomic<bool> listening{true};
    std::thread watcher([&] {
        TavKnx::GroupTelegram telegram;
        while (listening.load())
        {
            if (peer.Receive(20ms, telegram) && telegram.kind == TavKnx::TelegramKind::Write &&
                (telegram.destination & 0xFF00) == 0x0B00)
            {
                ++onBus;
            }
        }
    });
    KnxdDeviceStackClient stack(KnxdUrl(), objects);
    ASSERT_TRUE(stack.IsConnected());
    Okaro::RemoteRequestMessengerDeviceStack messenger(stack);
    Okaro::DscAsyncRequestMessenger requests(messenger, boost::posix_time::seconds(5), 0,
                                             log4cplus::Logger::getInstance("LoadTest"));
    CountingHandler counting(requests);
    stack.SetResponseHandler(&counting, 0);

    std::vector<std::vector<double>> latencies(kThreads);
    std::atomic<int> wrong{0};
    std::vector<std::thread> callers;
    for (int thread = 0; thread < kThreads; ++thread)
    {
        callers.emplace_back([&, thread] {
            const unsigned short co = static_cast<unsigned short>(thread + 1);
            for (int call = 0; call < perThread; ++call)
            {
                OKAVALUE value(ivtInteger);
                value.numeric.integer = thread * 1000000 + call;
                const auto start = std::chrono::steady_clock::now();
                const Okaro::Docket docket = requests.SetValue(Lumo::ObjectValueId(co), value, false);
                latencies[thread].push_back(
                    std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
                if (!docket.IsReplyValid() || docket.ReadReply() != "4:" + std::to_string(value.numeric.integer))
                {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& caller : callers)
    {
        caller.join();
    }
    const auto until = std::chrono::steady_clock::now() + 10s;
    while (onBus.load() < perThread * kThreads && std::chrono::steady_clock::now() < until)
    {
        std::this_thread::sleep_for(10ms);
    }
    listening.store(false);
    watcher.join();
    stack.SetResponseHandler(nullptr, 0);

    EXPECT_EQ(0, wrong.load());
    EXPECT_EQ(static_cast<std::size_t>(perThread * kThreads), counting.Total());
    EXPECT_EQ(0u, counting.Twice());
    EXPECT_EQ(perThread * kThreads, onBus.load());
    std::vector<double> all;
    for (const std::vector<double>& some : latencies)
    {
        all.insert(all.end(), some.begin(), some.end());
    }
    std::sort(all.begin(), all.end());
    ASSERT_FALSE(all.empty());
    std::cout << all.size() << " blocking SetValue calls from " << kThreads << " threads: median "
              << all[all.size() / 2] << " us, 99th percentile " << all[all.size() * 99 / 100] << " us\n";
}

// Stops the daemon and starts it again at the same place, for the tests after it.
TEST_F(KnxdDeviceStackClientThreads, AnswersAtOnceWhenKnxdGoesAwayAndReconnects)
{
    client = Start();
    const std::string inFlight = client->GetValueAsync(100101, false);
    Fixture("stop-keep");
    const auto start = std::chrono::steady_clock::now();
    Answer answer = handler.WaitFor(inFlight);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1000ms);
    EXPECT_EQ(KnxdDeviceStackClient::kNotConnected, answer.code);
    EXPECT_EQ("not connected: knxd at '" + KnxdUrl() + "' is not reachable", answer.message);
    answer = handler.WaitFor(client->SetValueAsync(100101, "21.5", false, 0));
    EXPECT_EQ(KnxdDeviceStackClient::kNotConnected, answer.code);
    EXPECT_FALSE(client->IsConnected());

    Fixture("restart");
    ASSERT_TRUE(client->WaitConnected(5000ms));
    EXPECT_EQ(0, handler.WaitFor(client->SetValueAsync(100101, "21.5", false, 0)).code);
}

// A caller keeps writing through the messenger while knxd goes away and comes back: every call
// returns at once with the value or "not connected", none waits for its time-out.
TEST_F(KnxdDeviceStackClientThreads, RunOfRequestsAcrossAKnxdRestart)
{
    KnxdDeviceStackClient stack(KnxdUrl(), Objects());
    ASSERT_TRUE(stack.IsConnected());
    Okaro::RemoteRequestMessengerDeviceStack messenger(stack);
    Okaro::DscAsyncRequestMessenger requests(messenger, boost::posix_time::seconds(5), 0,
                                             log4cplus::Logger::getInstance("RestartTest"));
    requests.SetAsResponseHandler();
    std::atomic<bool> running{true};
    std::atomic<int> stored{0};
    std::atomic<int> notConnected{0};
    std::atomic<int> other{0};
    std::atomic<long long> slowest{0};
    std::thread caller([&] {
        OKAVALUE value(ivtFloat);
        while (running.load())
        {
            value.numeric.real = 20.5;
            const auto start = std::chrono::steady_clock::now();
            const Okaro::Docket docket = requests.SetValue(100101, value, false);
            const long long took = std::chrono::duration_cast<std::chrono::milliseconds>(
                                       std::chrono::steady_clock::now() - start)
                                       .count();
            slowest.store(std::max(slowest.load(), took));
            if (docket.IsReplyValid() && docket.ReadReply() == "20.5")
            {
                ++stored;
            }
            else if (docket.IsAnswered() &&
                     docket.ReadDeliveryError() == "not connected: knxd at '" + KnxdUrl() + "' is not reachable")
            {
                ++notConnected;
            }
            else
            {
                ++other;
            }
            std::this_thread::sleep_for(1ms);
        }
    });
    std::this_thread::sleep_for(100ms);
    Fixture("stop-keep");
    std::this_thread::sleep_for(300ms);
    const int storedBefore = stored.load();
    Fixture("restart");
    EXPECT_TRUE(stack.WaitConnected(5000ms));
    std::this_thread::sleep_for(200ms);
    running.store(false);
    caller.join();
    requests.UnsetAsResponseHandler();
    EXPECT_GT(storedBefore, 0);
    EXPECT_GT(notConnected.load(), 0);
    EXPECT_GT(stored.load(), storedBefore);
    EXPECT_EQ(0, other.load());
    EXPECT_LT(slowest.load(), 1000);
}
} // namespace
