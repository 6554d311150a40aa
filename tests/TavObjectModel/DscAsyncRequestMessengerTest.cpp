#include <TavObjectModel/DscAsyncRequestMessenger.h>

#include "support/LogCapture.h"
#include "support/MockDeviceStackClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

using ::testing::_;
using ::testing::DoAll;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::IsEmpty;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::StrictMock;
using boost::posix_time::milliseconds;
using boost::posix_time::time_duration;

namespace
{
class MockMessenger : public Okaro::RequestMessengerDeviceStack
{
public:
    MOCK_METHOD(void, SetResponseHandler, (Lumo::IDeviceStackClient::IResponseHandler * handler), (override));
    MOCK_METHOD(std::string, RegisterApplicationAsync,
                (const std::string& first, const std::string& second, const std::string& third), (override));
    MOCK_METHOD(std::string, SetValueAsync, (unsigned long id, const OKAVALUE& value, bool flag), (override));
    MOCK_METHOD(std::string, GetValueAsync, (unsigned long id, bool flag), (override));
    MOCK_METHOD(std::string, RequestAsync, (const std::string& request), (override));
    MOCK_METHOD(std::string, SetConfigurationAsync, (const std::string& configuration), (override));
    MOCK_METHOD(bool, SetConfiguration,
                (unsigned long id, const Lumo::IDeviceStackClient::PropertyMap& properties, bool flag), (override));
    MOCK_METHOD(bool, GetDeviceConfig, (std::string & configuration, bool flag), (override));
    MOCK_METHOD(bool, SetDeviceConfig, ((const std::map<std::string, std::string>& configuration)), (override));
    MOCK_METHOD(bool, EnableNativeFormat, (), (override));
    MOCK_METHOD(void, EnableInternalValueFormat, (), (override));
    MOCK_METHOD(void, EnableDefaultValueFormat, (), (override));
};

// An ERROR line about a device-stack failure: the exact text, then nothing or " [" back-trace "]".
void ExpectErrorWithBacktrace(const TavTest::LogLine& line, const std::string& text, int sourceLine)
{
    EXPECT_EQ(log4cplus::ERROR_LOG_LEVEL, line.level);
    ASSERT_EQ(text, line.message.substr(0, text.size()));
    const std::string suffix = line.message.substr(text.size());
    EXPECT_TRUE(suffix.empty() || (suffix.size() > 3 && suffix.compare(0, 2, " [") == 0 && suffix.back() == ']'))
        << suffix;
    EXPECT_EQ("DscAsyncRequestMessenger.cpp", line.file);
    if (sourceLine != 0)
    {
        EXPECT_EQ(sourceLine, line.line);
    }
}

// The processor time this thread has used, in microseconds.
std::int64_t ThreadCpuTimeUs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000000 + static_cast<std::int64_t>(now.tv_nsec / 1000);
}

const char* const kConcurrentText =
    "Running SynchronizeRequest concurrently (this log entry is temporarily here for debugging)";

class DscAsyncRequestMessenger : public ::testing::Test
{
protected:
    ~DscAsyncRequestMessenger() override
    {
        for (std::thread& answerer : answerers)
        {
            answerer.join();
        }
    }

    std::unique_ptr<Okaro::DscAsyncRequestMessenger> Make(time_duration timeout, std::uint32_t retries)
    {
        return std::make_unique<Okaro::DscAsyncRequestMessenger>(messenger, timeout, retries,
                                                                  log4cplus::Logger::getInstance("DscTest"));
    }

    // Called inside a send: starts the answer on another thread and returns only when that
    // thread has entered the callback, after showing that the callback cannot finish while
    // the requester is still sending (it holds the docket lock).
    std::string AnswerWhileSending(const std::string& requestId, std::function<void()> answer)
    {
        auto entered = std::make_shared<std::promise<void>>();
        auto done = std::make_shared<std::promise<void>>();
        std::future<void> doneFuture = done->get_future();
        answerers.emplace_back([entered, done, answer] {
            entered->set_value();
            answer();
            done->set_value();
        });
        entered->get_future().wait();
        EXPECT_EQ(std::future_status::timeout, doneFuture.wait_for(std::chrono::milliseconds(20)));
        return requestId;
    }

    NiceMock<TavTest::MockDeviceStackClient> sender;
    StrictMock<MockMessenger> messenger;
    std::vector<std::thread> answerers;
};

// --- dockets and dispatch

TEST(Docket, DefaultIsUnansweredAndInvalid)
{
    const Okaro::Docket docket;
    EXPECT_FALSE(docket.IsAnswered());
    EXPECT_FALSE(docket.IsReplyValid());
    EXPECT_EQ("", docket.ReadReply());
    EXPECT_EQ("", docket.ReadDeliveryError());
    const Okaro::Docket full("reply", "error", true, false);
    EXPECT_EQ("reply", full.ReadReply());
    EXPECT_EQ("error", full.ReadDeliveryError());
    EXPECT_TRUE(full.IsReplyValid());
    EXPECT_FALSE(full.IsAnswered());
}

TEST_F(DscAsyncRequestMessenger, AnswerWithoutDocketOnlyLogsAtDebug)
{
    auto dsc = Make(milliseconds(20), 0);
    TavTest::LogCapture capture;
    dsc->OnResponse(sender, "99", "text", Lumo::ResponseError(3, "a", "b", "c"));
    const auto lines = capture.Lines();
    ASSERT_EQ(2u, lines.size());
    ExpectErrorWithBacktrace(lines[0], "OnResponse - LDS error for request 99: 3; a; b; response: text", 275);
    EXPECT_EQ(TavTest::Trace("UpdateDocketList - No docket for response ID '99'"), lines[1]);

    capture.Clear();
    dsc->OnGetValue(sender, "99", 5, "urn", "v", Lumo::ResponseError());
    EXPECT_THAT(capture.Lines(), ElementsAre(TavTest::Trace("UpdateDocketList - No docket for response ID '99'")));

    // Nothing was stored under that id: a request that gets it is not answered by it.
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce(Return("99"));
    capture.Clear();
    const Okaro::Docket docket = dsc->Request("r", time_duration());
    EXPECT_FALSE(docket.IsAnswered());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '99'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached.")));
}

TEST_F(DscAsyncRequestMessenger, AnswerWithCodeZeroIsValidAndKeepsTheMessage)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, GetValueAsync(17ul, true)).WillOnce([&](unsigned long, bool) {
        return AnswerWhileSending("7", [&] {
            dsc->OnGetValue(sender, "7", 17, "urn:17", "21.5", Lumo::ResponseError(0, "f", "s", "all fine"));
        });
    });
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->GetValue(17, true);
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_TRUE(docket.IsReplyValid());
    EXPECT_EQ("21.5", docket.ReadReply());
    EXPECT_EQ("all fine", docket.ReadDeliveryError());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DscAsyncRequestMessenger, AnswerWithErrorIsAnsweredInvalidAndKeepsTheReply)
{
    auto dsc = Make(milliseconds(2000), 2);
    OKAVALUE value(ivtInteger);
    value.numeric.integer = -3;
    // One send only: an error answer is not retried.
    EXPECT_CALL(messenger, SetValueAsync(18ul, value, false)).WillOnce([&](unsigned long, const OKAVALUE&, bool) {
        return AnswerWhileSending("8", [&] {
            dsc->OnSetValue(sender, "8", 18, "urn:18", "-3", Lumo::ResponseError(42, "first", "second", "denied"));
        });
    });
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->SetValue(18, value, false);
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_FALSE(docket.IsReplyValid());
    EXPECT_EQ("-3", docket.ReadReply());
    EXPECT_EQ("denied", docket.ReadDeliveryError());
    const auto lines = capture.Lines();
    ASSERT_EQ(2u, lines.size());
    ExpectErrorWithBacktrace(lines[0],
                             "OnSetValue - LDS error for request 8: 42; first; second; id: 18; urn: urn:18; value: -3",
                             321);
    ExpectErrorWithBacktrace(lines[1], "UpdateDocketList - Request 8: Error 'denied'", 0);
}

TEST_F(DscAsyncRequestMessenger, RegisterApplicationAndSetConfigurationStoreAnEmptyReply)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, RegisterApplicationAsync("a", "b", "c")).WillOnce([&](auto&&...) {
        return AnswerWhileSending("1", [&] { dsc->OnRegisterApplication(sender, "1", Lumo::ResponseError()); });
    });
    EXPECT_CALL(messenger, SetConfigurationAsync("<c/>")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("2", [&] { dsc->OnSetConfiguration(sender, "2", Lumo::ResponseError()); });
    });
    const Okaro::Docket registered = dsc->RegisterApplication("a", "b", "c");
    EXPECT_TRUE(registered.IsAnswered());
    EXPECT_TRUE(registered.IsReplyValid());
    EXPECT_EQ("", registered.ReadReply());
    const Okaro::Docket configured = dsc->SetConfiguration("<c/>", milliseconds(2000));
    EXPECT_TRUE(configured.IsAnswered());
    EXPECT_TRUE(configured.IsReplyValid());
    EXPECT_EQ("", configured.ReadReply());
}

// Every callback's error line: its name, its extra text and its source line.
TEST_F(DscAsyncRequestMessenger, EachCallbackLogsItsOwnErrorLine)
{
    auto dsc = Make(milliseconds(20), 0);
    const Lumo::ResponseError error(-5, "one", "two", "msg");
    struct Case
    {
        std::function<void()> answer;
        std::string text;
        int line;
    };
    const std::vector<Case> cases = {
        {[&] { dsc->OnResponse(sender, "r", "resp", error); }, "OnResponse - LDS error for request r: -5; one; two; response: resp", 275},
        {[&] { dsc->OnRegisterApplication(sender, "r", error); }, "OnRegisterApplication - LDS error for request r: -5; one; two", 286},
        {[&] { dsc->OnGetConfiguration(sender, "r", "cfg", error); }, "OnGetConfiguration - LDS error for request r: -5; one; two; config: cfg", 297},
        {[&] { dsc->OnSetConfiguration(sender, "r", error); }, "OnSetConfiguration - LDS error for request r: -5; one; two", 332},
        {[&] { dsc->OnGetValue(sender, "r", 4294967295ul, "u", "v", error); }, "OnGetValue - LDS error for request r: -5; one; two; id: 4294967295; urn: u; value: v", 309},
        {[&] { dsc->OnSetValue(sender, "r", 0, "u", "", error); }, "OnSetValue - LDS error for request r: -5; one; two; id: 0; urn: u; value: ", 321},
    };
    for (const Case& c : cases)
    {
        TavTest::LogCapture capture;
        c.answer();
        const auto lines = capture.Lines();
        ASSERT_EQ(2u, lines.size()) << c.text;
        ExpectErrorWithBacktrace(lines[0], c.text, c.line);
        EXPECT_EQ(TavTest::Trace("UpdateDocketList - No docket for response ID 'r'"), lines[1]);
    }
}

TEST_F(DscAsyncRequestMessenger, ErrorLinesAreNotBuiltBelowTheirLevel)
{
    auto dsc = Make(milliseconds(20), 0);
    TavTest::LogCapture capture(log4cplus::FATAL_LOG_LEVEL);
    dsc->OnResponse(sender, "x", "resp", Lumo::ResponseError(1, "a", "b", "c"));
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DscAsyncRequestMessenger, GetConfigurationAnswerCarriesTheConfiguration)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, RequestAsync("get")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("3", [&] { dsc->OnGetConfiguration(sender, "3", "<cfg/>", Lumo::ResponseError()); });
    });
    const Okaro::Docket docket = dsc->Request("get", time_duration());
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_EQ("<cfg/>", docket.ReadReply());
}

// --- waiting, time-out and retry

TEST_F(DscAsyncRequestMessenger, RetriesZeroSendsOnce)
{
    auto dsc = Make(milliseconds(20), 0);
    EXPECT_CALL(messenger, RequestAsync("q")).WillOnce(Return("1"));
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->Request("q", time_duration());
    EXPECT_FALSE(docket.IsAnswered());
    EXPECT_FALSE(docket.IsReplyValid());
    EXPECT_EQ("", docket.ReadReply());
    EXPECT_EQ("", docket.ReadDeliveryError());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '1'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached.")));
}

TEST_F(DscAsyncRequestMessenger, RetriesTwoSendsThreeTimes)
{
    auto dsc = Make(milliseconds(20), 2);
    EXPECT_CALL(messenger, GetValueAsync(5ul, false)).WillOnce(Return("1")).WillOnce(Return("2")).WillOnce(Return("3"));
    TavTest::LogCapture capture;
    EXPECT_FALSE(dsc->GetValue(5, false).IsAnswered());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '1'"),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '2'"),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '3'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (2) reached.")));
}

TEST_F(DscAsyncRequestMessenger, UnsentRequestsFailAtOnceWithoutWaiting)
{
    auto dsc = Make(boost::posix_time::hours(1), 2);
    EXPECT_CALL(messenger, RequestAsync("q")).Times(3).WillRepeatedly(Return(""));
    TavTest::LogCapture capture;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(dsc->Request("q", time_duration()).IsAnswered());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("SynchronizeRequest - Maximum number of retries (2) reached.")));
}

TEST_F(DscAsyncRequestMessenger, AllRetriesMeansNoAttemptAtAll)
{
    auto dsc = Make(milliseconds(20), 4294967295u);
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->Request("q", time_duration());  // StrictMock: no send allowed
    EXPECT_FALSE(docket.IsAnswered());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("SynchronizeRequest - Maximum number of retries (4294967295) reached.")));
}

TEST_F(DscAsyncRequestMessenger, EarlyAnswerIsNotLost)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, RequestAsync("early")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("e1", [&] { dsc->OnResponse(sender, "e1", "here", Lumo::ResponseError()); });
    });
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->Request("early", time_duration());
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_TRUE(docket.IsReplyValid());
    EXPECT_EQ("here", docket.ReadReply());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DscAsyncRequestMessenger, ZeroDurationMeansTheDefaultTimeout)
{
    auto dsc = Make(milliseconds(20), 0);
    EXPECT_CALL(messenger, SetConfigurationAsync("c")).WillOnce(Return("1")).WillOnce(Return("2"));
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce(Return("3")).WillOnce(Return("4"));
    TavTest::LogCapture capture;
    dsc->SetConfiguration("c", time_duration());
    dsc->SetConfiguration("c", milliseconds(30));
    dsc->Request("r", boost::posix_time::seconds(0));
    dsc->Request("r", milliseconds(25));
    EXPECT_THAT(capture.LinesAtOrAbove(log4cplus::WARN_LOG_LEVEL),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '1'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached."),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.030000) occured for request ID '2'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached."),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '3'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached."),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.025000) occured for request ID '4'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached.")));
}

TEST_F(DscAsyncRequestMessenger, WholeSecondTimeoutPrintsWithoutFraction)
{
    auto dsc = Make(boost::posix_time::seconds(1), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce(Return("1"));
    TavTest::LogCapture capture;
    const auto start = std::chrono::steady_clock::now();
    dsc->Request("r", time_duration());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(TavTest::Warn("WaitForAnswer - Timeout (00:00:01) occured for request ID '1'"), capture.Lines().at(0));
}

TEST_F(DscAsyncRequestMessenger, TimeoutTakesAtLeastItsDuration)
{
    auto dsc = Make(milliseconds(40), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce(Return("1"));
    const auto start = std::chrono::steady_clock::now();
    dsc->Request("r", time_duration());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
}

// Wall-clock jumps cannot reach the waits: the only clock they read is monotonic.
static_assert(Okaro::DscAsyncRequestMessenger::WaitClock::is_steady, "waits must use a monotonic clock");

TEST_F(DscAsyncRequestMessenger, LateAnswerDoesNotDisturbTheNextRequest)
{
    auto dsc = Make(milliseconds(20), 0);
    {
        InSequence order;
        EXPECT_CALL(messenger, RequestAsync("first")).WillOnce(Return("1"));
        EXPECT_CALL(messenger, RequestAsync("second")).WillOnce([&](const std::string&) {
            return AnswerWhileSending("2", [&] { dsc->OnResponse(sender, "2", "second answer", Lumo::ResponseError()); });
        });
    }
    TavTest::LogCapture capture;
    EXPECT_FALSE(dsc->Request("first", time_duration()).IsAnswered());
    dsc->OnResponse(sender, "1", "first answer", Lumo::ResponseError());
    const Okaro::Docket second = dsc->Request("second", time_duration());
    EXPECT_TRUE(second.IsAnswered());
    EXPECT_EQ("second answer", second.ReadReply());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.020000) occured for request ID '1'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached."),
                            TavTest::Trace("UpdateDocketList - No docket for response ID '1'")));
}

TEST_F(DscAsyncRequestMessenger, AnswerForAnotherRequestDoesNotEndTheWait)
{
    auto dsc = Make(milliseconds(40), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("1", [&] { dsc->OnResponse(sender, "other", "x", Lumo::ResponseError()); });
    });
    TavTest::LogCapture capture;
    EXPECT_FALSE(dsc->Request("r", time_duration()).IsAnswered());
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Trace("UpdateDocketList - No docket for response ID 'other'"),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.040000) occured for request ID '1'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (0) reached.")));
}

TEST_F(DscAsyncRequestMessenger, InfiniteTimeoutWaitsUntilAnswered)
{
    auto dsc = Make(milliseconds(20), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("1", [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(60));  // well past the default time-out
            dsc->OnResponse(sender, "1", "finally", Lumo::ResponseError());
        });
    });
    TavTest::LogCapture capture;
    const Okaro::Docket docket = dsc->Request("r", boost::posix_time::pos_infin);
    EXPECT_EQ("finally", docket.ReadReply());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DscAsyncRequestMessenger, HugeFiniteTimeoutDoesNotOverflow)
{
    auto dsc = Make(boost::posix_time::hours(2000000000), 0);  // beyond what the clock can hold
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("1", [&] { dsc->OnResponse(sender, "1", "ok", Lumo::ResponseError()); });
    });
    EXPECT_CALL(messenger, RequestAsync("s")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("2", [&] { dsc->OnResponse(sender, "2", "ok too", Lumo::ResponseError()); });
    });
    EXPECT_EQ("ok", dsc->Request("r", time_duration()).ReadReply());
    EXPECT_EQ("ok too", dsc->Request("s", boost::posix_time::hours(24 * 365 * 100)).ReadReply());
}

TEST_F(DscAsyncRequestMessenger, NegativeOrUndefinedTimeoutChecksOnce)
{
    auto dsc = Make(milliseconds(20), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce(Return("1")).WillOnce(Return("2"));
    TavTest::LogCapture capture;
    EXPECT_FALSE(dsc->Request("r", milliseconds(-5)).IsAnswered());
    EXPECT_FALSE(dsc->Request("r", boost::posix_time::neg_infin).IsAnswered());
    EXPECT_EQ(TavTest::Warn("WaitForAnswer - Timeout (-00:00:00.005000) occured for request ID '1'"),
              capture.Lines().at(0));
}

// An answer that comes while the requester first looks at its docket, before it sleeps.
TEST_F(DscAsyncRequestMessenger, AnswerRightAfterSendingIsTaken)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).Times(200).WillRepeatedly([&](const std::string&) {
        answerers.emplace_back([&] { dsc->OnResponse(sender, "1", "soon", Lumo::ResponseError()); });
        return "1";
    });
    TavTest::LogCapture capture;
    for (int i = 0; i < 200; ++i)
    {
        const Okaro::Docket docket = dsc->Request("r", time_duration());
        EXPECT_TRUE(docket.IsAnswered());
        EXPECT_EQ("soon", docket.ReadReply());
        answerers.back().join();
        answerers.pop_back();
    }
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

// An answer well after the first looks reaches the requester through the condition.
TEST_F(DscAsyncRequestMessenger, SlowAnswerWakesTheSleepingRequester)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce([&](const std::string&) {
        answerers.emplace_back([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            dsc->OnResponse(sender, "1", "late but in time", Lumo::ResponseError());
        });
        return "1";
    });
    TavTest::LogCapture capture;
    const auto start = std::chrono::steady_clock::now();
    const Okaro::Docket docket = dsc->Request("r", time_duration());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_TRUE(docket.IsAnswered());
    EXPECT_EQ("late but in time", docket.ReadReply());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

// The requester looks at its docket only for a moment, then sleeps: waiting for a slow answer
// costs it next to no processor time.
TEST_F(DscAsyncRequestMessenger, WaitingForASlowAnswerSleeps)
{
    auto dsc = Make(milliseconds(2000), 0);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce([&](const std::string&) {
        answerers.emplace_back([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            dsc->OnResponse(sender, "1", "x", Lumo::ResponseError());
        });
        return "1";
    });
    const std::int64_t cpuBefore = ThreadCpuTimeUs();
    EXPECT_EQ("x", dsc->Request("r", time_duration()).ReadReply());
    EXPECT_LT(ThreadCpuTimeUs() - cpuBefore, 50000);
}

// A time-out shorter than the first looks still ends the wait at its deadline, with its line.
TEST_F(DscAsyncRequestMessenger, TimeoutShorterThanTheFirstLooksIsKept)
{
    auto dsc = Make(boost::posix_time::microseconds(5), 1);
    EXPECT_CALL(messenger, RequestAsync("r")).WillOnce(Return("1")).WillOnce(Return("2"));
    TavTest::LogCapture capture;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(dsc->Request("r", time_duration()).IsAnswered());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds(10));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Warn("WaitForAnswer - Timeout (00:00:00.000005) occured for request ID '1'"),
                            TavTest::Warn("WaitForAnswer - Timeout (00:00:00.000005) occured for request ID '2'"),
                            TavTest::Warn("SynchronizeRequest - Maximum number of retries (1) reached.")));
}

// The dispatcher notifies under the docket lock, and the requester reads its docket under it:
// a requester that returns may destroy the messenger at once, even while the answer came during
// its first looks (the sanitizer builds report any use after the end).
TEST_F(DscAsyncRequestMessenger, MessengerMayGoRightAfterTheAnswer)
{
    for (int i = 0; i < 200; ++i)
    {
        auto dsc = Make(milliseconds(2000), 0);
        Okaro::DscAsyncRequestMessenger* const raw = dsc.get();
        std::thread answerer;
        EXPECT_CALL(messenger, RequestAsync("r")).WillOnce([&](const std::string&) {
            answerer = std::thread([&, raw] { raw->OnResponse(sender, "1", "bye", Lumo::ResponseError()); });
            return "1";
        });
        EXPECT_EQ("bye", dsc->Request("r", time_duration()).ReadReply());
        dsc.reset();
        answerer.join();
        ::testing::Mock::VerifyAndClearExpectations(&messenger);
    }
}

TEST_F(DscAsyncRequestMessenger, ConcurrentRequestWaitsForTheFirstAndLogsAtDebug)
{
    auto dsc = Make(milliseconds(2000), 0);
    TavTest::LogCapture capture;
    std::thread second;
    const auto secondIsQueued = [&] {
        for (int i = 0; i < 2000; ++i)
        {
            for (const TavTest::LogLine& line : capture.Lines())
            {
                if (line.message.find("concurrently") != std::string::npos)
                {
                    return true;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    };
    EXPECT_CALL(messenger, RequestAsync("first")).WillOnce([&](const std::string&) {
        second = std::thread([&] { EXPECT_EQ("2nd", dsc->Request("second", time_duration()).ReadReply()); });
        EXPECT_TRUE(secondIsQueued());
        return AnswerWhileSending("1", [&] { dsc->OnResponse(sender, "1", "1st", Lumo::ResponseError()); });
    });
    EXPECT_CALL(messenger, RequestAsync("second")).WillOnce([&](const std::string&) {
        return AnswerWhileSending("2", [&] { dsc->OnResponse(sender, "2", "2nd", Lumo::ResponseError()); });
    });
    EXPECT_EQ("1st", dsc->Request("first", time_duration()).ReadReply());
    second.join();
    EXPECT_THAT(capture.Lines(), ElementsAre(TavTest::Trace(std::string("SynchronizeRequest - ") + kConcurrentText)));
}

TEST_F(DscAsyncRequestMessenger, SetValueAndIgnoreResponseSendsOnceWithoutWaiting)
{
    auto dsc = Make(boost::posix_time::hours(1), 3);
    OKAVALUE value(ivtBool);
    value.numeric.boolean = true;
    EXPECT_CALL(messenger, SetValueAsync(9ul, value, true)).WillOnce(Return("1")).WillOnce(Return(""));
    TavTest::LogCapture capture;
    EXPECT_TRUE(dsc->SetValueAndIgnoreResponse(9, value, true));
    EXPECT_FALSE(dsc->SetValueAndIgnoreResponse(9, value, true));
    dsc->OnSetValue(sender, "1", 9, "u", "true", Lumo::ResponseError());
    EXPECT_THAT(capture.Lines(), ElementsAre(TavTest::Trace("UpdateDocketList - No docket for response ID '1'")));
}

TEST_F(DscAsyncRequestMessenger, SetValueAndIgnoreResponseLogsContentionUnderItsOwnName)
{
    auto dsc = Make(milliseconds(2000), 0);
    TavTest::LogCapture capture;
    std::thread ignorer;
    OKAVALUE value;
    EXPECT_CALL(messenger, SetValueAsync(1ul, value, false)).WillOnce(Return("5"));
    EXPECT_CALL(messenger, RequestAsync("first")).WillOnce([&](const std::string&) {
        ignorer = std::thread([&] { EXPECT_TRUE(dsc->SetValueAndIgnoreResponse(1, value, false)); });
        for (int i = 0; i < 2000 && capture.Lines().empty(); ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return AnswerWhileSending("1", [&] { dsc->OnResponse(sender, "1", "x", Lumo::ResponseError()); });
    });
    dsc->Request("first", time_duration());
    ignorer.join();
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Trace(std::string("SetValueAndIgnoreResponse - ") + kConcurrentText)));
}

TEST_F(DscAsyncRequestMessenger, MapSetConfigurationIsAnsweredWithTheMessengerResult)
{
    auto dsc = Make(milliseconds(20), 5);
    const Lumo::IDeviceStackClient::PropertyMap properties{{Lumo::IDeviceStackClient::PropertyType::Name, "n"}};
    EXPECT_CALL(messenger, SetConfiguration(3ul, properties, true)).WillOnce(Return(true)).WillOnce(Return(false));
    TavTest::LogCapture capture;
    const Okaro::Docket accepted = dsc->SetConfiguration(3, properties, true);
    EXPECT_TRUE(accepted.IsAnswered());
    EXPECT_TRUE(accepted.IsReplyValid());
    EXPECT_EQ("", accepted.ReadReply());
    EXPECT_EQ("", accepted.ReadDeliveryError());
    const Okaro::Docket refused = dsc->SetConfiguration(3, properties, true);
    EXPECT_TRUE(refused.IsAnswered());
    EXPECT_FALSE(refused.IsReplyValid());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(DscAsyncRequestMessenger, NonWaitingOperationsForward)
{
    auto dsc = Make(milliseconds(20), 0);
    const std::map<std::string, std::string> deviceConfig{{"a", "b"}};
    EXPECT_CALL(messenger, GetDeviceConfig(_, true)).WillOnce(DoAll(SetArgReferee<0>("cfg"), Return(false)));
    EXPECT_CALL(messenger, SetDeviceConfig(deviceConfig)).WillOnce(Return(true));
    EXPECT_CALL(messenger, EnableNativeFormat()).WillOnce(Return(true));
    std::string configuration;
    EXPECT_FALSE(dsc->GetDeviceConfig(configuration, true));
    EXPECT_EQ("cfg", configuration);
    EXPECT_TRUE(dsc->SetDeviceConfig(deviceConfig));
    EXPECT_TRUE(dsc->EnableNativeFormat());
}

TEST_F(DscAsyncRequestMessenger, RegistersAndUnregistersItselfAsHandler)
{
    auto dsc = Make(milliseconds(20), 0);
    {
        InSequence order;
        EXPECT_CALL(messenger, SetResponseHandler(dsc.get()));
        EXPECT_CALL(messenger, SetResponseHandler(nullptr));
    }
    dsc->SetAsResponseHandler();
    dsc->UnsetAsResponseHandler();
}
} // namespace
