#pragma once

#include "frontend/Operand.h"

#include <vector>

namespace vorp {

using LexTokenVector = std::vector<Token*>;

// An operator of the token-level expression parser: a binary and/or a prefix form, each with its
// precedence and opcode.
class VormExprParseOperator {
public:
    struct Form {
        int precedence;
        Operand::Opcode opcode;
    };

    VormExprParseOperator() = default;
    VormExprParseOperator(const Form* binary, const Form* unary) : m_bOp(binary), m_uOp(unary) {}
    bool hasBinary() const { return m_bOp != nullptr; }
    bool hasUnary() const { return m_uOp != nullptr; }
    int getBinaryPrec() const;
    Operand::Opcode getBinaryOpcode() const;
    int getUnaryPrec() const;
    Operand::Opcode getUnaryOpcode() const;

private:
    const Form* m_bOp = nullptr;
    const Form* m_uOp = nullptr;
};

// Re-parses expressions from stored token lines. Every operator associates to the left, the
// conditional too; token lines come from the grammar, so malformed input is an internal error.
// A parser is made for the expressions at hand: it holds no more than its place in them.
class VormExprParse {
public:
    // Parses from `tokenNum` and leaves it behind the last token taken; the tree is the caller's.
    Operand* parseExpression(const LexTokenVector* tokens, unsigned& tokenNum);
    // True when the expression at `tokenNum` is a name and nothing more: its tree would be that one
    // symbol, which no evaluation can value.
    bool isLoneName(const LexTokenVector* tokens, unsigned tokenNum) const;

private:
    static const VormExprParseOperator* find(const Token* token);
    Operand* parseExpressionAtLevel(int level);
    Operand* parseExpressionLhs();
    Operand* parseExpressionElement();

    const LexTokenVector* m_tokens = nullptr;
    unsigned m_pos = 0;
};

} // namespace vorp
