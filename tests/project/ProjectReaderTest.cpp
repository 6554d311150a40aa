// Reading the fixture installation as each ETS generation writes it.
#include "KnxprojWriter.h"
#include "ProjectAssertions.h"

#include <project/ProjectError.h>
#include <project/ProjectReader.h>
#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <tuple>

using TavProject::GroupAddressStyle;
using TavProject::ProjectErrorKind;
using TavProject::ReadOptions;

namespace
{
const char* const kPassword = "Geheim-ä1";
const char* const kMissingProgramWarning =
    "ReadProject - device 1.1.2: application program M-0083_A-0099-10-AAAA is missing: its objects come from "
    "the instance alone";

using Case = std::tuple<unsigned, bool, GroupAddressStyle>;

class ProjectReaderCase : public ::testing::TestWithParam<Case>
{
protected:
    TavTest::FixtureOptions Options() const
    {
        TavTest::FixtureOptions options;
        options.schema = std::get<0>(GetParam());
        options.password = std::get<1>(GetParam()) ? kPassword : "";
        options.style = std::get<2>(GetParam());
        return options;
    }
};

TEST_P(ProjectReaderCase, ReadsTheWholeModelWithOneWarningForTheMissingProgram)
{
    const TavTest::FixtureOptions options = Options();
    ReadOptions read;
    read.password = options.password;
    TavTest::LogCapture capture;
    const auto project = TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options), read);
    TavTest::ExpectSameProject(project, TavTest::ExpectedFixtureProject(options));
    EXPECT_EQ(capture.LinesAtOrAbove(log4cplus::WARN_LOG_LEVEL),
        std::vector<TavTest::LogLine>{TavTest::Warn(kMissingProgramWarning)});
}

std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return "Schema" + std::to_string(std::get<0>(info.param)) + (std::get<1>(info.param) ? "Protected" : "Open") +
           TavProject::GroupAddressStyleName(std::get<2>(info.param));
}

INSTANTIATE_TEST_SUITE_P(EtsGenerations, ProjectReaderCase,
    ::testing::Combine(::testing::Values(11u, 14u, 20u, 21u, 22u, 23u), ::testing::Bool(),
        ::testing::Values(GroupAddressStyle::ThreeLevel, GroupAddressStyle::TwoLevel, GroupAddressStyle::Free)),
    CaseName);

TEST(ProjectReader, TakesLinksBelowSchema20AndConnectorsFromIt)
{
    // What an instance carries decides, not the schema number.
    for (const int useLinks : {0, 1})
    {
        for (const unsigned schema : {14u, 21u})
        {
            TavTest::FixtureOptions options;
            options.schema = schema;
            options.useLinks = useLinks;
            SCOPED_TRACE("schema " + std::to_string(schema) + (useLinks ? " with Links" : " with Connectors"));
            TavTest::ExpectSameProject(TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options)),
                TavTest::ExpectedFixtureProject(options));
        }
    }
}

TEST(ProjectReader, ReadsFromAFile)
{
    TavTest::FixtureOptions options;
    options.schema = 21;
    options.password = "test";
    const std::string path = ::testing::TempDir() + "ProjectReaderTest.knxproj";
    TavTest::WriteWholeFile(path, TavTest::MakeFixtureArchive(options));
    ReadOptions read;
    read.password = "test";
    TavTest::ExpectSameProject(TavProject::ReadProjectFile(path, read), TavTest::ExpectedFixtureProject(options));
    std::remove(path.c_str());
}

TEST(ProjectReader, IgnoresAPasswordForAnUnprotectedProject)
{
    TavTest::FixtureOptions options;
    ReadOptions read;
    read.password = "whatever";
    TavTest::ExpectSameProject(TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options), read),
        TavTest::ExpectedFixtureProject(options));
}

TEST(ProjectReader, RefusesAProtectedProjectWithoutPassword)
{
    for (const unsigned schema : {14u, 20u, 21u, 23u})
    {
        TavTest::FixtureOptions options;
        options.schema = schema;
        options.password = kPassword;
        try
        {
            TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options));
            ADD_FAILURE() << "schema " << schema << " read without password";
        }
        catch (const TavProject::ProjectError& error)
        {
            EXPECT_EQ(error.Kind(), ProjectErrorKind::PasswordRequired);
            EXPECT_STREQ(error.what(),
                "project is password-protected: give --password-file or TAVKNX_PROJECT_PASSWORD");
        }
    }
}

TEST(ProjectReader, RefusesAWrongPassword)
{
    for (const unsigned schema : {11u, 20u, 21u, 22u})
    {
        TavTest::FixtureOptions options;
        options.schema = schema;
        options.password = kPassword;
        const std::string archive = TavTest::MakeFixtureArchive(options);
        for (const char* wrong : {"geheim-ä1", "x", "Geheim-ä12"})
        {
            ReadOptions read;
            read.password = wrong;
            try
            {
                TavProject::ReadProjectArchive(archive, read);
                ADD_FAILURE() << "schema " << schema << " opened with " << wrong;
            }
            catch (const TavProject::ProjectError& error)
            {
                EXPECT_EQ(error.Kind(), ProjectErrorKind::WrongPassword) << error.what();
                EXPECT_STREQ(error.what(), "wrong project password");
            }
        }
    }
}
} // namespace
