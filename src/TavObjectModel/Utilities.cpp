#include <TavObjectModel/Utilities.h>

#include <fstream>
#include <iterator>

namespace Okaro
{
boost::optional<std::vector<char>> LoadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::in | std::ios::binary);
    if (!file)
    {
        return boost::none;
    }
    // A path that opens but cannot be read (a directory) makes the stream buffer throw;
    // for the caller that is a file that could not be read.
    try
    {
        return std::vector<char>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    catch (const std::ios_base::failure&)
    {
        return boost::none;
    }
}
} // namespace Okaro
