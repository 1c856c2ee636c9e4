#pragma once

#include "driver/DriverOptions.h"

#include <string>
#include <vector>

namespace vorp {

class ErrorHandler;

extern const char* const g_versionString;
extern const char* const g_noticeString;
extern const char* const g_supportString;

// The option loop. The words are tested one after another against the rows in a fixed order, and
// that order is part of the behaviour: the first row that matches takes the word. Faults are fatal
// through the given handler, which ends the process with status 1.
class CommandLine {
public:
    explicit CommandLine(ErrorHandler& errorHandler);

    // Runs the loop over the words (without the program name) and applies the defaults: standard
    // input when no input is named, and the output name derived from the first input.
    DriverOptions parse(const std::vector<std::string>& words);

    // The object name used when -o gives none: cut at the last '.' anywhere in the path (so
    // "dir.d/file" gives "dir.o", which callers rely on) and add ".o"; "a.o" for standard input.
    static std::string defaultOutputName(const std::string& firstInput);

private:
    void readWordFile(const std::string& fileName);
    void printUsage() const;
    void printVersion() const;

    ErrorHandler& m_errorHandler;
    std::vector<std::string> m_args;
    std::size_t m_next = 0;
    std::size_t m_remaining = 0;
};

} // namespace vorp
