#pragma once

#include "diag/Location.h"
#include "frontend/Token.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorp {

class IdStrings;

class VorpErrorHandler;

// Reads every input file into one buffer, then hands out one token at a time.
//
// Whether a word beginning with '.' is a directive is decided here: at the start of a line (labels
// do not end the start) and when the next non-blank character is neither ':' nor '='.
class VorpTokeniser {
public:
    // The texts of the tokens are interned in `strings`, which must outlive them.
    explicit VorpTokeniser(IdStrings& strings);

    // Loads the named files in order; "-" is standard input. Returns false when a file can't be
    // opened (reported as an error); a read error is reported and what was read is kept.
    bool lexInit(const std::vector<const char*>& files, VorpErrorHandler* errorHandler);

    // Appends one input text as if it had been read from a file: `recordName` is the file name the
    // tokens carry, `givenName` the name used by the missing-newline warning.
    void addInput(const char* recordName, const char* givenName, std::string_view text);
    // Starts scanning at the beginning of the loaded text.
    void startScanning();

    // The next token; S_ENDSTREAM at the end of the input, as often as it is asked.
    Token scanToken();
    // Tokens handed out so far, the end of the input not counted, and the line ends among them.
    std::uint64_t tokensScanned() const { return m_tokensScanned; }
    std::uint64_t linesScanned() const { return m_linesScanned; }

    // The place of the character being scanned.
    LineLocation currentLocation() const;
    // Spelling of the last directive word seen, or null before the first.
    const char* currentDirective() const { return m_currentDirective; }

    static bool getRegisterNum(const Token& token, int& number);
    static bool isRegister(const Token& token);
    // The directive token of a word without its dot, or S_D_UNRECOGNISED.
    static int lookupDirective(std::string_view word);

private:
    Token scanNextToken();
    struct IncEvent {
        const char* file;
        std::size_t start;
        std::size_t end;
        std::uint32_t lineBase;
    };

    void nextChar();
    // The byte at an offset of the buffer, or -1 past its end.
    int peekAt(std::size_t offset) const;
    // The byte `ahead` places after the current one.
    int peekChar(std::size_t ahead) const;
    // Offset of the current character; the buffer size at the end.
    std::size_t currentOffset() const;
    std::size_t findIncEvent(std::size_t position) const;
    // Fills kind and place of a token; setupToken also consumes the current character.
    void locateToken(Token& token, int symbol) const;
    void setupToken(Token& token, int symbol);
    void error(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void warning(const char* format, ...) __attribute__((format(printf, 2, 3)));

    void skipToLineFeed();
    void scanLineMarker();
    void scanIdentifier(Token& token);
    void scanAtName(Token& token);
    void scanUnsignedConst(Token& token, int base);
    void scanCharacter(Token& token);
    void scanOneOrMoreString(Token& token);
    bool scanDollar(Token& token);
    int scanCharConst(bool inString);
    void strayCharacter(int ch);

    std::string m_inbuf;
    std::size_t m_inbufPos = 0;
    int m_ch = -1;
    // Line numbers are what the input's line markers say, any 32-bit value; counting on from the
    // largest wraps around rather than overflowing.
    std::uint32_t m_lnum = 1;
    std::uint64_t m_tokensScanned = 0;
    std::uint64_t m_linesScanned = 0;
    std::vector<IncEvent> m_incEvents;
    IdStrings& m_strings;
    const char* m_emptyText;
    VorpErrorHandler* m_errorHandler = nullptr;
    std::string m_scanBuf;
    bool m_startOfLine = true;
    const char* m_currentDirective = nullptr;
    int m_lineNum = 1;
};

} // namespace vorp
