#pragma once
// Where the device stack's objects come from: an objects file, one object a line,
// "CO;GA[,GA...];DPT;FLAGS;NAME" with '#' comments (1;1/2/3;9.001;CRWTU;Living room
// temperature), or a device of an ETS project.
#include <devicestack/DeviceObject.h>

#include <knx/GroupAddressMap.h>
#include <project/ProjectModel.h>

#include <string>
#include <vector>

namespace Lumo
{
// Reads the whole text; malformed lines and second objects with a CO already read are skipped
// and reported in `problems` (line numbers 1-based). Never throws for any content.
std::vector<DeviceObject> ParseDeviceObjects(const std::string& content, std::vector<TavKnx::MapProblem>& problems);
// Reads the file; throws std::runtime_error naming the file when it cannot be read.
std::vector<DeviceObject> LoadDeviceObjects(const std::string& path, std::vector<TavKnx::MapProblem>& problems);

// The communication objects of the device with individual address `address` ("1.1.5") that
// have a group address and a DPT (a main number alone is sub 0); the others are reported in
// `problems` with line 0. Throws std::runtime_error when the project has no such device.
std::vector<DeviceObject> DeviceObjectsFromProject(const TavProject::Project& project, const std::string& address,
                                                   std::vector<TavKnx::MapProblem>& problems);
} // namespace Lumo
