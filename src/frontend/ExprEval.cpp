#include "frontend/ExprEval.h"


#include <cassert>
#include <climits>
#include <cstdint>
#include <cstring>

namespace vorp {

namespace {

std::int32_t wrap(std::uint32_t value)
{
    return static_cast<std::int32_t>(value);
}

bool divide(std::int32_t a, std::int32_t b, std::int32_t& result)
{
    if (b == 0 || (a == INT32_MIN && b == -1))
        return false;
    result = a / b;
    return true;
}

bool evaluateBinary(Operand::Opcode opcode, std::int32_t a, std::int32_t b, int& value)
{
    const std::uint32_t ua = static_cast<std::uint32_t>(a);
    const std::uint32_t ub = static_cast<std::uint32_t>(b);
    switch (opcode) {
    case Operand::LESS: value = a < b; return true;
    case Operand::GREATER: value = a > b; return true;
    case Operand::LESS_EQUAL: value = a <= b; return true;
    case Operand::GREATER_EQUAL: value = a >= b; return true;
    case Operand::SHIFT_LEFT: value = wrap(ua << (ub % 32)); return true;
    case Operand::SHIFT_RIGHT: value = a >> (ub % 32); return true;
    case Operand::ADD: value = wrap(ua + ub); return true;
    case Operand::SUBTRACT: value = wrap(ua - ub); return true;
    case Operand::MULTIPLY: value = wrap(ua * ub); return true;
    case Operand::BIT_AND: value = a & b; return true;
    case Operand::BIT_OR: value = a | b; return true;
    case Operand::DIVIDE: return divide(a, b, value);
    case Operand::ALIGN: {
        std::int32_t quotient;
        if (!divide(wrap(ua + ub - 1u), b, quotient))
            return false;
        value = wrap(static_cast<std::uint32_t>(quotient) * ub);
        return true;
    }
    case Operand::MAX: value = a > b ? a : b; return true;
    default:
        // The clock divisions exist for the linker alone.
        assert(0 && "Unexpected opcode\n");
        return false;
    }
}

} // namespace

bool ExprEval::evaluate(const Operand* operand, int& value)
{
    switch (operand->getNumOperands()) {
    case 0:
        if (operand->getOpcode() != Operand::INTEGER)
            return false;
        value = wrap(operand->getToken(0).constantValue);
        return true;
    case 1: {
        int child;
        if (!evaluate(operand->getOperand(0), child))
            return false;
        switch (operand->getOpcode()) {
        case Operand::PAREN:
        case Operand::UNARY_PLUS: value = child; return true;
        case Operand::NEGATE: value = wrap(0u - static_cast<std::uint32_t>(child)); return true;
        case Operand::BIT_NOT: value = ~child; return true;
        default: return false;
        }
    }
    case 3: {
        int condition;
        if (!evaluate(operand->getOperand(0), condition))
            return false;
        return evaluate(operand->getOperand(condition ? 1 : 2), value);
    }
    default: {
        int left, right;
        if (!evaluate(operand->getOperand(0), left) || !evaluate(operand->getOperand(1), right))
            return false;
        return evaluateBinary(operand->getOpcode(), left, right, value);
    }
    }
}

Operand* ExprEval::optimise(IdStrings& strings, Operand* operand)
{
    bool allConstant = true;
    for (unsigned i = 0; i < operand->getNumOperands(); ++i) {
        operand->setOperand(i, optimise(strings, operand->getOperand(i)));
        allConstant = allConstant && operand->getOperand(i)->getOpcode() == Operand::INTEGER;
    }
    int value;
    if (!allConstant || !evaluate(operand, value))
        return operand;
    // The folded constant takes the place of the first leaf: a long sum folds without allocating.
    if (operand->getNumOperands() == 0) {
        operand->becomeConstant(strings, static_cast<unsigned>(value));
        return operand;
    }
    Operand* leaf = operand->getOperand(0);
    operand->setOperand(0, nullptr);
    Operand::deepFree(operand);
    leaf->becomeConstant(strings, static_cast<unsigned>(value));
    return leaf;
}

bool ExprEval::usesCurrentLocation(const Operand* operand)
{
    if (operand->getOpcode() == Operand::SYMBOL)
        return std::strcmp(operand->getToken(0).text, ".") == 0;
    for (unsigned i = 0; i < operand->getNumOperands(); ++i) {
        if (usesCurrentLocation(operand->getOperand(i)))
            return true;
    }
    return false;
}

} // namespace vorp
