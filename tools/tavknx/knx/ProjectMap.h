#pragma once
// An ETS project (.knxproj) as a group address map: its group addresses with their DPTs and
// names. Reading the project, passwords included, is the caller's (TavProject::ReadProjectFile).
#include "knx/GroupAddressMap.h"

#include <project/ProjectModel.h>

#include <string>

namespace TavKnx
{
// True when the file starts as a zip archive does, as every .knxproj does; a text map or CSV
// export never does. False when it cannot be read (the map reader then says why).
bool IsProjectFile(const std::string& path);

// Every group address with a DPT gets it ("DPT-9", main only, is 9.0), every named one its name.
GroupAddressMap MapFromProject(const TavProject::Project& project);
} // namespace TavKnx
