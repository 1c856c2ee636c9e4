#include "ExprTestSupport.h"
#include "diag/IdStrings.h"
#include "diag/VorpErrorHandler.h"
#include "frontend/ExprEval.h"
#include "frontend/VormExprEval.h"
#include "frontend/VormExprParse.h"
#include "frontend/VorpTokeniser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vorp {
namespace {

// The texts of the trees parsed here, which outlive the tokens they were parsed from.
IdStrings& texts()
{
    static IdStrings table;
    return table;
}

// The tokens of one line of text, as a stored token line hands them out.
class Tokens {
public:
    explicit Tokens(const std::string& text)
    {
        VorpTokeniser tokeniser(texts());
        tokeniser.lexInit({}, &m_errors);
        tokeniser.addInput("e.S", "e.S", text + "\n");
        tokeniser.startScanning();
        for (Token token = tokeniser.scanToken(); token.symbol != S_NEWLINE; token = tokeniser.scanToken())
            m_line.push_back(token);
        for (Token& token : m_line)
            m_pointers.push_back(&token);
    }
    const LexTokenVector* get() const { return &m_pointers; }

private:
    VorpErrorHandler m_errors;
    TokenLine m_line;
    LexTokenVector m_pointers;
};

std::unique_ptr<Operand> parse(const std::string& text)
{
    Tokens tokens(text);
    unsigned position = 0;
    std::unique_ptr<Operand> tree(VormExprParse().parseExpression(tokens.get(), position));
    EXPECT_EQ(position, tokens.get()->size()) << text;
    return tree;
}

// The value, or "not constant".
std::string value(const std::string& text)
{
    int result = 0;
    return ExprEval::evaluate(parse(text).get(), result) ? std::to_string(result) : "not constant";
}

TEST(ExprEvalTest, ValuesFollowPrecedenceAndSigned32BitArithmetic)
{
    EXPECT_EQ(value("2 + 3 * 4"), "14");
    EXPECT_EQ(value("(2 + 3) * 4"), "20");
    EXPECT_EQ(value("1 << 2 + 1"), "8");
    EXPECT_EQ(value("1 | 2 & 3"), "3");
    EXPECT_EQ(value("8 $M 1 + 2"), "8");
    EXPECT_EQ(value("-3 $M -4"), "-3");
    EXPECT_EQ(value("10 - 4 - 3"), "3");
    EXPECT_EQ(value("100 / 10 / 5"), "2");
    EXPECT_EQ(value("-7 / 2"), "-3");
    EXPECT_EQ(value("10 $A 4"), "12");
    EXPECT_EQ(value("-10 $A 4"), "-4");
    EXPECT_EQ(value("1 < 2"), "1");
    EXPECT_EQ(value("-1 < 1"), "1");
    EXPECT_EQ(value("2 <= 2 + (3 >= 4) + (5 > 4)"), "1");
    EXPECT_EQ(value("-1 >> 1"), "-1");
    EXPECT_EQ(value("1 << 33"), "2");
    EXPECT_EQ(value("0x7fffffff + 1"), "-2147483648");
    EXPECT_EQ(value("0x10000 * 0x10000"), "0");
    EXPECT_EQ(value("~0"), "-1");
    EXPECT_EQ(value("'a' + 1"), "98");
    EXPECT_EQ(value("'\\377'"), "-1");
}

TEST(ExprEvalTest, WhatIsNotConstantAtAssemblyTime)
{
    EXPECT_EQ(value("1 ? 2 $: x"), "2");
    EXPECT_EQ(value("0 ? 2 $: x"), "not constant");
    EXPECT_EQ(value("x ? 1 $: 2"), "not constant");
    EXPECT_EQ(value("$D foo"), "not constant");
    EXPECT_EQ(value("$N 1"), "not constant");
    EXPECT_EQ(value("x - x"), "not constant");
    EXPECT_EQ(value("1 $CDu x"), "not constant");
    // Faults of the host arithmetic become "not constant", so each caller reports them its way.
    EXPECT_EQ(value("1 / 0"), "not constant");
    EXPECT_EQ(value("5 $A 0"), "not constant");
    EXPECT_EQ(value("(-0x7fffffff - 1) / -1"), "not constant");
    EXPECT_EQ(value("(-0x7fffffff + 1) $A -1"), "not constant");
}

TEST(ExprEvalDeathTest, ClockDivisionsOfConstantsAreForTheLinkerOnly)
{
    EXPECT_DEATH(value("8 $CDd 2"), "Unexpected opcode");
}

TEST(ExprEvalTest, TokenParserAssociatesEverythingToTheLeft)
{
    EXPECT_EQ(test::shape(parse("a ? b $: c ? d $: e").get()), "(CONDITIONAL (CONDITIONAL a b c) d e)");
    EXPECT_EQ(test::shape(parse("a ? (b ? c $: d) $: e").get()), "(CONDITIONAL a (PAREN (CONDITIONAL b c d)) e)");
    EXPECT_EQ(test::shape(parse("- - a * b").get()), "(MULTIPLY (NEGATE (NEGATE a)) b)");
    EXPECT_EQ(test::shape(parse("+a - b $CDe c").get()), "(SUBTRACT (UNARY_PLUS a) (CLOCKDIV_EXACT b c))");
    EXPECT_EQ(test::shape(parse("1 $M 2 | 3 & 4 < 5 << 6 + 7 * 8 $A 9").get()),
              "(MAX 1 (BIT_OR 2 (BIT_AND 3 (LESS 4 (SHIFT_LEFT 5 (ADD 6 (MULTIPLY 7 (ALIGN 8 9))))))))");
}

TEST(ExprEvalTest, ParsingStopsAtTheFirstTokenThatCannotContinue)
{
    Tokens tokens("sp [ 4 + x ] , 3");
    unsigned position = 2;
    std::unique_ptr<Operand> tree(VormExprParse().parseExpression(tokens.get(), position));
    EXPECT_EQ(test::shape(tree.get()), "(ADD 4 x)");
    EXPECT_EQ(position, 5u);

    int result = 0;
    unsigned at = 2;
    const VormExprEval evaluator;
    EXPECT_FALSE(evaluator.tryEvaluateExpression(tokens.get(), at, result));
    EXPECT_EQ(at, 2u);
    at = 7;
    EXPECT_TRUE(evaluator.tryEvaluateExpression(tokens.get(), at, result));
    EXPECT_EQ(result, 3);
    EXPECT_EQ(at, 8u);
}

TEST(ExprEvalTest, EvaluateExpressionReportsWhatIsNotConstant)
{
    VorpErrorHandler errors;
    const VormExprEval evaluator(&errors);
    Tokens tokens("x + 1");
    unsigned position = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(evaluator.evaluateExpression(tokens.get(), position, LineLocation("a.S", 7)), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a.S:7: Error: A00008 expression is not a constant expression\n");
    EXPECT_EQ(position, 3u);
    EXPECT_FALSE(errors.getMakeBinary());
}

TEST(ExprEvalTest, OptimiseFoldsConstantSubtrees)
{
    auto optimised = [](const std::string& text) {
        std::unique_ptr<Operand> tree(ExprEval::optimise(texts(), parse(text).release()));
        return test::shape(tree.get());
    };
    EXPECT_EQ(optimised("(1 + 2) * x"), "(MULTIPLY 3 x)");
    EXPECT_EQ(optimised("(x) + (2 << 3)"), "(ADD (PAREN x) 16)");
    std::unique_ptr<Operand> folded(ExprEval::optimise(texts(), parse("'a'").release()));
    EXPECT_EQ(folded->getToken(0).symbol, S_INTVAL);
    EXPECT_STREQ(folded->getToken(0).constantText, "97");
    EXPECT_STREQ(folded->getToken(0).file, "<unknown>");
    EXPECT_EQ(folded->getToken(0).line, 0);
    std::unique_ptr<Operand> kept(ExprEval::optimise(texts(), parse("0 ? 1 $: y").release()));
    EXPECT_EQ(test::shape(kept.get()), "(CONDITIONAL 0 1 y)");
}

TEST(ExprEvalTest, CurrentLocationAndFlattening)
{
    EXPECT_TRUE(ExprEval::usesCurrentLocation(parse("1 + (2 * (x ? . $: 3))").get()));
    EXPECT_FALSE(ExprEval::usesCurrentLocation(parse("a.b + .c").get()));

    std::unique_ptr<Operand> tree = parse("- ( a + 1 )");
    TokenLine line;
    flatten(tree.get(), line);
    ASSERT_EQ(line.size(), 6u);
    const int expected[] = {S_MINUS, S_LPAREN, S_NAME, S_PLUS, S_INTVAL, S_RPAREN};
    for (unsigned i = 0; i < 6; ++i)
        EXPECT_EQ(line[i].symbol, expected[i]);
    std::ostringstream text;
    parse("a ? (b) $: c $CDd 'x'")->dump(text);
    EXPECT_EQ(text.str(), "a ? ( b ) $: c $CDd 'x'");
}

} // namespace
} // namespace vorp
