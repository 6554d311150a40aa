#include "cli/StopSignal.h"

#include <csignal>

namespace TavKnx
{
namespace
{
volatile std::sig_atomic_t stopRequested = 0;

extern "C" void OnStopSignal(int)
{
    stopRequested = 1;
}
} // namespace

void InstallStopHandlers()
{
    struct sigaction action
    {
    };
    action.sa_handler = OnStopSignal;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: a wait in progress ends at once with EINTR.
    action.sa_flags = 0;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A daemon that went away or a closed stdout shows as a failed write, not a dead process.
    std::signal(SIGPIPE, SIG_IGN);
}

bool StopRequested()
{
    return stopRequested != 0;
}
} // namespace TavKnx
