#pragma once

#include "diag/AssErrorCodes.h"
#include "diag/ErrorHandler.h"
#include "diag/Location.h"

namespace vorp {

// Numbered errors and warnings with a source location. Any error (or a warning while warnings are
// fatal) clears the make-binary state for good: the later passes test it and fall away.
class VorpErrorHandler : public ErrorHandler {
public:
    void vorpError(const Location& location, AssErrorCodes::ErrorCode code, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
    void vorpVError(const Location& location, AssErrorCodes::ErrorCode code, const char* format, va_list args);
    void vorpWarning(const Location& location, AssErrorCodes::ErrorCode code, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
    void vorpVWarning(const Location& location, AssErrorCodes::ErrorCode code, const char* format, va_list args);

    bool getMakeBinary() const { return m_makeBinary; }
    void setShowWarnings(bool show) { m_showWarnings = show; }
    void setFatalWarnings(bool fatal) { m_fatalWarnings = fatal; }

private:
    bool m_showWarnings = true;
    bool m_fatalWarnings = false;
    bool m_makeBinary = true;
};

} // namespace vorp
