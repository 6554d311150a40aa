#include <TavObjectModel/RequestMessengerDeviceStack.h>

#include <TavObjectModel/detail/LogFiles.h>
#include <platform/Logging.h>

#include <cmath>

namespace Okaro
{
namespace
{
// The value model's serializer has no text for a NaN float; these are what the device
// stack reads as one ("3.7:" is the internal form's float tag).
const char* const kNanDefaultText = "nan";
const char* const kNanInternalText = "3.7:nan";
// The client's trailing argument, which this library always leaves at 0.
constexpr int kNoReserved = 0;
} // namespace

RemoteRequestMessengerDeviceStack::RemoteRequestMessengerDeviceStack(Lumo::IDeviceStackClient& client)
    : client(client), internalValueFormat(false)
{
}

void RemoteRequestMessengerDeviceStack::SetResponseHandler(Lumo::IDeviceStackClient::IResponseHandler* handler)
{
    client.SetResponseHandler(handler, kNoReserved);
}

std::string RemoteRequestMessengerDeviceStack::RegisterApplicationAsync(const std::string& first,
                                                                        const std::string& second,
                                                                        const std::string& third)
{
    return client.RegisterApplicationAsync(first, second, third);
}

std::string RemoteRequestMessengerDeviceStack::SerializeValue(const OKAVALUE& value) const
{
    const bool internal = internalValueFormat.load();
    if (value.type == ivtFloat && std::isnan(value.numeric.real))
    {
        return internal ? kNanInternalText : kNanDefaultText;
    }
    oka_string text;
    value.Serialize(text, internal);
    return std::string(text.c_str(), text.length());
}

std::string RemoteRequestMessengerDeviceStack::SetValueAsync(unsigned long id, const OKAVALUE& value, bool flag)
{
    return client.SetValueAsync(id, SerializeValue(value), flag, kNoReserved);
}

std::string RemoteRequestMessengerDeviceStack::GetValueAsync(unsigned long id, bool flag)
{
    return client.GetValueAsync(id, flag);
}

std::string RemoteRequestMessengerDeviceStack::RequestAsync(const std::string& request)
{
    return client.RequestAsync(request);
}

std::string RemoteRequestMessengerDeviceStack::SetConfigurationAsync(const std::string& configuration)
{
    return client.SetConfigurationAsync(configuration);
}

bool RemoteRequestMessengerDeviceStack::SetConfiguration(unsigned long id,
                                                         const Lumo::IDeviceStackClient::PropertyMap& properties,
                                                         bool flag)
{
    return client.SetConfiguration(id, properties, flag);
}

bool RemoteRequestMessengerDeviceStack::GetDeviceConfig(std::string& configuration, bool flag)
{
    return client.GetDeviceConfig(configuration, flag);
}

bool RemoteRequestMessengerDeviceStack::SetDeviceConfig(const std::map<std::string, std::string>& configuration)
{
    return client.SetDeviceConfig(configuration);
}

bool RemoteRequestMessengerDeviceStack::EnableNativeFormat() { return client.SetValueFormat("Native"); }

void RemoteRequestMessengerDeviceStack::EnableInternalValueFormat()
{
    client.SetInternalValueFormat(true);
    internalValueFormat.store(true);
    TAV_LOG_AT(GetGlobalDefaultLogger(), log4cplus::DEBUG_LOG_LEVEL, LogFile::RequestMessengerDeviceStack, 91, "Internal value format now enabled.");
}

// Switching back is routine and not logged.
void RemoteRequestMessengerDeviceStack::EnableDefaultValueFormat()
{
    client.SetInternalValueFormat(false);
    internalValueFormat.store(false);
}
} // namespace Okaro
