#pragma once

#include "diag/Location.h"

namespace vorp {

class Operand;
class VormAssembler;
class VormLabel;

// Turns an expression the assembler cannot fold into ".expr" records for the linker.
class VormPostponedExp {
public:
    // `operand` is already optimised. `currentLocation` stands for "." (null when the expression
    // can't use it). `allocated` marks every referenced label a branch target. The result is
    // attached to `result`, or to a new nameless linkset label when that is null; a plain symbol
    // with no `result` is returned as it is, so that it can be relocated against directly.
    // Returns null after error 28, for operators the linker cannot evaluate.
    static VormLabel* compile(VormAssembler& assembler, const Operand* operand, const Location& location,
                              VormLabel* currentLocation, bool allocated, VormLabel* result);
};

} // namespace vorp
