#pragma once

namespace vorp {

class VorpErrorHandler;
class VormCodeLine;

// Reads register operands of code lines.
class VormOperReg {
public:
    static VormOperReg& instance();

    void setErrorHandler(VorpErrorHandler*) {}
    // False when the token is no register name.
    bool getRegNum(const VormCodeLine* line, unsigned tokenNum, int& number) const;

private:
    VormOperReg() = default;
};

} // namespace vorp
