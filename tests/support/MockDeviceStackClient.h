#pragma once
// GoogleMock double of the device-stack client.
#include <platform/DeviceStackClient.h>

#include <gmock/gmock.h>

namespace TavTest
{
class MockDeviceStackClient : public Lumo::IDeviceStackClient
{
public:
    MOCK_METHOD(bool, SetInternalValueFormat, (bool enable), (override));
    MOCK_METHOD(bool, SetConfiguration, (unsigned long id, const PropertyMap& properties, bool flag), (override));
    MOCK_METHOD(bool, GetDeviceConfig, (std::string & configuration, bool flag), (override));
    MOCK_METHOD(bool, SetDeviceConfig, ((const std::map<std::string, std::string>& configuration)), (override));
    MOCK_METHOD(bool, SetValueFormat, (const std::string& formatName), (override));
    MOCK_METHOD(std::string, RequestAsync, (const std::string& request), (override));
    MOCK_METHOD(std::string, RegisterApplicationAsync,
                (const std::string& first, const std::string& second, const std::string& third), (override));
    MOCK_METHOD(std::string, SetConfigurationAsync, (const std::string& configuration), (override));
    MOCK_METHOD(std::string, GetValueAsync, (unsigned long id, bool flag), (override));
    MOCK_METHOD(std::string, SetValueAsync,
                (unsigned long id, const std::string& serializedValue, bool flag, int reserved), (override));
    MOCK_METHOD(void, SetResponseHandler, (IResponseHandler * handler, int reserved), (override));
};
} // namespace TavTest
