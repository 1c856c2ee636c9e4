#include "driver/SignalHandling.h"

#include "diag/VorpErrorHandler.h"

#include <csignal>
#include <cstdlib>

namespace vorp {

void handleSignal(int signalNumber)
{
    if (signalNumber == SIGSEGV || signalNumber == SIGBUS) {
        VorpErrorHandler handler;
        handler.vorpError(NoLocation(), AssErrorCodes::UNRECOVERABLE, "An unrecoverable error has occured; exiting.\n");
    }
    std::exit(1);
}

bool installSignalHandlers()
{
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    sigfillset(&action.sa_mask);
    action.sa_flags = 0;
    for (int signalNumber : {SIGSEGV, SIGINT, SIGBUS}) {
        if (sigaction(signalNumber, &action, nullptr) != 0)
            return false;
    }
    return true;
}

} // namespace vorp
