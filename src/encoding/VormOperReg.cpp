#include "encoding/VormOperReg.h"

#include "encoding/VormCodeLine.h"
#include "frontend/VorpTokeniser.h"

namespace vorp {

VormOperReg& VormOperReg::instance()
{
    static VormOperReg reader;
    return reader;
}

bool VormOperReg::getRegNum(const VormCodeLine* line, unsigned tokenNum, int& number) const
{
    return VorpTokeniser::getRegisterNum(line->getToken(tokenNum), number);
}

} // namespace vorp
