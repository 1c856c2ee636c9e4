#pragma once

#include "diag/ErrorHandler.h"

#include <cstdarg>

namespace vorp {

// The error handler of the object inspector: the model's messages go to standard error as they
// come, but never end the process. The inspector counts them and decides itself whether the file
// could be read.
class DumpErrorHandler : public ErrorHandler {
public:
    DumpErrorHandler();
    ~DumpErrorHandler() override;

    void fatalError(bool exit, const char* format, ...) override __attribute__((format(printf, 3, 4)));
    void fatalVError(bool exit, const char* format, va_list args) override;

    unsigned numErrors() const { return m_numErrors; }

private:
    unsigned m_numErrors = 0;
};

} // namespace vorp
