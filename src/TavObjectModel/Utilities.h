#pragma once
// Small helpers shared by the library: whole-file reading, and (from <platform/TextEncoding.h>)
// RepairUTF8, Latin1ToUTF8 and UTF8ToLatin1.
#include <platform/TextEncoding.h>

#include <boost/optional.hpp>

#include <string>
#include <vector>

namespace Okaro
{
// The file's bytes; empty when it cannot be opened (the caller reports).
boost::optional<std::vector<char>> LoadFile(const std::string& path);
} // namespace Okaro
