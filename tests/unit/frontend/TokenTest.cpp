#include "frontend/Token.h"

#include "diag/IdStrings.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

namespace vorp {
namespace {

TEST(TokenTest, PrintableTextOfEachKind)
{
    IdStrings strings;
    const struct { int symbol; const char* spelling; } punctuation[] = {
        {S_LPAREN, "("},  {S_RPAREN, ")"},     {S_LBRACE, "["},  {S_RBRACE, "]"},    {S_SEMICOLON, ";"},
        {S_COMMA, ","},   {S_COLON, ":"},      {S_LTHAN, "<"},   {S_GTHAN, ">"},     {S_LTHANEQ, "<="},
        {S_GTHANEQ, ">="}, {S_MLTHAN, "<<"},   {S_MGTHAN, ">>"}, {S_PLUS, "+"},      {S_MINUS, "-"},
        {S_OR, "|"},      {S_MULT, "*"},       {S_DEFINED, "$D"}, {S_ALIGN, "$A"},   {S_MAX, "$M"},
        {S_SYMNUM, "$N"}, {S_EENYMEENY, "?"},  {S_MINEYMO, "$:"}, {S_AMPH, "&"},     {S_DIV, "/"},
        {S_TILDE, "~"},
    };
    for (const auto& p : punctuation) {
        const Token token = newToken(strings, p.symbol, nullptr, 1, "a.S");
        EXPECT_STREQ(tokenCharStar(&token), p.spelling) << p.symbol;
    }

    const Token null;
    EXPECT_STREQ(tokenCharStar(&null), "NULL");
    const Token name = newToken(strings, S_NAME, "lab", 3, "a.S");
    EXPECT_STREQ(tokenCharStar(&name), "lab");
    const Token directive = newToken(strings, S_D_CFI_RESTORE, ".cfi_restore", 3, "a.S");
    EXPECT_STREQ(tokenCharStar(&directive), ".cfi_restore");
    Token number = newUnsignedConstToken(strings, 17, 3, "a.S");
    number.constantText = strings.idString("0x11"); // numbers print as written
    EXPECT_STREQ(tokenCharStar(&number), "0x11");

    std::unique_ptr<FILE, int (*)(FILE*)> out(std::tmpfile(), std::fclose);
    ASSERT_NE(out, nullptr);
    fPrintToken(out.get(), &name);
    fPrintToken(out.get(), &number);
    const Token shift = newToken(strings, S_MLTHAN, nullptr, 1, "a.S");
    fPrintToken(out.get(), &shift);
    std::rewind(out.get());
    char buffer[32] = {};
    ASSERT_NE(std::fgets(buffer, sizeof(buffer), out.get()), nullptr);
    EXPECT_STREQ(buffer, "lab0x11<<");
}

TEST(TokenTest, TokensBuiltOutsideTheScanner)
{
    IdStrings strings;
    const char* file = strings.idString("a.S");
    const Token big = newUnsignedConstToken(strings, 4294967295u, 7, file);
    EXPECT_EQ(big.symbol, S_INTVAL);
    EXPECT_EQ(big.constantValue, 4294967295u);
    EXPECT_EQ(big.text, strings.idString("4294967295"));
    EXPECT_EQ(big.constantText, big.text);
    EXPECT_EQ(big.line, 7);
    EXPECT_EQ(big.file, file);
    EXPECT_STREQ(newUnsignedConstToken(strings, 0, 1, file).constantText, "0");

    char source[] = "hi";
    const Token string = newToken(strings, S_STVAL, source, 2, file);
    source[0] = 'X'; // the token holds an interned copy
    EXPECT_STREQ(string.text, "hi");
    EXPECT_EQ(string.text, strings.idString("hi"));
    EXPECT_STREQ(string.stringData, "hi");
    EXPECT_EQ(string.stringLength, 3u);
    EXPECT_EQ(string.line, 2);

    const Token bare = newToken(strings, S_NAME, nullptr, 4, file);
    EXPECT_EQ(bare.text, nullptr);
    EXPECT_EQ(bare.stringData, nullptr);
    EXPECT_EQ(bare.stringLength, 0u);

    const Token parts[] = {bare, string, big};
    const std::unique_ptr<TokenLine> line(newTokenLine(parts, 3));
    ASSERT_EQ(line->size(), 3u);
    EXPECT_EQ((*line)[1].stringData, string.stringData);
    EXPECT_EQ((*line)[2].constantValue, 4294967295u);
}

TEST(TokenDeathTest, MisuseIsAnInternalError)
{
    IdStrings strings;
    const Token newline = newToken(strings, S_NEWLINE, nullptr, 1, "a.S");
    EXPECT_DEATH(tokenCharStar(&newline), "unexpected token");
    EXPECT_DEATH(newToken(strings, S_INTVAL, "1", 1, "a.S"), "sym != 260");
}

} // namespace
} // namespace vorp
