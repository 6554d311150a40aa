#include "bridge/MqttSession.h"

#include "knx/NumberText.h"
#include "knx/TextError.h"

#include <platform/Logging.h>

#include <mosquitto.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace TavKnx
{
namespace
{
namespace LogFile
{
constexpr char MqttSession[] = "MqttSession.cpp";
} // namespace LogFile

// The broker is tried again after 1 s, then after twice as long each time, at most 10 s.
constexpr unsigned kFirstRetrySeconds = 1;
constexpr unsigned kLongestRetrySeconds = 10;
constexpr int kKeepAliveSeconds = 30;
constexpr int kQos = 1;

log4cplus::Logger BridgeLogger()
{
    return log4cplus::Logger::getInstance("tavknx.bridge");
}

// libmosquitto's global set-up, once for the process.
void InitLibrary()
{
    static const int initialised = mosquitto_lib_init();
    (void)initialised;
}

std::string Where(const MqttOptions& options)
{
    return options.address.host + ":" + std::to_string(options.address.port);
}

void Check(int code, const std::string& what)
{
    if (code != MOSQ_ERR_SUCCESS)
    {
        throw MqttError(what + ": " + mosquitto_strerror(code));
    }
}
} // namespace

MqttAddress ParseMqttUrl(const std::string& url)
{
    MqttAddress address;
    std::string rest;
    if (url.compare(0, 7, "mqtt://") == 0)
    {
        rest = url.substr(7);
    }
    else if (url.compare(0, 8, "mqtts://") == 0)
    {
        rest = url.substr(8);
        address.tls = true;
        address.port = 8883;
    }
    const std::string::size_type colon = rest.rfind(':');
    address.host = rest.substr(0, colon);
    if (address.host.empty() || address.host.find_first_of("/@[]") != std::string::npos)
    {
        throw TextError("--mqtt: expected mqtt://HOST[:PORT] or mqtts://HOST[:PORT], got " + Quote(url));
    }
    if (colon != std::string::npos)
    {
        address.port = static_cast<int>(ParseUnsigned(rest.substr(colon + 1), 65535, "--mqtt port"));
        if (address.port == 0)
        {
            throw TextError("--mqtt port: expected 1-65535, got '0'");
        }
    }
    return address;
}

MqttSession::MqttSession(MqttOptions options) : options_(std::move(options))
{
    InitLibrary();
    int wake[2];
    if (pipe2(wake, O_NONBLOCK | O_CLOEXEC) != 0)
    {
        throw MqttError(std::string("cannot make a pipe: ") + std::strerror(errno));
    }
    wakeRead_ = wake[0];
    wakeWrite_ = wake[1];
    // Clean session off: the broker keeps the subscriptions and the QoS 1 commands for this id.
    client_ = mosquitto_new(options_.clientId.c_str(), false, this);
    if (client_ == nullptr)
    {
        close(wakeRead_);
        close(wakeWrite_);
        throw MqttError("cannot create an MQTT client with id '" + options_.clientId + "'");
    }
    try
    {
        mosquitto_connect_callback_set(client_, &MqttSession::OnConnect);
        mosquitto_disconnect_callback_set(client_, &MqttSession::OnDisconnect);
        mosquitto_message_callback_set(client_, &MqttSession::OnMessage);
        mosquitto_publish_callback_set(client_, &MqttSession::OnPublish);
        mosquitto_log_callback_set(client_, &MqttSession::OnLog);
        Check(mosquitto_reconnect_delay_set(client_, kFirstRetrySeconds, kLongestRetrySeconds, true),
              "MQTT reconnect delay");
        if (!options_.willTopic.empty())
        {
            Check(mosquitto_will_set(client_, options_.willTopic.c_str(), 7, "offline", kQos, true), "MQTT last will");
        }
        if (!options_.username.empty())
        {
            Check(mosquitto_username_pw_set(client_, options_.username.c_str(), options_.password.c_str()),
                  "MQTT user name");
        }
        if (!options_.caFile.empty() || options_.address.tls)
        {
            Check(mosquitto_tls_set(client_, options_.caFile.empty() ? nullptr : options_.caFile.c_str(),
                                    options_.caFile.empty() ? "/etc/ssl/certs" : nullptr, nullptr, nullptr, nullptr),
                  "MQTT TLS with CA file '" + options_.caFile + "'");
        }
    }
    catch (...)
    {
        mosquitto_destroy(client_);
        close(wakeRead_);
        close(wakeWrite_);
        throw;
    }
}

MqttSession::~MqttSession()
{
    if (started_)
    {
        mosquitto_disconnect(client_);
        mosquitto_loop_stop(client_, true);
    }
    mosquitto_destroy(client_);
    close(wakeRead_);
    close(wakeWrite_);
}

void MqttSession::Start()
{
    connecting_ = true;
    retry_ = std::chrono::seconds(kFirstRetrySeconds);
    const int code = mosquitto_connect_async(client_, options_.address.host.c_str(), options_.address.port,
                                             kKeepAliveSeconds);
    if (code != MOSQ_ERR_SUCCESS)
    {
        // libmosquitto's thread reconnects only a connection it once had: until then, KeepTrying.
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MqttSession, 140,
                   "cannot reach the MQTT broker at " << Where(options_) << ": " << mosquitto_strerror(code)
                                                      << "; trying again, at most every " << kLongestRetrySeconds
                                                      << " s");
        nextAttempt_ = std::chrono::steady_clock::now() + retry_;
        return;
    }
    connecting_ = false;
    Check(mosquitto_loop_start(client_), "MQTT background thread");
    started_ = true;
}

void MqttSession::KeepTrying()
{
    if (!connecting_ || std::chrono::steady_clock::now() < nextAttempt_)
    {
        return;
    }
    const int code = mosquitto_connect_async(client_, options_.address.host.c_str(), options_.address.port,
                                             kKeepAliveSeconds);
    if (code != MOSQ_ERR_SUCCESS)
    {
        retry_ = std::min(retry_ * 2, std::chrono::seconds(kLongestRetrySeconds));
        nextAttempt_ = std::chrono::steady_clock::now() + retry_;
        TAV_LOG_AT(BridgeLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::MqttSession, 170,
                   "cannot reach the MQTT broker at " << Where(options_) << ": " << mosquitto_strerror(code)
                                                      << "; next attempt in " << retry_.count() << " s");
        return;
    }
    connecting_ = false;
    Check(mosquitto_loop_start(client_), "MQTT background thread");
    started_ = true;
}

bool MqttSession::Publish(const MqttMessage& message)
{
    int id = 0;
    const int code = mosquitto_publish(client_, &id, message.topic.c_str(), static_cast<int>(message.payload.size()),
                                       message.payload.data(), kQos, message.retain);
    // Away from the broker, libmosquitto keeps a QoS 1 message and sends it on the next connect.
    if (code != MOSQ_ERR_SUCCESS && code != MOSQ_ERR_NO_CONN)
    {
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MqttSession, 156,
                   "cannot publish to '" << message.topic << "': " << mosquitto_strerror(code));
        return false;
    }
    return true;
}

bool MqttSession::Receive(std::chrono::milliseconds wait, MqttMessage& message)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, wait, [this] { return !incoming_.empty(); }))
    {
        // Nothing left: the wake pipe is emptied, so that poll waits for the next message.
        char bytes[64];
        while (read(wakeRead_, bytes, sizeof bytes) > 0)
        {
        }
        return false;
    }
    message = std::move(incoming_.front());
    incoming_.pop_front();
    return true;
}

void MqttSession::Stop(const MqttMessage& last, std::chrono::milliseconds wait)
{
    if (!started_)
    {
        return;
    }
    int id = 0;
    {
        // Registered before the broker can answer, so that the acknowledgement is not missed.
        std::unique_lock<std::mutex> lock(mutex_);
        const int code = mosquitto_publish(client_, &id, last.topic.c_str(), static_cast<int>(last.payload.size()),
                                           last.payload.data(), kQos, last.retain);
        if (code == MOSQ_ERR_SUCCESS)
        {
            pending_.insert(id);
            changed_.wait_for(lock, wait, [this, id] { return pending_.count(id) == 0; });
        }
    }
    mosquitto_disconnect(client_);
    mosquitto_loop_stop(client_, false);
    started_ = false;
}

std::uint64_t MqttSession::Acknowledged() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return acknowledged_;
}

void MqttSession::OnConnect(mosquitto* client, void* self, int code)
{
    auto& session = *static_cast<MqttSession*>(self);
    if (code != 0)
    {
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MqttSession, 205,
                   "the MQTT broker at " << Where(session.options_) << " refused the connection: "
                                         << mosquitto_connack_string(code));
        return;
    }
    for (const std::string& filter : session.options_.subscriptions)
    {
        mosquitto_subscribe(client, nullptr, filter.c_str(), kQos);
    }
    TAV_LOG_AT(BridgeLogger(), log4cplus::INFO_LOG_LEVEL, LogFile::MqttSession, 214,
               "connected to the MQTT broker at " << Where(session.options_) << " as '" << session.options_.clientId
                                                  << "'");
    if (session.options_.onConnect)
    {
        session.options_.onConnect();
    }
}

void MqttSession::OnDisconnect(mosquitto*, void* self, int code)
{
    auto& session = *static_cast<MqttSession*>(self);
    if (code != 0)
    {
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MqttSession, 227,
                   "lost the MQTT broker at " << Where(session.options_) << ": " << mosquitto_strerror(code)
                                              << "; trying again, at most every " << kLongestRetrySeconds << " s");
    }
}

// libmosquitto's own errors: a TLS handshake it gives up on (a CA file that does not vouch for
// the broker) is said only here, the connect call itself having succeeded.
void MqttSession::OnLog(mosquitto*, void*, int level, const char* text)
{
    if (level == MOSQ_LOG_ERR && text != nullptr)
    {
        TAV_LOG_AT(BridgeLogger(), log4cplus::WARN_LOG_LEVEL, LogFile::MqttSession, 240, "libmosquitto: " << text);
    }
}

void MqttSession::OnMessage(mosquitto*, void* self, const mosquitto_message* message)
{
    auto& session = *static_cast<MqttSession*>(self);
    MqttMessage copy;
    copy.topic = message->topic;
    copy.payload.assign(static_cast<const char*>(message->payload), static_cast<std::size_t>(message->payloadlen));
    {
        std::lock_guard<std::mutex> lock(session.mutex_);
        session.incoming_.push_back(std::move(copy));
    }
    session.changed_.notify_all();
    // Full pipe: a wake-up is pending anyway.
    const ssize_t written = write(session.wakeWrite_, "m", 1);
    (void)written;
}

void MqttSession::OnPublish(mosquitto*, void* self, int id)
{
    auto& session = *static_cast<MqttSession*>(self);
    {
        std::lock_guard<std::mutex> lock(session.mutex_);
        ++session.acknowledged_;
        session.pending_.erase(id);
    }
    session.changed_.notify_all();
}
} // namespace TavKnx
