#include "frontend/Operand.h"

#include "diag/IdStrings.h"

#include <cassert>

namespace vorp {

Operand::Operand(Opcode opcode, Operand* child) : m_opcode(opcode)
{
    addOperand(child);
}

Operand::Operand(Opcode opcode, Operand* left, Operand* right) : m_opcode(opcode)
{
    addOperand(left);
    addOperand(right);
}

Operand::~Operand()
{
    if (m_numOperands == 0)
        return;
    bool childrenAreLeaves = true;
    for (unsigned i = 0; i < m_numOperands; ++i)
        childrenAreLeaves = childrenAreLeaves && (!m_operands[i] || m_operands[i]->m_numOperands == 0);
    if (childrenAreLeaves) {
        for (unsigned i = 0; i < m_numOperands; ++i)
            delete m_operands[i];
        return;
    }
    // Long operator chains make deep trees: free them without deep recursion.
    std::vector<Operand*> pending(m_operands, m_operands + m_numOperands);
    m_numOperands = 0;
    while (!pending.empty()) {
        Operand* node = pending.back();
        pending.pop_back();
        if (!node)
            continue;
        pending.insert(pending.end(), node->m_operands, node->m_operands + node->m_numOperands);
        node->m_numOperands = 0;
        delete node;
    }
}

void Operand::addOperand(Operand* child)
{
    assert(m_numOperands < MAX_OPERANDS);
    m_operands[m_numOperands++] = child;
}

void Operand::becomeConstant(IdStrings& strings, unsigned value)
{
    assert(m_numOperands == 0);
    m_opcode = INTEGER;
    m_numTokens = 0;
    addToken(newUnsignedConstToken(strings, value, 0, strings.generatedFile()));
}

void Operand::addToken(const Token& token)
{
    assert(m_numTokens < MAX_TOKENS);
    m_tokens[m_numTokens++] = token;
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

Operand* newConstantOperand(IdStrings& strings, unsigned value)
{
    auto* leaf = new Operand(Operand::INTEGER);
    leaf->becomeConstant(strings, value);
    return leaf;
}

Operand* newSymbolOperand(IdStrings& strings, const char* name)
{
    auto* leaf = new Operand(Operand::SYMBOL);
    leaf->addToken(newGeneratedToken(strings, S_NAME, name));
    return leaf;
}

Operand* newBinaryOperand(IdStrings& strings, Operand::Opcode opcode, Operand* left, Operand* right)
{
    assert((opcode == Operand::ADD || opcode == Operand::SUBTRACT) && "only sums and differences are made");
    auto* node = new Operand(opcode, left, right);
    node->addToken(opcode == Operand::ADD ? newGeneratedToken(strings, S_PLUS, "+")
                                             : newGeneratedToken(strings, S_MINUS, "-"));
    return node;
}

} // namespace vorp
