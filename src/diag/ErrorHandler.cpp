#include "diag/ErrorHandler.h"

#include "diag/FatalError.h"

#include <cstring>

namespace vorp {

namespace {

const char* const p_traceNames[ErrorHandler::NUM_TRACE_KINDS] = {
    "TRACE_SWITCH_DATA", "TRACE_SWITCH_CTRL", "TRACE_ISTREAM", "TRACE_ASYNC",
    "TRACE_MEM",         "TRACE_CHECKER",     "TRACE_PRDTG",
};

} // namespace

ErrorHandler::ErrorHandler()
{
    for (int i = 0; i < NUM_TRACE_KINDS; ++i)
        m_traces[i].setTraceString(p_traceNames[i]);
}

ErrorHandler::~ErrorHandler()
{
    if (m_target)
        fclose(m_target);
}

void ErrorHandler::fatalError(bool exit, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vfprintf(m_output, format, args);
    va_end(args);
    fflush(m_output);
    if (m_traceOnError) {
        va_start(args, format);
        vfprintf(stdout, format, args);
        va_end(args);
        fflush(stdout);
    }
    if (exit)
        throw FatalError(1);
}

void ErrorHandler::fatalVError(bool exit, const char* format, va_list args)
{
    vfprintf(m_output, format, args);
    if (exit)
        throw FatalError(1);
}

void ErrorHandler::trace(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    if (m_gdbMiTracing) {
        // Machine-interface tracing works in fixed buffers: a long trace line is cut, not overrun.
        char buffer[1024];
        char escaped[2 * sizeof(buffer)];
        vsnprintf(buffer, sizeof(buffer), format, args);
        char* out = escaped;
        for (const char* in = buffer; *in; ++in) {
            if (*in == '\n') {
                *out++ = '\\';
                *out++ = 'n';
            } else {
                *out++ = *in;
            }
        }
        *out = '\0';
        fprintf(getTarget(), "@\"%s\"\n", escaped);
    } else {
        vfprintf(getTarget(), format, args);
    }
    va_end(args);
    fflush(getTarget());
}

void ErrorHandler::trace(int type, bool prefix, const char* format, ...)
{
    if (type < 0 || type >= NUM_TRACE_KINDS) {
        fatalError(false, "unknown trace type: %d\n", type);
        return;
    }
    if (!m_traces[type].isOn())
        return;
    if (prefix) {
        printf("%s ", m_traces[type].getTraceString());
        fflush(stdout);
    }
    va_list args;
    va_start(args, format);
    vfprintf(getTarget(), format, args);
    va_end(args);
    fflush(getTarget());
}

void ErrorHandler::vTrace(const char* format, va_list args)
{
    vfprintf(getTarget(), format, args);
    fflush(getTarget());
}

FILE* ErrorHandler::getTarget() const
{
    return m_target ? m_target : stdout;
}

void ErrorHandler::setTarget(const char* path)
{
    if (m_target)
        fclose(m_target);
    m_target = path ? fopen(path, "wb") : nullptr;
}

bool ErrorHandler::getTraceConfig(int type) const
{
    return type >= 0 && type < NUM_TRACE_KINDS && m_traces[type].isOn();
}

void ErrorHandler::setTraceConfig(int type, bool on)
{
    if (type < 0 || type >= NUM_TRACE_KINDS)
        return;
    if (on)
        m_traces[type].turnOn();
    else
        m_traces[type].turnOff();
}

} // namespace vorp
