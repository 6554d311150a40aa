#include "knx/TelegramFile.h"

#include "knx/DptText.h"
#include "knx/HexText.h"
#include "knx/TextError.h"

#include <boost/algorithm/string/trim.hpp>

#include <istream>
#include <sstream>

namespace TavKnx
{
std::vector<SampleTelegram> ReadTelegrams(std::istream& in, const std::string& name)
{
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
        const std::string where = name + ":" + std::to_string(lineNumber);
        if (!(fields >> hexText))
        {
            throw TextError(where + ": expected DPT HEX [BITS] [# comment]");
        }
        // The hex "-" stands for a group value without bytes.
        if (hexText == "-")
        {
            hexText.clear();
        }
        fields >> bitsText;
        if (fields >> extra)
        {
            throw TextError(where + ": unexpected '" + extra + "' after DPT HEX BITS (comments start with #)");
        }
        try
        {
            SampleTelegram telegram{ParseDpt(dptText), ParseHex(hexText), 0, comment};
            telegram.bits = bitsText.empty() ? DefaultBits(telegram.dpt.main, telegram.bytes.size())
                                             : ParseBits(bitsText, "BITS");
            telegrams.push_back(telegram);
        }
        catch (const TextError& error)
        {
            throw TextError(where + ": " + error.what());
        }
    }
    return telegrams;
}
} // namespace TavKnx
