// A blocking request on the local device stack: DscAsyncRequestMessenger sends SetValue and
// GetValue for the value of communication object 1 of logical device 1 and waits for each
// answer (time-out 300 ms, 2 retries); the in-process stack answers as a device would.
#include <TavObjectModel/DscAsyncRequestMessenger.h>
#include <TavObjectModel/KnxLdsMapping.h>
#include <TavObjectModel/RequestMessengerDeviceStack.h>
#include <platform/LocalDeviceStackClient.h>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <iostream>

int main()
{
    log4cplus::Initializer initializer;
    log4cplus::BasicConfigurator().configure();
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::WARN_LOG_LEVEL);

    Lumo::LocalDeviceStackClient stack;
    Okaro::RemoteRequestMessengerDeviceStack remote(stack);
    Okaro::DscAsyncRequestMessenger messenger(remote, boost::posix_time::milliseconds(300), 2,
                                              log4cplus::Logger::getInstance("example"));
    messenger.SetAsResponseHandler();

    const boost::optional<unsigned long> id =
        Okaro::KnxLdsMapping::GetCoValueObjModelId(1, Okaro::LogicalDeviceId(1));
    OKAVALUE temperature(ivtFloat);
    temperature.numeric.real = 21.5;
    const Okaro::Docket set = messenger.SetValue(*id, temperature, false);
    std::cout << "SetValue " << *id << ": answered " << (set.IsAnswered() ? "yes" : "no") << ", reply '"
              << set.ReadReply() << "'\n";
    const Okaro::Docket get = messenger.GetValue(*id, false);
    std::cout << "GetValue " << *id << ": answered " << (get.IsAnswered() ? "yes" : "no") << ", reply '"
              << get.ReadReply() << "'\n";
    return set.IsAnswered() && set.IsReplyValid() && get.IsAnswered() && get.IsReplyValid() ? 0 : 1;
}
