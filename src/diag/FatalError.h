#pragma once

#include <string>

namespace vorp {

// An error that ends the run. Whatever it has to say is printed before it is thrown, except
// `message`: a place that can't reach the run's error output leaves its text to whoever catches
// it, who prints it first. The run's caller catches it and ends the run with its status.
class FatalError {
public:
    explicit FatalError(int status = 1, bool discardsOutput = false, std::string message = {})
        : m_status(status), m_discardsOutput(discardsOutput), m_message(std::move(message))
    {
    }

    int status() const { return m_status; }
    const std::string& message() const { return m_message; }
    // The run's output file must go too: left in place, an object of an earlier run could pass
    // for the result of this one.
    bool discardsOutput() const { return m_discardsOutput; }

private:
    int m_status;
    bool m_discardsOutput;
    std::string m_message;
};

} // namespace vorp
