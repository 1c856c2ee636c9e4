#include "frontend/VorpParser.h"

#include "diag/VorpErrorHandler.h"
#include "frontend/VorpTokeniser.h"

#include <utility>

namespace vorp {

namespace {

struct BinaryOperator {
    int level; // higher binds tighter; every level is left-associative
    Operand::Opcode opcode = Operand::NEGATE;
};

bool findBinaryOperator(int symbol, BinaryOperator& op)
{
    switch (symbol) {
    case S_MAX: op = {1, Operand::MAX}; return true;
    case S_OR: op = {2, Operand::BIT_OR}; return true;
    case S_AMPH: op = {3, Operand::BIT_AND}; return true;
    case S_LTHAN: op = {4, Operand::LESS}; return true;
    case S_GTHAN: op = {4, Operand::GREATER}; return true;
    case S_LTHANEQ: op = {4, Operand::LESS_EQUAL}; return true;
    case S_GTHANEQ: op = {4, Operand::GREATER_EQUAL}; return true;
    case S_MLTHAN: op = {5, Operand::SHIFT_LEFT}; return true;
    case S_MGTHAN: op = {5, Operand::SHIFT_RIGHT}; return true;
    case S_PLUS: op = {6, Operand::ADD}; return true;
    case S_MINUS: op = {6, Operand::SUBTRACT}; return true;
    case S_MULT: op = {7, Operand::MULTIPLY}; return true;
    case S_DIV: op = {7, Operand::DIVIDE}; return true;
    case S_ALIGN: op = {8, Operand::ALIGN}; return true;
    case S_CDUP: op = {9, Operand::CLOCKDIV_UP}; return true;
    case S_CDDOWN: op = {9, Operand::CLOCKDIV_DOWN}; return true;
    case S_CDEXACT: op = {9, Operand::CLOCKDIV_EXACT}; return true;
    default: return false;
    }
}

bool findPrefixOperator(int symbol, Operand::Opcode& opcode)
{
    switch (symbol) {
    case S_MINUS: opcode = Operand::NEGATE; return true;
    case S_TILDE: opcode = Operand::BIT_NOT; return true;
    case S_DEFINED: opcode = Operand::DEFINED; return true;
    case S_SYMNUM: opcode = Operand::SYMNUM; return true;
    default: return false;
    }
}

bool isConstant(int symbol)
{
    return symbol == S_INTVAL || symbol == S_CHVAL;
}

bool isPrimaryStart(int symbol)
{
    return symbol == S_NAME || isConstant(symbol) || symbol == S_LPAREN;
}

// Directive tokens the grammar has a statement for. `.cfi_return_column` has none.
bool hasDirectiveRule(int symbol)
{
    return symbol >= S_D_ALIGN && symbol <= S_D_CFI_RESTORE_STATE && symbol != S_D_UNRECOGNISED &&
           symbol != S_D_SASSERT;
}

OperandPtr makeLeaf(const Token& token)
{
    auto leaf = std::make_unique<Operand>(token.symbol == S_NAME ? Operand::SYMBOL : Operand::INTEGER);
    leaf->addToken(token);
    return leaf;
}

void appendFlattened(TokenLine& line, const OperandPtr& operand)
{
    flatten(operand.get(), line);
}

} // namespace

VorpParser::VorpParser(VorpTokeniser& tokeniser, VorpErrorHandler& errorHandler, ParserActions& actions)
    : m_tokeniser(tokeniser), m_errorHandler(errorHandler), m_actions(actions)
{
}

const Token& VorpParser::peek()
{
    if (!m_haveLookahead) {
        m_lookahead = m_tokeniser.scanToken();
        m_lastScanned = m_lookahead;
        m_haveLookahead = true;
    }
    return m_lookahead;
}

Token VorpParser::take()
{
    peek();
    m_haveLookahead = false;
    return m_lookahead;
}

Token VorpParser::expect(int symbol)
{
    if (peek().symbol != symbol)
        syntaxError();
    push();
    return take();
}

Token VorpParser::expectConstant()
{
    if (!isConstant(peek().symbol))
        syntaxError();
    push();
    return take();
}

bool VorpParser::isTerminator(int symbol) const
{
    return symbol == S_NEWLINE || symbol == S_SEMICOLON;
}

bool VorpParser::isExpressionStart(int symbol)
{
    Operand::Opcode opcode = Operand::NEGATE;
    return isPrimaryStart(symbol) || findPrefixOperator(symbol, opcode);
}

void VorpParser::push(std::size_t count)
{
    m_depth += count;
    if (m_depth >= MAX_STACK_DEPTH)
        throw StackExhausted{};
}

void VorpParser::reportSyntaxError()
{
    const LineLocation location(m_lastScanned.file, static_cast<unsigned>(m_lastScanned.line));
    if (m_parseErrorType == 0) {
        m_errorHandler.vorpError(location, AssErrorCodes::SYNTAX, "Unreconciled syntax error\n");
    } else {
        const char* directive = m_tokeniser.currentDirective();
        m_errorHandler.vorpError(location, AssErrorCodes::SYNTAX, "Extra tokens after %s directive\n",
                                 directive ? directive : "(null)");
    }
}

void VorpParser::syntaxError()
{
    reportSyntaxError();
    throw SyntaxError{};
}

bool VorpParser::recover()
{
    for (;;) {
        // The end of the input repeats for ever: without a line end the parse is over.
        if (peek().symbol == S_ENDSTREAM)
            return false;
        if (isTerminator(take().symbol))
            break;
    }
    m_parseErrorType = 0;
    return true;
}

void VorpParser::parse()
{
    for (;;) {
        m_depth = 2;
        if (peek().symbol == S_ENDSTREAM)
            return;
        try {
            parseLine();
        } catch (const SyntaxError&) {
            if (!recover())
                return;
        } catch (const StackExhausted&) {
            reportSyntaxError();
            return;
        }
    }
}

void VorpParser::parseLine()
{
    for (;;) {
        const Token& token = peek();
        if (isTerminator(token.symbol)) {
            take();
            m_parseErrorType = 0;
            return;
        }
        if (token.symbol == S_NAME) {
            const Token name = take();
            push();
            if (at(S_COLON)) {
                take();
                m_actions.makeLabelLine(name);
                continue;
            }
            if (at(S_EQ)) {
                expect(S_EQ);
                OperandPtr value = expectExpression();
                m_actions.setDirective2(name, std::move(value));
                m_parseErrorType = 1;
            } else {
                parseAssembly(name);
            }
            expectTerminator();
            return;
        }
        if (token.symbol == S_D_UNRECOGNISED) {
            const Token directive = take();
            m_errorHandler.vorpError(LineLocation(directive.file, static_cast<unsigned>(directive.line)),
                                     AssErrorCodes::SYNTAX, "unknown pseudo-op: '%s'\n", directive.text);
            throw SyntaxError{}; // the rest of the line goes without a second message
        }
        if (!hasDirectiveRule(token.symbol))
            syntaxError();
        parseDirective();
        m_parseErrorType = 1;
        expectTerminator();
        return;
    }
}

void VorpParser::expectTerminator()
{
    if (!isTerminator(peek().symbol))
        syntaxError();
    take();
    m_parseErrorType = 0;
}

void VorpParser::parseAssembly(const Token& mnemonic)
{
    auto line = std::make_unique<TokenLine>();
    line->push_back(mnemonic);
    if (isExpressionStart(peek().symbol)) {
        parseArgument(*line);
        while (at(S_COMMA)) {
            line->push_back(expect(S_COMMA));
            if (!isExpressionStart(peek().symbol))
                syntaxError();
            parseArgument(*line);
        }
    }
    m_actions.makeAssemblyLine(std::move(line));
}

void VorpParser::parseArgument(TokenLine& line)
{
    if (!at(S_NAME)) {
        appendFlattened(line, parseExpression());
        return;
    }
    const Token name = take();
    if (!at(S_LBRACE)) {
        appendFlattened(line, parseExpression(&name));
        return;
    }
    push();
    line.push_back(name);
    line.push_back(expect(S_LBRACE));
    appendFlattened(line, expectExpression());
    line.push_back(expect(S_RBRACE));
    if (at(S_COLON)) {
        line.push_back(expect(S_COLON));
        line.push_back(expect(S_NAME));
    }
}

OperandPtr VorpParser::expectExpression()
{
    if (!isExpressionStart(peek().symbol))
        syntaxError();
    return parseExpression();
}

OperandPtr VorpParser::parseExpression(const Token* firstSymbol)
{
    // An explicit shift-reduce stack: nesting costs no native stack, and its entries are the
    // entries the LR parser would hold.
    enum Kind { OPERAND, BINARY, PREFIX, OPEN, QUESTION, COLON };
    struct Entry {
        Kind kind;
        Token token;
        OperandPtr operand;
        BinaryOperator op;
    };
    std::vector<Entry> stack;
    const std::size_t baseDepth = m_depth;

    auto shift = [&](Kind kind, const Token& token, OperandPtr operand = nullptr, BinaryOperator op = {}) {
        stack.push_back(Entry{kind, token, std::move(operand), op});
        push();
    };
    auto kindBelowTop = [&](std::size_t below) {
        return stack.size() > below ? stack[stack.size() - 1 - below].kind : OPERAND;
    };
    // A complete primary takes the prefix operator in front of it.
    auto reducePrefix = [&]() {
        if (stack.size() < 2 || kindBelowTop(1) != PREFIX)
            return;
        Entry& prefix = stack[stack.size() - 2];
        Operand::Opcode opcode = Operand::NEGATE;
        findPrefixOperator(prefix.token.symbol, opcode);
        auto node = std::make_unique<Operand>(opcode, stack.back().operand.release());
        node->addToken(prefix.token);
        stack.pop_back();
        prefix = Entry{OPERAND, prefix.token, std::move(node), {}};
        pop(1);
    };
    // Reduces pending binary operators whose level is at least `level`.
    auto reduceBinaries = [&](int level) {
        while (stack.size() >= 3 && kindBelowTop(1) == BINARY && stack[stack.size() - 2].op.level >= level) {
            Entry right = std::move(stack.back());
            stack.pop_back();
            Entry op = std::move(stack.back());
            stack.pop_back();
            Entry& left = stack.back();
            auto node = std::make_unique<Operand>(op.op.opcode, left.operand.release(), right.operand.release());
            node->addToken(op.token);
            left.operand = std::move(node);
            pop(2);
        }
    };
    // Reduces binary operators and every conditional whose last branch is complete.
    auto reduceComplete = [&]() {
        reduceBinaries(0);
        while (stack.size() >= 5 && kindBelowTop(1) == COLON && kindBelowTop(3) == QUESTION) {
            Entry last = std::move(stack.back());
            stack.pop_back();
            Entry colon = std::move(stack.back());
            stack.pop_back();
            Entry middle = std::move(stack.back());
            stack.pop_back();
            Entry question = std::move(stack.back());
            stack.pop_back();
            Entry& condition = stack.back();
            auto node = std::make_unique<Operand>(Operand::CONDITIONAL, condition.operand.release(),
                                                  middle.operand.release());
            node->addOperand(last.operand.release());
            node->addToken(question.token);
            node->addToken(colon.token);
            condition.operand = std::move(node);
            pop(4);
            reduceBinaries(0);
        }
    };

    bool wantOperand = true;
    if (firstSymbol) {
        shift(OPERAND, *firstSymbol, makeLeaf(*firstSymbol));
        wantOperand = false;
    }
    for (;;) {
        const int symbol = peek().symbol;
        if (wantOperand) {
            Operand::Opcode opcode = Operand::NEGATE;
            if (findPrefixOperator(symbol, opcode)) {
                shift(PREFIX, take());
                if (!isPrimaryStart(peek().symbol)) // a prefix applies to one primary only
                    syntaxError();
            } else if (symbol == S_LPAREN) {
                shift(OPEN, take());
            } else if (isPrimaryStart(symbol)) {
                const Token token = take();
                shift(OPERAND, token, makeLeaf(token));
                reducePrefix();
                wantOperand = false;
            } else {
                syntaxError();
            }
            continue;
        }

        BinaryOperator op;
        if (findBinaryOperator(symbol, op)) {
            reduceBinaries(op.level);
            shift(BINARY, take(), nullptr, op);
            wantOperand = true;
            continue;
        }
        if (symbol == S_EENYMEENY) {
            reduceBinaries(0);
            shift(QUESTION, take());
            wantOperand = true;
            continue;
        }
        reduceComplete();
        if (symbol == S_MINEYMO && kindBelowTop(1) == QUESTION) {
            shift(COLON, take());
            wantOperand = true;
            continue;
        }
        if (symbol == S_RPAREN && kindBelowTop(1) == OPEN) {
            const Token close = take();
            push();
            Entry inner = std::move(stack.back());
            stack.pop_back();
            Entry& open = stack.back();
            auto node = std::make_unique<Operand>(Operand::PAREN, inner.operand.release());
            node->addToken(open.token);
            node->addToken(close);
            open = Entry{OPERAND, open.token, std::move(node), {}};
            pop(2);
            reducePrefix();
            continue;
        }
        // Nothing can continue the expression: it must be complete now.
        if (stack.size() != 1)
            syntaxError();
        m_depth = baseDepth + 1;
        return std::move(stack.back().operand);
    }
}

OperandList VorpParser::parseOptionalExpressions()
{
    OperandList values;
    if (!isExpressionStart(peek().symbol))
        return values;
    values.push_back(parseExpression());
    while (at(S_COMMA)) {
        expect(S_COMMA);
        values.push_back(expectExpression());
    }
    return values;
}

TokenLinePtr VorpParser::parseSymbols(const Token& directive)
{
    auto line = std::make_unique<TokenLine>();
    line->push_back(directive);
    line->push_back(expect(S_NAME));
    while (at(S_COMMA)) {
        line->push_back(expect(S_COMMA));
        line->push_back(expect(S_NAME));
    }
    return line;
}

void VorpParser::parseSection(const Token& directive)
{
    auto line = std::make_unique<TokenLine>();
    line->push_back(directive);
    line->push_back(expect(S_NAME));
    const int parts[] = {S_STVAL, S_AT_NAME, 0, 0}; // 0: an expression
    for (int part : parts) {
        if (!at(S_COMMA))
            break;
        line->push_back(expect(S_COMMA));
        if (part)
            line->push_back(expect(part));
        else
            appendFlattened(*line, expectExpression());
    }
    m_actions.sectionDirective(std::move(line));
}

void VorpParser::parseLoc(const Token& directive)
{
    auto line = std::make_unique<TokenLine>();
    line->push_back(expectConstant());
    line->push_back(expectConstant());
    if (isConstant(peek().symbol)) {
        line->push_back(expectConstant());
        while (at(S_NAME)) {
            line->push_back(expect(S_NAME));
            if (isConstant(peek().symbol))
                line->push_back(expectConstant());
        }
    }
    m_actions.locDirective(directive, std::move(line));
}

void VorpParser::parseReadWrite(const Token& directive)
{
    const Token first = expect(S_NAME);
    expect(S_COMMA);
    const Token second = expect(S_NAME);
    expect(S_COMMA);
    if (at(S_STVAL)) {
        const Token text = expect(S_STVAL);
        m_actions.readWriteDirective(directive, first, second, nullptr, nullptr, text);
        return;
    }
    OperandPtr offset = expectExpression();
    expect(S_COMMA);
    OperandPtr size = expectExpression();
    expect(S_COMMA);
    const Token text = expect(S_STVAL);
    m_actions.readWriteDirective(directive, first, second, std::move(offset), std::move(size), text);
}

void VorpParser::parseDirective()
{
    const Token d = expect(peek().symbol);
    switch (d.symbol) {
    case S_D_ALIGN: {
        OperandPtr value = expectExpression();
        OperandPtr fill;
        if (at(S_COMMA)) {
            expect(S_COMMA);
            fill = expectExpression();
        }
        m_actions.alignDirective(d, std::move(value), std::move(fill));
        return;
    }
    case S_D_ASCII:
    case S_D_ASCIIZ: {
        TokenLinePtr strings;
        if (at(S_STVAL)) {
            strings = std::make_unique<TokenLine>();
            strings->push_back(expect(S_STVAL));
            while (at(S_COMMA)) {
                strings->push_back(expect(S_COMMA));
                strings->push_back(expect(S_STVAL));
            }
        }
        m_actions.asciiDirective(d, std::move(strings));
        return;
    }
    case S_D_BYTE:
    case S_D_INT:
    case S_D_LONG:
    case S_D_SHORT:
    case S_D_WORD:
    case S_D_SLEB128:
    case S_D_ULEB128:
        m_actions.dataDirective(d, parseOptionalExpressions());
        return;
    case S_D_FILE:
        if (at(S_STVAL)) {
            m_actions.fileDirective(d, expect(S_STVAL));
        } else {
            const Token index = expectConstant();
            m_actions.dwarfFileDirective(d, index, expect(S_STVAL));
        }
        return;
    case S_D_GLOBAL:
    case S_D_GLOBL:
    case S_D_LOCAL:
    case S_D_LOCL:
    case S_D_EXTERN: {
        const Token symbol = expect(S_NAME);
        if (at(S_COMMA)) {
            expect(S_COMMA);
            const Token text = expect(S_STVAL);
            m_actions.visibilityDirective(d, symbol, &text);
        } else {
            m_actions.visibilityDirective(d, symbol, nullptr);
        }
        return;
    }
    case S_D_WEAK:
        m_actions.weakDirective(d, expect(S_NAME));
        return;
    case S_D_LOC:
        parseLoc(d);
        return;
    case S_D_IDENT:
        m_actions.identDirective(d, expect(S_STVAL));
        return;
    case S_D_CORE:
        m_actions.coreDirective(d, expect(S_STVAL));
        return;
    case S_D_COREREV:
        m_actions.coreRevDirective(d, expect(S_STVAL));
        return;
    case S_D_SECTION:
    case S_D_PUSHSECTION:
        parseSection(d);
        return;
    case S_D_POPSECTION:
        m_actions.popSection(d.file, d.line);
        return;
    case S_D_TEXT:
        m_actions.setTextSection(d.file, d.line);
        return;
    case S_D_SET:
    case S_D_LINKSET: {
        const Token symbol = expect(S_NAME);
        expect(S_COMMA);
        OperandPtr value = expectExpression();
        if (d.symbol == S_D_SET)
            m_actions.setDirective(d, symbol, std::move(value));
        else
            m_actions.linksetDirective(d, symbol, std::move(value));
        return;
    }
    case S_D_ASSERT: {
        auto line = std::make_unique<TokenLine>();
        line->push_back(d);
        line->push_back(expectConstant());
        line->push_back(expect(S_COMMA));
        line->push_back(expect(S_NAME));
        line->push_back(expect(S_COMMA));
        line->push_back(expect(S_STVAL));
        m_actions.makeDirectiveLine(std::move(line));
        return;
    }
    case S_D_CALL: {
        const Token caller = expect(S_NAME);
        expect(S_COMMA);
        m_actions.callDirective(d, caller, expect(S_NAME));
        return;
    }
    case S_D_PAR:
    case S_D_GLOBPASSESREF: {
        const Token first = expect(S_NAME);
        expect(S_COMMA);
        const Token second = expect(S_NAME);
        expect(S_COMMA);
        const Token text = expect(S_STVAL);
        if (d.symbol == S_D_PAR)
            m_actions.parDirective(d, first, second, text);
        else
            m_actions.globPassesRefDirective(d, first, second, text);
        return;
    }
    case S_D_GLOBREAD:
    case S_D_GLOBWRITE:
    case S_D_PARWRITE:
        parseReadWrite(d);
        return;
    case S_D_SAMERESOURCE: {
        auto line = std::make_unique<TokenLine>();
        line->push_back(d);
        line->push_back(expect(S_NAME));
        line->push_back(expect(S_COMMA));
        line->push_back(expect(S_NAME));
        line->push_back(expect(S_COMMA));
        appendFlattened(*line, expectExpression());
        m_actions.makeDirectiveLine(std::move(line));
        return;
    }
    case S_D_SKIP:
    case S_D_SPACE: {
        auto line = std::make_unique<TokenLine>();
        line->push_back(d);
        appendFlattened(*line, expectExpression());
        if (at(S_COMMA)) {
            line->push_back(expect(S_COMMA));
            appendFlattened(*line, expectExpression());
        }
        m_actions.makeDirectiveLine(std::move(line));
        return;
    }
    case S_D_TYPE:
    case S_D_TYPESTRING:
    case S_D_SIZE: {
        const Token symbol = expect(S_NAME);
        expect(S_COMMA);
        if (d.symbol == S_D_TYPE)
            m_actions.typeDirective(d, symbol, expect(S_AT_NAME));
        else if (d.symbol == S_D_TYPESTRING)
            m_actions.typeStringDirective(d, symbol, expect(S_STVAL));
        else
            m_actions.sizeDirective(d, symbol, expectExpression());
        return;
    }
    case S_D_JMPTABLE:
    case S_D_JMPTABLE32:
        m_actions.makeDirectiveLine(parseSymbols(d));
        return;
    case S_D_ZEBBRANCH:
        m_actions.zebBranchDirective(d, parseOptionalExpressions());
        return;
    case S_D_ZEBENDPOINT:
    case S_D_ZEBLABEL:
    case S_D_ZEBCALL:
    case S_D_ZEBCOMMAND:
    case S_D_ZEBSYSTEM: {
        const Token first = expect(S_STVAL);
        expect(S_COMMA);
        const Token second = expect(S_STVAL);
        expect(S_COMMA);
        const Token third = expect(S_STVAL);
        expect(S_COMMA);
        m_actions.zebRecordDirective(d, first, second, third, expectConstant());
        return;
    }
    case S_D_ZEBTHREADSTART:
        m_actions.zebThreadStartDirective(d);
        return;
    case S_D_ZEBTHREADSTOP:
        m_actions.zebThreadStopDirective(d);
        return;
    case S_D_ZEBLOOP:
        m_actions.zebLoopDirective(d, expectConstant());
        return;
    case S_D_CCTOP:
    case S_D_CCBOT: {
        auto line = std::make_unique<TokenLine>();
        line->push_back(d);
        line->push_back(expect(S_NAME));
        if (d.symbol == S_D_CCBOT) {
            m_actions.ccBottomDirective(std::move(line));
            return;
        }
        if (at(S_COMMA)) {
            line->push_back(expect(S_COMMA));
            line->push_back(expect(S_NAME));
        }
        m_actions.ccTopDirective(std::move(line));
        return;
    }
    case S_D_SCHEDULING:
        m_actions.schedulingDirective(d, expect(S_NAME));
        return;
    case S_D_SYNTAX:
        m_actions.syntaxDirective(d, expect(S_NAME));
        return;
    case S_D_INLINED:
        m_actions.inlinedDirective(d, expect(S_NAME));
        return;
    case S_D_CFI_SECTIONS: {
        TokenLinePtr symbols = parseSymbols(d);
        symbols->erase(symbols->begin());
        m_actions.cfiSectionsDirective(d, std::move(symbols));
        return;
    }
    case S_D_CFI_STARTPROC:
        if (at(S_NAME)) {
            const Token word = expect(S_NAME);
            m_actions.cfiStartprocDirective(d, &word);
        } else {
            m_actions.cfiStartprocDirective(d, nullptr);
        }
        return;
    case S_D_CFI_ENDPROC:
        m_actions.cfiEndprocDirective(d);
        return;
    case S_D_CFI_PERSONALITY:
    case S_D_CFI_LSDA: {
        OperandPtr encoding = expectExpression();
        Token symbol;
        const bool withSymbol = at(S_COMMA);
        if (withSymbol) {
            expect(S_COMMA);
            symbol = expect(S_NAME);
        }
        if (d.symbol == S_D_CFI_PERSONALITY)
            m_actions.cfiPersonalityDirective(d, std::move(encoding), withSymbol ? &symbol : nullptr);
        else
            m_actions.cfiLsdaDirective(d, std::move(encoding), withSymbol ? &symbol : nullptr);
        return;
    }
    case S_D_CFI_DEF_CFA:
    case S_D_CFI_OFFSET:
    case S_D_CFI_REL_OFFSET:
    case S_D_CFI_REGISTER: {
        OperandPtr first = expectExpression();
        expect(S_COMMA);
        OperandPtr second = expectExpression();
        m_actions.cfiTwoOperandDirective(d, std::move(first), std::move(second));
        return;
    }
    case S_D_CFI_DEF_CFA_REGISTER:
    case S_D_CFI_DEF_CFA_OFFSET:
    case S_D_CFI_ADJUST_CFA_OFFSET:
    case S_D_CFI_RESTORE:
    case S_D_CFI_UNDEFINED:
    case S_D_CFI_SAME_VALUE:
        m_actions.cfiOneOperandDirective(d, expectExpression());
        return;
    case S_D_CFI_REMEMBER_STATE:
        m_actions.cfiRememberState(d);
        return;
    case S_D_CFI_RESTORE_STATE:
        m_actions.cfiRestoreState(d);
        return;
    default:
        break;
    }
}

} // namespace vorp
