#include <platform/LocalDeviceStackClient.h>

#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>

#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Kind = Lumo::LocalDeviceStackClient::RequestKind;
using Plan = Lumo::LocalDeviceStackClient::AnswerPlan;
using boost::posix_time::milliseconds;
using boost::posix_time::time_duration;

namespace
{
const std::chrono::milliseconds kIdleLimit(5000);

struct Answer
{
    std::string callback;
    std::string requestId;
    std::string text;
    unsigned long id;
    std::string urn;
    int code;
    std::string message;
};

// Records every answer; tests wait for a number of them.
class RecordingHandler : public Lumo::IDeviceStackClient::IResponseHandler
{
public:
    void OnResponse(Lumo::IDeviceStackClient&, const std::string& requestId, const std::string& response,
                    const Lumo::ResponseError& error) override
    {
        Add({"OnResponse", requestId, response, 0, "", error.GetCode(), error.GetMessage()});
    }
    void OnRegisterApplication(Lumo::IDeviceStackClient&, const std::string& requestId,
                               const Lumo::ResponseError& error) override
    {
        Add({"OnRegisterApplication", requestId, "", 0, "", error.GetCode(), error.GetMessage()});
    }
    void OnGetConfiguration(Lumo::IDeviceStackClient&, const std::string& requestId, const std::string& configuration,
                            const Lumo::ResponseError& error) override
    {
        Add({"OnGetConfiguration", requestId, configuration, 0, "", error.GetCode(), error.GetMessage()});
    }
    void OnSetConfiguration(Lumo::IDeviceStackClient&, const std::string& requestId,
                            const Lumo::ResponseError& error) override
    {
        Add({"OnSetConfiguration", requestId, "", 0, "", error.GetCode(), error.GetMessage()});
    }
    void OnGetValue(Lumo::IDeviceStackClient&, const std::string& requestId, unsigned long id, const std::string& urn,
                    const std::string& value, const Lumo::ResponseError& error) override
    {
        Add({"OnGetValue", requestId, value, id, urn, error.GetCode(), error.GetMessage()});
    }
    void OnSetValue(Lumo::IDeviceStackClient&, const std::string& requestId, unsigned long id, const std::string& urn,
                    const std::string& value, const Lumo::ResponseError& error) override
    {
        Add({"OnSetValue", requestId, value, id, urn, error.GetCode(), error.GetMessage()});
    }

    std::vector<Answer> WaitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex);
        added.wait_for(lock, kIdleLimit, [&] { return answers.size() >= count; });
        return answers;
    }

private:
    void Add(Answer answer)
    {
        std::lock_guard<std::mutex> lock(mutex);
        answers.push_back(std::move(answer));
        added.notify_all();
    }

    std::mutex mutex;
    std::condition_variable added;
    std::vector<Answer> answers;
};

// --- the client on its own

TEST(LocalDeviceStackClient, AnswersPromptlyWithoutErrorAndUniqueIds)
{
    Lumo::LocalDeviceStackClient client;
    RecordingHandler handler;
    client.SetResponseHandler(&handler, 0);
    const std::string r1 = client.GetValueAsync(7, false);
    const std::string r2 = client.SetValueAsync(7, "4:42", true, 0);
    const std::string r3 = client.GetValueAsync(7, true);
    const std::string r4 = client.RequestAsync("<ping/>");
    const std::string r5 = client.RegisterApplicationAsync("a", "b", "c");
    const std::string r6 = client.SetConfigurationAsync("<cfg/>");
    EXPECT_EQ(6u, std::set<std::string>({r1, r2, r3, r4, r5, r6}).size());
    EXPECT_EQ("1", r1);
    const std::vector<Answer> answers = handler.WaitFor(6);
    ASSERT_EQ(6u, answers.size());
    EXPECT_EQ("OnGetValue", answers[0].callback);
    EXPECT_EQ("", answers[0].text);  // nothing written yet
    EXPECT_EQ(7u, answers[0].id);
    EXPECT_EQ("OnSetValue", answers[1].callback);
    EXPECT_EQ("4:42", answers[1].text);
    EXPECT_EQ("4:42", answers[2].text);
    EXPECT_EQ(r3, answers[2].requestId);
    EXPECT_EQ("OnResponse", answers[3].callback);
    EXPECT_EQ("<ping/>", answers[3].text);
    EXPECT_EQ("OnRegisterApplication", answers[4].callback);
    EXPECT_EQ("OnSetConfiguration", answers[5].callback);
    for (const Answer& answer : answers)
    {
        EXPECT_EQ(0, answer.code);
    }
    EXPECT_EQ("4:42", client.ReadValue(7));
    EXPECT_EQ("<cfg/>", client.ReadConfiguration());
    const auto counters = client.GetCounters();
    EXPECT_EQ(6u, counters.requests);
    EXPECT_EQ(2u, counters.Received(Kind::GetValue));
    EXPECT_EQ(1u, counters.Received(Kind::SetValue));
    EXPECT_EQ(1u, counters.Received(Kind::Request));
    EXPECT_TRUE(client.WaitUntilIdle(kIdleLimit));
    EXPECT_EQ(6u, client.GetCounters().answersDelivered);
    client.SetResponseHandler(nullptr, 0);
}

TEST(LocalDeviceStackClient, SynchronousOperationsKeepTheirState)
{
    Lumo::LocalDeviceStackClient client;
    EXPECT_TRUE(client.SetInternalValueFormat(true));
    EXPECT_TRUE(client.IsInternalValueFormat());
    EXPECT_TRUE(client.SetValueFormat("Native"));
    EXPECT_EQ("Native", client.ReadValueFormat());
    const Lumo::IDeviceStackClient::PropertyMap properties{{Lumo::IDeviceStackClient::PropertyType::Unit, "K"}};
    EXPECT_TRUE(client.SetConfiguration(3, properties, false));
    EXPECT_EQ(properties, client.ReadProperties(3));
    EXPECT_TRUE(client.SetDeviceConfig({{"a", "1"}, {"b", "2"}}));
    std::string configuration;
    EXPECT_TRUE(client.GetDeviceConfig(configuration, false));
    EXPECT_EQ("a=1\nb=2\n", configuration);
}

TEST(LocalDeviceStackClient, ErrorAnswersCarryTheErrorAndDoNotStore)
{
    Lumo::LocalDeviceStackClient client;
    RecordingHandler handler;
    client.SetResponseHandler(&handler, 0);
    client.SetErrorAnswer(12, "first", "second", "refused");
    client.SetValueAsync(1, "x", false, 0);
    const auto answers = handler.WaitFor(1);
    ASSERT_EQ(1u, answers.size());
    EXPECT_EQ(12, answers[0].code);
    EXPECT_EQ("refused", answers[0].message);
    EXPECT_EQ("x", answers[0].text);
    EXPECT_EQ("", client.ReadValue(1));
    EXPECT_EQ(1u, client.GetCounters().errorAnswers);
    client.SetResponseHandler(nullptr, 0);
}

TEST(LocalDeviceStackClient, DropsDuplicatesAndEmptyIds)
{
    Lumo::LocalDeviceStackClient client;
    RecordingHandler handler;
    client.SetResponseHandler(&handler, 0);
    client.SetDropAnswers(true);
    client.RequestAsync("dropped");
    client.SetDropAnswers(false);
    client.SetDuplicateAnswers(true);
    const std::string twice = client.RequestAsync("twice");
    client.SetDuplicateAnswers(false);
    client.SetEmptyRequestIds(true);
    EXPECT_EQ("", client.RequestAsync("unsent"));
    EXPECT_TRUE(client.WaitUntilIdle(kIdleLimit));
    const auto answers = handler.WaitFor(2);
    ASSERT_EQ(2u, answers.size());
    EXPECT_EQ(twice, answers[0].requestId);
    EXPECT_EQ(twice, answers[1].requestId);
    const auto counters = client.GetCounters();
    EXPECT_EQ(3u, counters.requests);
    EXPECT_EQ(1u, counters.notSent);
    EXPECT_EQ(1u, counters.answersDropped);
    EXPECT_EQ(2u, counters.answersScheduled);
    client.SetResponseHandler(nullptr, 0);
}

TEST(LocalDeviceStackClient, LatencyDelaysTheAnswer)
{
    Lumo::LocalDeviceStackClient client;
    RecordingHandler handler;
    client.SetResponseHandler(&handler, 0);
    client.SetLatency(std::chrono::milliseconds(30));
    const auto start = std::chrono::steady_clock::now();
    client.RequestAsync("slow");
    ASSERT_EQ(1u, handler.WaitFor(1).size());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    client.SetResponseHandler(nullptr, 0);
}

TEST(LocalDeviceStackClient, AnswersWithoutHandlerAreCounted)
{
    Lumo::LocalDeviceStackClient client;
    client.RequestAsync("nobody");
    EXPECT_TRUE(client.WaitUntilIdle(kIdleLimit));
    EXPECT_EQ(1u, client.GetCounters().answersWithoutHandler);
    EXPECT_EQ(0u, client.GetCounters().answersDelivered);
}

// --- the blocking messenger on the local stack

class LocalDeviceStackClientBehindMessenger : public ::testing::Test
{
protected:
    void Start(time_duration timeout, std::uint32_t retries)
    {
        dsc = std::make_unique<Okaro::DscAsyncRequestMessenger>(remote, timeout, retries,
                                                                 log4cplus::Logger::getInstance("LocalStackTest"));
        dsc->SetAsResponseHandler();
    }
    ~LocalDeviceStackClientBehindMessenger() override
    {
        if (dsc)
        {
            dsc->UnsetAsResponseHandler();
        }
    }

    Lumo::LocalDeviceStackClient client;
    Okaro::RemoteRequestMessengerDeviceStack remote{client};
    std::unique_ptr<Okaro::DscAsyncRequestMessenger> dsc;
};

TEST_F(LocalDeviceStackClientBehindMessenger, ValuesRoundTrip)
{
    Start(milliseconds(2000), 0);
    OKAVALUE value(ivtFloat);
    value.numeric.real = 21.5;
    oka_string text;
    value.Serialize(text, false);
    TavTest::LogCapture capture;
    const Okaro::Docket set = dsc->SetValue(100, value, false);
    EXPECT_TRUE(set.IsReplyValid());
    EXPECT_EQ(text.c_str(), set.ReadReply());
    const Okaro::Docket got = dsc->GetValue(100, false);
    EXPECT_TRUE(got.IsReplyValid());
    EXPECT_EQ(text.c_str(), got.ReadReply());
    OKAVALUE back;
    EXPECT_TRUE(back.Deserialize(oka_string(got.ReadReply().c_str())));
    EXPECT_EQ(value, back);
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(LocalDeviceStackClientBehindMessenger, AnswerDeliveredInsideTheSendCallIsNotLost)
{
    Start(milliseconds(2000), 0);
    client.SetAnswerBeforeReturn(true);
    const Okaro::Docket docket = dsc->Request("<early/>", time_duration());
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_EQ("<early/>", docket.ReadReply());
    EXPECT_EQ(1u, client.GetCounters().earlyAnswers);
}

TEST_F(LocalDeviceStackClientBehindMessenger, LateAnswerDoesNotDisturbTheNextRequest)
{
    Start(milliseconds(20), 0);
    TavTest::LogCapture capture;
    client.SetLatency(std::chrono::milliseconds(60));
    EXPECT_FALSE(dsc->Request("late", time_duration()).IsAnswered());
    client.SetLatency(std::chrono::milliseconds(0));
    const Okaro::Docket next = dsc->Request("next", time_duration());
    EXPECT_EQ("next", next.ReadReply());
    EXPECT_TRUE(client.WaitUntilIdle(kIdleLimit));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '1'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached."),
                            TavTest::Trace("UpdateDocketList - No docket for response ID '1'")));
}

TEST_F(LocalDeviceStackClientBehindMessenger, DroppedAnswersAreRetried)
{
    Start(milliseconds(20), 2);
    std::atomic<int> seen{0};
    client.SetAnswerPlanner([&](const Lumo::LocalDeviceStackClient::RequestInfo&) {
        Plan plan;
        plan.drop = seen++ < 2;
        return plan;
    });
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->Request("again", time_duration());
    EXPECT_EQ("again", docket.ReadReply());
    EXPECT_EQ(3u, client.GetCounters().requests);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '1'"),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '2'")));
}

TEST_F(LocalDeviceStackClientBehindMessenger, ErrorAnswerEndsTheRetryLoop)
{
    Start(milliseconds(2000), 3);
    client.SetErrorAnswer(7, "a", "b", "broken");
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->Request("bad", time_duration());
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_FALSE(docket.IsReplyValid());
    EXPECT_EQ("broken", docket.ReadDeliveryError());
    EXPECT_EQ("bad", docket.ReadReply());
    EXPECT_EQ(1u, client.GetCounters().requests);
    const auto lines = capture.Lines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(0u, lines[0].message.rfind("OnResponse - LDS error for request 1: 7; a; b; response: bad", 0));
    EXPECT_EQ(0u, lines[1].message.rfind("UpdateDocketList - Request 1: Error 'broken'", 0));
}

TEST_F(LocalDeviceStackClientBehindMessenger, AllRetriesSendsNothing)
{
    Start(milliseconds(20), 4294967295u);
    TavTest::LogCapture capture;
    EXPECT_FALSE(dsc->GetValue(1, false).IsAnswered());
    EXPECT_EQ(0u, client.GetCounters().requests);
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("SynchronizeRequest - Maximum number of retries (4294967295) reached.")));
}

TEST_F(LocalDeviceStackClientBehindMessenger, UnsentRequestsAreRetriedAtOnce)
{
    Start(boost::posix_time::hours(1), 1);
    client.SetEmptyRequestIds(true);
    EXPECT_FALSE(dsc->Request("x", time_duration()).IsAnswered());
    EXPECT_EQ(2u, client.GetCounters().notSent);
}

// Several callers, one messenger, thousands of answers with random latency, drops,
// duplicates, early and error answers.
TEST_F(LocalDeviceStackClientBehindMessenger, StressManyCallersOneMessenger)
{
    const int kThreads = 4;
    const int kPerThread = 250;
    const auto kTimeout = std::chrono::milliseconds(50);
    Start(milliseconds(kTimeout.count()), 1);

    std::mutex plansMutex;
    std::map<std::string, std::vector<Plan>> plans;  // by request text
    std::mt19937 random(20240501);
    client.SetAnswerPlanner([&](const Lumo::LocalDeviceStackClient::RequestInfo& info) {
        std::lock_guard<std::mutex> lock(plansMutex);
        const int roll = static_cast<int>(random() % 100);
        Plan plan;
        plan.latency = std::chrono::microseconds(random() % 1000);
        if (roll < 3)
        {
            plan.drop = true;
        }
        else if (roll < 5)
        {
            plan.latency = kTimeout + std::chrono::milliseconds(5 + random() % 10);  // late
        }
        else if (roll < 9)
        {
            plan.errorCode = 1;
            plan.errorMessage = "stress error";
        }
        else if (roll < 13)
        {
            plan.beforeReturn = true;
        }
        plan.duplicate = random() % 10 == 0;
        plans[info.text].push_back(plan);
        return plan;
    });

    struct Outcome
    {
        std::string text;
        Okaro::Docket docket;
    };
    std::vector<std::vector<Outcome>> outcomes(kThreads);
    TavTest::LogCapture capture(log4cplus::WARN_LOG_LEVEL);
    std::vector<std::thread> callers;
    for (int t = 0; t < kThreads; ++t)
    {
        callers.emplace_back([&, t] {
            for (int n = 0; n < kPerThread; ++n)
            {
                const std::string text = "t" + std::to_string(t) + "-" + std::to_string(n);
                outcomes[t].push_back({text, dsc->Request(text, time_duration())});
            }
        });
    }
    for (std::thread& caller : callers)
    {
        caller.join();
    }
    ASSERT_TRUE(client.WaitUntilIdle(kIdleLimit));

    int valid = 0, errors = 0, givenUp = 0;
    for (const auto& perThread : outcomes)
    {
        for (const Outcome& outcome : perThread)
        {
            const std::vector<Plan>& tried = plans[outcome.text];
            if (!outcome.docket.IsAnswered())
            {
                ++givenUp;
                EXPECT_EQ(2u, tried.size()) << outcome.text;
                for (const Plan& plan : tried)
                {
                    // Nothing that was answered in time may be lost.
                    EXPECT_TRUE(plan.drop || plan.latency >= kTimeout) << outcome.text;
                }
                continue;
            }
            EXPECT_EQ(outcome.text, outcome.docket.ReadReply());  // its own answer, not another's
            if (outcome.docket.IsReplyValid())
            {
                ++valid;
            }
            else
            {
                ++errors;
                EXPECT_EQ("stress error", outcome.docket.ReadDeliveryError());
                EXPECT_TRUE(std::any_of(tried.begin(), tried.end(), [](const Plan& p) { return p.errorCode != 0; }));
            }
        }
    }
    int timeouts = 0, exhausted = 0;
    for (const TavTest::LogLine& line : capture.Lines())
    {
        timeouts += line.message.rfind("WaitForAnswer - Timeout (", 0) == 0;
        exhausted += line.message.rfind("SynchronizeRequest - Maximum number of retries (1) reached.", 0) == 0;
    }
    EXPECT_EQ(givenUp, exhausted);
    const auto counters = client.GetCounters();
    // Each time-out but the last of a given-up request caused one more send.
    EXPECT_EQ(static_cast<std::uint64_t>(kThreads * kPerThread + timeouts - givenUp), counters.requests);
    std::cout << "requests " << kThreads * kPerThread << ", sent " << counters.requests << ", answers scheduled "
              << counters.answersScheduled << ", delivered " << counters.answersDelivered << ", dropped "
              << counters.answersDropped << ", early " << counters.earlyAnswers << ", error answers "
              << counters.errorAnswers << ", time-outs " << timeouts << ", retries " << timeouts - givenUp
              << ", valid " << valid << ", errors " << errors << ", given up " << givenUp << std::endl;
}
} // namespace
