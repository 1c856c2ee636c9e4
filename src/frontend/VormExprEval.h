#pragma once

#include "diag/Location.h"
#include "frontend/VormExprParse.h"

namespace vorp {

class VorpErrorHandler;

// Values of expressions stored as tokens. Cheap to make: one is made where expressions are read.
class VormExprEval {
public:
    // `errorHandler` hears of expressions that are no constants; only evaluateExpression needs one.
    explicit VormExprEval(VorpErrorHandler* errorHandler = nullptr) : m_errorHandler(errorHandler) {}

    // The value of the expression at `tokenNum`; when it isn't constant, code 8 is reported at the
    // location and the value is 0. `tokenNum` ends behind the expression.
    int evaluateExpression(const LexTokenVector* tokens, unsigned& tokenNum, const Location& location) const;
    // True with the value and `tokenNum` behind the expression; false with `tokenNum` unchanged
    // and nothing reported.
    bool tryEvaluateExpression(const LexTokenVector* tokens, unsigned& tokenNum, int& value) const;

private:
    VorpErrorHandler* m_errorHandler;
};

} // namespace vorp
