#include "frontend/VormExprEval.h"

#include "diag/VorpErrorHandler.h"
#include "frontend/ExprEval.h"

#include <cassert>

namespace vorp {

int VormExprEval::evaluateExpression(const LexTokenVector* tokens, unsigned& tokenNum, const Location& location) const
{
    Operand* tree = VormExprParse().parseExpression(tokens, tokenNum);
    int value = 0;
    if (!ExprEval::evaluate(tree, value)) {
        assert(m_errorHandler);
        m_errorHandler->vorpError(location, AssErrorCodes::NOT_CONSTANT, "expression is not a constant expression\n");
        value = 0;
    }
    Operand::deepFree(tree);
    return value;
}

bool VormExprEval::tryEvaluateExpression(const LexTokenVector* tokens, unsigned& tokenNum, int& value) const
{
    // The commonest operand of all, a label, needs no tree to find that it is no constant.
    if (VormExprParse().isLoneName(tokens, tokenNum))
        return false;
    unsigned position = tokenNum;
    Operand* tree = VormExprParse().parseExpression(tokens, position);
    const bool constant = ExprEval::evaluate(tree, value);
    Operand::deepFree(tree);
    if (constant)
        tokenNum = position;
    return constant;
}

} // namespace vorp
