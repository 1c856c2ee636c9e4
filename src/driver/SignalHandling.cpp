#include "driver/SignalHandling.h"

#include "diag/VorpErrorHandler.h"
#include "emit/OutputFile.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace vorp {

void handleSignal(int signalNumber)
{
    if (signalNumber == SIGSEGV || signalNumber == SIGBUS) {
        VorpErrorHandler handler;
        handler.vorpError(NoLocation(), AssErrorCodes::UNRECOVERABLE, "An unrecoverable error has occured; exiting.\n");
    }
    // A file being written is not yet under its name; the earlier file there stays.
    OutputFile::removeTemporaries();
    std::exit(1);
}

void useAlternateSignalStack()
{
    // A runtime that set one up already (a sanitizer, say) keeps its own.
    stack_t current = {};
    if (sigaltstack(nullptr, &current) == 0 && !(current.ss_flags & SS_DISABLE))
        return;
    static thread_local char stackMemory[64 * 1024];
    stack_t stack = {};
    stack.ss_sp = stackMemory;
    stack.ss_size = sizeof(stackMemory);
    sigaltstack(&stack, nullptr);
}

namespace {

void flushOnAbort(int)
{
    // abort() goes on to end the process once this returns.
    std::fflush(stderr);
}

} // namespace

void flushDiagnosticsOnAbort()
{
    struct sigaction action = {};
    action.sa_handler = flushOnAbort;
    sigfillset(&action.sa_mask);
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGABRT, &action, nullptr);
}

bool installSignalHandlers()
{
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    sigfillset(&action.sa_mask);
    // On the alternate stack where a thread has one: a stack overflow must still be reported.
    action.sa_flags = SA_ONSTACK;
    for (int signalNumber : {SIGSEGV, SIGINT, SIGBUS}) {
        if (sigaction(signalNumber, &action, nullptr) != 0)
            return false;
    }
    // Past a file-size limit a write fails with EFBIG, which is reported, instead of ending the
    // process with a partial file.
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    return sigaction(SIGXFSZ, &ignore, nullptr) == 0;
}

} // namespace vorp
