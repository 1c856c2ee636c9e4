#pragma once

#include <cstdio>
#include <vector>

namespace vorp {

class IdStrings;

// Token kinds. The numbering is fixed: other parts of the assembler compare with these names, and
// the numbers show in internal messages.
enum TokenSymbol {
    S_NULL = 258,
    S_NAME = 259,
    S_INTVAL = 260,
    S_CHVAL = 261,
    S_STVAL = 262,
    S_DIRECTIVE = 263,
    S_NEWLINE = 264,
    S_ENDSTREAM = 265,
    S_AT_NAME = 266,
    S_COLON = 267,
    S_D_ALIGN = 268,
    S_D_ASCII = 269,
    S_D_ASCIIZ = 270,
    S_D_BYTE = 271,
    S_D_EXTERN = 272,
    S_D_FILE = 273,
    S_D_WEAK = 274,
    S_D_GLOBAL = 275,
    S_D_GLOBL = 276,
    S_D_LOC = 277,
    S_D_LOCAL = 278,
    S_D_LOCL = 279,
    S_D_IDENT = 280,
    S_D_CORE = 281,
    S_D_COREREV = 282,
    S_D_INT = 283,
    S_D_LONG = 284,
    S_D_POPSECTION = 285,
    S_D_PUSHSECTION = 286,
    S_D_SECTION = 287,
    S_D_SET = 288,
    S_D_LINKSET = 289,
    S_D_ASSERT = 290,
    S_D_SASSERT = 291,
    S_D_CALL = 292,
    S_D_PAR = 293,
    S_D_GLOBREAD = 294,
    S_D_GLOBWRITE = 295,
    S_D_SAMERESOURCE = 296,
    S_D_PARWRITE = 297,
    S_D_GLOBPASSESREF = 298,
    S_D_SHORT = 299,
    S_D_SKIP = 300,
    S_D_SLEB128 = 301,
    S_D_SPACE = 302,
    S_D_TEXT = 303,
    S_D_ULEB128 = 304,
    S_D_WORD = 305,
    S_D_UNRECOGNISED = 306,
    S_D_TYPE = 307,
    S_D_TYPESTRING = 308,
    S_D_SIZE = 309,
    S_D_JMPTABLE = 310,
    S_D_JMPTABLE32 = 311,
    S_D_ZEBBRANCH = 312,
    S_D_ZEBENDPOINT = 313,
    S_D_ZEBLABEL = 314,
    S_D_ZEBCALL = 315,
    S_D_ZEBTHREADSTART = 316,
    S_D_ZEBTHREADSTOP = 317,
    S_D_ZEBCOMMAND = 318,
    S_D_ZEBSYSTEM = 319,
    S_D_ZEBLOOP = 320,
    S_D_CCTOP = 321,
    S_D_CCBOT = 322,
    S_D_SCHEDULING = 323,
    S_D_SYNTAX = 324,
    S_D_INLINED = 325,
    S_D_CFI_SECTIONS = 326,
    S_D_CFI_STARTPROC = 327,
    S_D_CFI_ENDPROC = 328,
    S_D_CFI_PERSONALITY = 329,
    S_D_CFI_LSDA = 330,
    S_D_CFI_DEF_CFA = 331,
    S_D_CFI_DEF_CFA_REGISTER = 332,
    S_D_CFI_DEF_CFA_OFFSET = 333,
    S_D_CFI_ADJUST_CFA_OFFSET = 334,
    S_D_CFI_OFFSET = 335,
    S_D_CFI_REL_OFFSET = 336,
    S_D_CFI_REGISTER = 337,
    S_D_CFI_RESTORE = 338,
    S_D_CFI_UNDEFINED = 339,
    S_D_CFI_SAME_VALUE = 340,
    S_D_CFI_REMEMBER_STATE = 341,
    S_D_CFI_RESTORE_STATE = 342,
    S_D_CFI_RETURN_COLUMN = 343,
    S_LPAREN = 344,
    S_RPAREN = 345,
    S_LBRACE = 346,
    S_RBRACE = 347,
    S_SEMICOLON = 348,
    S_COMMA = 349,
    S_EQ = 350,
    S_LTHAN = 351,
    S_GTHAN = 352,
    S_LTHANEQ = 353,
    S_GTHANEQ = 354,
    S_MLTHAN = 355,
    S_MGTHAN = 356,
    S_PLUS = 357,
    S_MINUS = 358,
    S_OR = 359,
    S_MULT = 360,
    S_DEFINED = 361,
    S_ALIGN = 362,
    S_MAX = 363,
    S_CDUP = 364,
    S_CDDOWN = 365,
    S_CDEXACT = 366,
    S_SYMNUM = 367,
    S_EENYMEENY = 368,
    S_MINEYMO = 369,
    S_AMPH = 370,
    S_DIV = 371,
    S_TILDE = 372,
    UNARY_OP_PREC = 373,
};

// A plain value: all text pointers are interned or owned by nobody, so tokens copy freely.
// The fields are ordered so that the pairs of 4-byte ones leave no padding: every line of the
// input keeps its tokens, so their size is most of the assembler's memory.
struct Token {
    int symbol = S_NULL;
    unsigned constantValue = 0;       // numbers: the value; characters: the byte sign-extended
    const char* text = nullptr;       // spelling; directive words keep their dot, @names lose their @
    const char* stringData = nullptr; // strings only: all bytes with a final NUL, inner NULs allowed
    const char* constantText = nullptr; // numbers only: digits as written, "0x" in front for hex
    const char* file = nullptr;
    unsigned stringLength = 0;        // strings only: size of stringData including the final NUL
    int line = 0;
};

using TokenLine = std::vector<Token>;

// The printable text of a token, as messages show it.
const char* tokenCharStar(const Token* token);
void fPrintToken(FILE* out, const Token* token);

// Tokens made outside the scanner, with their texts interned in `strings`. `symbol` must not be
// S_INTVAL: use newUnsignedConstToken.
Token newToken(IdStrings& strings, int symbol, const char* text, int line, const char* file);
Token newUnsignedConstToken(IdStrings& strings, unsigned value, int line, const char* file);
TokenLine* newTokenLine(const Token* tokens, unsigned count);
// Tokens that the assembler makes itself stand at line 0 of strings.generatedFile(), "<unknown>".
Token newGeneratedToken(IdStrings& strings, int symbol, const char* text);

} // namespace vorp
