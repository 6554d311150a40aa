// The library's version, for programs that want to report which copy they loaded.
#include <TavObjectModel/Version.h>

// Given by the build from the project's version.
#ifndef TAV_LIBRARY_VERSION
#error "TAV_LIBRARY_VERSION must be defined by the build"
#endif

namespace Okaro
{
const char* GetLibraryVersion() { return TAV_LIBRARY_VERSION; }
} // namespace Okaro
