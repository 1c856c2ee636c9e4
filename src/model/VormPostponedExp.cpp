#include "model/VormPostponedExp.h"

#include "diag/VorpErrorHandler.h"
#include "frontend/ExprEval.h"
#include "model/VormAssembler.h"

#include <cassert>
#include <cstring>

namespace vorp {

namespace {

// The linker's operation number for an operator, or 0 when the linker can't evaluate it.
int linkerOperation(Operand::Opcode opcode)
{
    switch (opcode) {
    case Operand::ADD: return 1;
    case Operand::MAX: return 2;
    case Operand::MULTIPLY: return 3;
    case Operand::SUBTRACT: return 4;
    case Operand::ALIGN: return 6;
    case Operand::LESS: return 7;
    case Operand::GREATER: return 8;
    case Operand::LESS_EQUAL: return 9;
    case Operand::GREATER_EQUAL: return 10;
    case Operand::DEFINED: return 28;
    case Operand::SYMNUM: return 36;
    case Operand::CLOCKDIV_DOWN: return 44;
    case Operand::CLOCKDIV_UP: return 45;
    case Operand::CLOCKDIV_EXACT: return 46;
    case Operand::CONDITIONAL: return 58;
    default: return 0;
    }
}

} // namespace

VormLabel* VormPostponedExp::compile(VormAssembler& assembler, const Operand* operand, const Location& location,
                                     VormLabel* currentLocation, bool allocated, VormLabel* result)
{
    VormLabels& labels = assembler.getLabels();
    VormLinkerExps& exps = assembler.getLinkerExps();
    switch (operand->getOpcode()) {
    case Operand::PAREN:
    case Operand::UNARY_PLUS:
        return compile(assembler, operand->getOperand(0), location, currentLocation, allocated, result);
    case Operand::INTEGER: {
        int value = 0;
        const bool constant = ExprEval::evaluate(operand, value);
        assert(constant);
        if (!result)
            result = labels.addUniqueLinksetLabel();
        exps.addExp(64, result).addConstOp(value);
        return result;
    }
    case Operand::SYMBOL: {
        const char* text = operand->getToken(0).text;
        VormLabel* label;
        if (std::strcmp(text, ".") == 0) {
            assert(currentLocation);
            label = currentLocation;
        } else {
            label = labels.getOrAddRequiredLabel(text, allocated);
        }
        if (!result)
            return label;
        exps.addExp(65, result).addSymOp(label);
        return result;
    }
    default:
        break;
    }

    const int operation = linkerOperation(operand->getOpcode());
    if (operation == 0) {
        assembler.getErrorHandler().vorpError(location, AssErrorCodes::LINKER_EXPRESSION,
                                              "Non-constant expression cannot be reduced to linker expressions.\n");
        return nullptr;
    }
    assert(operand->getNumOperands() <= 3);
    // Every child becomes a label with records of its own, which come first.
    // A child the linker can't evaluate has been reported; the whole expression goes with it.
    VormLabel* children[3] = {};
    bool complete = true;
    for (unsigned i = 0; i < operand->getNumOperands(); ++i) {
        children[i] = compile(assembler, operand->getOperand(i), location, currentLocation, allocated, nullptr);
        complete = complete && children[i];
    }
    if (!complete)
        return nullptr;
    if (!result)
        result = labels.addUniqueLinksetLabel();
    VormLinkerExps::Expression& expression = exps.addExp(operation << 6, result);
    for (unsigned i = 0; i < operand->getNumOperands(); ++i)
        expression.addSymOp(children[i]);
    while (expression.numOps < 3)
        expression.addConstOp(0);
    return result;
}

} // namespace vorp
