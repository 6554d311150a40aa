#include <project/ProjectReader.h>

#include <project/ProjectError.h>
#include <project/ProjectPassword.h>
#include <project/detail/ProjectLog.h>
#include <project/detail/ProjectXmlReader.h>
#include <project/detail/ZipArchive.h>

#include <memory>

namespace TavProject
{
namespace detail
{
const log4cplus::Logger& ProjectLogger()
{
    static const log4cplus::Logger logger = log4cplus::Logger::getInstance("TavProject");
    return logger;
}
} // namespace detail

namespace
{
using detail::InflateBudget;
using detail::ZipArchive;

constexpr unsigned kFirstAesSchema = 21;

bool IsIdCharacter(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-';
}

// "P-0242" from the first of "P-0242.signature", "P-0242.zip" or "P-0242/...".
std::string ProjectIdOf(const ZipArchive& archive)
{
    for (const std::string& name : archive.Names())
    {
        if (name.compare(0, 2, "P-") != 0)
            continue;
        std::size_t end = 2;
        while (end < name.size() && IsIdCharacter(name[end]))
            ++end;
        if (end == 2 || end == name.size())
            continue;
        const std::string rest = name.substr(end);
        if (rest == ".signature" || rest == ".zip" || rest[0] == '/')
            return name.substr(0, end);
    }
    throw ProjectError(ProjectErrorKind::MissingEntry,
        archive.What() + ": no project in the archive (no P-xxxx.signature, P-xxxx/ or P-xxxx.zip)");
}

class ArchiveFiles : public detail::ManufacturerFiles
{
public:
    ArchiveFiles(const ZipArchive& archive, InflateBudget& budget) : archive_(archive), budget_(budget) {}

    boost::optional<std::string> Read(const std::string& path) override
    {
        const auto index = archive_.Find(path);
        if (!index)
            return boost::none;
        return archive_.Read(*index, budget_, nullptr);
    }

private:
    const ZipArchive& archive_;
    InflateBudget& budget_;
};

// The project's own documents: in the outer archive under P-xxxx/, or in the protected inner
// archive at its root (older writers also put them under P-xxxx/ there).
class ProjectEntries
{
public:
    // `password` empty: the entries are not encrypted.
    ProjectEntries(const ZipArchive& archive, const std::string& projectId, const std::string& password,
        unsigned schemaVersion)
        : archive_(archive), projectId_(projectId), password_(password), schemaVersion_(schemaVersion)
    {
    }

    boost::optional<std::string> Read(const std::string& name, InflateBudget& budget)
    {
        auto index = archive_.Find(name, true);
        if (!index)
            index = archive_.Find(projectId_ + '/' + name, true);
        if (!index)
            return boost::none;
        if (password_.empty() || !archive_.IsEncrypted(*index))
            return archive_.Read(*index, budget, nullptr);
        if (zipPassword_.empty())
            zipPassword_ = ZipPasswordFor(password_, schemaVersion_);
        try
        {
            return archive_.Read(*index, budget, zipPassword_.c_str());
        }
        catch (const ProjectError& error)
        {
            if (error.Kind() != ProjectErrorKind::WrongPassword || triedOther_)
                throw;
        }
        // The password form follows the schema; the other one is tried once before giving up,
        // for writers that encrypt the other way. Derived only then: it takes a while.
        triedOther_ = true;
        zipPassword_ = ZipPasswordFor(password_, schemaVersion_ >= kFirstAesSchema ? 0 : kFirstAesSchema);
        return archive_.Read(*index, budget, zipPassword_.c_str());
    }

private:
    const ZipArchive& archive_;
    std::string projectId_;
    std::string password_;
    unsigned schemaVersion_;
    std::string zipPassword_;
    bool triedOther_ = false;
};

Project Read(const ZipArchive& archive, const ReadOptions& options)
{
    InflateBudget budget(options.maxInflatedBytes);
    detail::ProjectDocuments documents;
    documents.projectId = ProjectIdOf(archive);

    const auto master = archive.Find("knx_master.xml", true);
    if (!master)
        throw ProjectError(ProjectErrorKind::MissingEntry, archive.What() + ": the archive holds no knx_master.xml");
    documents.knxMaster = archive.Read(*master, budget, nullptr);
    documents.schemaVersion = detail::SchemaVersionOf(documents.knxMaster);

    std::unique_ptr<ZipArchive> inner;
    if (const auto protectedEntry = archive.Find(documents.projectId + ".zip"))
    {
        if (options.password.empty())
            throw ProjectError(ProjectErrorKind::PasswordRequired, kPasswordRequiredMessage);
        inner = std::make_unique<ZipArchive>(ZipArchive::OpenBuffer(
            archive.Read(*protectedEntry, budget, nullptr), documents.projectId + ".zip"));
    }
    ProjectEntries entries(inner ? *inner : archive, documents.projectId, inner ? options.password : std::string(),
        documents.schemaVersion);
    documents.projectXml = entries.Read("project.xml", budget);
    boost::optional<std::string> installation = entries.Read("0.xml", budget);
    if (!installation)
    {
        throw ProjectError(ProjectErrorKind::MissingEntry,
            archive.What() + ": the archive holds no 0.xml for " + documents.projectId);
    }
    documents.installation = std::move(*installation);
    inner.reset();

    ArchiveFiles files(archive, budget);
    return detail::BuildProject(std::move(documents), files);
}
} // namespace

Project ReadProjectFile(const std::string& path, const ReadOptions& options)
{
    return Read(ZipArchive::OpenFile(path), options);
}

Project ReadProjectArchive(std::string archive, const ReadOptions& options)
{
    return Read(ZipArchive::OpenBuffer(std::move(archive), "archive"), options);
}
} // namespace TavProject
