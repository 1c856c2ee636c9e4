#include "ExprTestSupport.h"

namespace vorp::test {

namespace {

const char* opcodeName(Operand::Opcode opcode)
{
    switch (opcode) {
    case Operand::INTEGER: return "INTEGER";
    case Operand::SYMBOL: return "SYMBOL";
    case Operand::PAREN: return "PAREN";
    case Operand::LESS: return "LESS";
    case Operand::GREATER: return "GREATER";
    case Operand::LESS_EQUAL: return "LESS_EQUAL";
    case Operand::GREATER_EQUAL: return "GREATER_EQUAL";
    case Operand::SHIFT_LEFT: return "SHIFT_LEFT";
    case Operand::SHIFT_RIGHT: return "SHIFT_RIGHT";
    case Operand::NEGATE: return "NEGATE";
    case Operand::UNARY_PLUS: return "UNARY_PLUS";
    case Operand::ADD: return "ADD";
    case Operand::SUBTRACT: return "SUBTRACT";
    case Operand::BIT_AND: return "BIT_AND";
    case Operand::BIT_OR: return "BIT_OR";
    case Operand::MULTIPLY: return "MULTIPLY";
    case Operand::BIT_NOT: return "BIT_NOT";
    case Operand::DIVIDE: return "DIVIDE";
    case Operand::DEFINED: return "DEFINED";
    case Operand::ALIGN: return "ALIGN";
    case Operand::MAX: return "MAX";
    case Operand::CLOCKDIV_UP: return "CLOCKDIV_UP";
    case Operand::CLOCKDIV_DOWN: return "CLOCKDIV_DOWN";
    case Operand::CLOCKDIV_EXACT: return "CLOCKDIV_EXACT";
    case Operand::SYMNUM: return "SYMNUM";
    case Operand::CONDITIONAL: return "CONDITIONAL";
    }
    return "?";
}

} // namespace

std::string shape(const Operand* operand)
{
    if (operand->getNumOperands() == 0)
        return tokenCharStar(&operand->getToken(0));
    std::string text = std::string("(") + opcodeName(operand->getOpcode());
    for (unsigned i = 0; i < operand->getNumOperands(); ++i)
        text += " " + shape(operand->getOperand(i));
    return text + ")";
}

} // namespace vorp::test
