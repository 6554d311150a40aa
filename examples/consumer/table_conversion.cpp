// The table-driven conversion: KnxValueConverter picks the converter for a DPT from its table,
// here 21.5 °C on DPT 9.001 to the bus and back.
#include <TavObjectModel/KnxValueConverter.h>
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

    Okaro::KnxValueConverter converter;
    KNXDPT dpt{};
    dpt.main = 9;
    dpt.sub = 1;
    dpt.size = 16;

    OKAVALUE temperature(ivtFloat);
    temperature.numeric.real = 21.5;
    KnxStack::GroupValue groupValue;
    if (!converter.ToKnxValue(dpt, temperature, groupValue))
    {
        return 1;  // the library's log lines say why
    }
    const KnxStack::BinaryData& bytes = groupValue.GetRawData();
    std::printf("21.5 on 9.001 -> %02x%02x (%u bits)\n", bytes.GetData()[0], bytes.GetData()[1],
                groupValue.GetDefinedSize());

    OKAVALUE back;
    if (!converter.FromKnxValue(dpt, groupValue, back))
    {
        return 1;
    }
    std::cout << "and back -> " << back.ToString() << "\n";
    return back.type == ivtFloat && back.numeric.real == 21.5 ? 0 : 1;
}
