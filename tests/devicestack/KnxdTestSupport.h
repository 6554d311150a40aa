#pragma once
// What the device stack's live-bus tests share: the private knxd of the CTest fixture
// (tests/tool/knxd-fixture.sh; TAV_KNXD_STATE names its state file), the objects, a handler
// that records the answers, a peer on the bus, and the test fixture class.
#include <devicestack/KnxdDeviceStackClient.h>

#include <knx/HexText.h>
#include <knxd/KnxdConnection.h>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace TavTest
{
using Lumo::KnxdDeviceStackClient;
using namespace std::chrono_literals;

inline std::string StateFile()
{
    const char* state = std::getenv("TAV_KNXD_STATE");
    return state == nullptr ? std::string() : state;
}

inline std::string KnxdUrl()
{
    std::ifstream file(StateFile());
    std::string dir;
    std::getline(file, dir);
    return "local:" + dir + "/knx";
}

// Runs the fixture script on the daemon: "stop-keep" or "restart".
inline void Fixture(const std::string& action)
{
    ASSERT_EQ(0, std::system(("bash " TAV_KNXD_FIXTURE_SCRIPT " " + action + " " + StateFile()).c_str()));
}

inline Lumo::DeviceObject Object(unsigned short co, std::uint16_t address, std::uint16_t main, std::uint16_t sub,
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
inline std::vector<Lumo::DeviceObject> Objects()
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
    std::vector<Answer> All() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return answers_;
    }
    bool WaitForCount(std::size_t count, std::chrono::milliseconds limit)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return answers_.size() >= count; });
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
inline std::string NextTelegram(TavKnx::KnxdConnection& peer, std::uint16_t address, std::chrono::milliseconds limit = 2000ms)
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

class KnxdDeviceStackClientOnKnxd : public ::testing::Test
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

} // namespace TavTest
