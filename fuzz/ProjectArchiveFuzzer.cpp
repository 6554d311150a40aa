// The .knxproj reader on arbitrary archive bytes: zip parsing, decryption, inflating under the
// limit, the XML guard and the model. Only ProjectError may leave it.
#include "FuzzSupport.h"

#include <project/ProjectError.h>
#include <project/ProjectJson.h>
#include <project/ProjectReader.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool initialised = (TavFuzz::InitLogging(), true);
    (void)initialised;
    TavProject::ReadOptions options;
    options.password = "a";  // the seeds' protected projects use it
    // Small enough that a bomb is refused quickly; large enough for every seed.
    options.maxInflatedBytes = 8u << 20;
    try
    {
        const TavProject::Project project =
            TavProject::ReadProjectArchive(std::string(reinterpret_cast<const char*>(data), size), options);
        (void)TavProject::ToJson(project);
        (void)TavProject::ToMapText(project);
    }
    catch (const TavProject::ProjectError&)
    {
    }
    return 0;
}
