// Prints the version of the installed libtavobjectmodel it loaded. It uses no symbol of
// tavplatform, so, linked as-needed, it does not list libtavplatform.so.1 itself: the library
// must find that beside itself.
#include <TavObjectModel/Version.h>

#include <cstring>
#include <iostream>

int main()
{
    const char* version = Okaro::GetLibraryVersion();
    std::cout << "libtavobjectmodel " << version << "\n";
    // The package's version, as find_package read it.
    return std::strcmp(version, TAV_PACKAGE_VERSION) == 0 ? 0 : 1;
}
