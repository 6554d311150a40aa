// The model reader on arbitrary XML, without the archive around it. The input is the schema
// number (one byte), then project.xml, 0.xml, knx_master.xml, Hardware.xml and one application
// program, separated by zero bytes; missing parts are absent files.
#include "FuzzSupport.h"

#include <project/ProjectError.h>
#include <project/ProjectJson.h>
#include <project/detail/ProjectXmlReader.h>

#include <vector>

namespace
{
class Files : public TavProject::detail::ManufacturerFiles
{
public:
    Files(const std::vector<std::string>& parts) : parts_(parts) {}

    boost::optional<std::string> Read(const std::string& path) override
    {
        const std::size_t part = path.size() >= 13 && path.compare(path.size() - 13, 13, "/Hardware.xml") == 0 ? 3 : 4;
        if (part >= parts_.size())
            return boost::none;
        return parts_[part];
    }

private:
    const std::vector<std::string>& parts_;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool initialised = (TavFuzz::InitLogging(), true);
    (void)initialised;
    TavFuzz::Input input(data, size);
    const unsigned schema = input.U8();
    const std::string rest = input.Rest();
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (parts.size() < 5)
    {
        const std::size_t end = rest.find('\0', start);
        parts.push_back(rest.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    TavProject::detail::ProjectDocuments documents;
    documents.projectId = "P-0001";
    documents.schemaVersion = schema;
    documents.projectXml = parts[0];
    documents.installation = parts.size() > 1 ? parts[1] : std::string();
    documents.knxMaster = parts.size() > 2 ? parts[2] : std::string();
    Files files(parts);
    try
    {
        const TavProject::Project project = TavProject::detail::BuildProject(std::move(documents), files);
        (void)TavProject::ToJson(project);
        (void)TavProject::ToMapText(project);
    }
    catch (const TavProject::ProjectError&)
    {
    }
    return 0;
}
