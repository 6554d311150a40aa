// The switch-driven codec, as the controller's applications use it: a value to the bus with
// OkaValueToGroupValue, the bus's bytes to a value with GroupValueToOkaValue; the DPT packed
// as main << 16 | sub.
#include <TavObjectModel/GroupValueOkaValue.h>
#include <platform/GroupValue.h>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <cstdio>
#include <iostream>

int main()
{
    log4cplus::Initializer initializer;
    // The library's lines on the console, from WARN on.
    log4cplus::BasicConfigurator().configure();
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);
    const unsigned long switchDpt = (1ul << 16) | 1ul;  // 1.001 DPT_Switch

    OKAVALUE on(ivtBool);
    on.numeric.boolean = true;
    const boost::optional<KnxStack::GroupValue> written = Okaro::OkaValueToGroupValue(on, switchDpt);
    if (!written)
    {
        return 1;  // the value's type is not the DPT's: the library's log lines say which
    }
    std::printf("on for 1.001 -> %02x (%u bit)\n", written->GetRawData().GetData()[0], written->GetDefinedSize());

    const boost::optional<OKAVALUE> read = Okaro::GroupValueToOkaValue(*written, switchDpt);
    if (!read)
    {
        return 1;
    }
    std::cout << "and back -> " << read->ToString() << "\n";
    return read->type == ivtBool && read->numeric.boolean ? 0 : 1;
}
