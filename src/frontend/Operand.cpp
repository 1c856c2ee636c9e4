#include "frontend/Operand.h"

#include <cassert>

namespace vorp {

Operand::Operand(Opcode opcode, Operand* child) : m_opcode(opcode), m_operands{child} {}

Operand::Operand(Opcode opcode, Operand* left, Operand* right) : m_opcode(opcode), m_operands{left, right} {}

Operand::~Operand()
{
    // Long operator chains make deep trees: free them without deep recursion.
    std::vector<Operand*> pending;
    pending.swap(m_operands);
    while (!pending.empty()) {
        Operand* node = pending.back();
        pending.pop_back();
        if (!node)
            continue;
        pending.insert(pending.end(), node->m_operands.begin(), node->m_operands.end());
        node->m_operands.clear();
        delete node;
    }
}

void Operand::deepFree(Operand* operand)
{
    delete operand;
}

void Operand::dump(std::ostream& out) const
{
    TokenLine line;
    flatten(this, line);
    for (std::size_t i = 0; i < line.size(); ++i)
        out << (i ? " " : "") << tokenCharStar(&line[i]);
}

void flatten(const Operand* operand, TokenLine& line)
{
    switch (operand->getOpcode()) {
    case Operand::INTEGER:
    case Operand::SYMBOL:
        line.push_back(operand->getToken(0));
        return;
    case Operand::PAREN:
        line.push_back(operand->getToken(0));
        flatten(operand->getOperand(0), line);
        line.push_back(operand->getToken(1));
        return;
    case Operand::CONDITIONAL:
        flatten(operand->getOperand(0), line);
        line.push_back(operand->getToken(0));
        flatten(operand->getOperand(1), line);
        line.push_back(operand->getToken(1));
        flatten(operand->getOperand(2), line);
        return;
    case Operand::NEGATE:
    case Operand::UNARY_PLUS:
    case Operand::BIT_NOT:
    case Operand::DEFINED:
    case Operand::SYMNUM:
        line.push_back(operand->getToken(0));
        flatten(operand->getOperand(0), line);
        return;
    case Operand::LESS:
    case Operand::GREATER:
    case Operand::LESS_EQUAL:
    case Operand::GREATER_EQUAL:
    case Operand::SHIFT_LEFT:
    case Operand::SHIFT_RIGHT:
    case Operand::ADD:
    case Operand::SUBTRACT:
    case Operand::BIT_AND:
    case Operand::BIT_OR:
    case Operand::MULTIPLY:
    case Operand::DIVIDE:
    case Operand::ALIGN:
    case Operand::MAX:
    case Operand::CLOCKDIV_UP:
    case Operand::CLOCKDIV_DOWN:
    case Operand::CLOCKDIV_EXACT:
        flatten(operand->getOperand(0), line);
        line.push_back(operand->getToken(0));
        flatten(operand->getOperand(1), line);
        return;
    }
    assert(0 && "unexpected opcode");
}

TokenLine* flatten(const Operand* operand)
{
    auto* line = new TokenLine;
    flatten(operand, *line);
    return line;
}

Operand* newConstantOperand(unsigned value)
{
    auto* leaf = new Operand(Operand::INTEGER);
    leaf->addToken(newUnsignedConstToken(value, 0, generatedFile()));
    return leaf;
}

Operand* newSymbolOperand(const char* name)
{
    auto* leaf = new Operand(Operand::SYMBOL);
    leaf->addToken(newGeneratedToken(S_NAME, name));
    return leaf;
}

Operand* newBinaryOperand(Operand::Opcode opcode, Operand* left, Operand* right)
{
    assert((opcode == Operand::ADD || opcode == Operand::SUBTRACT) && "only sums and differences are made");
    auto* node = new Operand(opcode, left, right);
    node->addToken(opcode == Operand::ADD ? newGeneratedToken(S_PLUS, "+") : newGeneratedToken(S_MINUS, "-"));
    return node;
}

} // namespace vorp
