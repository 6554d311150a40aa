// main() of the benchmark program: one log4cplus initialiser, and the log level the figures
// are taken at (TAV_BENCH_LOG_LEVEL: a log4cplus level name; INFO unless given).
#include <benchmark/benchmark.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>
#include <log4cplus/nullappender.h>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv)
{
    log4cplus::Initializer initializer;
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    // Lines that pass the level are formatted and dropped, so their cost is measured without
    // console or file output.
    root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    const char* levelName = std::getenv("TAV_BENCH_LOG_LEVEL");
    const log4cplus::LogLevel level = log4cplus::getLogLevelManager().fromString(
        LOG4CPLUS_C_STR_TO_TSTRING(levelName != nullptr ? levelName : "INFO"));
    root.setLogLevel(level == log4cplus::NOT_SET_LOG_LEVEL ? log4cplus::INFO_LOG_LEVEL : level);
    benchmark::AddCustomContext("log_level", log4cplus::getLogLevelManager().toString(root.getLogLevel()));

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
