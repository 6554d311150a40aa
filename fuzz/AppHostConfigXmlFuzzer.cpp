// The app host configuration parser on any file content.
#include "FuzzSupport.h"

#include <TavObjectModel/AppHostConfig.h>

#include <vector>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const log4cplus::Logger logger = log4cplus::Logger::getInstance("AppHostConfigFuzz");
    // The loader parses in place up to the terminating zero, as LoadConfigurationFile hands it.
    std::vector<char> text(data, data + size);
    text.push_back('\0');
    Okaro::AppHostConfiguration configuration;
    configuration.LoadAppHostConfigXML(text.data(), logger);
    return 0;
}
