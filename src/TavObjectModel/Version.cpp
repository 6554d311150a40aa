// The library's version, for programs that want to report which copy they loaded.
#include <TavObjectModel/Version.h>

namespace Okaro
{
const char* GetLibraryVersion() { return "1.0.0"; }
} // namespace Okaro
