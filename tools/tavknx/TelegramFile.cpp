#include "TelegramFile.h"

#include "CommandLine.h"

#include <boost/algorithm/string/trim.hpp>

#include <fstream>
#include <sstream>

namespace TavKnx
{
std::vector<SampleTelegram> ReadTelegramFile(const std::string& file)
{
    std::ifstream in(file);
    if (!in)
    {
        throw UsageError("--telegrams: cannot read '" + file + "'");
    }
    std::vector<SampleTelegram> telegrams;
    std::string line;
    for (unsigned lineNumber = 1; std::getline(in, line); ++lineNumber)
    {
        const std::string::size_type hash = line.find('#');
        const std::string comment = hash == std::string::npos ? "" : boost::algorithm::trim_copy(line.substr(hash + 1));
        std::istringstream fields(line.substr(0, hash));
        std::string dptText;
        std::string hexText;
        std::string bitsText;
        std::string extra;
        if (!(fields >> dptText))
        {
            continue;
        }
        const std::string where = file + ":" + std::to_string(lineNumber);
        if (!(fields >> hexText))
        {
            throw UsageError(where + ": expected DPT HEX [BITS] [# comment]");
        }
        // The hex "-" stands for a group value without bytes.
        if (hexText == "-")
        {
            hexText.clear();
        }
        fields >> bitsText;
        if (fields >> extra)
        {
            throw UsageError(where + ": unexpected '" + extra + "' after DPT HEX BITS (comments start with #)");
        }
        try
        {
            SampleTelegram telegram{ParseDpt(dptText), ParseHex(hexText), 0, comment};
            telegram.bits = bitsText.empty() ? DefaultBits(telegram.dpt.main, telegram.bytes.size())
                                             : ParseBits(bitsText, "BITS");
            telegrams.push_back(telegram);
        }
        catch (const UsageError& error)
        {
            throw UsageError(where + ": " + error.what());
        }
    }
    return telegrams;
}
} // namespace TavKnx
