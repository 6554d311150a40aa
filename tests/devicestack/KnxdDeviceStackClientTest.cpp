// The device stack against a private knxd (tests/tool/knxd-fixture.sh, started by CTest): a
// peer connection on the same bus watches and answers what the client sends.
#include "KnxdTestSupport.h"

#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>

#include <mutex>
#include <thread>

namespace
{
using namespace TavTest;

TEST_F(KnxdDeviceStackClientOnKnxd, SetValueSendsAGroupWriteAndAnswersWithTheStoredText)
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

TEST_F(KnxdDeviceStackClientOnKnxd, SetValueRefusalsSayWhy)
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

TEST_F(KnxdDeviceStackClientOnKnxd, GetValueReadsTheBusWhenItHasNoValue)
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

TEST_F(KnxdDeviceStackClientOnKnxd, AnUnansweredReadEndsInNoResponse)
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

TEST_F(KnxdDeviceStackClientOnKnxd, BehavesAsADeviceOnTheBus)
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

TEST_F(KnxdDeviceStackClientOnKnxd, ObjectsWithTheIFlagReadTheirValueAtStart)
{
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    std::vector<Lumo::DeviceObject> objects = Objects();
    objects.push_back(Object(4, 0x0A07, 9, 1, "CWTUI", "Outside temperature"));
    objects.push_back(Object(5, 0x0A08, 9, 1, "WTUI", "Not communicating"));
    KnxdDeviceStackClient stack(KnxdUrl(), objects);
    stack.SetResponseHandler(&handler, 0);
    EXPECT_EQ("read 0000", NextTelegram(peer, 0x0A07));
    peer.Send(0x0A07, {0x00, 0x40, 0x0C, 0x1A});
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ("21", handler.WaitFor(stack.GetValueAsync(100401, false)).value);
    stack.SetResponseHandler(nullptr, 0);
    EXPECT_EQ("none", NextTelegram(peer, 0x0A08, 200ms));
}

TEST_F(KnxdDeviceStackClientOnKnxd, RequestsTakeTextCommands)
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

TEST_F(KnxdDeviceStackClientOnKnxd, DeviceConfigIsTheObjectModelAsJson)
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

// The README's example, as it stands there.
TEST_F(KnxdDeviceStackClientOnKnxd, TheReadmeExampleWritesAndReadsAGroupObject)
{
    TavKnx::KnxdConnection peer(KnxdUrl(), false);
    const log4cplus::Logger logger = log4cplus::Logger::getInstance("Readme");
    std::string text;
    {
        Lumo::DeviceObject temperature;  // CO 1, sends on 1/2/3, DPT 9.001
        temperature.co = 1;
        temperature.groupAddresses = {(1 << 11) | (2 << 8) | 3};
        temperature.dpt = KNXDPT{0, 9, 1};
        Lumo::ParseObjectFlags("CRWTU", temperature.flags);
        Lumo::KnxdDeviceStackClient stack(KnxdUrl(), {temperature});
        Okaro::RemoteRequestMessengerDeviceStack messenger(stack);
        Okaro::DscAsyncRequestMessenger requests(messenger, boost::posix_time::seconds(2), 2, logger);
        requests.SetAsResponseHandler();
        OKAVALUE value(ivtFloat);
        value.numeric.real = 21.5;
        requests.SetValue(Lumo::ObjectValueId(1), value, false);  // a group write on 1/2/3
        text = requests.GetValue(Lumo::ObjectValueId(1), false).ReadReply();  // "21.5"
        requests.UnsetAsResponseHandler();
    }
    EXPECT_EQ("21.5", text);
    EXPECT_EQ("write 00800c33", NextTelegram(peer, 0x0A03));
}

} // namespace
