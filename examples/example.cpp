// A small program that shows what the library does so far.
#include <platform/Logging.h>

#include <log4cplus/initializer.h>

#include <iostream>

int main()
{
    log4cplus::Initializer initializer;
    std::cout << "libtavobjectmodel example" << std::endl;
    return 0;
}
