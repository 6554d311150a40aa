// The worker's side of the bus: telegrams from it, reads answered as a device does, the
// objects' values.
#include <devicestack/detail/KnxdWorker.h>

#include <devicestack/detail/KnxdWorkerSupport.h>

#include <knx/DptText.h>
#include <knx/KnxAddress.h>

#include <log4cplus/loggingmacros.h>

#include <algorithm>

namespace Lumo
{
namespace
{
// Bit 6 of the second APDU byte: a response where a write has bit 7.
constexpr std::uint8_t kApciMask = 0xC0;
constexpr std::uint8_t kApciResponse = 0x40;
} // namespace

using detail::Decode;
using detail::Encode;
using detail::StackError;
using detail::KnxdLog;
using detail::ObjectName;
using detail::ValueBytesHex;

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
                            StackError(kValueRefused, "value refused",
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
                LOG4CPLUS_WARN(KnxdLog(), "HandleTelegram - " << ObjectName(object) << ": DPT "
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
} // namespace Lumo
