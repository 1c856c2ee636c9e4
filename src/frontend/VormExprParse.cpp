#include "frontend/VormExprParse.h"

#include <array>
#include <cassert>

namespace vorp {

namespace {

using Form = VormExprParseOperator::Form;

// Precedences: the higher binds tighter. They give the same binding as the grammar's levels.
const Form p_conditional{1, Operand::CONDITIONAL};
const Form p_max{2, Operand::MAX};
const Form p_bitwiseOr{5, Operand::BIT_OR};
const Form p_bitwiseAnd{7, Operand::BIT_AND};
const Form p_less{9, Operand::LESS};
const Form p_greater{9, Operand::GREATER};
const Form p_lessOrEqual{9, Operand::LESS_EQUAL};
const Form p_greaterOrEqual{9, Operand::GREATER_EQUAL};
const Form p_lShift{10, Operand::SHIFT_LEFT};
const Form p_rShift{10, Operand::SHIFT_RIGHT};
const Form p_addBop{11, Operand::ADD};
const Form p_minusBop{11, Operand::SUBTRACT};
const Form p_mult{12, Operand::MULTIPLY};
const Form p_div{12, Operand::DIVIDE};
const Form p_align{13, Operand::ALIGN};
const Form p_clockDivUp{14, Operand::CLOCKDIV_UP};
const Form p_clockDivDown{14, Operand::CLOCKDIV_DOWN};
const Form p_clockDivExact{14, Operand::CLOCKDIV_EXACT};
const Form p_plusUop{15, Operand::UNARY_PLUS};
const Form p_minusUop{15, Operand::NEGATE};
const Form p_bitwiseNot{15, Operand::BIT_NOT};
const Form p_defined{15, Operand::DEFINED};
const Form p_symNum{15, Operand::SYMNUM};

// Indexed by token symbol: every operand of every format choice asks whether its tokens are
// operators.
constexpr int FIRST_SYMBOL = S_NULL;
constexpr int LAST_SYMBOL = UNARY_OP_PREC;
using OperatorTable = std::array<VormExprParseOperator, LAST_SYMBOL - FIRST_SYMBOL + 1>;

OperatorTable makeOperatorTable()
{
    OperatorTable table;
    auto add = [&table](int symbol, const Form* binary, const Form* unary) {
        table[symbol - FIRST_SYMBOL] = VormExprParseOperator(binary, unary);
    };
    add(S_PLUS, &p_addBop, &p_plusUop);
    add(S_MINUS, &p_minusBop, &p_minusUop);
    add(S_MULT, &p_mult, nullptr);
    add(S_DIV, &p_div, nullptr);
    add(S_ALIGN, &p_align, nullptr);
    add(S_CDUP, &p_clockDivUp, nullptr);
    add(S_CDDOWN, &p_clockDivDown, nullptr);
    add(S_CDEXACT, &p_clockDivExact, nullptr);
    add(S_TILDE, nullptr, &p_bitwiseNot);
    add(S_DEFINED, nullptr, &p_defined);
    add(S_SYMNUM, nullptr, &p_symNum);
    add(S_EENYMEENY, &p_conditional, nullptr);
    add(S_MAX, &p_max, nullptr);
    add(S_OR, &p_bitwiseOr, nullptr);
    add(S_AMPH, &p_bitwiseAnd, nullptr);
    add(S_LTHAN, &p_less, nullptr);
    add(S_GTHAN, &p_greater, nullptr);
    add(S_LTHANEQ, &p_lessOrEqual, nullptr);
    add(S_GTHANEQ, &p_greaterOrEqual, nullptr);
    add(S_MLTHAN, &p_lShift, nullptr);
    add(S_MGTHAN, &p_rShift, nullptr);
    return table;
}

// The operators never change: one table serves every parser.
const OperatorTable p_operators = makeOperatorTable();

} // namespace

int VormExprParseOperator::getBinaryPrec() const
{
    assert(m_bOp != __null);
    return m_bOp->precedence;
}

Operand::Opcode VormExprParseOperator::getBinaryOpcode() const
{
    assert(m_bOp != __null);
    return m_bOp->opcode;
}

int VormExprParseOperator::getUnaryPrec() const
{
    assert(m_uOp != __null);
    return m_uOp->precedence;
}

Operand::Opcode VormExprParseOperator::getUnaryOpcode() const
{
    assert(m_uOp != __null);
    return m_uOp->opcode;
}

const VormExprParseOperator* VormExprParse::find(const Token* token)
{
    if (token->symbol < FIRST_SYMBOL || token->symbol > LAST_SYMBOL)
        return nullptr;
    const VormExprParseOperator& op = p_operators[token->symbol - FIRST_SYMBOL];
    return op.hasBinary() || op.hasUnary() ? &op : nullptr;
}

Operand* VormExprParse::parseExpression(const LexTokenVector* tokens, unsigned& tokenNum)
{
    assert(tokenNum < tokens->size());
    m_tokens = tokens;
    m_pos = tokenNum;
    Operand* result = parseExpressionAtLevel(0);
    tokenNum = m_pos;
    return result;
}

Operand* VormExprParse::parseExpressionAtLevel(int level)
{
    Operand* lhs = parseExpressionLhs();
    while (m_pos < m_tokens->size()) {
        const Token* token = (*m_tokens)[m_pos];
        const VormExprParseOperator* op = find(token);
        if (!op || !op->hasBinary() || level >= op->getBinaryPrec())
            break;
        ++m_pos;
        Operand* rhs = parseExpressionAtLevel(op->getBinaryPrec());
        if (op->getBinaryOpcode() == Operand::CONDITIONAL) {
            assert(m_pos < m_tokens->size() && (*m_tokens)[m_pos]->symbol == S_MINEYMO);
            const Token* colon = (*m_tokens)[m_pos++];
            Operand* third = parseExpressionAtLevel(op->getBinaryPrec());
            auto* node = new Operand(Operand::CONDITIONAL, lhs, rhs);
            node->addOperand(third);
            node->addToken(*token);
            node->addToken(*colon);
            lhs = node;
        } else {
            auto* node = new Operand(op->getBinaryOpcode(), lhs, rhs);
            node->addToken(*token);
            lhs = node;
        }
    }
    return lhs;
}

bool VormExprParse::isLoneName(const LexTokenVector* tokens, unsigned tokenNum) const
{
    if (tokenNum >= tokens->size() || (*tokens)[tokenNum]->symbol != S_NAME || find((*tokens)[tokenNum]))
        return false;
    if (tokenNum + 1 >= tokens->size())
        return true;
    const VormExprParseOperator* next = find((*tokens)[tokenNum + 1]);
    return !next || !next->hasBinary();
}

Operand* VormExprParse::parseExpressionLhs()
{
    assert(m_pos < m_tokens->size());
    const Token* token = (*m_tokens)[m_pos];
    if (token->symbol == S_LPAREN) {
        ++m_pos;
        Operand* inner = parseExpressionAtLevel(0);
        assert(m_pos < m_tokens->size() && (*m_tokens)[m_pos]->symbol == S_RPAREN);
        auto* node = new Operand(Operand::PAREN, inner);
        node->addToken(*token);
        node->addToken(*(*m_tokens)[m_pos++]);
        return node;
    }
    if (const VormExprParseOperator* op = find(token)) {
        ++m_pos;
        Operand* child = parseExpressionAtLevel(op->getUnaryPrec());
        auto* node = new Operand(op->getUnaryOpcode(), child);
        node->addToken(*token);
        return node;
    }
    return parseExpressionElement();
}

Operand* VormExprParse::parseExpressionElement()
{
    const Token* token = (*m_tokens)[m_pos];
    Operand* node = nullptr;
    if (token->symbol == S_NAME)
        node = new Operand(Operand::SYMBOL);
    else if (token->symbol == S_INTVAL || token->symbol == S_CHVAL)
        node = new Operand(Operand::INTEGER);
    assert(node && "unexpected token in expression");
    node->addToken(*token);
    ++m_pos;
    return node;
}

} // namespace vorp
