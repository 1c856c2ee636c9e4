#pragma once

#include "diag/TraceType.h"

#include <cstdarg>
#include <cstdio>

namespace vorp {

// The general reporting layer: unnumbered fatal output and trace output.
class ErrorHandler {
public:
    enum TraceKind {
        TRACE_SWITCH_DATA = 0,
        TRACE_SWITCH_CTRL = 1,
        TRACE_ISTREAM = 2,
        TRACE_ASYNC = 3,
        TRACE_MEM = 4,
        TRACE_CHECKER = 5,
        TRACE_PRDTG = 6,
        NUM_TRACE_KINDS = 7
    };

    ErrorHandler();
    ErrorHandler(const ErrorHandler&) = delete;
    ErrorHandler& operator=(const ErrorHandler&) = delete;
    virtual ~ErrorHandler();

    // Prints the text on the output; with `exit`, the run then ends: FatalError is thrown, with
    // status 1.
    virtual void fatalError(bool exit, const char* format, ...) __attribute__((format(printf, 3, 4)));
    virtual void trace(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual void trace(int type, bool prefix, const char* format, ...) __attribute__((format(printf, 4, 5)));
    virtual void setTraceOnError(bool traceOnError) { m_traceOnError = traceOnError; }
    virtual void setGdbMiTracing(bool on) { m_gdbMiTracing = on; }
    virtual void fatalVError(bool exit, const char* format, va_list args);
    virtual void vTrace(const char* format, va_list args);

    // Where messages go: standard error unless set otherwise.
    void setOutput(FILE* output) { m_output = output; }
    FILE* output() const { return m_output; }

    FILE* getTarget() const;
    // Sends trace output to a file opened for binary writing; a null path means standard output.
    void setTarget(const char* path);
    bool getTraceConfig(int type) const;
    void setTraceConfig(int type, bool on);

protected:
    bool traceOnError() const { return m_traceOnError; }

private:
    FILE* m_output = stderr;
    FILE* m_target = nullptr;
    bool m_traceOnError = false;
    bool m_gdbMiTracing = false;
    TraceType m_traces[NUM_TRACE_KINDS];
};

} // namespace vorp
