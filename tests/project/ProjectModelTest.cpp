// Group address printing, DPT attributes, flags and the ETS6 zip password.
#include "ProjectAssertions.h"

#include <project/ProjectModel.h>
#include <project/ProjectPassword.h>

#include <gtest/gtest.h>

using TavProject::Dpt;
using TavProject::GroupAddressStyle;

namespace
{
TEST(FormatGroupAddress, PrintsEachStyle)
{
    EXPECT_EQ(TavProject::FormatGroupAddress(2048, GroupAddressStyle::ThreeLevel), "1/0/0");
    EXPECT_EQ(TavProject::FormatGroupAddress(2048, GroupAddressStyle::TwoLevel), "1/0");
    EXPECT_EQ(TavProject::FormatGroupAddress(2048, GroupAddressStyle::Free), "2048");
    EXPECT_EQ(TavProject::FormatGroupAddress(0xFFFF, GroupAddressStyle::ThreeLevel), "31/7/255");
    EXPECT_EQ(TavProject::FormatGroupAddress(0xFFFF, GroupAddressStyle::TwoLevel), "31/2047");
    EXPECT_EQ(TavProject::FormatGroupAddress(0, GroupAddressStyle::Free), "0");
}

TEST(ParseDatapointType, TakesTheFirstReadableType)
{
    EXPECT_EQ(TavProject::ParseDatapointType("DPST-9-1"), (Dpt{9, 1}));
    EXPECT_EQ(TavProject::ParseDatapointType("DPT-9"), (Dpt{9, boost::none}));
    EXPECT_EQ(TavProject::ParseDatapointType("DPST-1-1 DPST-1-2"), (Dpt{1, 1}));
    EXPECT_EQ(TavProject::ParseDatapointType("  DPST-x-1\tDPT-14 "), (Dpt{14, boost::none}));
    EXPECT_EQ(TavProject::ParseDatapointType("DPST-232-600"), (Dpt{232, 600}));
    for (const char* bad : {"", "DPST-9", "DPST-9-", "DPT-", "DPT-65536", "DPST-1-99999", "9.001", "DPT-1a"})
        EXPECT_EQ(TavProject::ParseDatapointType(bad), boost::none) << bad;
}

TEST(FlagsText, ListsTheSetFlagsInOrder)
{
    TavProject::ObjectFlags flags;
    EXPECT_EQ(TavProject::FlagsText(flags), "");
    flags.readOnInit = flags.transmit = flags.communication = true;
    EXPECT_EQ(TavProject::FlagsText(flags), "CTI");
    flags = TavProject::ObjectFlags{true, true, true, true, true, true};
    EXPECT_EQ(TavProject::FlagsText(flags), "CRWTUI");
}

TEST(DeriveEts6ZipPassword, GivesTheKnownVectors)
{
    EXPECT_EQ(TavProject::DeriveEts6ZipPassword("a"), "+FAwP4iI7/Pu4WB3HdIHbbFmteLahPAVkjJShKeozAA=");
    EXPECT_EQ(TavProject::DeriveEts6ZipPassword("test"), "2+IIP7ErCPPKxFjJXc59GFx2+w/1VTLHjJ2duc04CYQ=");
}

TEST(ZipPasswordFor, DerivesFromSchema21On)
{
    EXPECT_EQ(TavProject::ZipPasswordFor("a", 20), "a");
    EXPECT_EQ(TavProject::ZipPasswordFor("a", 11), "a");
    EXPECT_EQ(TavProject::ZipPasswordFor("a", 21), "+FAwP4iI7/Pu4WB3HdIHbbFmteLahPAVkjJShKeozAA=");
}
} // namespace
