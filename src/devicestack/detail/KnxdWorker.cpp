#include <devicestack/detail/KnxdWorker.h>

#include <TavObjectModel/GroupValueOkaValue.h>

#include <knx/DptText.h>
#include <knx/HexText.h>
#include <knx/Json.h>
#include <knx/KnxAddress.h>
#include <knx/TextError.h>
#include <knxd/KnxdConnection.h>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <sstream>

namespace Lumo
{
namespace
{
// The longest the worker sleeps without looking at its queue and deadlines.
constexpr std::chrono::milliseconds kMaxWait{1000};
// Telegrams taken from knxd before the worker looks at its queue again.
constexpr int kMaxTelegramsAtOnce = 64;
// Bit 6 of the second APDU byte: a response where a write has bit 7.
constexpr std::uint8_t kApciMask = 0xC0;
constexpr std::uint8_t kApciResponse = 0x40;

log4cplus::Logger Log()
{
    return log4cplus::Logger::getInstance("KnxdDeviceStackClient");
}

ResponseError Error(KnxdDeviceStackClient::ErrorCode code, const std::string& what, const std::string& why)
{
    return ResponseError(code, what, why, what + ": " + why);
}

std::string ObjectName(const DeviceObject& object)
{
    return "CO " + std::to_string(object.co);
}

std::string ValueBytesHex(const KnxStack::GroupValue& value)
{
    const KnxStack::BinaryData& raw = value.GetRawData();
    return TavKnx::FormatHex(std::vector<std::uint8_t>(raw.GetData(), raw.GetData() + raw.GetSize()));
}

// Empty when the DPT has no reading for the bytes (or the calendar refuses them).
boost::optional<OKAVALUE> Decode(const KnxStack::GroupValue& value, const DeviceObject& object)
{
    try
    {
        return Okaro::GroupValueToOkaValue(value, PackedObjectDpt(object.dpt));
    }
    catch (const std::exception&)
    {
        return boost::none;
    }
}

boost::optional<KnxStack::GroupValue> Encode(const OKAVALUE& value, const DeviceObject& object)
{
    try
    {
        return Okaro::OkaValueToGroupValue(value, PackedObjectDpt(object.dpt));
    }
    catch (const std::exception&)
    {
        return boost::none;
    }
}

std::string ObjectLine(const DeviceObject& object)
{
    std::string addresses;
    for (const std::uint16_t address : object.groupAddresses)
    {
        addresses += (addresses.empty() ? "" : ",") + FormatObjectGroupAddress(address);
    }
    return std::to_string(object.co) + ";" + addresses + ";" + TavKnx::FormatDpt(object.dpt) + ";" +
           FormatObjectFlags(object.flags) + ";" + object.name;
}
} // namespace

KnxdDeviceStackClient::Worker::Worker(KnxdDeviceStackClient& client)
    : client_(client), nextConnect_(Clock::now()), reconnectDelay_(client.settings_.firstReconnectDelay)
{
}

KnxdDeviceStackClient::Worker::~Worker() = default;

void KnxdDeviceStackClient::Worker::Run()
{
    // Writing to a knxd that went away must fail with EPIPE, not end the program: sends happen
    // on this thread only, so the signal is blocked here alone.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    for (;;)
    {
        std::deque<std::unique_ptr<Job>> jobs;
        {
            std::lock_guard<std::mutex> lock(client_.mutex_);
            if (client_.stopping_)
            {
                break;
            }
            jobs.swap(client_.jobs_);
        }
        const Clock::time_point now = Clock::now();
        if (!connection_ && now >= nextConnect_)
        {
            Connect(now);
        }
        for (const std::unique_ptr<Job>& job : jobs)
        {
            Handle(*job);
        }
        ExpireReads(Clock::now());
        Wait(Clock::now());
    }
    connection_.reset();
    client_.connected_.store(false);
}

void KnxdDeviceStackClient::Worker::Connect(Clock::time_point now)
{
    try
    {
        connection_.reset(new TavKnx::KnxdConnection(client_.url_, false));
    }
    catch (const TavKnx::KnxdError& error)
    {
        // Said once per outage, not on every attempt.
        if (lastFailure_ != error.what())
        {
            LOG4CPLUS_WARN(Log(), "Connect - " << error.what() << "; retrying");
            lastFailure_ = error.what();
        }
        nextConnect_ = now + reconnectDelay_;
        reconnectDelay_ = std::min(reconnectDelay_ * 2, client_.settings_.maxReconnectDelay);
        return;
    }
    lastFailure_.clear();
    reconnectDelay_ = client_.settings_.firstReconnectDelay;
    LOG4CPLUS_INFO(Log(), "Connect - connected to knxd at '" << client_.url_ << "'");
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        client_.connected_.store(true);
    }
    client_.changed_.notify_all();
    ReadOnInit();
}

void KnxdDeviceStackClient::Worker::ReadOnInit()
{
    // As a device does at start: objects with C and I and no value yet ask the bus for theirs;
    // the responses come in as any others (kept where the object has U).
    for (std::size_t index = 0; index < client_.objects_.size() && connection_; ++index)
    {
        const DeviceObject& object = client_.objects_[index];
        bool empty = false;
        {
            std::lock_guard<std::mutex> lock(client_.mutex_);
            empty = client_.values_[index].type == ivtEmpty;
        }
        if (empty && object.Has(kFlagCommunication) && object.Has(kFlagReadOnInit))
        {
            Send(object.groupAddresses.front(), TavKnx::MakeReadApdu());
        }
    }
}

void KnxdDeviceStackClient::Worker::Disconnect(const std::string& reason)
{
    LOG4CPLUS_WARN(Log(), "Disconnect - " << reason << "; reconnecting");
    connection_.reset();
    client_.connected_.store(false);
    lastFailure_.clear();
    nextConnect_ = Clock::now() + reconnectDelay_;
    // Nothing will answer these now: say so at once, so the callers can try again.
    std::vector<PendingRead> reads;
    reads.swap(reads_);
    for (const PendingRead& read : reads)
    {
        if (read.object != nullptr)
        {
            AnswerValue(Job::GetValue, read.requestId, ObjectValueId(read.object->co), read.object->name, "",
                        NotConnected());
        }
        else
        {
            AnswerResponse(read.requestId, "", NotConnected());
        }
    }
}

void KnxdDeviceStackClient::Worker::Wait(Clock::time_point now)
{
    Clock::time_point until = now + kMaxWait;
    if (!connection_)
    {
        until = std::min(until, nextConnect_);
    }
    for (const PendingRead& read : reads_)
    {
        until = std::min(until, read.deadline);
    }
    const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(until - now) + std::chrono::milliseconds(1);
    pollfd descriptors[2] = {{client_.wakeDescriptor_, POLLIN, 0}, {-1, POLLIN, 0}};
    if (connection_)
    {
        descriptors[1].fd = connection_->Descriptor();
    }
    const int ready = poll(descriptors, connection_ ? 2 : 1, static_cast<int>(std::max<long long>(0, wait.count())));
    if (ready <= 0)
    {
        return;
    }
    if ((descriptors[0].revents & POLLIN) != 0)
    {
        std::uint64_t count = 0;
        (void)!read(client_.wakeDescriptor_, &count, sizeof count);
    }
    if (connection_ && descriptors[1].revents != 0)
    {
        ReceiveAll();
    }
}

void KnxdDeviceStackClient::Worker::ReceiveAll()
{
    try
    {
        TavKnx::GroupTelegram telegram;
        // A busy bus must not starve the callers' queue: the rest comes after it.
        for (int count = 0; count < kMaxTelegramsAtOnce && connection_ &&
                            connection_->Receive(std::chrono::milliseconds(0), telegram);
             ++count)
        {
            HandleTelegram(telegram);
        }
    }
    catch (const TavKnx::KnxdError& error)
    {
        Disconnect(error.what());
    }
}

bool KnxdDeviceStackClient::Worker::Send(std::uint16_t groupAddress, const std::vector<std::uint8_t>& apdu)
{
    try
    {
        connection_->Send(groupAddress, apdu);
        return true;
    }
    catch (const TavKnx::KnxdError& error)
    {
        Disconnect(error.what());
        return false;
    }
}

void KnxdDeviceStackClient::Worker::ExpireReads(Clock::time_point now)
{
    std::vector<PendingRead> expired;
    auto keep = std::stable_partition(reads_.begin(), reads_.end(),
                                      [now](const PendingRead& read) { return read.deadline > now; });
    expired.assign(keep, reads_.end());
    reads_.erase(keep, reads_.end());
    for (const PendingRead& read : expired)
    {
        const ResponseError error = Error(kNoResponse, "no response",
                                          "nobody answered the read of " +
                                              FormatObjectGroupAddress(read.groupAddress));
        if (read.object != nullptr)
        {
            AnswerValue(Job::GetValue, read.requestId, ObjectValueId(read.object->co), read.object->name, "", error);
        }
        else
        {
            AnswerResponse(read.requestId, "", error);
        }
    }
}

void KnxdDeviceStackClient::Worker::Handle(const Job& job)
{
    switch (job.kind)
    {
    case Job::SetValue:
        HandleSetValue(job);
        return;
    case Job::GetValue:
        HandleGetValue(job);
        return;
    case Job::Request:
        HandleRequest(job);
        return;
    case Job::RegisterApplication:
        Deliver([&](IResponseHandler& handler) {
            handler.OnRegisterApplication(client_, job.requestId, ResponseError());
        });
        return;
    case Job::SetConfiguration:
        Deliver([&](IResponseHandler& handler) {
            handler.OnSetConfiguration(client_, job.requestId,
                                       Error(kNotSupported, "not supported",
                                             "the device stack on knxd takes no configuration"));
        });
        return;
    }
}

void KnxdDeviceStackClient::Worker::HandleSetValue(const Job& job)
{
    const DeviceObject* object = client_.FindObject(job.id);
    if (object == nullptr)
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, "", "",
                    Error(kUnknownId, "unknown id", "no object has id " + std::to_string(job.id)));
        return;
    }
    OKAVALUE value;
    if (!value.Deserialize(oka_string(job.text.data(), job.text.size())))
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "",
                    Error(kUnreadableValue, "unreadable value",
                          TavKnx::Quote(job.text) + " is not in the value text form"));
        return;
    }
    const boost::optional<KnxStack::GroupValue> groupValue = Encode(value, *object);
    if (!groupValue)
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "",
                    Error(kValueRefused, "value refused",
                          "DPT " + TavKnx::FormatDpt(object->dpt) + " of " + ObjectName(*object) +
                              " cannot carry " + value.ToString()));
        return;
    }
    if (!object->Has(kFlagCommunication) || !object->Has(kFlagTransmit))
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "",
                    Error(kNotSendable, "not sendable",
                          ObjectName(*object) + " has flags '" + FormatObjectFlags(object->flags) +
                              "' without C and T"));
        return;
    }
    if (!connection_ || !Send(object->groupAddresses.front(), TavKnx::MakeWriteApdu(*groupValue)))
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "", NotConnected());
        return;
    }
    const std::size_t index = client_.byId_.at(job.id);
    Store(index, value, ChangeSource::Application);
    AnswerValue(Job::SetValue, job.requestId, job.id, object->name, Text(value), ResponseError());
}

void KnxdDeviceStackClient::Worker::HandleGetValue(const Job& job)
{
    const DeviceObject* object = client_.FindObject(job.id);
    if (object == nullptr)
    {
        AnswerValue(Job::GetValue, job.requestId, job.id, "", "",
                    Error(kUnknownId, "unknown id", "no object has id " + std::to_string(job.id)));
        return;
    }
    OKAVALUE value;
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        value = client_.values_[client_.byId_.at(job.id)];
    }
    if (value.type != ivtEmpty)
    {
        AnswerValue(Job::GetValue, job.requestId, job.id, object->name, Text(value), ResponseError());
        return;
    }
    if (!object->Has(kFlagCommunication))
    {
        AnswerValue(Job::GetValue, job.requestId, job.id, object->name, "",
                    Error(kNotSendable, "not sendable",
                          ObjectName(*object) + " has no value and no C flag to read one"));
        return;
    }
    const std::uint16_t address = object->groupAddresses.front();
    if (!connection_ || !Send(address, TavKnx::MakeReadApdu()))
    {
        AnswerValue(Job::GetValue, job.requestId, job.id, object->name, "", NotConnected());
        return;
    }
    reads_.push_back({job.requestId, object, address, Clock::now() + client_.settings_.readTimeout});
}

void KnxdDeviceStackClient::Worker::HandleRequest(const Job& job)
{
    std::istringstream words(job.text);
    std::string command;
    std::string address;
    std::string hex;
    std::string bits;
    std::string extra;
    words >> command >> address >> hex >> bits >> extra;
    const ResponseError bad =
        Error(kBadRequest, "bad request", "expected 'read GA', 'write GA HEX [BITS]' or 'objects', got " +
                                              TavKnx::Quote(job.text));
    if (command == "objects" && address.empty())
    {
        std::string lines;
        for (const DeviceObject& object : client_.objects_)
        {
            lines += ObjectLine(object) + "\n";
        }
        AnswerResponse(job.requestId, lines, ResponseError());
        return;
    }
    const boost::optional<std::uint16_t> groupAddress = TavKnx::ParseGroupAddress(address);
    if (!groupAddress || (command != "read" && command != "write") || !extra.empty() ||
        (command == "read" && !hex.empty()) || (command == "write" && hex.empty()))
    {
        AnswerResponse(job.requestId, "", bad);
        return;
    }
    std::vector<std::uint8_t> apdu = TavKnx::MakeReadApdu();
    if (command == "write")
    {
        try
        {
            const std::vector<std::uint8_t> bytes = TavKnx::ParseHex(hex);
            const std::uint32_t size =
                bits.empty() ? static_cast<std::uint32_t>(8 * bytes.size()) : TavKnx::ParseBits(bits, "BITS");
            if (bytes.empty() || (size <= 6 && bytes.size() != 1))
            {
                throw TavKnx::TextError("a short value (BITS up to 6) is one byte");
            }
            apdu = TavKnx::MakeWriteApdu(
                KnxStack::GroupValue(KnxStack::BinaryData(bytes.data(), static_cast<unsigned>(bytes.size())), size));
        }
        catch (const TavKnx::TextError& error)
        {
            AnswerResponse(job.requestId, "", Error(kBadRequest, "bad request", error.what()));
            return;
        }
    }
    if (!connection_ || !Send(*groupAddress, apdu))
    {
        AnswerResponse(job.requestId, "", NotConnected());
        return;
    }
    if (command == "write")
    {
        AnswerResponse(job.requestId, "ok", ResponseError());
        return;
    }
    reads_.push_back({job.requestId, nullptr, *groupAddress, Clock::now() + client_.settings_.readTimeout});
}

void KnxdDeviceStackClient::Worker::HandleTelegram(const TavKnx::GroupTelegram& telegram)
{
    if (telegram.HasValue())
    {
        // Reads waiting for this address are answered by a response, or by a write, which
        // carries the same news.
        std::vector<PendingRead> answered;
        auto keep = std::stable_partition(reads_.begin(), reads_.end(), [&](const PendingRead& read) {
            return read.groupAddress != telegram.destination;
        });
        answered.assign(keep, reads_.end());
        reads_.erase(keep, reads_.end());
        for (const PendingRead& read : answered)
        {
            if (read.object == nullptr)
            {
                AnswerResponse(read.requestId, ValueBytesHex(telegram.value), ResponseError());
                continue;
            }
            const boost::optional<OKAVALUE> value = Decode(telegram.value, *read.object);
            const unsigned long id = ObjectValueId(read.object->co);
            if (value)
            {
                AnswerValue(Job::GetValue, read.requestId, id, read.object->name, Text(*value), ResponseError());
            }
            else
            {
                AnswerValue(Job::GetValue, read.requestId, id, read.object->name, "",
                            Error(kValueRefused, "value refused",
                                  "DPT " + TavKnx::FormatDpt(read.object->dpt) + " cannot read the bytes " +
                                      ValueBytesHex(telegram.value)));
            }
        }
    }
    for (std::size_t index = 0; index < client_.objects_.size(); ++index)
    {
        const DeviceObject& object = client_.objects_[index];
        const std::vector<std::uint16_t>& addresses = object.groupAddresses;
        if (!object.Has(kFlagCommunication) ||
            std::find(addresses.begin(), addresses.end(), telegram.destination) == addresses.end())
        {
            continue;
        }
        const bool takes = (telegram.kind == TavKnx::TelegramKind::Write && object.Has(kFlagWrite)) ||
                           (telegram.kind == TavKnx::TelegramKind::Response && object.Has(kFlagUpdate));
        if (takes)
        {
            const boost::optional<OKAVALUE> value = Decode(telegram.value, object);
            if (value)
            {
                Store(index, *value, telegram.kind == TavKnx::TelegramKind::Write ? ChangeSource::BusWrite
                                                                                   : ChangeSource::BusResponse);
            }
            else
            {
                LOG4CPLUS_WARN(Log(), "HandleTelegram - " << ObjectName(object) << ": DPT "
                                                          << TavKnx::FormatDpt(object.dpt) << " cannot read the bytes "
                                                          << ValueBytesHex(telegram.value) << " from "
                                                          << TavKnx::FormatIndividualAddress(telegram.source));
            }
        }
        else if (telegram.kind == TavKnx::TelegramKind::Read && telegram.destination == addresses.front() &&
                 object.Has(kFlagRead) && connection_)
        {
            AnswerRead(object, index);
        }
    }
}

void KnxdDeviceStackClient::Worker::AnswerRead(const DeviceObject& object, std::size_t index)
{
    OKAVALUE value;
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        value = client_.values_[index];
    }
    if (value.type == ivtEmpty)
    {
        return;  // a device without a value stays silent
    }
    const boost::optional<KnxStack::GroupValue> groupValue = Encode(value, object);
    if (!groupValue)
    {
        return;
    }
    std::vector<std::uint8_t> apdu = TavKnx::MakeWriteApdu(*groupValue);
    apdu[1] = static_cast<std::uint8_t>((apdu[1] & ~kApciMask) | kApciResponse);
    Send(object.groupAddresses.front(), apdu);
}

void KnxdDeviceStackClient::Worker::Store(std::size_t index, const OKAVALUE& value, ChangeSource source)
{
    ChangeObserver observer;
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        client_.values_[index] = value;
        observer = client_.observer_;
    }
    if (observer)
    {
        observer(client_.objects_[index], value, source);
    }
}

std::string KnxdDeviceStackClient::Worker::Text(const OKAVALUE& value) const
{
    oka_string text;
    value.Serialize(text, client_.internalFormat_.load());
    return std::string(text.c_str(), text.length());
}

ResponseError KnxdDeviceStackClient::Worker::NotConnected() const
{
    return Error(kNotConnected, "not connected", "knxd at '" + client_.url_ + "' is not reachable");
}

void KnxdDeviceStackClient::Worker::AnswerValue(Job::Kind kind, const std::string& requestId, unsigned long id,
                                                const std::string& urn, const std::string& value,
                                                const ResponseError& error)
{
    Deliver([&](IResponseHandler& handler) {
        if (kind == Job::SetValue)
        {
            handler.OnSetValue(client_, requestId, id, urn, value, error);
        }
        else
        {
            handler.OnGetValue(client_, requestId, id, urn, value, error);
        }
    });
}

void KnxdDeviceStackClient::Worker::AnswerResponse(const std::string& requestId, const std::string& response,
                                                   const ResponseError& error)
{
    Deliver([&](IResponseHandler& handler) { handler.OnResponse(client_, requestId, response, error); });
}

template <typename Call>
void KnxdDeviceStackClient::Worker::Deliver(Call call)
{
    IResponseHandler* handler = nullptr;
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        handler = client_.handler_;
        if (handler == nullptr)
        {
            return;
        }
        client_.delivering_ = true;
    }
    try
    {
        call(*handler);
    }
    catch (...)
    {
        // The handler's exceptions must not end the worker: the device stack would go silent.
        LOG4CPLUS_ERROR(Log(), "Deliver - the response handler threw");
    }
    {
        std::lock_guard<std::mutex> lock(client_.mutex_);
        client_.delivering_ = false;
    }
    client_.changed_.notify_all();
}

std::string DeviceConfigJson(const std::string& url, bool connected, const std::vector<DeviceObject>& objects,
                             const std::vector<OKAVALUE>& values, bool internalFormat)
{
    std::string list;
    for (std::size_t index = 0; index < objects.size(); ++index)
    {
        const DeviceObject& object = objects[index];
        std::string addresses;
        for (const std::uint16_t address : object.groupAddresses)
        {
            addresses += (addresses.empty() ? "" : ",") + TavKnx::JsonString(FormatObjectGroupAddress(address));
        }
        TavKnx::JsonObject entry;
        entry.Add("co", static_cast<unsigned>(object.co))
            .Add("id", static_cast<std::uint64_t>(ObjectValueId(object.co)))
            .AddRaw("gas", "[" + addresses + "]")
            .Add("dpt", TavKnx::FormatDpt(object.dpt))
            .Add("flags", FormatObjectFlags(object.flags))
            .Add("name", object.name);
        if (values[index].type == ivtEmpty)
        {
            entry.AddNull("value");
        }
        else
        {
            oka_string text;
            values[index].Serialize(text, internalFormat);
            entry.Add("value", std::string(text.c_str(), text.length()));
        }
        list += (list.empty() ? "" : ",") + entry.Str();
    }
    return TavKnx::JsonObject().Add("url", url).Add("connected", connected).AddRaw("objects", "[" + list + "]").Str();
}
} // namespace Lumo
