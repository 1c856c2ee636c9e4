#pragma once

namespace vorp {

class VormCodeLine;

// Reads register operands of code lines.
class VormOperReg {
public:
    // False when the token is no register name.
    static bool getRegNum(const VormCodeLine* line, unsigned tokenNum, int& number);
};

} // namespace vorp
