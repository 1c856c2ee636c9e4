#pragma once

namespace vorp {

class ErrorHandler;

// Tool-level utilities handed to the assembler: the plain handler for fatal failures.
struct TelkUtils {
    ErrorHandler* errorHandler = nullptr;
};

} // namespace vorp
