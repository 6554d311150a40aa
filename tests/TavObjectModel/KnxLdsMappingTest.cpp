#include <TavObjectModel/KnxLdsMapping.h>

#include <boost/optional/optional_io.hpp>
#include <gtest/gtest.h>

#include <cstdint>

using Okaro::KnxLdsMapping;
using Okaro::LogicalDeviceId;
using Okaro::ParameterType;

namespace
{
const LogicalDeviceId kLd1(1);
const LogicalDeviceId kLd2(2);

boost::optional<unsigned long> Id(unsigned long value) { return value; }
const boost::none_t kNone = boost::none;

class KnxLdsMappingPerDevice : public ::testing::TestWithParam<int>
{
protected:
    LogicalDeviceId Ld() const { return LogicalDeviceId(GetParam()); }
    unsigned long Base() const { return static_cast<unsigned long>(GetParam()) * 100000ul; }
};
INSTANTIATE_TEST_SUITE_P(BothDevices, KnxLdsMappingPerDevice, ::testing::Values(1, 2));
} // namespace

// --- id makers

TEST(KnxLdsMappingIds, DeviceAndKnxDeviceShareId1000)
{
    EXPECT_EQ(KnxLdsMapping::GetDeviceObjModelId(), 1000ul);
    EXPECT_EQ(KnxLdsMapping::GetKnxDeviceObjModelId(), 1000ul);
}

TEST_P(KnxLdsMappingPerDevice, FixedObjectsOfTheLogicalDevice)
{
    EXPECT_EQ(KnxLdsMapping::GetLogicalKnxDeviceObjModelId(Ld()), Base());
    EXPECT_EQ(KnxLdsMapping::GetLdsKnxDeviceChannelObjModelId(Ld()), Base() + 10);
    EXPECT_EQ(KnxLdsMapping::GetAppHostAppControlChannelObjModelId(Ld()), Base() + 20);
    EXPECT_EQ(KnxLdsMapping::GetAppHostAppControlStateObjModelId(Ld()), Base() + 21);
    EXPECT_EQ(KnxLdsMapping::GetAppHostAppControlEventObjModelId(Ld()), Base() + 22);
    EXPECT_EQ(KnxLdsMapping::GetAppHostAppControlAliveObjModelId(Ld()), Base() + 23);
    EXPECT_EQ(KnxLdsMapping::GetAppHostAppControlAppDebugObjModelId(Ld()), Base() + 24);
}

TEST_P(KnxLdsMappingPerDevice, CoChannelIdsAcrossTheRange)
{
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(0, Ld()), Id(Base()));
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(1, Ld()), Id(Base() + 100));
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(520, Ld()), Id(Base() + 52000));
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(521, Ld()), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(65535, Ld()), kNone);
}

TEST(KnxLdsMappingIds, CoZeroIsTheLogicalDeviceItselfAndHasNoValue)
{
    for (const LogicalDeviceId& ld : {kLd1, kLd2})
    {
        const boost::optional<unsigned long> channel = KnxLdsMapping::GetCoChannelObjModelId(0, ld);
        ASSERT_EQ(channel, Id(static_cast<unsigned long>(ld.Get()) * 100000ul));
        EXPECT_EQ(*channel, KnxLdsMapping::GetLogicalKnxDeviceObjModelId(ld));
        EXPECT_FALSE(KnxLdsMapping::IsCoChannel(*channel));
        EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(0, ld), kNone);
    }
}

TEST(KnxLdsMappingIds, LastCoOfDevice2IsACoChannelAndOnePastIsRefused)
{
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(520, kLd2), Id(252000));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(252000));
    EXPECT_EQ(KnxLdsMapping::GetCoChannelObjModelId(521, kLd2), kNone);
}

TEST_P(KnxLdsMappingPerDevice, CoValueIdsFromCoNumber)
{
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(0, Ld()), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(1, Ld()), Id(Base() + 101));
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(520, Ld()), Id(Base() + 52001));
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(521, Ld()), kNone);
}

TEST(KnxLdsMappingIds, CoValueIdFromChannelIdNeedsACoChannel)
{
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(100100ul), Id(100101));
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(152000ul), Id(152001));
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(200100ul), Id(200101));
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(252000ul), Id(252001));
    // The logical device part is not checked.
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(300100ul), Id(300101));

    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(0ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(1000ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(100000ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(100101ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(100150ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(152100ul), kNone);
}

TEST_P(KnxLdsMappingPerDevice, ParameterChannelIdsAcrossTheRangeForEveryType)
{
    for (std::uint32_t type = 0; type <= 2; ++type)
    {
        const ParameterType t = static_cast<ParameterType>(type);
        const unsigned long typeBase = Base() + 60000 + 1000 * type;
        EXPECT_EQ(KnxLdsMapping::GetParameterChannelObjModelId(0, Ld(), t), Id(typeBase)) << type;
        EXPECT_EQ(KnxLdsMapping::GetParameterChannelObjModelId(1, Ld(), t), Id(typeBase + 10)) << type;
        EXPECT_EQ(KnxLdsMapping::GetParameterChannelObjModelId(50, Ld(), t), Id(typeBase + 500)) << type;
        EXPECT_EQ(KnxLdsMapping::GetParameterChannelObjModelId(51, Ld(), t), kNone) << type;
    }
}

TEST(KnxLdsMappingIds, ParameterChannelZeroIsRefusedByThePredicate)
{
    for (const LogicalDeviceId& ld : {kLd1, kLd2})
    {
        for (std::uint32_t type = 0; type <= 2; ++type)
        {
            const boost::optional<unsigned long> channel =
                KnxLdsMapping::GetParameterChannelObjModelId(0, ld, static_cast<ParameterType>(type));
            ASSERT_EQ(channel, Id(static_cast<unsigned long>(ld.Get()) * 100000ul + 60000 + 1000 * type));
            EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(*channel)) << *channel;
            EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(*channel), kNone);
        }
    }
}

TEST(KnxLdsMappingIds, ParameterTypeIsNotRangeChecked)
{
    const auto fourthType = static_cast<ParameterType>(3);
    EXPECT_EQ(KnxLdsMapping::GetParameterChannelObjModelId(1, kLd1, fourthType), Id(163010));
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(1, kLd1, fourthType), Id(163011));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(163010));
}

TEST(KnxLdsMappingIds, ParameterTypesAreNumbered0To2)
{
    EXPECT_EQ(static_cast<int>(Okaro::ptIpParameter), 0);
    EXPECT_EQ(static_cast<int>(Okaro::ptNumberParameter), 1);
    EXPECT_EQ(static_cast<int>(Okaro::ptTextParameter), 2);
}

TEST_P(KnxLdsMappingPerDevice, ParameterValueIdsFromNumber)
{
    for (std::uint32_t type = 0; type <= 2; ++type)
    {
        const ParameterType t = static_cast<ParameterType>(type);
        const unsigned long typeBase = Base() + 60000 + 1000 * type;
        // n 0 is not checked against the channel predicate: it still gets a value id.
        EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(0, Ld(), t), Id(typeBase + 1)) << type;
        EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(1, Ld(), t), Id(typeBase + 11)) << type;
        EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(50, Ld(), t), Id(typeBase + 501)) << type;
        EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(51, Ld(), t), kNone) << type;
    }
}

TEST_P(KnxLdsMappingPerDevice, IpNumberAndTextParameterValueIds)
{
    EXPECT_EQ(KnxLdsMapping::GetIpParameterValueObjModelId(0, Ld()), Id(Base() + 60001));
    EXPECT_EQ(KnxLdsMapping::GetIpParameterValueObjModelId(1, Ld()), Id(Base() + 60011));
    EXPECT_EQ(KnxLdsMapping::GetIpParameterValueObjModelId(50, Ld()), Id(Base() + 60501));
    EXPECT_EQ(KnxLdsMapping::GetIpParameterValueObjModelId(51, Ld()), kNone);

    EXPECT_EQ(KnxLdsMapping::GetNumberParameterValueObjModelId(0, Ld()), Id(Base() + 61001));
    EXPECT_EQ(KnxLdsMapping::GetNumberParameterValueObjModelId(1, Ld()), Id(Base() + 61011));
    EXPECT_EQ(KnxLdsMapping::GetNumberParameterValueObjModelId(50, Ld()), Id(Base() + 61501));
    EXPECT_EQ(KnxLdsMapping::GetNumberParameterValueObjModelId(51, Ld()), kNone);

    EXPECT_EQ(KnxLdsMapping::GetTextParameterValueObjModelId(0, Ld()), Id(Base() + 62001));
    EXPECT_EQ(KnxLdsMapping::GetTextParameterValueObjModelId(1, Ld()), Id(Base() + 62011));
    EXPECT_EQ(KnxLdsMapping::GetTextParameterValueObjModelId(50, Ld()), Id(Base() + 62501));
    EXPECT_EQ(KnxLdsMapping::GetTextParameterValueObjModelId(51, Ld()), kNone);
}

TEST(KnxLdsMappingIds, ParameterValueIdFromChannelIdNeedsAParameterChannel)
{
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(160010ul), Id(160011));
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(160500ul), Id(160501));
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(161010ul), Id(161011));
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(262500ul), Id(262501));
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(360010ul), Id(360011));

    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(0ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(1000ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(160000ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(160011ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(160510ul), kNone);
    EXPECT_EQ(KnxLdsMapping::GetParameterValueObjModelId(163010ul), kNone);
}

// --- predicates

TEST(KnxLdsMappingPredicates, CoChannelEdges)
{
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(100100));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(100150));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(99900));
}

TEST(KnxLdsMappingPredicates, CoChannelBoundaries)
{
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(0));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(100));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(1000));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(99999));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(100000));  // r 0 wraps below 100 in the unsigned test
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(100010));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(100099));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(100101));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(100200));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(152000));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(152001));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(152100));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(160010));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(199900));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(200000));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(200100));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(252000));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(252100));
    // The logical device part is not checked.
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(300000));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(300100));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(352000));
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(352100));
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(4294952000ul));   // highest 32-bit id with a fitting offset
    EXPECT_FALSE(KnxLdsMapping::IsCoChannel(4294967200ul));  // offset 67200
}

TEST(KnxLdsMappingPredicates, CoValueBoundaries)
{
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(0));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(1));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(1000));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(1001));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(100001));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(100100));
    EXPECT_TRUE(KnxLdsMapping::IsCoValue(100101));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(100102));
    EXPECT_TRUE(KnxLdsMapping::IsCoValue(152001));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(152101));
    EXPECT_TRUE(KnxLdsMapping::IsCoValue(200101));
    EXPECT_TRUE(KnxLdsMapping::IsCoValue(252001));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(252101));
    EXPECT_FALSE(KnxLdsMapping::IsCoValue(300001));
    EXPECT_TRUE(KnxLdsMapping::IsCoValue(300101));
}

TEST(KnxLdsMappingPredicates, ParameterChannelEdges)
{
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(160500));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(160510));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(161010));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(163010));
}

TEST(KnxLdsMappingPredicates, ParameterChannelBoundaries)
{
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(0));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(1000));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(60010));  // no logical device
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(99999));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(100000));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(100010));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(159990));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(160000));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(160005));  // s below 10 wraps to a huge type
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(160010));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(160011));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(160015));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(161000));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(161500));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(161510));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(162000));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(162010));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(162500));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(162510));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(199990));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(260010));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(262500));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(262510));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(300000));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(360010));
    EXPECT_FALSE(KnxLdsMapping::IsParameterChannel(100100));  // a CO channel
}

TEST_P(KnxLdsMappingPerDevice, AppControlObjectPredicatesMatchOnlyTheirOwnId)
{
    const LogicalDeviceId other(3 - GetParam());
    const unsigned long otherBase = static_cast<unsigned long>(other.Get()) * 100000ul;

    EXPECT_TRUE(KnxLdsMapping::IsAppHostAppControlState(Base() + 21, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlState(Base() + 20, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlState(Base() + 22, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlState(otherBase + 21, Ld()));

    EXPECT_TRUE(KnxLdsMapping::IsAppHostAppControlEvent(Base() + 22, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlEvent(Base() + 21, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlEvent(Base() + 23, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlEvent(otherBase + 22, Ld()));

    EXPECT_TRUE(KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(Base() + 23, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(Base() + 22, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(Base() + 24, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(otherBase + 23, Ld()));

    EXPECT_TRUE(KnxLdsMapping::IsAppHostAppControlAppDebug(Base() + 24, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAppDebug(Base() + 23, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAppDebug(Base() + 25, Ld()));
    EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAppDebug(otherBase + 24, Ld()));

    for (unsigned long id : {0ul, 1000ul, 21ul, 24ul})
    {
        EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlState(id, Ld())) << id;
        EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlEvent(id, Ld())) << id;
        EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAliveHeartbeat(id, Ld())) << id;
        EXPECT_FALSE(KnxLdsMapping::IsAppHostAppControlAppDebug(id, Ld())) << id;
    }
}

TEST(KnxLdsMappingPredicates, IdsAreReadAsTheir32BitValue)
{
    if (sizeof(unsigned long) <= 4)
    {
        GTEST_SKIP() << "unsigned long has 32 bits here";
    }
    // On the 32-bit controller these ids cannot be formed; a 64-bit host must agree with it
    // on the low 32 bits rather than reading a different offset out of the wide number.
    const unsigned long above32Bits = static_cast<unsigned long>(UINT32_MAX) + 1ul;
    EXPECT_TRUE(KnxLdsMapping::IsCoChannel(above32Bits + 100100ul));
    EXPECT_TRUE(KnxLdsMapping::IsCoValue(above32Bits + 100101ul));
    EXPECT_TRUE(KnxLdsMapping::IsParameterChannel(above32Bits + 160010ul));
    EXPECT_EQ(KnxLdsMapping::GetCoValueObjModelId(above32Bits + 100100ul), Id(100101));
    ASSERT_TRUE(KnxLdsMapping::GetLogicalDeviceIdFromObject(above32Bits + 200000ul));
    EXPECT_EQ(KnxLdsMapping::GetLogicalDeviceIdFromObject(above32Bits + 200000ul)->Get(), 2);
}

// --- extractors

TEST(KnxLdsMappingExtractors, CoNumberFromCoValueIdsOfTheGivenDevice)
{
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(100101, kLd1), boost::optional<unsigned short>(1));
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(152001, kLd1), boost::optional<unsigned short>(520));
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(200101, kLd2), boost::optional<unsigned short>(1));
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(252001, kLd2), boost::optional<unsigned short>(520));
}

TEST(KnxLdsMappingExtractors, CoNumberUsesTheGivenDeviceNotTheIdsOwn)
{
    // Device 2's id read with ld 1 still gives the right number ...
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(200101, kLd1), boost::optional<unsigned short>(1));
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(252001, kLd1), boost::optional<unsigned short>(520));
    // ... device 1's id read with ld 2 gives 1000 + n.
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(100101, kLd2), boost::optional<unsigned short>(1001));
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(152001, kLd2), boost::optional<unsigned short>(1520));
    // Ids of 300000 and above pass the channel test and are read the same way.
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(300101, kLd1), boost::optional<unsigned short>(1));
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(300101, kLd2), boost::optional<unsigned short>(1001));
}

TEST(KnxLdsMappingExtractors, CoNumberOnlyFromCoValueIds)
{
    const boost::optional<unsigned short> none;
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(0, kLd1), none);
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(1, kLd1), none);
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(1000, kLd1), none);
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(1001, kLd1), none);
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(100001, kLd1), none);  // CO 0
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(100100, kLd1), none);  // the channel
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(100102, kLd1), none);
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(152101, kLd1), none);  // CO 521
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(160011, kLd1), none);  // a parameter value
    EXPECT_EQ(KnxLdsMapping::GetCoNumberFromObjModelId(200001, kLd2), none);
}

TEST(KnxLdsMappingExtractors, LogicalDeviceIdFromObjectEdges)
{
    EXPECT_FALSE(KnxLdsMapping::GetLogicalDeviceIdFromObject(1000));
    ASSERT_TRUE(KnxLdsMapping::GetLogicalDeviceIdFromObject(299999));
    EXPECT_EQ(KnxLdsMapping::GetLogicalDeviceIdFromObject(299999)->Get(), 2);
    EXPECT_FALSE(KnxLdsMapping::GetLogicalDeviceIdFromObject(300000));
}

TEST(KnxLdsMappingExtractors, LogicalDeviceIdFromObjectBoundaries)
{
    EXPECT_FALSE(KnxLdsMapping::GetLogicalDeviceIdFromObject(0));
    EXPECT_FALSE(KnxLdsMapping::GetLogicalDeviceIdFromObject(99999));
    ASSERT_TRUE(KnxLdsMapping::GetLogicalDeviceIdFromObject(100000));
    EXPECT_EQ(KnxLdsMapping::GetLogicalDeviceIdFromObject(100000)->Get(), 1);
    ASSERT_TRUE(KnxLdsMapping::GetLogicalDeviceIdFromObject(199999));
    EXPECT_EQ(KnxLdsMapping::GetLogicalDeviceIdFromObject(199999)->Get(), 1);
    ASSERT_TRUE(KnxLdsMapping::GetLogicalDeviceIdFromObject(200000));
    EXPECT_EQ(KnxLdsMapping::GetLogicalDeviceIdFromObject(200000)->Get(), 2);
    EXPECT_FALSE(KnxLdsMapping::GetLogicalDeviceIdFromObject(UINT32_MAX));
}
