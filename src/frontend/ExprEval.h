#pragma once

#include "frontend/Operand.h"

namespace vorp {

class IdStrings;

// Constant folding on expression trees, in signed 32-bit arithmetic with wrap-around.
class ExprEval {
public:
    // True with the value if the tree is a constant at assembly time. Symbols, $D and $N never
    // are; a division by zero (or of the most negative value by -1) makes its node not constant.
    static bool evaluate(const Operand* operand, int& value);
    // The tree with its constant parts folded into INTEGER nodes, whose texts go into `strings`;
    // the argument may be freed.
    static Operand* optimise(IdStrings& strings, Operand* operand);
    // True if any symbol of the tree is spelled ".".
    static bool usesCurrentLocation(const Operand* operand);
};

} // namespace vorp
