#pragma once

#include "frontend/ParserActions.h"

#include <cstddef>
#include <vector>

namespace vorp {

class VorpErrorHandler;
class VorpTokeniser;

// The statement parser: recursive descent over lines and directives, with an explicit
// shift-reduce stack for expressions.
//
// It behaves like the LALR(1) parser of the language, which users and tests rely on:
// - an action runs where that parser reduces its rule: a statement whose last token nothing can
//   extend runs before the next token is scanned, any other one after the next token is seen, and
//   even when that token turns out to be wrong;
// - a wrong token after a complete directive reports "Extra tokens after %s directive", any other
//   wrong token "Unreconciled syntax error";
// - after an error the rest of the line is skipped up to and including the next line end or ';',
//   and the next line is parsed normally; the end of the input ends the parse;
// - nesting deeper than the parser stack (10000 entries) is reported like a syntax error and ends
//   the parse.
class VorpParser {
public:
    VorpParser(VorpTokeniser& tokeniser, VorpErrorHandler& errorHandler, ParserActions& actions);

    // Parses the whole input.
    void parse();

    static constexpr std::size_t MAX_STACK_DEPTH = 10000;

private:
    struct SyntaxError {};
    struct StackExhausted {};

    // Tokens: the lookahead is scanned only when a decision needs it.
    const Token& peek();
    Token take();
    bool at(int symbol) { return peek().symbol == symbol; }
    Token expect(int symbol);
    Token expectConstant();
    bool isTerminator(int symbol) const;
    static bool isExpressionStart(int symbol);

    // Depth of the parser stack, for the nesting limit.
    void push(std::size_t count = 1);
    void pop(std::size_t count) { m_depth -= count; }

    [[noreturn]] void syntaxError();
    void reportSyntaxError();
    bool recover();

    void parseLine();
    void parseDirective();
    void parseAssembly(const Token& mnemonic);
    void parseArgument(TokenLine& line);
    void expectTerminator();

    OperandPtr expectExpression();
    OperandPtr parseExpression(const Token* firstSymbol = nullptr);
    OperandList parseOptionalExpressions();
    TokenLinePtr parseSymbols(const Token& directive);
    void parseSection(const Token& directive);
    void parseLoc(const Token& directive);
    void parseReadWrite(const Token& directive);

    VorpTokeniser& m_tokeniser;
    VorpErrorHandler& m_errorHandler;
    ParserActions& m_actions;
    Token m_lookahead;
    bool m_haveLookahead = false;
    Token m_lastScanned; // the token an error is reported at
    int m_parseErrorType = 0;
    std::size_t m_depth = 0;
};

} // namespace vorp
