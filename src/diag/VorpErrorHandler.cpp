#include "diag/VorpErrorHandler.h"

namespace vorp {

void VorpErrorHandler::vorpError(const Location& location, AssErrorCodes::ErrorCode code, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vorpVError(location, code, format, args);
    va_end(args);
}

void VorpErrorHandler::vorpVError(const Location& location, AssErrorCodes::ErrorCode code, const char* format,
                                  va_list args)
{
    m_makeBinary = false;
    location.write(output());
    fprintf(output(), "Error: A%05d ", static_cast<int>(code));
    fatalVError(false, format, args);
}

void VorpErrorHandler::vorpWarning(const Location& location, AssErrorCodes::ErrorCode code, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vorpVWarning(location, code, format, args);
    va_end(args);
}

void VorpErrorHandler::vorpVWarning(const Location& location, AssErrorCodes::ErrorCode code, const char* format,
                                    va_list args)
{
    if (!m_showWarnings)
        return;
    if (m_fatalWarnings)
        m_makeBinary = false;
    location.write(output());
    fprintf(output(), "Warning: A%05d ", static_cast<int>(code));
    fatalVError(false, format, args);
}

} // namespace vorp
