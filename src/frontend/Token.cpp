#include "frontend/Token.h"

#include "diag/IdStrings.h"

#include <cassert>
#include <cstring>

namespace vorp {

const char* tokenCharStar(const Token* token)
{
    switch (token->symbol) {
    case S_NULL:
        return "NULL";
    case S_NAME:
    case S_CHVAL:
    case S_STVAL:
    case S_AT_NAME:
    case S_D_ALIGN: case S_D_ASCII: case S_D_ASCIIZ: case S_D_BYTE: case S_D_EXTERN: case S_D_FILE:
    case S_D_GLOBAL: case S_D_GLOBL: case S_D_LOC: case S_D_IDENT: case S_D_CORE: case S_D_COREREV:
    case S_D_INT: case S_D_LONG: case S_D_POPSECTION: case S_D_PUSHSECTION: case S_D_SECTION:
    case S_D_SET: case S_D_LINKSET: case S_D_SASSERT: case S_D_CALL: case S_D_PAR: case S_D_GLOBREAD:
    case S_D_GLOBWRITE: case S_D_SAMERESOURCE: case S_D_PARWRITE: case S_D_GLOBPASSESREF:
    case S_D_SHORT: case S_D_SKIP: case S_D_SLEB128: case S_D_SPACE: case S_D_TEXT: case S_D_ULEB128:
    case S_D_WORD: case S_D_UNRECOGNISED: case S_D_TYPE: case S_D_TYPESTRING: case S_D_JMPTABLE:
    case S_D_JMPTABLE32: case S_D_ZEBBRANCH: case S_D_ZEBTHREADSTART: case S_D_ZEBTHREADSTOP:
    case S_D_ZEBLOOP: case S_D_CCTOP: case S_D_CCBOT: case S_D_SCHEDULING: case S_D_SYNTAX:
    case S_D_INLINED: case S_D_CFI_SECTIONS: case S_D_CFI_STARTPROC: case S_D_CFI_ENDPROC:
    case S_D_CFI_PERSONALITY: case S_D_CFI_LSDA: case S_D_CFI_DEF_CFA: case S_D_CFI_DEF_CFA_REGISTER:
    case S_D_CFI_DEF_CFA_OFFSET: case S_D_CFI_ADJUST_CFA_OFFSET: case S_D_CFI_OFFSET:
    case S_D_CFI_REL_OFFSET: case S_D_CFI_REGISTER: case S_D_CFI_RESTORE: case S_D_CFI_UNDEFINED:
    case S_D_CFI_SAME_VALUE: case S_D_CFI_REMEMBER_STATE: case S_D_CFI_RESTORE_STATE:
    case S_D_CFI_RETURN_COLUMN:
        return token->text;
    case S_INTVAL:
        return token->constantText;
    case S_LPAREN: return "(";
    case S_RPAREN: return ")";
    case S_LBRACE: return "[";
    case S_RBRACE: return "]";
    case S_SEMICOLON: return ";";
    case S_COMMA: return ",";
    case S_COLON: return ":";
    case S_LTHAN: return "<";
    case S_GTHAN: return ">";
    case S_LTHANEQ: return "<=";
    case S_GTHANEQ: return ">=";
    case S_MLTHAN: return "<<";
    case S_MGTHAN: return ">>";
    case S_PLUS: return "+";
    case S_MINUS: return "-";
    case S_OR: return "|";
    case S_MULT: return "*";
    case S_DEFINED: return "$D";
    case S_ALIGN: return "$A";
    case S_MAX: return "$M";
    case S_SYMNUM: return "$N";
    // The clock divisions print too: a listing or message must never stop the run.
    case S_CDUP: return "$CDu";
    case S_CDDOWN: return "$CDd";
    case S_CDEXACT: return "$CDe";
    case S_EENYMEENY: return "?";
    case S_MINEYMO: return "$:";
    case S_AMPH: return "&";
    case S_DIV: return "/";
    case S_TILDE: return "~";
    default:
        assert(0 && "unexpected token");
        return "";
    }
}

void fPrintToken(FILE* out, const Token* token)
{
    fputs(tokenCharStar(token), out);
}

Token newToken(IdStrings& strings, int sym, const char* text, int line, const char* file)
{
    assert(sym != 260);
    Token token;
    token.symbol = sym;
    token.text = text ? strings.idString(text) : nullptr;
    token.line = line;
    token.file = file;
    if (sym == S_STVAL) {
        const char* data = token.text ? token.text : strings.idString("");
        token.stringData = data;
        token.stringLength = static_cast<unsigned>(std::strlen(data) + 1);
    }
    return token;
}

Token newUnsignedConstToken(IdStrings& strings, unsigned value, int line, const char* file)
{
    Token token;
    token.symbol = S_INTVAL;
    token.text = strings.numberText(value);
    token.constantText = token.text;
    token.constantValue = value;
    token.line = line;
    token.file = file;
    return token;
}

TokenLine* newTokenLine(const Token* tokens, unsigned count)
{
    return new TokenLine(tokens, tokens + count);
}

Token newGeneratedToken(IdStrings& strings, int symbol, const char* text)
{
    return newToken(strings, symbol, text, 0, strings.generatedFile());
}

} // namespace vorp
