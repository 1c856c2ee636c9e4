#pragma once

#include "frontend/Token.h"

#include <ostream>
#include <vector>

namespace vorp {

class IdStrings;

// An expression node: an opcode, up to three owned children, and the tokens that spell the node
// itself (the value of a leaf, the operator of an inner node, both parentheses, '?' and '$:').
class Operand {
public:
    enum Opcode {
        INTEGER = 0,
        SYMBOL = 1,
        PAREN = 2,
        LESS = 3,
        GREATER = 4,
        LESS_EQUAL = 5,
        GREATER_EQUAL = 6,
        SHIFT_LEFT = 7,
        SHIFT_RIGHT = 8,
        NEGATE = 9,
        UNARY_PLUS = 10,
        ADD = 11,
        SUBTRACT = 12,
        BIT_AND = 13,
        BIT_OR = 14,
        MULTIPLY = 15,
        BIT_NOT = 16,
        DIVIDE = 17,
        DEFINED = 18,
        ALIGN = 19,
        MAX = 20,
        CLOCKDIV_UP = 21,
        CLOCKDIV_DOWN = 22,
        CLOCKDIV_EXACT = 23,
        SYMNUM = 24,
        CONDITIONAL = 26,
    };

    explicit Operand(Opcode opcode) : m_opcode(opcode) {}
    Operand(Opcode opcode, Operand* child);
    Operand(Opcode opcode, Operand* left, Operand* right);
    Operand(const Operand&) = delete;
    Operand& operator=(const Operand&) = delete;
    ~Operand();

    Opcode getOpcode() const { return m_opcode; }
    unsigned getNumOperands() const { return m_numOperands; }
    Operand* getOperand(unsigned i) const { return m_operands[i]; }
    void setOperand(unsigned i, Operand* child) { m_operands[i] = child; }
    void addOperand(Operand* child);

    unsigned getNumTokens() const { return m_numTokens; }
    const Token& getToken(unsigned i) const { return m_tokens[i]; }
    void addToken(const Token& token);
    // Makes a leaf the generated constant `value`, as newConstantOperand would make it.
    void becomeConstant(IdStrings& strings, unsigned value);

    // Frees the children, then the node.
    static void deepFree(Operand* operand);
    // The flattened tokens, one blank between them.
    void dump(std::ostream& out) const;

private:
    // A node has at most three children (the conditional) and two tokens of its own (parentheses,
    // '?' and '$:'): kept in place, a node is one allocation. Long generated sums make millions.
    static constexpr unsigned MAX_OPERANDS = 3;
    static constexpr unsigned MAX_TOKENS = 2;

    Opcode m_opcode;
    unsigned char m_numOperands = 0;
    unsigned char m_numTokens = 0;
    Operand* m_operands[MAX_OPERANDS] = {};
    Token m_tokens[MAX_TOKENS];
};

// Appends the tokens of the tree in source order; parentheses are nodes, so the source tokens come
// back exactly.
void flatten(const Operand* operand, TokenLine& line);
TokenLine* flatten(const Operand* operand);

// Trees that the assembler makes itself, with generated tokens.
Operand* newConstantOperand(IdStrings& strings, unsigned value);
Operand* newSymbolOperand(IdStrings& strings, const char* name);
// `left + right` or `left - right`.
Operand* newBinaryOperand(IdStrings& strings, Operand::Opcode opcode, Operand* left, Operand* right);

} // namespace vorp
