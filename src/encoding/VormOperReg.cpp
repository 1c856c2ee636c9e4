#include "encoding/VormOperReg.h"

#include "encoding/VormCodeLine.h"
#include "frontend/VorpTokeniser.h"

namespace vorp {

bool VormOperReg::getRegNum(const VormCodeLine* line, unsigned tokenNum, int& number)
{
    return VorpTokeniser::getRegisterNum(line->getToken(tokenNum), number);
}

} // namespace vorp
