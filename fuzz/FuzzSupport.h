#pragma once
// Shared by the fuzz harnesses: one log4cplus initialiser for the process and a reader that
// takes fixed-width fields off the front of the fuzzer's bytes.
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace TavFuzz
{
// Logging stays off so that the conversions, not the log formatting, get the executions.
// TAV_FUZZ_LOG=1 turns every level on (into a null appender) to run the message building.
inline void InitLogging()
{
    static log4cplus::Initializer initializer;
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    const char* verbose = std::getenv("TAV_FUZZ_LOG");
    if (verbose != nullptr && std::strcmp(verbose, "1") == 0)
    {
        root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
        root.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    }
    else
    {
        root.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    }
}

class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    // Missing bytes read as zero, so every input has a meaning.
    std::uint8_t U8()
    {
        if (size_ == 0)
            return 0;
        --size_;
        return *data_++;
    }
    std::uint16_t U16()
    {
        const unsigned high = U8();
        return static_cast<std::uint16_t>(high << 8 | U8());
    }
    std::uint32_t U32()
    {
        const std::uint32_t high = U16();
        return high << 16 | U16();
    }
    // Everything not yet read.
    std::string Rest()
    {
        std::string rest(reinterpret_cast<const char*>(data_), size_);
        data_ += size_;
        size_ = 0;
        return rest;
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};
} // namespace TavFuzz
