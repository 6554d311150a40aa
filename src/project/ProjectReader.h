#pragma once
// Reads an ETS project file (.knxproj) into the model.
//
// Thread safety: the functions keep no state; any number may run at once on different inputs.
// Failure: ProjectError (see ProjectError.h) where nothing useful can be read; what can be
// skipped is skipped with a WARN line on the log4cplus logger "TavProject".
// Limits: the inflated bytes of everything read from one project count against
// `maxInflatedBytes`, checked while inflating (declared sizes are not trusted); XML documents
// nest at most 128 levels.
#include <project/ProjectModel.h>

#include <cstdint>
#include <string>

namespace TavProject
{
struct ReadOptions
{
    // The project password as the user typed it (UTF-8); empty when none was given. Only a
    // protected project needs one; an unprotected project ignores it.
    std::string password;
    std::uint64_t maxInflatedBytes = std::uint64_t{256} << 20;
};

Project ReadProjectFile(const std::string& path, const ReadOptions& options = ReadOptions());
// The same for an archive already in memory.
Project ReadProjectArchive(std::string archive, const ReadOptions& options = ReadOptions());
} // namespace TavProject
