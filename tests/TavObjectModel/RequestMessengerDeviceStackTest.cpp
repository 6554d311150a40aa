#include <TavObjectModel/RequestMessengerDeviceStack.h>

#include "support/LogCapture.h"
#include "support/MockDeviceStackClient.h"
#include "support/Values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

using ::testing::_;
using ::testing::DoAll;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::IsEmpty;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::StrictMock;

namespace
{
std::string Serialized(const OKAVALUE& value, bool internal)
{
    oka_string text;
    value.Serialize(text, internal);
    return std::string(text.c_str(), text.length());
}

const double kNan = std::numeric_limits<double>::quiet_NaN();

class RemoteRequestMessengerDeviceStack : public ::testing::Test
{
protected:
    StrictMock<TavTest::MockDeviceStackClient> client;
    Okaro::RemoteRequestMessengerDeviceStack messenger{client};
};

TEST_F(RemoteRequestMessengerDeviceStack, NanFloatIsWrittenAsNanInDefaultFormat)
{
    TavTest::LogCapture capture;
    EXPECT_CALL(client, SetValueAsync(7ul, "nan", true, 0)).WillOnce(Return("r1"));
    EXPECT_EQ("r1", messenger.SetValueAsync(7, TavTest::FloatValue(kNan, ivtFloat), true));
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(RemoteRequestMessengerDeviceStack, NanFloatIsWrittenWithFloatTagInInternalFormat)
{
    TavTest::LogCapture capture;
    {
        InSequence order;
        EXPECT_CALL(client, SetInternalValueFormat(true)).WillOnce(Return(true));
        EXPECT_CALL(client, SetValueAsync(8ul, "3.7:nan", false, 0)).WillOnce(Return("r2"));
    }
    messenger.EnableInternalValueFormat();
    EXPECT_EQ("r2", messenger.SetValueAsync(8, TavTest::FloatValue(kNan, ivtFloat), false));
    EXPECT_THAT(capture.Lines(),
                ElementsAre(TavTest::Trace("EnableInternalValueFormat - Internal value format now enabled.")));
    EXPECT_EQ("RequestMessengerDeviceStack.cpp", capture.Lines().at(0).file);
}

TEST_F(RemoteRequestMessengerDeviceStack, NanInAnotherTypeGoesThroughTheSerializer)
{
    const OKAVALUE floatFamilyNan = TavTest::FloatValue(kNan, static_cast<OkaValueType>(1005));
    EXPECT_CALL(client, SetValueAsync(1ul, Serialized(floatFamilyNan, false), false, 0)).WillOnce(Return("a"));
    EXPECT_CALL(client, SetInternalValueFormat(true)).WillOnce(Return(true));
    EXPECT_CALL(client, SetValueAsync(2ul, Serialized(floatFamilyNan, true), false, 0)).WillOnce(Return("b"));

    EXPECT_EQ("a", messenger.SetValueAsync(1, floatFamilyNan, false));
    messenger.EnableInternalValueFormat();
    EXPECT_EQ("b", messenger.SetValueAsync(2, floatFamilyNan, false));
    EXPECT_NE("nan", Serialized(floatFamilyNan, false));
    EXPECT_NE("3.7:nan", Serialized(floatFamilyNan, true));
}

TEST_F(RemoteRequestMessengerDeviceStack, OrdinaryValuesAreSerializedInTheCurrentFormat)
{
    const OKAVALUE real = TavTest::FloatValue(21.5, ivtFloat);
    ASSERT_NE(Serialized(real, false), Serialized(real, true));
    {
        InSequence order;
        EXPECT_CALL(client, SetValueAsync(3ul, Serialized(real, false), true, 0)).WillOnce(Return("1"));
        EXPECT_CALL(client, SetInternalValueFormat(true)).WillOnce(Return(true));
        EXPECT_CALL(client, SetValueAsync(3ul, Serialized(real, true), true, 0)).WillOnce(Return("2"));
        EXPECT_CALL(client, SetInternalValueFormat(false)).WillOnce(Return(true));
        EXPECT_CALL(client, SetValueAsync(3ul, Serialized(real, false), true, 0)).WillOnce(Return("3"));
    }
    EXPECT_EQ("1", messenger.SetValueAsync(3, real, true));
    messenger.EnableInternalValueFormat();
    EXPECT_EQ("2", messenger.SetValueAsync(3, real, true));
    messenger.EnableDefaultValueFormat();
    EXPECT_EQ("3", messenger.SetValueAsync(3, real, true));
}

TEST_F(RemoteRequestMessengerDeviceStack, NativeFormatAfterInternalFormatKeepsTheInternalFlag)
{
    {
        InSequence order;
        EXPECT_CALL(client, SetInternalValueFormat(true)).WillOnce(Return(true));
        EXPECT_CALL(client, SetValueFormat("Native")).WillOnce(Return(false));
        EXPECT_CALL(client, SetValueAsync(4ul, "3.7:nan", false, 0)).WillOnce(Return("9"));
    }
    messenger.EnableInternalValueFormat();
    EXPECT_FALSE(messenger.EnableNativeFormat());
    EXPECT_EQ("9", messenger.SetValueAsync(4, TavTest::FloatValue(kNan, ivtFloat), false));
}

TEST_F(RemoteRequestMessengerDeviceStack, NativeFormatPassesTheClientResultThrough)
{
    TavTest::LogCapture capture;
    EXPECT_CALL(client, SetValueFormat("Native")).WillOnce(Return(true));
    EXPECT_TRUE(messenger.EnableNativeFormat());
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST_F(RemoteRequestMessengerDeviceStack, DefaultFormatSwitchesBackWithoutLogging)
{
    {
        InSequence order;
        EXPECT_CALL(client, SetInternalValueFormat(true)).WillOnce(Return(true));
        EXPECT_CALL(client, SetInternalValueFormat(false)).WillOnce(Return(false));
        EXPECT_CALL(client, SetValueAsync(5ul, "nan", true, 0)).WillOnce(Return("x"));
    }
    messenger.EnableInternalValueFormat();
    TavTest::LogCapture capture;
    messenger.EnableDefaultValueFormat();
    EXPECT_THAT(capture.Lines(), IsEmpty());
    EXPECT_EQ("x", messenger.SetValueAsync(5, TavTest::FloatValue(kNan, ivtFloat), true));
}

class NullHandler : public Lumo::IDeviceStackClient::IResponseHandler
{
public:
    void OnResponse(Lumo::IDeviceStackClient&, const std::string&, const std::string&, const Lumo::ResponseError&) override {}
    void OnRegisterApplication(Lumo::IDeviceStackClient&, const std::string&, const Lumo::ResponseError&) override {}
    void OnGetConfiguration(Lumo::IDeviceStackClient&, const std::string&, const std::string&,
                            const Lumo::ResponseError&) override {}
    void OnSetConfiguration(Lumo::IDeviceStackClient&, const std::string&, const Lumo::ResponseError&) override {}
    void OnGetValue(Lumo::IDeviceStackClient&, const std::string&, unsigned long, const std::string&,
                    const std::string&, const Lumo::ResponseError&) override {}
    void OnSetValue(Lumo::IDeviceStackClient&, const std::string&, unsigned long, const std::string&,
                    const std::string&, const Lumo::ResponseError&) override {}
};

TEST_F(RemoteRequestMessengerDeviceStack, ResponseHandlerIsForwardedIncludingNull)
{
    NullHandler handler;
    {
        InSequence order;
        EXPECT_CALL(client, SetResponseHandler(&handler, 0));
        EXPECT_CALL(client, SetResponseHandler(nullptr, 0));
    }
    messenger.SetResponseHandler(&handler);
    messenger.SetResponseHandler(nullptr);
}

TEST_F(RemoteRequestMessengerDeviceStack, RequestsAreForwardedUnchangedWithTheirResults)
{
    TavTest::LogCapture capture;
    EXPECT_CALL(client, RegisterApplicationAsync("app", "path", "key")).WillOnce(Return("10"));
    EXPECT_CALL(client, GetValueAsync(42ul, true)).WillOnce(Return("11"));
    EXPECT_CALL(client, RequestAsync("<raw/>")).WillOnce(Return(""));
    EXPECT_CALL(client, SetConfigurationAsync("<config/>")).WillOnce(Return("12"));
    const Lumo::IDeviceStackClient::PropertyMap properties{{Lumo::IDeviceStackClient::PropertyType::Unit, "K"}};
    EXPECT_CALL(client, SetConfiguration(43ul, properties, true)).WillOnce(Return(false));
    EXPECT_CALL(client, GetDeviceConfig(_, false)).WillOnce(DoAll(SetArgReferee<0>("a=b"), Return(true)));
    const std::map<std::string, std::string> deviceConfig{{"k", "v"}};
    EXPECT_CALL(client, SetDeviceConfig(deviceConfig)).WillOnce(Return(false));

    EXPECT_EQ("10", messenger.RegisterApplicationAsync("app", "path", "key"));
    EXPECT_EQ("11", messenger.GetValueAsync(42, true));
    EXPECT_EQ("", messenger.RequestAsync("<raw/>"));
    EXPECT_EQ("12", messenger.SetConfigurationAsync("<config/>"));
    EXPECT_FALSE(messenger.SetConfiguration(43, properties, true));
    std::string configuration;
    EXPECT_TRUE(messenger.GetDeviceConfig(configuration, false));
    EXPECT_EQ("a=b", configuration);
    EXPECT_FALSE(messenger.SetDeviceConfig(deviceConfig));
    EXPECT_THAT(capture.Lines(), IsEmpty());
}

TEST(RequestMessengerDeviceStack, IsDeletedThroughTheBase)
{
    StrictMock<TavTest::MockDeviceStackClient> client;
    Okaro::RequestMessengerDeviceStack* messenger = new Okaro::RemoteRequestMessengerDeviceStack(client);
    delete messenger;  // the sanitizer builds catch a missing virtual destructor
}
} // namespace
