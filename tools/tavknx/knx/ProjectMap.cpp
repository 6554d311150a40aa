#include "knx/ProjectMap.h"

#include <fstream>

namespace TavKnx
{
bool IsProjectFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    char signature[4] = {};
    if (!file.read(signature, sizeof signature))
    {
        return false;
    }
    // The local file header's signature, "PK\3\4"; an empty archive starts with the end record.
    return signature[0] == 'P' && signature[1] == 'K' &&
           ((signature[2] == 3 && signature[3] == 4) || (signature[2] == 5 && signature[3] == 6));
}

GroupAddressMap MapFromProject(const TavProject::Project& project)
{
    GroupAddressMap map;
    for (const TavProject::GroupAddress& groupAddress : project.groupAddresses)
    {
        if (groupAddress.dpt)
        {
            KNXDPT dpt{};
            dpt.main = groupAddress.dpt->main;
            dpt.sub = groupAddress.dpt->sub.value_or(0);
            map.Set(groupAddress.raw, dpt);
        }
        map.SetName(groupAddress.raw, groupAddress.name);
    }
    return map;
}
} // namespace TavKnx
