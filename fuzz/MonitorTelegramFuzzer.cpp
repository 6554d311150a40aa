// What the monitor does with a telegram off the bus: any APDU, to a group address mapped to any
// DPT (or to none), reported as text and as JSON. Nothing from the bus may crash or hang it.
// Layout: DPT main (2), sub (2), APDU (rest). Main 0 leaves the group address unmapped.
#include "FuzzSupport.h"

#include "knx/GroupAddressMap.h"
#include "knx/GroupTelegram.h"
#include "knx/TelegramReport.h"

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TavFuzz::Input input(data, size);
    const unsigned main = input.U16();
    const unsigned sub = input.U16();
    const std::string apdu = input.Rest();
    std::vector<TavKnx::MapProblem> problems;
    const TavKnx::GroupAddressMap map =
        TavKnx::GroupAddressMap::Parse("1/2/3;" + std::to_string(main) + "." + std::to_string(sub) + "\n", problems);
    if ((main == 0) != (map.Size() == 0))
    {
        std::abort();  // the map must take every DPT but 0
    }
    TavKnx::TelegramReporter reporter(map);
    const TavKnx::GroupTelegram telegram = TavKnx::ParseGroupTelegram(
        0x1105, 0x0A03, reinterpret_cast<const std::uint8_t*>(apdu.data()), apdu.size());
    const auto now = std::chrono::system_clock::now();
    const std::string json = reporter.Report(telegram, now, true);
    const std::string text = reporter.Report(telegram, now, false);
    if (json.empty() || json.front() != '{' || json.back() != '}' || text.find('\n') != std::string::npos)
    {
        std::abort();  // one line per telegram, always
    }
    return 0;
}
