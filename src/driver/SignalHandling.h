#pragma once

namespace vorp {

// Routes segmentation faults, interrupts and bus errors to handleSignal, and ignores the signal of
// an exceeded file-size limit. False if any of the handlers could not be installed.
bool installSignalHandlers();

// Standard error is buffered; an abort that does not flush it itself (a terminate, say) flushes it
// before the process ends, so that no diagnostic is lost.
void flushDiagnosticsOnAbort();

// Gives the calling thread a separate stack for signal handlers, so that a stack overflow is still
// reported.
void useAlternateSignalStack();

// A crash (signals 7 and 11) is reported as an unrecoverable error; every routed signal ends the
// run with status 1. The output file is left alone; a temporary file being written is removed.
void handleSignal(int signalNumber);

} // namespace vorp
