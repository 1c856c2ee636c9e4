#pragma once

namespace vorp {

// An error that ends the run. Whatever it has to say is printed before it is thrown; the driver
// catches it and ends the process with its status.
class FatalError {
public:
    explicit FatalError(int status = 1, bool discardsOutput = false)
        : m_status(status), m_discardsOutput(discardsOutput)
    {
    }

    int status() const { return m_status; }
    // The run's output file must go too: left in place, an object of an earlier run could pass
    // for the result of this one.
    bool discardsOutput() const { return m_discardsOutput; }

private:
    int m_status;
    bool m_discardsOutput;
};

} // namespace vorp
