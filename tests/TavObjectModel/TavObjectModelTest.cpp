// The umbrella header comes first and alone: it must compile without any other include.
#include <TavObjectModel/TavObjectModel.h>

#include <gtest/gtest.h>

TEST(TavObjectModel, GivesTheLibraryAndThePlatform)
{
    Okaro::KnxValueConverter converter;
    EXPECT_TRUE(converter.Init());
    EXPECT_EQ(Okaro::KnxLdsMapping::GetDeviceObjModelId(), 1000u);
    EXPECT_STREQ(OKAVALUE::GetNameFromValueType(ivtFloat), "Float");
}
