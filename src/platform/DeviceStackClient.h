#pragma once
// The controller's device-stack client: the service that owns the object model and its
// values, reached through asynchronous requests whose answers arrive on a callback.
#include <map>
#include <string>

namespace Lumo
{
// The error object that comes with every answer; code 0 means success.
class ResponseError
{
public:
    ResponseError(int code = 0, std::string firstText = std::string(), std::string secondText = std::string(),
                  std::string message = std::string());
    virtual ~ResponseError() = default;

    virtual int GetCode() const;
    virtual const std::string& GetFirstText() const;
    virtual const std::string& GetSecondText() const;
    virtual std::string GetMessage() const;

private:
    int code_;
    std::string firstText_;
    std::string secondText_;
    std::string message_;
};

class IDeviceStackClient
{
public:
    // Kinds of object-model property that a configuration may set.
    enum class PropertyType : int
    {
        Name = 0,
        Description = 1,
        Unit = 2,
        Minimum = 3,
        Maximum = 4,
        DefaultValue = 5,
        Access = 6,
    };
    using Property = std::string;
    using PropertyMap = std::map<PropertyType, Property>;

    // Receives the answers to the asynchronous requests, on the client's callback thread.
    class IResponseHandler
    {
    public:
        virtual void OnResponse(IDeviceStackClient& sender, const std::string& requestId,
                                const std::string& response, const ResponseError& error) = 0;
        virtual void OnRegisterApplication(IDeviceStackClient& sender, const std::string& requestId,
                                           const ResponseError& error) = 0;
        virtual void OnGetConfiguration(IDeviceStackClient& sender, const std::string& requestId,
                                        const std::string& configuration, const ResponseError& error) = 0;
        virtual void OnSetConfiguration(IDeviceStackClient& sender, const std::string& requestId,
                                        const ResponseError& error) = 0;
        virtual void OnGetValue(IDeviceStackClient& sender, const std::string& requestId, unsigned long id,
                                const std::string& urn, const std::string& value, const ResponseError& error) = 0;
        virtual void OnSetValue(IDeviceStackClient& sender, const std::string& requestId, unsigned long id,
                                const std::string& urn, const std::string& value, const ResponseError& error) = 0;
        virtual ~IResponseHandler() = default;
    };

    virtual ~IDeviceStackClient() = default;

    virtual bool SetInternalValueFormat(bool enable) = 0;
    virtual bool SetConfiguration(unsigned long id, const PropertyMap& properties, bool flag) = 0;
    virtual bool GetDeviceConfig(std::string& configuration, bool flag) = 0;
    virtual bool SetDeviceConfig(const std::map<std::string, std::string>& configuration) = 0;
    virtual bool SetValueFormat(const std::string& formatName) = 0;
    // The asynchronous requests return a request id, or an empty one when nothing was sent.
    virtual std::string RequestAsync(const std::string& request) = 0;
    virtual std::string RegisterApplicationAsync(const std::string& first, const std::string& second,
                                                 const std::string& third) = 0;
    virtual std::string SetConfigurationAsync(const std::string& configuration) = 0;
    virtual std::string GetValueAsync(unsigned long id, bool flag) = 0;
    virtual std::string SetValueAsync(unsigned long id, const std::string& serializedValue, bool flag,
                                      int reserved) = 0;
    // A null handler detaches.
    virtual void SetResponseHandler(IResponseHandler* handler, int reserved) = 0;
};
} // namespace Lumo
