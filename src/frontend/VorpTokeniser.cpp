#include "frontend/VorpTokeniser.h"

#include "diag/IdStrings.h"
#include "diag/VorpErrorHandler.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace vorp {

namespace {

using WordMap = std::unordered_map<std::string_view, int>;

const WordMap& directiveMap()
{
    // cfi_restore and sassert are absent on purpose: they scan as unrecognised directives.
    static const WordMap map = {
        {"align", S_D_ALIGN},
        {"ascii", S_D_ASCII},
        {"asciiz", S_D_ASCIIZ},
        {"byte", S_D_BYTE},
        {"extern", S_D_EXTERN},
        {"file", S_D_FILE},
        {"global", S_D_GLOBAL},
        {"globl", S_D_GLOBL},
        {"local", S_D_LOCAL},
        {"locl", S_D_LOCL},
        {"weak", S_D_WEAK},
        {"ident", S_D_IDENT},
        {"core", S_D_CORE},
        {"corerev", S_D_COREREV},
        {"int", S_D_INT},
        {"loc", S_D_LOC},
        {"long", S_D_LONG},
        {"popsection", S_D_POPSECTION},
        {"pushsection", S_D_PUSHSECTION},
        {"section", S_D_SECTION},
        {"set", S_D_SET},
        {"linkset", S_D_LINKSET},
        {"assert", S_D_ASSERT},
        {"call", S_D_CALL},
        {"par", S_D_PAR},
        {"globread", S_D_GLOBREAD},
        {"globwrite", S_D_GLOBWRITE},
        {"sameresource", S_D_SAMERESOURCE},
        {"parwrite", S_D_PARWRITE},
        {"globpassesref", S_D_GLOBPASSESREF},
        {"short", S_D_SHORT},
        {"skip", S_D_SKIP},
        {"sleb128", S_D_SLEB128},
        {"space", S_D_SPACE},
        {"text", S_D_TEXT},
        {"uleb128", S_D_ULEB128},
        {"word", S_D_WORD},
        {"type", S_D_TYPE},
        {"typestring", S_D_TYPESTRING},
        {"size", S_D_SIZE},
        {"jmptable", S_D_JMPTABLE},
        {"jmptable32", S_D_JMPTABLE32},
        {"zebbranch", S_D_ZEBBRANCH},
        {"zebendpoint", S_D_ZEBENDPOINT},
        {"zeblabel", S_D_ZEBLABEL},
        {"zebcall", S_D_ZEBCALL},
        {"zebthreadstart", S_D_ZEBTHREADSTART},
        {"zebthreadstop", S_D_ZEBTHREADSTOP},
        {"zebcommand", S_D_ZEBCOMMAND},
        {"zebsystem", S_D_ZEBSYSTEM},
        {"zebloop", S_D_ZEBLOOP},
        {"cc_top", S_D_CCTOP},
        {"cc_bottom", S_D_CCBOT},
        {"scheduling", S_D_SCHEDULING},
        {"syntax", S_D_SYNTAX},
        {"inline_definition", S_D_INLINED},
        {"cfi_sections", S_D_CFI_SECTIONS},
        {"cfi_startproc", S_D_CFI_STARTPROC},
        {"cfi_endproc", S_D_CFI_ENDPROC},
        {"cfi_personality", S_D_CFI_PERSONALITY},
        {"cfi_lsda", S_D_CFI_LSDA},
        {"cfi_def_cfa", S_D_CFI_DEF_CFA},
        {"cfi_def_cfa_register", S_D_CFI_DEF_CFA_REGISTER},
        {"cfi_def_cfa_offset", S_D_CFI_DEF_CFA_OFFSET},
        {"cfi_adjust_cfa_offset", S_D_CFI_ADJUST_CFA_OFFSET},
        {"cfi_offset", S_D_CFI_OFFSET},
        {"cfi_rel_offset", S_D_CFI_REL_OFFSET},
        {"cfi_register", S_D_CFI_REGISTER},
        {"cfi_undefined", S_D_CFI_UNDEFINED},
        {"cfi_same_value", S_D_CFI_SAME_VALUE},
        {"cfi_remember_state", S_D_CFI_REMEMBER_STATE},
        {"cfi_restore_state", S_D_CFI_RESTORE_STATE},
        {"cfi_return_column", S_D_CFI_RETURN_COLUMN},
    };
    return map;
}

// r0 to r11, cp, dp, sp, lr, as written (no other case); -1 for any other word. Asked for every
// operand of every format tried, so it reads the few letters instead of hashing.
int registerNumber(const char* text)
{
    if (!text[0] || !text[1])
        return -1;
    if (text[0] == 'r' && text[1] >= '0' && text[1] <= '9') {
        if (!text[2])
            return text[1] - '0';
        if (text[1] == '1' && (text[2] == '0' || text[2] == '1') && !text[3])
            return 10 + (text[2] - '0');
        return -1;
    }
    if (text[2])
        return -1;
    static constexpr const char* NAMED[] = {"cp", "dp", "sp", "lr"};
    for (int i = 0; i < 4; ++i) {
        if (text[0] == NAMED[i][0] && text[1] == NAMED[i][1])
            return 12 + i;
    }
    return -1;
}

bool isLetter(int c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(int c)
{
    return c >= '0' && c <= '9';
}

bool isWordStart(int c)
{
    return isLetter(c) || c == '.' || c == '_';
}

bool isWordCharacter(int c)
{
    return isWordStart(c) || isDigit(c);
}

bool isBlank(int c)
{
    return c == ' ' || c == '\t';
}

bool isPrintable(int c)
{
    return c >= 32 && c <= 126;
}

bool isWhiteSpace(int c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The value of a hexadecimal digit character, or -1.
int digitValue(int c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

VorpTokeniser::VorpTokeniser(IdStrings& strings) : m_strings(strings), m_emptyText(strings.idString("")) {}

bool VorpTokeniser::lexInit(const std::vector<const char*>& files, VorpErrorHandler* errorHandler)
{
    m_errorHandler = errorHandler;
    for (const char* name : files) {
        const bool isStdin = std::strcmp(name, "-") == 0;
        FILE* file = isStdin ? stdin : std::fopen(name, "rb");
        if (!file) {
            m_errorHandler->vorpError(NoLocation(), AssErrorCodes::FILE_ACCESS, "error opening '%s': %s\n", name,
                                      std::strerror(errno));
            return false;
        }
        std::string text;
        char chunk[65536];
        std::size_t count;
        while ((count = std::fread(chunk, 1, sizeof(chunk), file)) > 0)
            text.append(chunk, count);
        if (std::ferror(file))
            m_errorHandler->vorpError(NoLocation(), AssErrorCodes::FILE_ACCESS, "error reading '%s': %s\n", name,
                                      std::strerror(errno));
        if (!isStdin)
            std::fclose(file);
        addInput(isStdin ? "{standard input}" : name, name, text);
    }
    startScanning();
    return true;
}

void VorpTokeniser::addInput(const char* recordName, const char* givenName, std::string_view text)
{
    IncEvent event{m_strings.idString(recordName), m_inbuf.size(), 0, static_cast<std::uint32_t>(m_lineNum - 1)};
    m_lineNum += static_cast<int>(std::count(text.begin(), text.end(), '\n'));

    // Only blanks and tabs after the last line feed count as a finished last line.
    const std::size_t lastLineStart = text.rfind('\n') == std::string_view::npos ? 0 : text.rfind('\n') + 1;
    const bool lastLineBlank =
        std::all_of(text.begin() + static_cast<std::ptrdiff_t>(lastLineStart), text.end(), isBlank);

    m_inbuf.append(text);
    if (!lastLineBlank) {
        m_inbuf.push_back('\n');
        ++m_lineNum;
        m_errorHandler->vorpWarning(LineLocation(m_strings.idString(givenName), static_cast<unsigned>(m_lineNum)),
                                    AssErrorCodes::LEXICAL_WARNING, "no new line before end of file\n");
    }
    event.end = m_inbuf.size();
    m_incEvents.push_back(event);
}

void VorpTokeniser::startScanning()
{
    m_inbufPos = 0;
    m_lnum = 1;
    nextChar();
}

void VorpTokeniser::nextChar()
{
    m_ch = m_inbufPos < m_inbuf.size() ? static_cast<unsigned char>(m_inbuf[m_inbufPos++]) : -1;
}

int VorpTokeniser::peekAt(std::size_t offset) const
{
    return offset < m_inbuf.size() ? static_cast<unsigned char>(m_inbuf[offset]) : -1;
}

int VorpTokeniser::peekChar(std::size_t ahead) const
{
    return peekAt(m_inbufPos + ahead);
}

std::size_t VorpTokeniser::currentOffset() const
{
    return m_ch == -1 ? m_inbuf.size() : m_inbufPos - 1;
}

std::size_t VorpTokeniser::findIncEvent(std::size_t position) const
{
    // The end offset counts as inside: the position is that of the byte after the current one.
    for (std::size_t i = 0; i < m_incEvents.size(); ++i) {
        if (m_incEvents[i].start <= position && position <= m_incEvents[i].end)
            return i;
    }
    return m_incEvents.size() - 1;
}

LineLocation VorpTokeniser::currentLocation() const
{
    if (m_incEvents.empty())
        return LineLocation(m_emptyText, m_lnum);
    const IncEvent& event = m_incEvents[findIncEvent(m_inbufPos)];
    return LineLocation(event.file, m_lnum - event.lineBase);
}

void VorpTokeniser::locateToken(Token& token, int symbol) const
{
    const LineLocation location = currentLocation();
    token.symbol = symbol;
    token.text = m_emptyText;
    token.line = static_cast<int>(location.getLine());
    token.file = location.getFile();
}

void VorpTokeniser::setupToken(Token& token, int symbol)
{
    locateToken(token, symbol);
    nextChar();
}

void VorpTokeniser::error(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_errorHandler->vorpVError(currentLocation(), AssErrorCodes::SYNTAX, format, args);
    va_end(args);
}

void VorpTokeniser::warning(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_errorHandler->vorpVWarning(currentLocation(), AssErrorCodes::LEXICAL_WARNING, format, args);
    va_end(args);
}

Token VorpTokeniser::scanToken()
{
    Token token = scanNextToken();
    if (token.symbol != S_ENDSTREAM)
        ++m_tokensScanned;
    if (token.symbol == S_NEWLINE)
        ++m_linesScanned;
    return token;
}

Token VorpTokeniser::scanNextToken()
{
    Token token;
    for (;;) {
        while (isBlank(m_ch))
            nextChar();

        switch (m_ch) {
        case '#':
            if (m_startOfLine) {
                std::size_t ahead = 0;
                while (isBlank(peekChar(ahead)))
                    ++ahead;
                if (isDigit(peekChar(ahead))) {
                    scanLineMarker();
                    continue;
                }
            }
            skipToLineFeed();
            continue;
        case -1:
            setupToken(token, S_ENDSTREAM);
            return token;
        case '\r':
        case '\n': {
            const bool pair = m_ch == '\r' && peekChar(0) == '\n';
            setupToken(token, S_NEWLINE);
            if (pair)
                nextChar();
            ++m_lnum;
            m_startOfLine = true;
            return token;
        }
        case '0':
            locateToken(token, S_INTVAL);
            if (peekChar(0) == 'x' || peekChar(0) == 'X') {
                nextChar();
                nextChar();
                scanUnsignedConst(token, 16);
            } else {
                scanUnsignedConst(token, 8);
            }
            return token;
        case '@':
            scanAtName(token);
            return token;
        case '(': setupToken(token, S_LPAREN); return token;
        case ')': setupToken(token, S_RPAREN); return token;
        case '[': setupToken(token, S_LBRACE); return token;
        case ']': setupToken(token, S_RBRACE); return token;
        case ',': setupToken(token, S_COMMA); return token;
        case ':': setupToken(token, S_COLON); return token;
        case '=': setupToken(token, S_EQ); return token;
        case '+': setupToken(token, S_PLUS); return token;
        case '-': setupToken(token, S_MINUS); return token;
        case '|': setupToken(token, S_OR); return token;
        case '*': setupToken(token, S_MULT); return token;
        case '/': setupToken(token, S_DIV); return token;
        case '~': setupToken(token, S_TILDE); return token;
        case '&': setupToken(token, S_AMPH); return token;
        case '?': setupToken(token, S_EENYMEENY); return token;
        case ';':
            setupToken(token, S_SEMICOLON);
            m_startOfLine = true;
            return token;
        case '<':
        case '>': {
            const bool less = m_ch == '<';
            setupToken(token, less ? S_LTHAN : S_GTHAN);
            if (m_ch == (less ? '<' : '>')) {
                token.symbol = less ? S_MLTHAN : S_MGTHAN;
                nextChar();
            } else if (m_ch == '=') {
                token.symbol = less ? S_LTHANEQ : S_GTHANEQ;
                nextChar();
            }
            return token;
        }
        case '$':
            if (scanDollar(token))
                return token;
            continue;
        case '\'':
            scanCharacter(token);
            return token;
        case '"':
            scanOneOrMoreString(token);
            return token;
        default:
            break;
        }

        if (isWordStart(m_ch)) {
            scanIdentifier(token);
            return token;
        }
        if (isDigit(m_ch)) {
            locateToken(token, S_INTVAL);
            scanUnsignedConst(token, 10);
            return token;
        }
        if (isPrintable(m_ch))
            error("Stray '%c' in assembly file\n", m_ch);
        else
            error("Stray '\\%o' in assembly file\n", static_cast<unsigned>(m_ch));
        nextChar();
    }
}

void VorpTokeniser::skipToLineFeed()
{
    while (m_ch != '\n' && m_ch != -1)
        nextChar();
}

void VorpTokeniser::scanLineMarker()
{
    nextChar(); // the '#'
    while (isBlank(m_ch))
        nextChar();

    // Hexadecimal letters pass as digits, still in base 10: callers depend on the old behaviour.
    std::uint32_t number = 0;
    for (int digit = digitValue(m_ch); digit >= 0; digit = digitValue(m_ch)) {
        number = number * 10 + static_cast<std::uint32_t>(digit);
        nextChar();
    }

    // The marker changes the record of the whole input file: later tokens carry the new name.
    IncEvent& event = m_incEvents[findIncEvent(m_inbufPos)];
    m_lnum = number - 1u;
    event.lineBase = 0;

    if (m_ch != '\n' && m_ch != -1)
        nextChar();
    while (isBlank(m_ch))
        nextChar();
    if (m_ch == '"') {
        nextChar();
        const std::size_t start = currentOffset();
        while (m_ch != '"' && m_ch != '\n' && m_ch != -1)
            nextChar();
        event.file = m_strings.idString(std::string_view(m_inbuf).substr(start, currentOffset() - start));
    }
    skipToLineFeed();
}

void VorpTokeniser::scanIdentifier(Token& token)
{
    const std::size_t start = currentOffset();
    setupToken(token, S_NAME);
    while (isWordCharacter(m_ch))
        nextChar();
    const std::string_view word = std::string_view(m_inbuf).substr(start, currentOffset() - start);

    std::size_t ahead = 0;
    while (isBlank(peekAt(currentOffset() + ahead)))
        ++ahead;
    const int follower = peekAt(currentOffset() + ahead);

    token.text = m_strings.idString(word);
    if (m_startOfLine && word[0] == '.' && follower != ':' && follower != '=') {
        token.symbol = lookupDirective(word.substr(1));
        m_startOfLine = false;
        m_currentDirective = token.text;
    } else if (follower != ':') {
        m_startOfLine = false;
    }
}

void VorpTokeniser::scanAtName(Token& token)
{
    setupToken(token, S_AT_NAME);
    const std::size_t start = currentOffset();
    while (isWordCharacter(m_ch))
        nextChar();
    token.text = m_strings.idString(std::string_view(m_inbuf).substr(start, currentOffset() - start));
}

void VorpTokeniser::scanUnsignedConst(Token& token, int base)
{
    m_scanBuf.assign(base == 16 ? "0x" : "");
    const std::uint32_t radix = static_cast<std::uint32_t>(base);
    std::uint32_t value = 0;
    bool overflowReported = false;
    bool invalidReported = false;
    for (;;) {
        if (m_ch == '_') {
            nextChar();
            continue;
        }
        const int digit = digitValue(m_ch);
        if (digit < 0)
            break;
        const std::uint64_t wide = std::uint64_t{value} * radix + static_cast<std::uint64_t>(digit);
        if (!overflowReported && (value > 0xFFFFFFFFu / radix || wide > 0xFFFFFFFFu)) {
            warning("integer constant too large\n");
            overflowReported = true;
        }
        value = static_cast<std::uint32_t>(wide);
        m_scanBuf.push_back(static_cast<char>(m_ch));
        if (digit >= base && !invalidReported) {
            error("invalid digit \"%c\" in %s constant\n", m_ch,
                  base == 10 ? "integer" : base == 16 ? "hex" : "octal");
            invalidReported = true;
        }
        nextChar();
    }
    token.constantValue = value;
    token.constantText = m_strings.idString(std::string_view(m_scanBuf));
}

void VorpTokeniser::scanCharacter(Token& token)
{
    const std::size_t start = currentOffset();
    setupToken(token, S_CHVAL);
    const int value = scanCharConst(false);
    // Only the first character counts: the rest, across line ends and without counting them, is
    // skipped to the closing quote, and without one the input ends here.
    while (m_ch != '\'' && m_ch != -1)
        nextChar();
    if (m_ch == '\'')
        nextChar();
    token.constantValue = static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int8_t>(value)));
    token.text = m_strings.idString(std::string_view(m_inbuf).substr(start, currentOffset() - start));
}

void VorpTokeniser::scanOneOrMoreString(Token& token)
{
    setupToken(token, S_STVAL);
    std::string bytes;
    for (;;) {
        while (m_ch != '"' && m_ch != '\n' && m_ch != -1)
            bytes.push_back(static_cast<char>(scanCharConst(true)));
        if (m_ch != '"') {
            error("missing terminating \" character\n");
            break;
        }
        nextChar();
        if (m_ch != '"')
            break;
        nextChar(); // a string that follows at once is part of this one
    }
    token.stringData = m_strings.idString(std::string_view(bytes));
    token.stringLength = static_cast<unsigned>(bytes.size() + 1);
    token.text = m_strings.idString(token.stringData);
}

bool VorpTokeniser::scanDollar(Token& token)
{
    int symbol = 0;
    std::size_t length = 2;
    switch (peekChar(0)) {
    case ':': symbol = S_MINEYMO; break;
    case 'A': symbol = S_ALIGN; break;
    case 'D': symbol = S_DEFINED; break;
    case 'M': symbol = S_MAX; break;
    case 'N': symbol = S_SYMNUM; break;
    case 'C':
        if (peekChar(1) == 'D') {
            length = 4;
            switch (peekChar(2)) {
            case 'd': symbol = S_CDDOWN; break;
            case 'e': symbol = S_CDEXACT; break;
            case 'u': symbol = S_CDUP; break;
            default: break;
            }
        }
        break;
    default:
        break;
    }
    if (symbol == 0) {
        error("Stray '$' in assembly file\n");
        nextChar();
        return false;
    }
    setupToken(token, symbol);
    for (std::size_t i = 1; i < length; ++i)
        nextChar();
    return true;
}

int VorpTokeniser::scanCharConst(bool inString)
{
    if (m_ch != '\\') {
        if (!inString && m_ch == '\'') {
            error("empty character constant\n");
            return 0;
        }
        const int value = m_ch;
        if (!isPrintable(value) && !isWhiteSpace(value))
            warning("unprintable character in %s\n", inString ? "string" : "character constant");
        nextChar();
        return value;
    }

    nextChar(); // the backslash
    const int escape = m_ch;
    switch (escape) {
    case '"': case '\'': case '?': case '\\': nextChar(); return escape;
    case 'a': nextChar(); return 7;
    case 'b': nextChar(); return 8;
    case 'f': nextChar(); return 12;
    case 'n': nextChar(); return 10;
    case 'r': nextChar(); return 13;
    case 't': nextChar(); return 9;
    case 'v': nextChar(); return 11;
    case '0': case '1': case '2': case '3': case '4': case '5': case '6': case '7': {
        unsigned value = 0;
        for (int count = 0; count < 3 && m_ch >= '0' && m_ch <= '7'; ++count) {
            value = value * 8 + static_cast<unsigned>(m_ch - '0');
            nextChar();
        }
        if (value > 255)
            warning("octal escape sequence out of range\n");
        return static_cast<int>(value & 0xFF);
    }
    case 'x': {
        nextChar();
        std::uint32_t value = 0;
        bool anyDigit = false;
        for (int digit = digitValue(m_ch); digit >= 0; digit = digitValue(m_ch)) {
            value = value * 16 + static_cast<std::uint32_t>(digit);
            anyDigit = true;
            nextChar();
        }
        if (!anyDigit) {
            error("\\x used with no following hex digits\n");
            if (m_ch != '"' && m_ch != '\'' && m_ch != -1)
                nextChar();
            return 0;
        }
        if (value > 255)
            warning("hex escape sequence out of range\n");
        return static_cast<int>(value & 0xFF);
    }
    default:
        warning("unknown escape sequence '\\%c'\n", escape);
        nextChar();
        return escape;
    }
}

int VorpTokeniser::lookupDirective(std::string_view word)
{
    const auto found = directiveMap().find(word);
    return found == directiveMap().end() ? S_D_UNRECOGNISED : found->second;
}

bool VorpTokeniser::getRegisterNum(const Token& token, int& number)
{
    if (token.symbol != S_NAME || !token.text)
        return false;
    const int found = registerNumber(token.text);
    if (found < 0)
        return false;
    number = found;
    return true;
}

bool VorpTokeniser::isRegister(const Token& token)
{
    int number;
    return getRegisterNum(token, number);
}

} // namespace vorp
