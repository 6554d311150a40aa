#pragma once
// The bridge's session with the MQTT broker, through libmosquitto (Debian libmosquitto-dev):
// a persistent session (clean session off, a fixed client id), so that commands published at
// QoS 1 while the bridge is away are kept for it; the last will "offline" on the status topic;
// libmosquitto's own thread keeps the connection and reconnects with a bounded back-off.
#include "bridge/StatePayload.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

struct mosquitto;
struct mosquitto_message;

namespace TavKnx
{
class MqttError : public std::runtime_error
{
public:
    explicit MqttError(const std::string& message) : std::runtime_error(message) {}
};

// --mqtt mqtt://HOST[:PORT] (mqtts:// for TLS, port 8883 by default).
struct MqttAddress
{
    std::string host;
    int port = 1883;
    bool tls = false;
};
// Throws TextError naming --mqtt.
MqttAddress ParseMqttUrl(const std::string& url);

struct MqttOptions
{
    MqttAddress address;
    std::string clientId;
    std::string username;     // none when empty
    std::string password;
    std::string caFile;       // TLS with this CA file when not empty
    std::string willTopic;    // gets "offline", retained, when the bridge goes away unasked
    std::vector<std::string> subscriptions;  // at QoS 1, on every connect
    // Called on libmosquitto's thread after every connect (subscriptions made): the bridge
    // publishes "online" and its discovery configs there.
    std::function<void()> onConnect;
};

class MqttSession
{
public:
    explicit MqttSession(MqttOptions options);
    ~MqttSession();
    MqttSession(const MqttSession&) = delete;
    MqttSession& operator=(const MqttSession&) = delete;

    // Starts connecting; once connected, libmosquitto's thread keeps the connection.
    void Start();
    // Until the first connection: tries again when the back-off says so. Call it often.
    void KeepTrying();
    // Queues a message at QoS 1 (kept by libmosquitto while the broker is away). False when
    // libmosquitto refused it (the log says why).
    bool Publish(const MqttMessage& message);
    // The next message on a subscribed topic, waiting at most `wait`.
    bool Receive(std::chrono::milliseconds wait, MqttMessage& message);
    // Readable (poll(2)) when a message has come in since Receive last found none.
    int WakeFd() const { return wakeRead_; }
    // Publishes `last` (the "offline" status), waits at most `wait` for the broker to take it,
    // disconnects and stops the background thread.
    void Stop(const MqttMessage& last, std::chrono::milliseconds wait);
    // Messages the broker has acknowledged so far.
    std::uint64_t Acknowledged() const;

private:
    static void OnConnect(mosquitto* client, void* self, int code);
    static void OnDisconnect(mosquitto* client, void* self, int code);
    static void OnMessage(mosquitto* client, void* self, const mosquitto_message* message);
    static void OnPublish(mosquitto* client, void* self, int mid);
    static void OnLog(mosquitto* client, void* self, int level, const char* text);

    MqttOptions options_;
    mosquitto* client_ = nullptr;
    bool started_ = false;     // libmosquitto's thread runs
    bool connecting_ = false;  // a first connection is still to be made
    std::chrono::steady_clock::time_point nextAttempt_;
    std::chrono::seconds retry_{0};
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<MqttMessage> incoming_;
    std::set<int> pending_;  // message ids Stop waits for
    std::uint64_t acknowledged_ = 0;
    int wakeRead_ = -1;  // a pipe that OnMessage writes a byte to
    int wakeWrite_ = -1;
};
} // namespace TavKnx
