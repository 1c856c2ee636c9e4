#include "diag/CatchableErrorHandler.h"

#include <string>

namespace vorp {

void CatchableErrorHandler::fatalError(bool exit, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    report(exit, true, format, args);
    va_end(args);
}

void CatchableErrorHandler::fatalVError(bool exit, const char* format, va_list args)
{
    report(exit, false, format, args);
}

void CatchableErrorHandler::report(bool exit, bool copyToStdout, const char* format, va_list args)
{
    char buffer[65537];
    vsnprintf(buffer, 65536, format, args);
    if (exit)
        throw std::string(buffer);
    fputs(buffer, stderr);
    fflush(stderr);
    if (copyToStdout && traceOnError()) {
        fputs(buffer, stdout);
        fflush(stdout);
    }
}

} // namespace vorp
