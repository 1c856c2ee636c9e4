#include "model/VormLinkerExps.h"

#include "diag/IdStrings.h"

#include <cassert>

namespace vorp {

VormLinkerExps::VormLinkerExps(ErrorHandler*, IdStrings& strings) : m_strings(strings) {}

VormLinkerExps::Expression& VormLinkerExps::addExp(std::int32_t kind, VormLabel* label)
{
    m_expressions.push_back(std::make_unique<Expression>());
    Expression& expression = *m_expressions.back();
    expression.kind = kind;
    expression.label = label;
    expression.strings = &m_strings;
    return expression;
}

VormLinkerExps::Expression& VormLinkerExps::Expression::addConstOp(std::int32_t value)
{
    assert(numOps < 3);
    ops[numOps].type = OPERAND_CONSTANT;
    ops[numOps].constant = value;
    ++numOps;
    return *this;
}

VormLinkerExps::Expression& VormLinkerExps::Expression::addSymOp(VormLabel* sym)
{
    assert(numOps < 3);
    assert(sym);
    ops[numOps].type = OPERAND_SYMBOL;
    ops[numOps].symbol = sym;
    kind |= OPERAND_SYMBOL << (2 * numOps);
    ++numOps;
    return *this;
}

VormLinkerExps::Expression& VormLinkerExps::Expression::addStrOp(const char* string)
{
    assert(numOps < 3);
    ops[numOps].type = OPERAND_STRING;
    ops[numOps].string = string ? strings->idString(string) : nullptr;
    kind |= OPERAND_STRING << (2 * numOps);
    ++numOps;
    return *this;
}

} // namespace vorp
