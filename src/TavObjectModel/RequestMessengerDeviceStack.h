#pragma once
// The asynchronous device-stack messenger that the blocking request front talks to, and its
// one real implementation on top of a Lumo::IDeviceStackClient.
#include <platform/DeviceStackClient.h>
#include <platform/OkaValue.h>

#include <atomic>
#include <map>
#include <string>

namespace Okaro
{
// Abstract so that the blocking front can run on a test double or a local stack as well.
// Asynchronous operations return the client's request id; an empty id means "not sent".
class RequestMessengerDeviceStack
{
public:
    virtual ~RequestMessengerDeviceStack() = default;

    virtual void SetResponseHandler(Lumo::IDeviceStackClient::IResponseHandler* handler) = 0;
    virtual std::string RegisterApplicationAsync(const std::string& first, const std::string& second,
                                                 const std::string& third) = 0;
    virtual std::string SetValueAsync(unsigned long id, const OKAVALUE& value, bool flag) = 0;
    virtual std::string GetValueAsync(unsigned long id, bool flag) = 0;
    virtual std::string RequestAsync(const std::string& request) = 0;
    virtual std::string SetConfigurationAsync(const std::string& configuration) = 0;
    virtual bool SetConfiguration(unsigned long id, const Lumo::IDeviceStackClient::PropertyMap& properties,
                                  bool flag) = 0;
    virtual bool GetDeviceConfig(std::string& configuration, bool flag) = 0;
    virtual bool SetDeviceConfig(const std::map<std::string, std::string>& configuration) = 0;
    virtual bool EnableNativeFormat() = 0;
    virtual void EnableInternalValueFormat() = 0;
    virtual void EnableDefaultValueFormat() = 0;
};

// Forwards to the client; its own logic is only the text form of written values.
class RemoteRequestMessengerDeviceStack : public RequestMessengerDeviceStack
{
public:
    // The client is not owned and must outlive the messenger.
    explicit RemoteRequestMessengerDeviceStack(Lumo::IDeviceStackClient& client);

    void SetResponseHandler(Lumo::IDeviceStackClient::IResponseHandler* handler) override;
    std::string RegisterApplicationAsync(const std::string& first, const std::string& second,
                                         const std::string& third) override;
    std::string SetValueAsync(unsigned long id, const OKAVALUE& value, bool flag) override;
    std::string GetValueAsync(unsigned long id, bool flag) override;
    std::string RequestAsync(const std::string& request) override;
    std::string SetConfigurationAsync(const std::string& configuration) override;
    bool SetConfiguration(unsigned long id, const Lumo::IDeviceStackClient::PropertyMap& properties,
                          bool flag) override;
    bool GetDeviceConfig(std::string& configuration, bool flag) override;
    bool SetDeviceConfig(const std::map<std::string, std::string>& configuration) override;
    // Switches the client to "Native"; leaves the internal-format flag as it is.
    bool EnableNativeFormat() override;
    void EnableInternalValueFormat() override;
    void EnableDefaultValueFormat() override;

private:
    std::string SerializeValue(const OKAVALUE& value) const;

    Lumo::IDeviceStackClient& client;
    // A request thread may write a value while another thread switches the format.
    std::atomic<bool> internalValueFormat;
};
} // namespace Okaro
