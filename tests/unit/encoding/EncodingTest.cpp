#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "encoding/EncoderFormat.h"
#include "encoding/Tl3bInstructionTable.h"
#include "frontend/AsmWriter.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormAssembler.h"
#include "model/VormLabel.h"
#include "model/VormLine.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace vorp {
namespace {

// Assembles the text and encodes ".text": the bytes as hex pairs and the relocations.
struct Assembled {
    std::string bytes;
    std::string relocations;
    std::string messages;
};

// Death tests keep standard error to themselves: pass capture false there.
Assembled assemble(const std::string& text, bool capture = true)
{
    ErrorHandler plain;
    TelkUtils utils{&plain};
    VorpErrorHandler errors;
    const std::string output = testing::TempDir() + "encoding_test.o";
    VormAssembler assembler("a.S", "", &utils, output.c_str(), false, false, VormAssembler::TL3B, &errors, false,
                            false, true, false, nullptr, 4000);
    Assembled result;
    if (capture)
        testing::internal::CaptureStderr();
    VorpTokeniser tokeniser;
    tokeniser.lexInit({}, &errors);
    tokeniser.addInput("a.S", "a.S", text);
    tokeniser.startScanning();
    AsmWriter writer(assembler, errors, false);
    writer.setCurrentSection(assembler.addSection(".text", "ax", "progbits", 0, "", false));
    VorpParser(tokeniser, errors, writer).parse();
    const bool ok = assembler.runPasses();
    if (capture)
        result.messages = testing::internal::GetCapturedStderr();
    if (!ok)
        return result;
    VormSection* section = assembler.findSection(".text");
    std::vector<std::uint8_t> buffer(section->getSize());
    for (VormLine* line : section->getLines())
        line->encode(buffer.data() + line->getAddress().min, section->getRelocations(), assembler, errors);
    char hex[4];
    for (std::uint8_t byte : buffer) {
        snprintf(hex, sizeof(hex), "%02X ", byte);
        result.bytes += hex;
    }
    const Relocations& relocations = section->getRelocations();
    for (std::size_t i = 0; i < relocations.numRelocationEntries(); ++i) {
        result.relocations += std::to_string(relocations.relocationEntryType(i)) + "@" +
                              std::to_string(relocations.relocationEntryAddress(i)) + ":" +
                              relocations.relocationEntrySym(i)->getName() + "+" +
                              std::to_string(relocations.relocationEntryAddEnd(i)) + " ";
    }
    return result;
}

std::string bytesOf(const std::string& text)
{
    const Assembled result = assemble(text);
    EXPECT_EQ(result.messages, "") << text;
    return result.bytes;
}

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

TEST(EncodingDeathTest, NoFormatEndsTheRun)
{
    EXPECT_EXIT(assemble("nop r0\n", false), testing::ExitedWithCode(1),
                "a.S:1: Error: A00049 no format matching for instruction: 'nop'");
    EXPECT_EXIT(assemble("ldw et, sp[3]\n", false), testing::ExitedWithCode(1), "no format matching for instruction: 'ldw'");
    EXPECT_EXIT(assemble("add r0, r1, 12\n", false), testing::ExitedWithCode(1),
                "a.S:1: Error: A00048 Immediate out of range for instruction: 'add'.  Value is 12. Allowed range is: "
                "0..11.\n");
    // A repeated range is listed once.
    EXPECT_EXIT(assemble("inpw r0, res[r1], 9\n", false), testing::ExitedWithCode(1),
                "Value is 9. Allowed ranges are: 32..32, 1..8, 16..16, 24..24.");
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
    VormAssembler assembler("a.S", "", &utils, "unused.o", false, false, VormAssembler::TL3B, &errors, false, false,
                            true, false, nullptr, 4000);
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
