// Broken and hostile archives: a clear error where nothing can be read, a WARN where something
// is skipped, never a crash.
#include "KnxprojWriter.h"
#include "ProjectAssertions.h"

#include <project/ProjectError.h>
#include <project/ProjectReader.h>
#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <cstdio>

using TavProject::ProjectError;
using TavProject::ProjectErrorKind;
using TavProject::ReadOptions;
using TavTest::FixtureDocuments;
using TavTest::FixtureOptions;

namespace
{
struct Failure
{
    ProjectErrorKind kind;
    std::string message;
};

Failure ReadFailure(const std::string& archive, const ReadOptions& options = ReadOptions())
{
    try
    {
        TavProject::ReadProjectArchive(archive, options);
    }
    catch (const ProjectError& error)
    {
        return Failure{error.Kind(), error.what()};
    }
    ADD_FAILURE() << "read without error";
    return Failure{ProjectErrorKind::Corrupt, ""};
}

std::vector<TavTest::LogLine> Warnings(const TavTest::LogCapture& capture)
{
    return capture.LinesAtOrAbove(log4cplus::WARN_LOG_LEVEL);
}

const TavTest::LogLine kMissingProgram = TavTest::Warn(
    "ReadProject - device 1.1.2: application program M-0083_A-0099-10-AAAA is missing: its objects come from "
    "the instance alone");

TEST(ProjectHostileInput, RefusesWhatIsNoZipArchive)
{
    for (const std::string& bytes : {std::string("hello, not a zip"), std::string(), std::string(4096, '\0'),
             std::string("PK\x03\x04", 4)})
    {
        const Failure failure = ReadFailure(bytes);
        EXPECT_EQ(failure.kind, ProjectErrorKind::NotAnArchive);
        EXPECT_EQ(failure.message, "archive: not a zip archive");
    }
}

TEST(ProjectHostileInput, NamesTheFileThatCannotBeOpened)
{
    const std::string missing = ::testing::TempDir() + "no-such-project.knxproj";
    try
    {
        TavProject::ReadProjectFile(missing);
        ADD_FAILURE() << "read a missing file";
    }
    catch (const ProjectError& error)
    {
        EXPECT_EQ(error.Kind(), ProjectErrorKind::CannotOpen);
        EXPECT_EQ(std::string(error.what()), missing + ": cannot read: No such file");
    }
    const std::string empty = ::testing::TempDir() + "empty.knxproj";
    TavTest::WriteWholeFile(empty, "");
    try
    {
        TavProject::ReadProjectFile(empty);
        ADD_FAILURE() << "read an empty file";
    }
    catch (const ProjectError& error)
    {
        EXPECT_EQ(error.Kind(), ProjectErrorKind::NotAnArchive);
        EXPECT_EQ(std::string(error.what()), empty + ": not a zip archive");
    }
    std::remove(empty.c_str());
}

TEST(ProjectHostileInput, RefusesATruncatedArchiveAtEveryLength)
{
    const std::string archive = TavTest::MakeFixtureArchive(FixtureOptions());
    for (std::size_t length = 0; length < archive.size(); length += 97)
    {
        const Failure failure = ReadFailure(archive.substr(0, length));
        EXPECT_TRUE(failure.kind == ProjectErrorKind::NotAnArchive || failure.kind == ProjectErrorKind::Corrupt)
            << length << ": " << failure.message;
        EXPECT_FALSE(failure.message.empty());
    }
}

TEST(ProjectHostileInput, RefusesADamagedEntry)
{
    const FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    TavTest::ZipWriter writer;
    writer.Add("knx_master.xml", documents.knxMaster);
    writer.Add("P-0242/project.xml", documents.projectXml);
    writer.Add("P-0242/0.xml", documents.installation, TavTest::Encryption::None, "", true);
    std::string archive = writer.Finish();
    const std::size_t at = archive.find("Kitchen actuator");
    ASSERT_NE(at, std::string::npos);
    archive[at] = 'k';
    const Failure failure = ReadFailure(archive);
    EXPECT_EQ(failure.kind, ProjectErrorKind::Corrupt);
    EXPECT_EQ(failure.message, "archive: P-0242/0.xml: corrupt entry: CRC error");
}

TEST(ProjectHostileInput, RefusesAZipBombWhileInflating)
{
    EXPECT_EQ(ReadOptions().maxInflatedBytes, 256u << 20);
    FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    // Two MiB of blanks inflate from a few kilobytes; the limit is set to one MiB.
    documents.installation += std::string(2u << 20, ' ');
    ReadOptions options;
    options.maxInflatedBytes = 1u << 20;
    const std::string archive = TavTest::MakeArchive(documents, FixtureOptions());
    ASSERT_LT(archive.size(), 64u << 10);
    const Failure failure = ReadFailure(archive, options);
    EXPECT_EQ(failure.kind, ProjectErrorKind::TooLarge);
    EXPECT_EQ(failure.message, "archive inflates to more than 1 MiB: refused as a zip bomb");
    // Many small entries count together: the application program pushes it over.
    documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    documents.program += std::string(900u << 10, ' ');
    documents.installation += std::string(200u << 10, ' ');
    const Failure together = ReadFailure(TavTest::MakeArchive(documents, FixtureOptions()), options);
    EXPECT_EQ(together.kind, ProjectErrorKind::TooLarge);
}

TEST(ProjectHostileInput, RefusesXmlNestedPastTheGuard)
{
    FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    documents.installation = deep;
    Failure failure = ReadFailure(TavTest::MakeArchive(documents, FixtureOptions()));
    EXPECT_EQ(failure.kind, ProjectErrorKind::TooDeep);
    EXPECT_EQ(failure.message, "0.xml: XML nested deeper than 128 levels");

    documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    documents.program.insert(documents.program.find("</Dynamic>"), deep);
    failure = ReadFailure(TavTest::MakeArchive(documents, FixtureOptions()));
    EXPECT_EQ(failure.kind, ProjectErrorKind::TooDeep);
    EXPECT_EQ(failure.message, "M-0083/M-0083_A-00B0-32-0DFC.xml: XML nested deeper than 128 levels");
}

TEST(ProjectHostileInput, RefusesXmlThatIsNotWellFormed)
{
    FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    documents.installation.resize(documents.installation.size() / 2);
    const Failure failure = ReadFailure(TavTest::MakeArchive(documents, FixtureOptions()));
    EXPECT_EQ(failure.kind, ProjectErrorKind::Corrupt);
    EXPECT_EQ(failure.message.rfind("0.xml: not well-formed XML: ", 0), 0u) << failure.message;
}

TEST(ProjectHostileInput, RefusesAnArchiveWithoutItsDocuments)
{
    const FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    TavTest::ZipWriter noInstallation;
    noInstallation.Add("knx_master.xml", documents.knxMaster);
    noInstallation.Add("P-0242/project.xml", documents.projectXml);
    Failure failure = ReadFailure(noInstallation.Finish());
    EXPECT_EQ(failure.kind, ProjectErrorKind::MissingEntry);
    EXPECT_EQ(failure.message, "archive: the archive holds no 0.xml for P-0242");

    TavTest::ZipWriter noMaster;
    noMaster.Add("P-0242/project.xml", documents.projectXml);
    noMaster.Add("P-0242/0.xml", documents.installation);
    failure = ReadFailure(noMaster.Finish());
    EXPECT_EQ(failure.kind, ProjectErrorKind::MissingEntry);
    EXPECT_EQ(failure.message, "archive: the archive holds no knx_master.xml");

    TavTest::ZipWriter noProject;
    noProject.Add("knx_master.xml", documents.knxMaster);
    noProject.Add("M-0083/Hardware.xml", documents.hardware);
    failure = ReadFailure(noProject.Finish());
    EXPECT_EQ(failure.kind, ProjectErrorKind::MissingEntry);
    EXPECT_EQ(failure.message, "archive: no project in the archive (no P-xxxx.signature, P-xxxx/ or P-xxxx.zip)");

    TavTest::ZipWriter noSchema;
    noSchema.Add("knx_master.xml", "<KNX xmlns=\"http://example.org/\" />");
    noSchema.Add("P-0242/0.xml", documents.installation);
    failure = ReadFailure(noSchema.Finish());
    EXPECT_EQ(failure.kind, ProjectErrorKind::Corrupt);
    EXPECT_EQ(failure.message,
        "knx_master.xml: no project schema namespace (http://knx.org/xml/project/N) on its root element");

    TavTest::ZipWriter emptyInstallation;
    emptyInstallation.Add("knx_master.xml", documents.knxMaster);
    emptyInstallation.Add("P-0242/0.xml", "<KNX><Project /></KNX>");
    failure = ReadFailure(emptyInstallation.Finish());
    EXPECT_EQ(failure.kind, ProjectErrorKind::Corrupt);
    EXPECT_EQ(failure.message, "0.xml: no project installation in it");
}

TEST(ProjectHostileInput, ReadsWithoutProjectXmlWithOneWarning)
{
    const FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    TavTest::ZipWriter writer;
    writer.Add("knx_master.xml", documents.knxMaster);
    writer.Add("P-0242/0.xml", documents.installation);
    TavTest::LogCapture capture;
    const auto project = TavProject::ReadProjectArchive(writer.Finish());
    EXPECT_EQ(project.info.name, "");
    EXPECT_EQ(project.info.toolVersion, "5.7.1093.38570");
    EXPECT_EQ(project.groupAddresses.size(), 5u);
    ASSERT_EQ(project.devices.size(), 2u);
    // Without Hardware.xml no program is known: objects come from the instances.
    EXPECT_EQ(project.devices[1].communicationObjects.size(), 2u);
    EXPECT_EQ(Warnings(capture),
        (std::vector<TavTest::LogLine>{TavTest::Warn("ReadProject - the archive holds no project.xml: no project name "
                                                     "or group address style, addresses print in three levels"),
            TavTest::Warn("ReadProject - device 1.1.5: application program "
                          "M-0083_H-AKS.2D1216.2E01_HP-00B0-32-0DFC is missing: its objects come from the instance alone"),
            TavTest::Warn("ReadProject - device 1.1.2: application program M-0083_H-TS.2D1.2E01_HP-0099-10-AAAA is "
                          "missing: its objects come from the instance alone")}));
}

TEST(ProjectHostileInput, ReadsANewerSchemaWithOneWarning)
{
    FixtureOptions options;
    options.schema = 24;
    TavTest::LogCapture capture;
    const auto project = TavProject::ReadProjectArchive(TavTest::MakeFixtureArchive(options));
    TavTest::ExpectSameProject(project, TavTest::ExpectedFixtureProject(options));
    EXPECT_EQ(Warnings(capture),
        (std::vector<TavTest::LogLine>{
            TavTest::Warn("ReadProject - schema version 24 is newer than the newest known (23): reading what can be read"),
            kMissingProgram}));
}

TEST(ProjectHostileInput, SkipsUnknownElementsWithOneWarningEach)
{
    FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    std::string& zero = documents.installation;
    zero.insert(zero.find("<DeviceInstance"), "<Gadget /><Gadget><DeviceInstance Address=\"9\" /></Gadget>");
    zero.insert(zero.find("<GroupAddress "), "<Folder Name=\"x\" />");
    zero.insert(zero.find("</Topology>"), "<Island />");
    TavTest::LogCapture capture;
    const auto project = TavProject::ReadProjectArchive(TavTest::MakeArchive(documents, FixtureOptions()));
    TavTest::ExpectSameProject(project, TavTest::ExpectedFixtureProject(FixtureOptions()));
    EXPECT_EQ(Warnings(capture),
        (std::vector<TavTest::LogLine>{TavTest::Warn("ReadProject - skipped unknown element Folder in GroupRange"),
            TavTest::Warn("ReadProject - skipped unknown element Gadget in Line"),
            TavTest::Warn("ReadProject - skipped unknown element Island in Topology"), kMissingProgram}));
}

TEST(ProjectHostileInput, SkipsUnreadableAddressesWithAWarning)
{
    FixtureDocuments documents = TavTest::MakeFixtureDocuments(FixtureOptions());
    std::string& zero = documents.installation;
    zero.insert(zero.find("<GroupAddress "), "<GroupAddress Id=\"P-0242-0_GA-9\" Address=\"65536\" />");
    zero.insert(zero.find("<DeviceInstance"), "<DeviceInstance Id=\"P-0242-0_DI-9\" Address=\"256\" />");
    TavTest::LogCapture capture;
    const auto project = TavProject::ReadProjectArchive(TavTest::MakeArchive(documents, FixtureOptions()));
    TavTest::ExpectSameProject(project, TavTest::ExpectedFixtureProject(FixtureOptions()));
    EXPECT_EQ(Warnings(capture),
        (std::vector<TavTest::LogLine>{
            TavTest::Warn("ReadProject - skipped group address P-0242-0_GA-9: unreadable Address \"65536\""),
            TavTest::Warn("ReadProject - skipped device P-0242-0_DI-9: unreadable Address \"256\""),
            kMissingProgram}));
}
} // namespace
