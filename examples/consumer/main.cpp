// Decodes one KNX telegram (DPT 9.001, bytes 0c 1a) with an installed libtavobjectmodel.
#include <TavObjectModel/GroupValueOkaValue.h>
#include <platform/BinaryData.h>
#include <platform/GroupValue.h>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <iostream>

int main()
{
    // A program has exactly one log4cplus initialiser; the library never creates one.
    log4cplus::Initializer initializer;
    // The library's lines go to the root logger: print warnings and errors on the console.
    log4cplus::BasicConfigurator logging;
    logging.configure();
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);

    const unsigned char bytes[] = {0x0c, 0x1a};
    const KnxStack::GroupValue groupValue(KnxStack::BinaryData(bytes, sizeof bytes), 16);
    const unsigned long dpt9001 = (9ul << 16) | 1ul;  // packed DPT: main << 16 | sub

    const boost::optional<OKAVALUE> value = Okaro::GroupValueToOkaValue(groupValue, dpt9001);
    if (!value)
    {
        std::cerr << "the library refused the telegram\n";
        return 1;
    }
    std::cout << "9.001 0c1a -> " << value->ToString() << "\n";
    return value->type == ivtFloat && value->numeric.real == 21.0 ? 0 : 1;
}
