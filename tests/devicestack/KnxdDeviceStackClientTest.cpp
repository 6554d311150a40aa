// The device stack against a private knxd (tests/tool/knxd-fixture.sh, started by CTest): a
// peer connection on the same bus watches and answers what the client sends.
#include <devicestack/KnxdDeviceStackClient.h>

#include <knx/HexText.h>
#include <knxd/KnxdConnection.h>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

namespace
{
using Lumo::KnxdDeviceStackClient;
using namespace std::chrono_literals;

std::string StateFile()
{
    const char* state = std::getenv("TAV_KNXD_STATE");
    return state == nullptr ? std::string() : state;
}

std::string KnxdUrl()
{
    std::ifstream file(StateFile());
    std::string dir;
    std::getline(file, dir);
    return "local:" + dir + "/knx";
}

// Runs the fixture script on the daemon: "stop-keep" or "restart".
void Fixture(const std::string& action)
{
    ASSERT_EQ(0, std::system(("bash " TAV_KNXD_FIXTURE_SCRIPT " " + action + " " + StateFile()).c_str()));
}

Lumo::DeviceObject Object(unsigned short co, std::uint16_t address, std::uint16_t main, std::uint16_t sub,
                          const std::string& flags, const std::string& name)
{
    Lumo::DeviceObject object;
    object.co = co;
    object.groupAddresses = {address};
    object.dpt = KNXDPT{0, main, sub};
    EXPECT_TRUE(Lumo::ParseObjectFlags(flags, object.flags));
    object.name = name;
    return object;
}

// 1/2/3 temperature (CRWTU), 1/2/4 switch (CRWTU, also listening to 1/2/5), 1/2/6 no T flag.
std::vector<Lumo::DeviceObject> Objects()
{
    std::vector<Lumo::DeviceObject> objects = {Object(1, 0x0A03, 9, 1, "CRWTU", "Temperature"),
                                               Object(2, 0x0A04, 1, 1, "CRWTU", "Switch"),
                                               Object(3, 0x0A06, 9, 1, "CRW", "Silent")};
    objects[1].groupAddresses.push_back(0x0A05);
    return objects;
}

struct Answer
{
    std::string kind;
    std::string requestId;
    unsigned long id;
    std::string value;
    int code;
    std::string first;
    std::string second;
    std::string message;
};

class RecordingHandler : public Lumo::IDeviceStackClient::IResponseHandler
{
public:
    void OnResponse(Lumo::IDeviceStackClient&, const std::string& requestId, const std::string& response,
                    const Lumo::ResponseError& error) override
    {
        Add({"response", requestId, 0, response, error.GetCode(), error.GetFirstText(), error.GetSecondText(),
             error.GetMessage()});
    }
    void OnRegisterApplication(Lumo::IDeviceStackClient&, const std::string& requestId,
                               const Lumo::ResponseError& error) override
    {
        Add({"register", requestId, 0, "", error.GetCode(), "", "", ""});
    }
    void OnGetConfiguration(Lumo::IDeviceStackClient&, const std::string& requestId, const std::string& configuration,
                            const Lumo::ResponseError& error) override
    {
        Add({"getconfiguration", requestId, 0, configuration, error.GetCode(), "", "", ""});
    }
    void OnSetConfiguration(Lumo::IDeviceStackClient&, const std::string& requestId,
                            const Lumo::ResponseError& error) override
    {
        Add({"setconfiguration", requestId, 0, "", error.GetCode(), error.GetFirstText(), error.GetSecondText(),
             error.GetMessage()});
    }
    void OnGetValue(Lumo::IDeviceStackClient&, const std::string& requestId, unsigned long id, const std::string&,
                    const std::string& value, const Lumo::ResponseError& error) override
    {
        Add({"get", requestId, id, value, error.GetCode(), error.GetFirstText(), error.GetSecondText(),
             error.GetMessage()});
    }
    void OnSetValue(Lumo::IDeviceStackClient&, const std::string& requestId, unsigned long id, const std::string&,
                    const std::string& value, const Lumo::ResponseError& error) override
    {
        Add({"set", requestId, id, value, error.GetCode(), error.GetFirstText(), error.GetSecondText(),
             error.GetMessage()});
    }

    // The answer to the request, waiting for it at most `limit`.
    Answer WaitFor(const std::string& requestId, std::chrono::milliseconds limit = 3000ms)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        Answer found{"none", requestId, 0, "", -1, "", "", ""};
        changed_.wait_for(lock, limit, [&] {
            for (const Answer& answer : answers_)
            {
                if (answer.requestId == requestId)
                {
                    found = answer;
                    return true;
                }
            }
            return false;
        });
        return found;
    }
    std::size_t Count() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return answers_.size();
    }

private:
    void Add(Answer answer)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        answers_.push_back(std::move(answer));
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Answer> answers_;
};

// The next telegram to `address` the peer sees, as "kind hex", or "none".
std::string NextTelegram(TavKnx::KnxdConnection& peer, std::uint16_t address, std::chrono::milliseconds limit = 2000ms)
{
    const auto until = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < until)
    {
        TavKnx::GroupTelegram telegram;
        if (peer.Receive(50ms, telegram) && telegram.destination == address)
        {
            return std::string(TavKnx::KindName(telegram.kind)) + " " + TavKnx::FormatHex(telegram.apdu);
        }
    }
    return "none";
}

class KnxdDeviceStackClientTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (StateFile().empty())
        {
            GTEST_SKIP() << "needs the knxd fixture (TAV_KNXD_STATE)";
        }
    }

    std::unique_ptr<KnxdDeviceStackClient> Start(KnxdDeviceStackClient::Settings settings = {})
    {
        std::unique_ptr<KnxdDeviceStackClient> client(new KnxdDeviceStackClient(KnxdUrl(), Objects(), settings));
        client->SetResponseHandler(&handler, 0);
        EXPECT_TRUE(client->WaitConnected(3000ms));
        return client;
    }

    void TearDown() override
    {
        if (client)
        {
            client->SetResponseHandler(nullptr, 0);
        }
    }

    RecordingHandler handler;
    std::unique_ptr<KnxdDeviceStackClient> client;
};

TEST_F(KnxdDeviceStackClientTest, SetValueSendsAGroupWriteAndAnswersWithTheStoredText)
{
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    client = Start();
    const Answer answer = handler.WaitFor(client->SetValueAsync(100101, "21.5", false, 0));
    EXPECT_EQ("set", answer.kind);
    EXPECT_EQ(0, answer.code);
    EXPECT_EQ(100101ul, answer.id);
    EXPECT_EQ("21.5", answer.value);
    EXPECT_EQ("write 00800c33", NextTelegram(peer, 0x0A03));

    client->SetInternalValueFormat(true);
    EXPECT_EQ("2.7/2001:true", handler.WaitFor(client->SetValueAsync(100201, "2/2001:true", false, 0)).value);
    EXPECT_EQ("write 0081", NextTelegram(peer, 0x0A04));
}

TEST_F(KnxdDeviceStackClientTest, SetValueRefusalsSayWhy)
{
    client = Start();
    Answer answer = handler.WaitFor(client->SetValueAsync(100901, "21.5", false, 0));
    EXPECT_EQ(KnxdDeviceStackClient::kUnknownId, answer.code);
    EXPECT_EQ("unknown id", answer.first);
    EXPECT_EQ("no object has id 100901", answer.second);
    EXPECT_EQ("unknown id: no object has id 100901", answer.message);

    answer = handler.WaitFor(client->SetValueAsync(100101, "warm", false, 0));
    EXPECT_EQ(KnxdDeviceStackClient::kUnreadableValue, answer.code);
    EXPECT_EQ("'warm' is not in the value text form", answer.second);

    answer = handler.WaitFor(client->SetValueAsync(100101, "2:true", false, 0));
    EXPECT_EQ(KnxdDeviceStackClient::kValueRefused, answer.code);
    EXPECT_EQ("DPT 9.1 of CO 1 cannot carry Bool true", answer.second);

    answer = handler.WaitFor(client->SetValueAsync(100301, "21.5", false, 0));
    EXPECT_EQ(KnxdDeviceStackClient::kNotSendable, answer.code);
    EXPECT_EQ("CO 3 has flags 'CRW' without C and T", answer.second);
    EXPECT_EQ("", answer.value);
}

TEST_F(KnxdDeviceStackClientTest, GetValueReadsTheBusWhenItHasNoValue)
{
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    client = Start();
    const std::string requestId = client->GetValueAsync(100101, false);
    ASSERT_EQ("read 0000", NextTelegram(peer, 0x0A03));
    peer.Send(0x0A03, {0x00, 0x40, 0x0C, 0x1A});
    const Answer answer = handler.WaitFor(requestId);
    EXPECT_EQ("get", answer.kind);
    EXPECT_EQ(0, answer.code);
    EXPECT_EQ("21", answer.value);
    // Kept: the next read is answered from the value, without the bus.
    EXPECT_EQ("21", handler.WaitFor(client->GetValueAsync(100101, false)).value);
    EXPECT_EQ("none", NextTelegram(peer, 0x0A03, 200ms));
}

TEST_F(KnxdDeviceStackClientTest, AnUnansweredReadEndsInNoResponse)
{
    KnxdDeviceStackClient::Settings settings;
    settings.readTimeout = 200ms;
    client = Start(settings);
    const auto start = std::chrono::steady_clock::now();
    const Answer answer = handler.WaitFor(client->GetValueAsync(100101, false));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
    EXPECT_EQ(KnxdDeviceStackClient::kNoResponse, answer.code);
    EXPECT_EQ("no response: nobody answered the read of 1/2/3", answer.message);
}

TEST_F(KnxdDeviceStackClientTest, BehavesAsADeviceOnTheBus)
{
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    client = Start();
    std::vector<std::string> changes;
    std::mutex changesMutex;
    client->SetChangeObserver([&](const Lumo::DeviceObject& object, const OKAVALUE& value,
                                  KnxdDeviceStackClient::ChangeSource) {
        std::lock_guard<std::mutex> lock(changesMutex);
        changes.push_back(std::to_string(object.co) + " " + value.ToString());
    });
    // A write to the second, listening address; then a read on the sending one is answered.
    peer.Send(0x0A05, {0x00, 0x81});
    peer.Send(0x0A04, {0x00, 0x00});
    EXPECT_EQ("response 0041", NextTelegram(peer, 0x0A04));
    EXPECT_EQ("2:true", handler.WaitFor(client->GetValueAsync(100201, false)).value);
    // A read on a listening address that is not the sending one stays unanswered.
    peer.Send(0x0A05, {0x00, 0x00});
    EXPECT_EQ("none", NextTelegram(peer, 0x0A05, 200ms));
    std::lock_guard<std::mutex> lock(changesMutex);
    EXPECT_EQ(std::vector<std::string>{"2 Bool true"}, changes);
}

TEST_F(KnxdDeviceStackClientTest, RequestsTakeTextCommands)
{
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    client = Start();
    EXPECT_EQ("1;1/2/3;9.1;CRWTU;Temperature\n2;1/2/4,1/2/5;1.1;CRWTU;Switch\n3;1/2/6;9.1;CRW;Silent\n",
              handler.WaitFor(client->RequestAsync("objects")).value);
    EXPECT_EQ("ok", handler.WaitFor(client->RequestAsync("write 1/1/9 0c1a")).value);
    EXPECT_EQ("write 00800c1a", NextTelegram(peer, 0x0909));
    EXPECT_EQ("ok", handler.WaitFor(client->RequestAsync("write 1/1/9 01 1")).value);
    EXPECT_EQ("write 0081", NextTelegram(peer, 0x0909));
    const std::string read = client->RequestAsync("read 1/1/9");
    EXPECT_EQ("read 0000", NextTelegram(peer, 0x0909));
    peer.Send(0x0909, {0x00, 0x40, 0x12});
    EXPECT_EQ("12", handler.WaitFor(read).value);
    const Answer bad = handler.WaitFor(client->RequestAsync("jump 1/1/9"));
    EXPECT_EQ(KnxdDeviceStackClient::kBadRequest, bad.code);
    EXPECT_EQ("expected 'read GA', 'write GA HEX [BITS]' or 'objects', got 'jump 1/1/9'", bad.second);
    EXPECT_EQ(0, handler.WaitFor(client->RegisterApplicationAsync("a", "b", "c")).code);
    EXPECT_EQ(KnxdDeviceStackClient::kNotSupported, handler.WaitFor(client->SetConfigurationAsync("x")).code);
}

TEST_F(KnxdDeviceStackClientTest, DeviceConfigIsTheObjectModelAsJson)
{
    client = Start();
    handler.WaitFor(client->SetValueAsync(100101, "21.5", false, 0));
    std::string configuration;
    ASSERT_TRUE(client->GetDeviceConfig(configuration, false));
    EXPECT_EQ("{\"url\":\"" + KnxdUrl() +
                  "\",\"connected\":true,\"objects\":["
                  "{\"co\":1,\"id\":100101,\"gas\":[\"1/2/3\"],\"dpt\":\"9.1\",\"flags\":\"CRWTU\",\"name\":"
                  "\"Temperature\",\"value\":\"21.5\"},"
                  "{\"co\":2,\"id\":100201,\"gas\":[\"1/2/4\",\"1/2/5\"],\"dpt\":\"1.1\",\"flags\":\"CRWTU\","
                  "\"name\":\"Switch\",\"value\":null},"
                  "{\"co\":3,\"id\":100301,\"gas\":[\"1/2/6\"],\"dpt\":\"9.1\",\"flags\":\"CRW\",\"name\":"
                  "\"Silent\",\"value\":null}]}",
              configuration);
    EXPECT_FALSE(client->SetConfiguration(100101, {}, false));
    EXPECT_FALSE(client->SetDeviceConfig({}));
    EXPECT_FALSE(client->SetValueFormat("Native"));
}

// Stops the shared daemon: runs last in this program (the fixture restarts it).
TEST_F(KnxdDeviceStackClientTest, ZAnswersAtOnceWhenKnxdGoesAwayAndReconnects)
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
} // namespace
