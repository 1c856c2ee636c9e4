#pragma once

namespace vorp {

// Routes segmentation faults, interrupts and bus errors to handleSignal. False if any of the
// handlers could not be installed.
bool installSignalHandlers();

// Gives the calling thread a separate stack for signal handlers, so that a stack overflow is still
// reported.
void useAlternateSignalStack();

// A crash (signals 7 and 11) is reported as an unrecoverable error; every routed signal ends the
// run with status 1. The output file is left alone.
void handleSignal(int signalNumber);

} // namespace vorp
