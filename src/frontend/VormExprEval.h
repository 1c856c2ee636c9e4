#pragma once

#include "diag/Location.h"
#include "frontend/VormExprParse.h"

namespace vorp {

class VorpErrorHandler;

// Values of expressions stored as tokens.
class VormExprEval {
public:
    static VormExprEval& instance();

    void setErrorHandler(VorpErrorHandler* errorHandler) { m_errorHandler = errorHandler; }

    // The value of the expression at `tokenNum`; when it isn't constant, code 8 is reported at the
    // location and the value is 0. `tokenNum` ends behind the expression.
    int evaluateExpression(const LexTokenVector* tokens, unsigned& tokenNum, const Location& location);
    // True with the value and `tokenNum` behind the expression; false with `tokenNum` unchanged
    // and nothing reported.
    bool tryEvaluateExpression(const LexTokenVector* tokens, unsigned& tokenNum, int& value);

private:
    VormExprEval() = default;

    VorpErrorHandler* m_errorHandler = nullptr;
};

} // namespace vorp
