#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

namespace vorp {

// Appends printf-style text to `out`, of any length.
inline void appendf(std::string& out, const char* format, ...) __attribute__((format(printf, 2, 3)));

inline void appendf(std::string& out, const char* format, ...)
{
    char buffer[256];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    if (length < 0)
        return;
    if (static_cast<std::size_t>(length) < sizeof(buffer)) {
        out.append(buffer, static_cast<std::size_t>(length));
        return;
    }
    std::string big(static_cast<std::size_t>(length) + 1, '\0');
    va_start(args, format);
    std::vsnprintf(big.data(), big.size(), format, args);
    va_end(args);
    big.resize(static_cast<std::size_t>(length));
    out += big;
}

} // namespace vorp
