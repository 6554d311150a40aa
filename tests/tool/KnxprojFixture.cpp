// Writes the test .knxproj (the fixture installation of tests/project) for the end-to-end tests.
// Usage: KnxprojFixture OUT SCHEMA [PASSWORD]
#include "KnxprojWriter.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    if (argc < 3 || argc > 4)
    {
        std::cerr << "usage: KnxprojFixture OUT SCHEMA [PASSWORD]\n";
        return 2;
    }
    try
    {
        TavTest::FixtureOptions options;
        options.schema = static_cast<unsigned>(std::stoul(argv[2]));
        options.password = argc == 4 ? argv[3] : "";
        TavTest::WriteWholeFile(argv[1], TavTest::MakeFixtureArchive(options));
    }
    catch (const std::exception& error)
    {
        std::cerr << "KnxprojFixture: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
