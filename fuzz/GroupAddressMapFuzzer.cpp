// The group address map on any file content, both formats, and the group address, DPT and
// hex parsers (the command line's too) on the same text.
// Layout: the content, as a whole.
#include "FuzzSupport.h"

#include "knx/DptText.h"
#include "knx/GroupAddressMap.h"
#include "knx/HexText.h"
#include "knx/KnxAddress.h"
#include "knx/TextError.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string content(reinterpret_cast<const char*>(data), size);
    std::vector<TavKnx::MapProblem> problems;
    const TavKnx::GroupAddressMap map = TavKnx::GroupAddressMap::Parse(content, problems);

    // Every problem names a line of the content and shows no control bytes; the list stays
    // short (the first hundred, then a count); no line gives more than one entry.
    const std::size_t lines = static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n')) + 1;
    if (problems.size() > 101 || map.Size() > lines)
    {
        std::abort();
    }
    for (const TavKnx::MapProblem& problem : problems)
    {
        if (problem.line < 1 || problem.line > lines)
        {
            std::abort();
        }
        for (const char c : problem.message)
        {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || byte == 0x7F)
            {
                std::abort();
            }
        }
    }

    // An address that reads reads back the same from its three-level form.
    const auto address = TavKnx::ParseGroupAddress(content);
    if (address && TavKnx::ParseGroupAddress(TavKnx::FormatGroupAddress(*address)) != address)
    {
        std::abort();
    }

    // The DPT reader with and without exceptions agrees, and what it reads reads back.
    const auto dpt = TavKnx::TryParseDpt(content);
    try
    {
        const KNXDPT thrown = TavKnx::ParseDpt(content);
        if (!dpt || TavKnx::PackDpt(thrown) != TavKnx::PackDpt(*dpt) ||
            TavKnx::PackDpt(TavKnx::ParseDpt(TavKnx::FormatKnxDpt(thrown))) != TavKnx::PackDpt(thrown))
        {
            std::abort();
        }
    }
    catch (const TavKnx::TextError&)
    {
        if (dpt)
        {
            std::abort();
        }
    }
    // Bytes that read read back the same from their plain form.
    try
    {
        const std::vector<std::uint8_t> bytes = TavKnx::ParseHex(content);
        if (TavKnx::ParseHex(TavKnx::FormatHex(bytes)) != bytes)
        {
            std::abort();
        }
    }
    catch (const TavKnx::TextError&)
    {
    }
    return 0;
}
