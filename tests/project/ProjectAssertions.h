#pragma once
// Field-by-field comparison of two models, so a failure names the field that differs.
#include <project/ProjectModel.h>

#include <boost/optional/optional_io.hpp>
#include <gtest/gtest.h>

#include <ostream>

namespace TavProject
{
inline std::ostream& operator<<(std::ostream& out, const Dpt& dpt)
{
    out << dpt.main << '.';
    if (dpt.sub)
        out << *dpt.sub;
    else
        out << "none";
    return out;
}
} // namespace TavProject

namespace TavTest
{
inline void ExpectSameProject(const TavProject::Project& actual, const TavProject::Project& expected)
{
    EXPECT_EQ(actual.info.projectId, expected.info.projectId);
    EXPECT_EQ(actual.info.name, expected.info.name);
    EXPECT_EQ(actual.info.schemaVersion, expected.info.schemaVersion);
    EXPECT_EQ(actual.info.toolVersion, expected.info.toolVersion);
    EXPECT_EQ(actual.info.groupAddressStyle, expected.info.groupAddressStyle);
    EXPECT_EQ(actual.info.lastModified, expected.info.lastModified);
    ASSERT_EQ(actual.groupAddresses.size(), expected.groupAddresses.size());
    for (std::size_t i = 0; i < expected.groupAddresses.size(); ++i)
    {
        SCOPED_TRACE("group address " + expected.groupAddresses[i].address);
        const auto& a = actual.groupAddresses[i];
        const auto& e = expected.groupAddresses[i];
        EXPECT_EQ(a.raw, e.raw);
        EXPECT_EQ(a.address, e.address);
        EXPECT_EQ(a.name, e.name);
        EXPECT_EQ(a.description, e.description);
        EXPECT_EQ(a.dpt, e.dpt);
        EXPECT_EQ(a.dataSecure, e.dataSecure);
    }
    ASSERT_EQ(actual.devices.size(), expected.devices.size());
    for (std::size_t i = 0; i < expected.devices.size(); ++i)
    {
        SCOPED_TRACE("device " + expected.devices[i].address);
        const auto& a = actual.devices[i];
        const auto& e = expected.devices[i];
        EXPECT_EQ(a.area, e.area);
        EXPECT_EQ(a.line, e.line);
        EXPECT_EQ(a.device, e.device);
        EXPECT_EQ(a.address, e.address);
        EXPECT_EQ(a.name, e.name);
        EXPECT_EQ(a.orderNumber, e.orderNumber);
        EXPECT_EQ(a.manufacturer, e.manufacturer);
        ASSERT_EQ(a.communicationObjects.size(), e.communicationObjects.size());
        for (std::size_t k = 0; k < e.communicationObjects.size(); ++k)
        {
            SCOPED_TRACE("object " + std::to_string(e.communicationObjects[k].number));
            const auto& ao = a.communicationObjects[k];
            const auto& eo = e.communicationObjects[k];
            EXPECT_EQ(ao.number, eo.number);
            EXPECT_EQ(ao.name, eo.name);
            EXPECT_EQ(ao.function, eo.function);
            EXPECT_EQ(ao.dpt, eo.dpt);
            EXPECT_EQ(TavProject::FlagsText(ao.flags), TavProject::FlagsText(eo.flags));
            EXPECT_EQ(ao.groupAddresses, eo.groupAddresses);
            EXPECT_EQ(ao.groupAddressesRaw, eo.groupAddressesRaw);
        }
    }
}
} // namespace TavTest
