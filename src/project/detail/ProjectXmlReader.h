#pragma once
// Builds the model from the project's XML documents, wherever they came from: the archive
// reader hands them over after unpacking, the fuzz harness straight from its input.
#include <project/ProjectModel.h>

#include <boost/optional.hpp>

#include <string>

namespace TavProject
{
namespace detail
{
// The manufacturers' files of the outer archive ("M-0083/Hardware.xml", "M-0083/M-0083_A-....xml").
class ManufacturerFiles
{
public:
    virtual ~ManufacturerFiles() = default;
    // The file's bytes, none when the archive does not hold it. May throw ProjectError (limits).
    virtual boost::optional<std::string> Read(const std::string& path) = 0;
};

struct ProjectDocuments
{
    std::string projectId;
    unsigned schemaVersion = 0;
    std::string knxMaster;                   // knx_master.xml (manufacturer names)
    boost::optional<std::string> projectXml; // project.xml (name, style); none when missing
    std::string installation;                // 0.xml
};

// The newest schema this reader was written for; newer ones are read as far as they go.
constexpr unsigned kNewestKnownSchema = 23;

// N of the namespace http://knx.org/xml/project/N on knx_master.xml's root element. Throws
// ProjectError (Corrupt) when the start of the text names none.
unsigned SchemaVersionOf(const std::string& knxMaster);

// Throws ProjectError where a document cannot be parsed (TooDeep, Corrupt) or 0.xml holds no
// project; WARNs for what is skipped.
Project BuildProject(ProjectDocuments documents, ManufacturerFiles& files);
} // namespace detail
} // namespace TavProject
