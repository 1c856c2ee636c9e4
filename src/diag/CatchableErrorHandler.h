#pragma once

#include "diag/ErrorHandler.h"

namespace vorp {

// For callers that embed the library: a fatal error that would end the run is not printed but
// thrown as a std::string holding its text, instead of FatalError.
class CatchableErrorHandler : public ErrorHandler {
public:
    void fatalError(bool exit, const char* format, ...) override __attribute__((format(printf, 3, 4)));
    void fatalVError(bool exit, const char* format, va_list args) override;

private:
    void report(bool exit, bool copyToStdout, const char* format, va_list args);
};

} // namespace vorp
