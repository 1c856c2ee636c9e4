#include "ExprTestSupport.h"
#include "diag/IdStrings.h"
#include "diag/VorpErrorHandler.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::string spell(const TokenLine& line)
{
    std::string text;
    for (const Token& token : line)
        text += (text.empty() ? "" : " ") + std::string(tokenCharStar(&token));
    return text;
}

// Writes each action to standard error, so that its order against the diagnostics shows.
class RecordingActions : public ParserActions {
public:
    void makeLabelLine(const Token& name) override { note("label " + std::string(name.text)); }
    void makeAssemblyLine(TokenLinePtr line) override { note("asm " + spell(*line)); }
    void makeDirectiveLine(TokenLinePtr line) override { note("line " + spell(*line)); }
    void alignDirective(const Token&, OperandPtr value, OperandPtr fill) override
    {
        note("align " + test::shape(value.get()) + (fill ? " " + test::shape(fill.get()) : ""));
    }
    void asciiDirective(const Token& d, TokenLinePtr strings) override
    {
        note(std::string(d.text) + (strings ? " " + spell(*strings) : ""));
    }
    void dataDirective(const Token& d, OperandList values) override
    {
        std::string text = d.text;
        for (const OperandPtr& value : values)
            text += " " + test::shape(value.get());
        note(text);
    }
    void visibilityDirective(const Token& d, const Token& symbol, const Token* text) override
    {
        note(std::string(d.text) + " " + symbol.text + (text ? std::string(" \"") + text->text + "\"" : ""));
    }
    void locDirective(const Token&, TokenLinePtr line) override { note("loc " + spell(*line)); }
    void sectionDirective(TokenLinePtr line) override { note("section " + spell(*line)); }
    void popSection(const char*, int line) override { note("popsection at " + std::to_string(line)); }
    void setDirective(const Token&, const Token& symbol, OperandPtr value) override
    {
        note("set " + std::string(symbol.text) + " " + test::shape(value.get()));
    }
    void setDirective2(const Token& symbol, OperandPtr value) override
    {
        note("set " + std::string(symbol.text) + " " + test::shape(value.get()));
    }
    void readWriteDirective(const Token&, const Token& a, const Token& b, OperandPtr offset, OperandPtr size,
                            const Token&) override
    {
        note("readwrite " + std::string(a.text) + " " + b.text +
             (offset ? " " + test::shape(offset.get()) + " " + test::shape(size.get()) : ""));
    }
    void ccTopDirective(TokenLinePtr line) override { note("cctop " + spell(*line)); }
    void zebLoopDirective(const Token&, const Token& count) override { note("zebloop " + std::string(tokenCharStar(&count))); }
    void cfiStartprocDirective(const Token&, const Token* word) override
    {
        note(std::string("startproc") + (word ? std::string(" ") + word->text : ""));
    }
    void cfiPersonalityDirective(const Token&, OperandPtr encoding, const Token* symbol) override
    {
        note("personality " + test::shape(encoding.get()) + (symbol ? std::string(" ") + symbol->text : ""));
    }

private:
    static void note(const std::string& text) { fprintf(stderr, "[%s]\n", text.c_str()); }
};

// Parses the text as file "t.S" and returns actions and diagnostics in the order they happened.
std::string run(const std::string& text, bool* madeBinary = nullptr)
{
    VorpErrorHandler errors;
    IdStrings strings;
    VorpTokeniser tokeniser(strings);
    RecordingActions actions;
    CaptureStderr();
    tokeniser.lexInit({}, &errors);
    tokeniser.addInput("t.S", "t.S", text);
    tokeniser.startScanning();
    VorpParser(tokeniser, errors, actions).parse();
    if (madeBinary)
        *madeBinary = errors.getMakeBinary();
    return GetCapturedStderr();
}

TEST(VorpParserTest, AcceptsEveryLineShape)
{
    bool ok = false;
    EXPECT_EQ(run("\n;;\na: b: nop\nc:\n d: .word 1, x\nldw r0, sp[1]:x\nfoo = 3\n.set foo, 3\nbu -4 ; ret\n", &ok),
              "[label a]\n[label b]\n[asm nop]\n[label c]\n[label d]\n[.word 1 x]\n"
              "[asm ldw r0 , sp [ 1 ] : x]\n[set foo 3]\n[set foo 3]\n[asm bu - 4]\n[asm ret]\n");
    EXPECT_TRUE(ok);
    EXPECT_EQ(run(".section .dp.data, \"awd\", @progbits, 4, 2+2\n.pushsection .x\n.section .y, \"a\"\n"),
              "[section .section .dp.data , awd , progbits , 4 , 2 + 2]\n[section .pushsection .x]\n"
              "[section .section .y , a]\n");
    EXPECT_EQ(run(".loc 1 2 3 is_stmt 0 prologue_end\n.loc 1 2\n.globl f, \"x\"\n.extern g\n"),
              "[loc 1 2 3 is_stmt 0 prologue_end]\n[loc 1 2]\n[.globl f \"x\"]\n[.extern g]\n");
    EXPECT_EQ(run(".globread a, b, 4, 8, \"t\"\n.parwrite a, b, \"t\"\n.cc_top f.function, f\n.jmptable a, b\n"
                  ".skip 4, 0xff\n.ascii \"a\", \"b\"\n.asciiz\n.cfi_startproc simple\n.cfi_personality 0, p\n"),
              "[readwrite a b 4 8]\n[readwrite a b]\n[cctop .cc_top f.function , f]\n[line .jmptable a , b]\n"
              "[line .skip 4 , 0xff]\n[.ascii a , b]\n[.asciiz]\n[startproc simple]\n[personality 0 p]\n");
}

TEST(VorpParserTest, CompleteDirectivesRunBeforeTheErrorBehindThem)
{
    EXPECT_EQ(run(".word 1 2\n.word 1,\n.word )\n"),
              "[.word 1]\nt.S:1: Error: A00001 Extra tokens after .word directive\n"
              "t.S:2: Error: A00001 Unreconciled syntax error\n"
              "[.word]\nt.S:3: Error: A00001 Extra tokens after .word directive\n");
    // The "directive" named is the last directive word scanned, whatever the statement.
    EXPECT_EQ(run(".text\nfoo = 3 4\n"), "[set foo 3]\nt.S:2: Error: A00001 Extra tokens after .text directive\n");
    EXPECT_EQ(run("foo = 3 4\n"), "[set foo 3]\nt.S:1: Error: A00001 Extra tokens after (null) directive\n");
    // An instruction is added as soon as nothing can extend its last operand.
    EXPECT_EQ(run("add r0, r1 r2\nadd r0,\nldw r0, sp[1]:\n"),
              "[asm add r0 , r1]\nt.S:1: Error: A00001 Unreconciled syntax error\n"
              "t.S:2: Error: A00001 Unreconciled syntax error\n"
              "t.S:3: Error: A00001 Unreconciled syntax error\n");
    EXPECT_EQ(run(".align 4, 2 )\n.align 4, )\n.loc 1 2 x\n"),
              "[align 4 2]\nt.S:1: Error: A00001 Extra tokens after .align directive\n"
              "t.S:2: Error: A00001 Unreconciled syntax error\n"
              "[loc 1 2]\nt.S:3: Error: A00001 Extra tokens after .loc directive\n");
}

TEST(VorpParserTest, ActionsThatNeedNoLookaheadRunBeforeTheNextTokenIsScanned)
{
    // Here the statement is complete with its last token ...
    EXPECT_EQ(run(".popsection !\n.zebloop 5 !\na: !\n.cfi_startproc x !\n"),
              "[popsection at 1]\nt.S:1: Error: A00001 Stray '!' in assembly file\n"
              "[zebloop 5]\nt.S:2: Error: A00001 Stray '!' in assembly file\n"
              "[label a]\nt.S:3: Error: A00001 Stray '!' in assembly file\n"
              "[startproc x]\nt.S:4: Error: A00001 Stray '!' in assembly file\n");
    // ... while these could go on, so the next token is scanned first.
    EXPECT_EQ(run("nop !\n.align 4 !\n.cfi_startproc !\n"),
              "t.S:1: Error: A00001 Stray '!' in assembly file\n[asm nop]\n"
              "t.S:2: Error: A00001 Stray '!' in assembly file\n[align 4]\n"
              "t.S:3: Error: A00001 Stray '!' in assembly file\n[startproc]\n");
}

TEST(VorpParserTest, RecoversAtTheNextLineEndOrSemicolon)
{
    EXPECT_EQ(run(".cfi_return_column 1\n.cfi_restore 1 ! x\n.nosuch ) ; nop\n"),
              "t.S:1: Error: A00001 Unreconciled syntax error\n"
              "t.S:2: Error: A00001 unknown pseudo-op: '.cfi_restore'\n"
              "t.S:2: Error: A00001 Stray '!' in assembly file\n"
              "t.S:3: Error: A00001 unknown pseudo-op: '.nosuch'\n[asm nop]\n");
    // One message per line; a label before the error stays.
    EXPECT_EQ(run("a: ) ) )\nb: .word 1 2 3\n1: nop\n"),
              "[label a]\nt.S:1: Error: A00001 Unreconciled syntax error\n"
              "[label b]\n[.word 1]\nt.S:2: Error: A00001 Extra tokens after .word directive\n"
              "t.S:3: Error: A00001 Unreconciled syntax error\n");
}

TEST(VorpParserTest, EndOfInputEndsThePartWithoutALineEnd)
{
    bool ok = true;
    EXPECT_EQ(run(".byte 'a\n\n", &ok),
              "[.byte 'a\n\n]\nt.S:1: Error: A00001 Extra tokens after .byte directive\n");
    EXPECT_FALSE(ok);
    EXPECT_EQ(run(".set x, 'a"), "t.S:2: Warning: A00002 no new line before end of file\n"
                                 "[set x 'a\n]\nt.S:1: Error: A00001 Extra tokens after .set directive\n");
    EXPECT_EQ(run(".word (1, 'a"), "t.S:2: Warning: A00002 no new line before end of file\n"
                                   "t.S:1: Error: A00001 Unreconciled syntax error\n");
}

TEST(VorpParserTest, NestingBeyondTheParserStackIsASyntaxErrorAndEndsTheParse)
{
    const std::string deep = ".word " + std::string(100000, '(') + "1" + std::string(100000, ')') + "\n";
    EXPECT_EQ(run(deep + ".word 1 2\n"), "t.S:1: Error: A00001 Unreconciled syntax error\n");
    const std::string chain = ".word 1 ? " + [] {
        std::string text;
        for (int i = 0; i < 20000; ++i)
            text += "1 ? ";
        return text;
    }() + "\n";
    EXPECT_EQ(run(chain), "t.S:1: Error: A00001 Unreconciled syntax error\n");
    // Deep but within the stack: fine.
    const std::string fits = ".word " + std::string(3000, '(') + "1" + std::string(3000, ')') + "\n";
    EXPECT_EQ(run(fits).substr(0, 15), "[.word (PAREN (");
}

TEST(VorpParserTest, ExpressionTrees)
{
    EXPECT_EQ(run(".word 2 + 3 * 4, (2 + 3) * 4, 1 << 2 + 1, 1 | 2 & 3, 8 $M 1 + 2\n"),
              "[.word (ADD 2 (MULTIPLY 3 4)) (MULTIPLY (PAREN (ADD 2 3)) 4) (SHIFT_LEFT 1 (ADD 2 1)) "
              "(BIT_OR 1 (BIT_AND 2 3)) (MAX 8 (ADD 1 2))]\n");
    EXPECT_EQ(run(".word 1 - 2 - 3, a < b >= c, x $A 4 * 2, a $CDu b $A c, 1 / 2 / 3\n"),
              "[.word (SUBTRACT (SUBTRACT 1 2) 3) (GREATER_EQUAL (LESS a b) c) (MULTIPLY (ALIGN x 4) 2) "
              "(ALIGN (CLOCKDIV_UP a b) c) (DIVIDE (DIVIDE 1 2) 3)]\n");
    // A prefix operator takes one primary; two in a row are an error.
    EXPECT_EQ(run(".word -a + b, a + -b, ~x, $D x, $N (a), -(a + 1)\n.word - -a\n.word ~$D x\n"),
              "[.word (ADD (NEGATE a) b) (ADD a (NEGATE b)) (BIT_NOT x) (DEFINED x) (SYMNUM (PAREN a)) "
              "(NEGATE (PAREN (ADD a 1)))]\n"
              "t.S:2: Error: A00001 Unreconciled syntax error\nt.S:3: Error: A00001 Unreconciled syntax error\n");
    // The conditional nests to the right, in both branches.
    EXPECT_EQ(run(".word a ? b $: c ? d $: e, a ? b ? c $: d $: e, a + 1 ? b | c $: 0\n"),
              "[.word (CONDITIONAL a b (CONDITIONAL c d e)) (CONDITIONAL a (CONDITIONAL b c d) e) "
              "(CONDITIONAL (ADD a 1) (BIT_OR b c) 0)]\n");
    EXPECT_EQ(run(".word a ? b\n.word a $: b\n.word (a ? b)\n"),
              "t.S:1: Error: A00001 Unreconciled syntax error\n"
              "[.word a]\nt.S:2: Error: A00001 Extra tokens after .word directive\n"
              "t.S:3: Error: A00001 Unreconciled syntax error\n");
}

TEST(VorpParserTest, InstructionOperandsFlattenBackToTheirTokens)
{
    EXPECT_EQ(run("add r0, r1, 4\nldc r0, -(a + 1) * 2\nfoo x[a ? 1 $: 2]:y, (1)\n"),
              "[asm add r0 , r1 , 4]\n[asm ldc r0 , - ( a + 1 ) * 2]\n[asm foo x [ a ? 1 $: 2 ] : y , ( 1 )]\n");
}

} // namespace
} // namespace vorp
