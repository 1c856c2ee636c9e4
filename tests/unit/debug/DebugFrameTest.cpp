#include "ParsedSource.h"

#include "debug/DataWriter.h"
#include "debug/DebugFrame.h"
#include "model/VormDataLine.h"
#include "model/VormTokenLine.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace vorp {
namespace {

// Bytes of every line of a generated section, once formats are settled.
std::string sectionHex(test::ParsedSource& source, VormSection* section)
{
    std::string hex;
    for (VormLine* line : section->getLines()) {
        std::vector<std::uint8_t> bytes(line->getNumBytes());
        line->encode(bytes.data(), section->getRelocations(), source.assembler, source.errors);
        for (std::uint8_t byte : bytes) {
            char text[4];
            std::snprintf(text, sizeof text, "%02x ", byte);
            hex += text;
        }
    }
    return hex;
}

TEST(DebugFrameTest, CommonEntryKeysWithDifferentPersonalitiesAreEquivalent)
{
    test::ParsedSource source("a:\nb:\n");
    VormLabel* a = source.label("a");
    VormLabel* b = source.label("b");
    const DebugFrameCIE first{0, a, 255, 15};
    const DebugFrameCIE second{0, b, 0, 14};
    EXPECT_FALSE(first < second);
    EXPECT_FALSE(second < first);
    // With one personality the LSDA encoding decides, then the return column.
    EXPECT_TRUE((DebugFrameCIE{0, a, 0, 15} < DebugFrameCIE{0, a, 255, 15}));
    EXPECT_TRUE((DebugFrameCIE{0, a, 0, 14} < DebugFrameCIE{0, a, 0, 15}));
    EXPECT_TRUE((DebugFrameCIE{3, a, 255, 15} < DebugFrameCIE{255, nullptr, 0, 0}));
}

TEST(DebugFrameTest, AugmentationSizesCountTheLsdaOnly)
{
    const DebugFrameCIE personality{0, nullptr, 255, 15};
    const DebugFrameCIE lsda{255, nullptr, 0, 15};
    EXPECT_FALSE(personality.usesAugmentation(false));
    EXPECT_TRUE(personality.usesAugmentation(true));
    EXPECT_EQ(personality.getAugmentationSize(true), 0u);
    EXPECT_EQ(personality.getFDEAugmentationSize(true), 0u);
    EXPECT_EQ(lsda.getAugmentationSize(true), 6u);
    EXPECT_EQ(lsda.getFDEAugmentationSize(true), 4u);
}

TEST(DebugFrameTest, InstructionEncodingsAndTheirExtendedForms)
{
    test::ParsedSource source("");
    VormSection* section = source.assembler.addSection(".gen", "", "progbits", 0, "", false);
    {
        DataWriter writer(source.assembler, section);
        const DebugFrameInstruction instructions[] = {
            {DW_CFA_offset, {2, 8}, 2, nullptr},   {DW_CFA_offset, {63, 1}, 2, nullptr},
            {DW_CFA_offset, {64, 8}, 2, nullptr},  {DW_CFA_offset, {3, -4}, 2, nullptr},
            {DW_CFA_restore, {5, 0}, 1, nullptr},  {DW_CFA_restore, {64, 0}, 1, nullptr},
            {DW_CFA_def_cfa, {14, 200}, 2, nullptr}, {DW_CFA_register, {1, 2}, 2, nullptr},
            {DW_CFA_remember_state, {0, 0}, 0, nullptr},
        };
        for (const DebugFrameInstruction& instruction : instructions)
            instruction.encode(writer);
    }
    source.settle();
    EXPECT_EQ(sectionHex(source, section), "82 08 bf 01 05 40 08 11 03 fc ff ff ff 0f c5 06 40 0c 0e c8 01 09 01 02 0a ");
}

TEST(DebugFrameTest, WriterLinesAreThoseOfTheParser)
{
    test::ParsedSource source("");
    VormSection* section = source.assembler.addSection(".gen", "", "progbits", 0, "", false);
    {
        DataWriter writer(source.assembler, section);
        writer.emitSleb128(-4);
        writer.emitCCTop("plain", "");
        writer.emitU16(0x1234);
        writer.emitCCBottom();
        writer.emitCCTop("guarded", "f");
        writer.emitString("ab");
        writer.emitCCBottom();
    }
    std::vector<VormLine*> lines(section->getLines().begin(), section->getLines().end());
    ASSERT_EQ(lines.size(), 7u);
    // A negative value goes out as the unsigned 32-bit number, in .uleb128 form.
    auto* sleb = static_cast<VormDataLine*>(lines[0]);
    EXPECT_EQ(sleb->getDataType(), VormDataLine::ULEB128);
    EXPECT_EQ(lines[0]->getLocation().getLine(), 0u);
    EXPECT_EQ(lines[0]->getLocation().getFile(), std::string("<unknown>"));
    EXPECT_EQ(static_cast<VormTokenLine*>(lines[1])->getTokens().size(), 2u);
    EXPECT_EQ(static_cast<VormTokenLine*>(lines[4])->getTokens().size(), 4u);
    source.settle();
    EXPECT_EQ(sectionHex(source, section), "fc ff ff ff 0f 34 12 61 62 00 ");
    EXPECT_EQ(source.diagnostics, "");
}

} // namespace
} // namespace vorp
