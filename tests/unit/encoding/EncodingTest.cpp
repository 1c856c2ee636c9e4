#include "encoding/AssembleSupport.h"
#include "isa/EncoderFormat.h"
#include "isa/Tl3bInstructionTable.h"

#include <gtest/gtest.h>

#include <string>

namespace vorp {
namespace {

using encoding_test::Assembled;
using encoding_test::assemble;
using encoding_test::bytesOf;
using encoding_test::repeat;

TEST(EncodingTest, RegisterLayouts)
{
    EXPECT_EQ(bytesOf("add r1, r2, r3\n"), "1B 10 ");
    EXPECT_EQ(bytesOf("add r5, r9, r11\n"), "57 16 ");
    EXPECT_EQ(bytesOf("nop\nmov r0, r1\n"), "00 90 04 90 ");
    EXPECT_EQ(bytesOf("ldw r0, r1[r2]\nldw r0, r1[2]\nldw r0, sp[2]\nldw r11, cp[100]\n"),
              "06 48 06 08 02 5C 64 E4 ");
    // Shift counts are encoded through their map: 32 is code 0, 24 code 10.
    EXPECT_EQ(bytesOf("shr r0, r1, 32\nshr r0, r1, 24\n"), "04 A8 86 AC ");
    // Literal numbers compare by value.
    EXPECT_EQ(bytesOf("ldw et, sp[0x4]\nldw et, sp[4]\n"), "FE 17 FE 17 ");
    // The prefix carries the upper bits: 1000 >> 6 is 15, the low 6 bits are 40.
    EXPECT_EQ(bytesOf("ldc r4, 1000\nldc r4, 10\n"), "0F F0 28 69 0A 69 ");
}

TEST(EncodingTest, SubopcodeHelpers)
{
    EXPECT_EQ(EncoderFormat::encode2OpExtraBits(11, 11), 8u);
    EXPECT_EQ(EncoderFormat::encode2OpSubOpc(11, 11), 30u);
    EXPECT_EQ(EncoderFormat::encode2OpBit5(11, 11), 1u);
    EXPECT_EQ(EncoderFormat::encode3OpSubOpc(11, 11, 11), 26u);
    EXPECT_EQ(EncoderFormat::encode1OpSubOpc(4), 28u);
    EXPECT_EQ(Tl3bInstructionTable::architecturalSignature("r11,cp[%i]"), "%i");
    EXPECT_EQ(Tl3bInstructionTable::architecturalSignature("t[%r]:cp,%r"), "%r,%r");
    EXPECT_EQ(Tl3bInstructionTable::architecturalSignature("et,sp[4]"), "");
}

TEST(EncodingTest, BranchesChooseTheirFormByDistance)
{
    // To itself: one halfword back from the end of the instruction.
    Assembled self = assemble("loop: bu loop\n");
    EXPECT_EQ(self.bytes, "01 77 ");
    EXPECT_EQ(self.relocations, "8@0:loop+0 ");
    // An unknown label takes the first long form, with the field left to the linker.
    Assembled external = assemble("bu ext\n");
    EXPECT_EQ(external.bytes, "00 F0 00 77 ");
    EXPECT_EQ(external.relocations, "9@0:ext+0 ");
    // Forward: 63 halfwords reach 126 bytes past the instruction.
    std::string near = "bu fwd\n";
    for (int i = 0; i < 63; ++i)
        near += "nop\n";
    EXPECT_EQ(assemble(near + "fwd: nop\n").bytes.substr(0, 6), "3F 73 ");
    Assembled far = assemble(near + "nop\nfwd: nop\n");
    // 128 bytes are 64 halfwords: the prefix holds 64 >> 6, the low field 0.
    EXPECT_EQ(far.bytes.substr(0, 12), "01 F0 00 73 ");
    EXPECT_EQ(far.relocations, "9@0:fwd+0 ");
}

TEST(EncodingTest, DiagnosticsForLinesNoFormatFits)
{
    EXPECT_EQ(assemble("ADD_2rus r0, r1, 1\nADD r0, r1, r2\nfoo r0\nfoo_bar\n").messages,
              "a.S:1: Error: A00004 Unknown opcode 'ADD_2rus'\n"
              "a.S:1: Error: A00000 Did you mean 'ADDI_2rus'?\n"
              "a.S:2: Error: A00000 Use of \"ADD\" outside of architectural syntax mode.\n"
              "a.S:3: Error: A00004 Unknown opcode 'foo'\n"
              "a.S:4: Error: A00004 Unknown opcode 'foo_bar'\n");
    EXPECT_EQ(assemble(".syntax architectural\nadd r0, r1, r2\nADDI r0, r1, 1\n").messages,
              "a.S:2: Error: A00000 Use of \"add\" outside of default syntax mode.\n");
}

// The messages of a run that an error ended.
std::string fatalMessages(const std::string& text, std::uint32_t maxPasses = 4000)
{
    const Assembled result = assemble(text, maxPasses);
    EXPECT_TRUE(result.fatal) << text;
    EXPECT_EQ(result.bytes, "") << text;
    return result.messages;
}

testing::AssertionResult hasPart(const std::string& text, const std::string& part)
{
    if (text.find(part) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "\"" << text << "\" lacks \"" << part << "\"";
}

TEST(EncodingTest, NoFormatEndsTheRun)
{
    EXPECT_TRUE(hasPart(fatalMessages("nop r0\n"), "a.S:1: Error: A00049 no format matching for instruction: 'nop'"));
    EXPECT_TRUE(hasPart(fatalMessages("ldw et, sp[3]\n"), "no format matching for instruction: 'ldw'"));
    EXPECT_TRUE(hasPart(fatalMessages("add r0, r1, 12\n"),
                        "a.S:1: Error: A00048 Immediate out of range for instruction: 'add'.  Value is 12. Allowed "
                        "range is: 0..11.\n"));
    // A repeated range is listed once.
    EXPECT_TRUE(hasPart(fatalMessages("inpw r0, res[r1], 9\n"),
                        "Value is 9. Allowed ranges are: 32..32, 1..8, 16..16, 24..24."));
}

} // namespace
} // namespace vorp

namespace vorp {
namespace {

TEST(EncodingTest, BothSyntaxTablesHoldTheirNames)
{
    ErrorHandler plain;
    TelkUtils utils{&plain};
    VorpErrorHandler errors;
    VormAssembler assembler(AssemblerOptions{.sourcePath = "a.S", .outputFile = "unused.o"}, &utils, &errors);
    auto formats = [&](const char* name, VormAssembler::Syntax syntax) {
        const Encoder* encoder = assembler.findEncoder(name, syntax);
        std::string text;
        for (unsigned i = 0; encoder && i < encoder->numFormats(); ++i)
            text += encoder->getFormat(i)->getName() + "(" + encoder->getFormat(i)->getSignature() + ") ";
        return text;
    };
    const auto ARCH = VormAssembler::SYNTAX_ARCHITECTURAL;
    const auto DEFAULT = VormAssembler::SYNTAX_DEFAULT;
    EXPECT_EQ(formats("BRFU", ARCH), "BRFU_u6(%i) BRFU_lu6(%i) ");
    EXPECT_EQ(formats("SETCI", ARCH), "SETC_ru6(%r,%i) SETC_lru6(%r,%i) ");
    EXPECT_EQ(formats("ADDI", ARCH), "ADD_2rus(%r,%r,%i) ");
    EXPECT_EQ(formats("ADD", ARCH), "ADD_3r(%r,%r,%r) ");
    EXPECT_EQ(formats("LDAWCP_u6", ARCH), "LDAWCP_u6(%i) ");
    EXPECT_EQ(formats("LDAWCP_u6", DEFAULT), "LDAWCP_u6(r11,cp[%i]) ");
    EXPECT_EQ(formats("ADDI_2rus", DEFAULT), "ADD_2rus(%r,%r,%i) ");
    EXPECT_EQ(formats("ADD_2rus", DEFAULT), "");
    EXPECT_EQ(formats("bu", DEFAULT), "BRBU_u6(%i) BRFU_u6(%i) BRBU_lu6(%i) BRFU_lu6(%i) ");
    EXPECT_EQ(formats("mov", DEFAULT), "ADD_2rus(%r,%r) ");
    EXPECT_EQ(formats("add", ARCH), "");
}

} // namespace
} // namespace vorp

namespace vorp {
namespace {

using encoding_test::Assembled;
using encoding_test::assemble;
using encoding_test::repeat;

const std::string NOP = "00 90 ";

// The bytes of the instruction at a byte offset.
std::string at(const Assembled& result, std::size_t offset, std::size_t size)
{
    return result.bytes.substr(offset * 3, size * 3);
}

TEST(EncodingRelaxationTest, SixBitBranchesAtTheirLimit)
{
    // Forward: 63 halfwords are 126 bytes past the end of the 2-byte branch, 7300 + 63.
    Assembled fits = assemble("bu f\n" + repeat("nop\n", 63) + "f: nop\n");
    EXPECT_EQ(at(fits, 0, 2), "3F 73 ");
    EXPECT_EQ(fits.relocations, "8@0:f+0 ");
    // 64 halfwords: the long form, 128 bytes from its end: prefix 64 >> 6 = 1, field 64 & 63 = 0.
    Assembled over = assemble("bu f\n" + repeat("nop\n", 64) + "f: nop\n");
    EXPECT_EQ(at(over, 0, 4), "01 F0 00 73 ");
    EXPECT_EQ(over.relocations, "9@0:f+0 ");
    // Backward from 124: the end is 126 bytes past the label, 63 halfwords, 7700 + 63.
    Assembled back = assemble("b: nop\n" + repeat("nop\n", 61) + "bu b\n");
    EXPECT_EQ(at(back, 124, 2), "3F 77 ");
    EXPECT_EQ(back.relocations, "8@124:b+0 ");
    // From 126 the short form would need 64; the long one ends at 130: 65 = 1 << 6 | 1.
    Assembled backOver = assemble("b: nop\n" + repeat("nop\n", 62) + "bu b\n");
    EXPECT_EQ(at(backOver, 126, 4), "01 F0 01 77 ");
    EXPECT_EQ(backOver.relocations, "9@126:b+0 ");
    // Conditional branches carry the register beside the distance: 7000 + (2 << 6) + 63.
    EXPECT_EQ(at(assemble("bt r2, f\n" + repeat("nop\n", 63) + "f: nop\n"), 0, 2), "BF 70 ");
}

TEST(EncodingRelaxationTest, TenBitCallsAtTheirLimit)
{
    // 1023 halfwords: D000 + 0x3FF.
    Assembled fits = assemble("bl f\n" + repeat("nop\n", 1023) + "f: nop\n");
    EXPECT_EQ(at(fits, 0, 2), "FF D3 ");
    EXPECT_EQ(fits.relocations, "10@0:f+0 ");
    // 2048 bytes from the end of the long form: 1024 halfwords, prefix 1, field 0.
    Assembled over = assemble("bl f\n" + repeat("nop\n", 1024) + "f: nop\n");
    EXPECT_EQ(at(over, 0, 4), "01 F0 00 D0 ");
    EXPECT_EQ(over.relocations, "11@0:f+0 ");
    // Backward from 2044: (2044 + 2) / 2 = 1023, D400 + 0x3FF.
    Assembled back = assemble("b: nop\n" + repeat("nop\n", 1021) + "bl b\n");
    EXPECT_EQ(at(back, 2044, 2), "FF D7 ");
    // From 2046: (2046 + 4) / 2 = 1025 = 1 << 10 | 1.
    Assembled backOver = assemble("b: nop\n" + repeat("nop\n", 1022) + "bl b\n");
    EXPECT_EQ(at(backOver, 2046, 4), "01 F0 01 D4 ");
    EXPECT_EQ(backOver.relocations, "11@2046:b+0 ");
}

TEST(EncodingRelaxationTest, BranchesThatNeedEachOtherShortStayShort)
{
    // The forward branch spans 61 nops, the backward branch and a nop: 126 bytes only if the
    // backward one is short. The backward one spans the forward one, 61 nops and itself: 126 bytes
    // only if the forward one is short. Neither is settled until the passes stall.
    Assembled both = assemble("top: bu x\n" + repeat("nop\n", 61) + "bu top\nnop\nx: nop\n");
    EXPECT_EQ(both.messages, "");
    EXPECT_EQ(both.bytes, "3F 73 " + repeat(NOP, 61) + "3F 77 " + NOP + NOP);
    // One nop more and neither fits, whatever the other does. Both long: the forward one spans
    // 124 + 4 + 2 bytes, 65 halfwords; the backward one ends at 132, 66 halfwords.
    Assembled neither = assemble("top: bu x\n" + repeat("nop\n", 62) + "bu top\nnop\nx: nop\n");
    EXPECT_EQ(neither.bytes, "01 F0 01 73 " + repeat(NOP, 62) + "01 F0 02 77 " + NOP + NOP);
}

TEST(EncodingRelaxationTest, UnknownLabelsTakeTheFirstLongForm)
{
    // The backward long forms come first and hold the zero field: the linker fills it.
    Assembled branch = assemble("bt r1, ext\nbl ext\n");
    EXPECT_EQ(branch.bytes, "00 F0 40 74 00 F0 00 D4 ");
    EXPECT_EQ(branch.relocations, "9@0:ext+0 11@4:ext+0 ");
    // An aligned data label: the long dp form with relocation 3, field 0.
    Assembled data = assemble("ldaw r0, dp[v]\nv: nop\n");
    EXPECT_EQ(data.bytes, "00 F0 00 60 00 90 ");
    EXPECT_EQ(data.relocations, "3@0:v+0 ");
}

TEST(EncodingRelaxationTest, PassLimitAllowsOnlyOnePassSections)
{
    // Settled in the first pass: the external branch drops its short forms at once.
    Assembled settled = assemble("bu ext\nnop\n", 1);
    EXPECT_EQ(settled.messages, "");
    EXPECT_EQ(settled.bytes, "00 F0 00 77 " + NOP);
}

TEST(EncodingRelaxationTest, PassLimitStopsAnOpenSection)
{
    // The branch at its limit stays open after the first pass: a second one is needed.
    const std::string open = "bu f\n" + repeat("nop\n", 63) + "f: nop\n";
    EXPECT_EQ(fatalMessages(open, 1), "vorp: Error: unable to resolve encoder choice after 1 loops\n");
}

TEST(EncodingTest, MisalignedLabelsEndTheRun)
{
    EXPECT_EQ(fatalMessages("ldaw r0, dp[v]\n.byte 1\nv:\n.byte 2\n"),
              "a.S:1: Error: A00051 label 'v' must be word aligned to be used with a dp relative offset\n");
    EXPECT_EQ(fatalMessages("ldw r0, cp[v]\nnop\n.byte 1\nv:\n.byte 2\n"),
              "a.S:1: Error: A00051 label 'v' must be word aligned to be used with a cp relative offset\n");
    // 3 bytes past the end of the branch: not a whole number of halfwords.
    EXPECT_EQ(fatalMessages("bu x\nnop\n.byte 1\nx:\n.byte 2\n"),
              "a.S:1: Error: A00051 misaligned scaled immediate value detected. label: x\n");
}

TEST(EncodingTest, ImmediateMessages)
{
    // Both formats of ldc are out of range; each adds its range.
    EXPECT_EQ(fatalMessages("nop\nldc r0, 70000\n"),
              "a.S:2: Error: A00048 Immediate out of range for instruction: 'ldc'.  Value is 70000. Allowed "
              "ranges are: 0..63, 0..65535.\n");
    EXPECT_EQ(fatalMessages("mkmsk r0, 0\n"),
              "a.S:1: Error: A00048 Immediate out of range for instruction: 'mkmsk'.  Value is 0. Allowed "
              "ranges are: 32..32, 1..8, 16..16, 24..24.\n");
    // A label where none is allowed ends the run at once: the bad line after it is never reported.
    EXPECT_EQ(fatalMessages("add r0, r1, foo\nnop r0\n"),
              "a.S:1: Error: A00050 Instruction 'add' does not allow a label as an immediate\n");
    EXPECT_EQ(fatalMessages("clrsr x\n"),
              "a.S:1: Error: A00050 Instruction 'clrsr' does not allow a label as an immediate\n");
}

} // namespace
} // namespace vorp
