// What the bridge takes from the broker: the payload of PREFIX/GA/set for any DPT, and the
// same bytes as a command topic.
// Layout: DPT main number (2 bytes, big-endian), sub number (2 bytes), then the payload.
#include "FuzzSupport.h"

#include "bridge/BridgeTopics.h"
#include "bridge/SetPayload.h"
#include "knx/GroupTelegram.h"

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    TavFuzz::InitLogging();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TavFuzz::Input input(data, size);
    KNXDPT dpt{};
    dpt.main = input.U16();
    dpt.sub = input.U16();
    const std::string payload = input.Rest();
    // A payload is encoded or refused with a reason; nothing else may leave.
    try
    {
        const KnxStack::GroupValue value = TavKnx::EncodeSetPayload(payload, dpt);
        // What is sent fits one group telegram.
        if (TavKnx::MakeWriteApdu(value).size() > 256)
        {
            std::abort();
        }
    }
    catch (const TavKnx::SetPayloadError& error)
    {
        if (error.what()[0] == '\0')
        {
            std::abort();
        }
    }

    // A topic that parses names its address back the same way.
    const TavKnx::BridgeTopics topics("knx");
    const auto command = topics.ParseCommand(payload);
    if (command && topics.ParseCommand(command->kind == TavKnx::CommandKind::Set ? topics.Set(command->groupAddress)
                                                                                : topics.Read(command->groupAddress))
                           ->groupAddress != command->groupAddress)
    {
        std::abort();
    }
    return 0;
}
