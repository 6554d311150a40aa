// The worker's handling of the callers' requests: set, get and the text commands.
#include <devicestack/detail/KnxdWorker.h>

#include <devicestack/detail/KnxdWorkerSupport.h>

#include <knx/DptText.h>
#include <knx/HexText.h>
#include <knx/KnxAddress.h>
#include <knx/TextError.h>

#include <sstream>

namespace Lumo
{
using detail::Encode;
using detail::StackError;
using detail::ObjectLine;
using detail::ObjectName;

namespace
{
// Set and get answer an id without object alike.
ResponseError UnknownId(unsigned long id)
{
    return StackError(KnxdDeviceStackClient::kUnknownId, "unknown id", "no object has id " + std::to_string(id));
}
} // namespace

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
        AnswerRegisterApplication(job.requestId, ResponseError());
        return;
    case Job::SetConfiguration:
        AnswerSetConfiguration(job.requestId, StackError(kNotSupported, "not supported",
                                                        "the device stack on knxd takes no configuration"));
        return;
    }
}

void KnxdDeviceStackClient::Worker::HandleSetValue(const Job& job)
{
    const DeviceObject* object = client_.FindObject(job.id);
    if (object == nullptr)
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, "", "", UnknownId(job.id));
        return;
    }
    OKAVALUE value;
    if (!value.Deserialize(oka_string(job.text.data(), job.text.size())))
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "",
                    StackError(kUnreadableValue, "unreadable value",
                          TavKnx::Quote(job.text) + " is not in the value text form"));
        return;
    }
    const boost::optional<KnxStack::GroupValue> groupValue = Encode(value, *object);
    if (!groupValue)
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "",
                    StackError(kValueRefused, "value refused",
                          "DPT " + TavKnx::FormatDpt(object->dpt) + " of " + ObjectName(*object) +
                              " cannot carry " + value.ToString()));
        return;
    }
    if (!object->Has(kFlagCommunication) || !object->Has(kFlagTransmit))
    {
        AnswerValue(Job::SetValue, job.requestId, job.id, object->name, "",
                    StackError(kNotSendable, "not sendable",
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
        AnswerValue(Job::GetValue, job.requestId, job.id, "", "", UnknownId(job.id));
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
                    StackError(kNotSendable, "not sendable",
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
        StackError(kBadRequest, "bad request", "expected 'read GA', 'write GA HEX [BITS]' or 'objects', got " +
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
            AnswerResponse(job.requestId, "", StackError(kBadRequest, "bad request", error.what()));
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
} // namespace Lumo
