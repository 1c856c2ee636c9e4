#include "DumpErrorHandler.h"

#include <cstdio>

namespace vorp {

DumpErrorHandler::DumpErrorHandler() = default;

DumpErrorHandler::~DumpErrorHandler() = default;

void DumpErrorHandler::fatalError(bool exit, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    fatalVError(exit, format, args);
    va_end(args);
}

void DumpErrorHandler::fatalVError(bool, const char* format, va_list args)
{
    ++m_numErrors;
    std::vfprintf(stderr, format, args);
    std::fflush(stderr);
}

} // namespace vorp
