#include "assembler/AssemblerRun.h"
#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "model/VormAlignDirectiveLine.h"
#include "model/VormAssembler.h"
#include "model/VormLabelLine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

class VormAssemblerTest : public testing::Test {
protected:
    VormAssemblerTest()
        : m_utils{&m_plainErrors},
          m_run(AssemblerOptions{.sourcePath = "a.S", .outputFile = m_output}, &m_utils, &m_errors),
          m_assembler(m_run.getAssembler())
    {
    }

    // The steps after parsing, through to the object's bytes; the status.
    int finish()
    {
        std::vector<std::uint8_t> object;
        std::string listing;
        return m_run.postParse("a.S", object, listing);
    }

    VormSection* code() { return m_assembler.addSection(".text", "ax", "progbits", 0, "", false); }

    std::unique_ptr<TokenLine> ccLine(int directive, const char* name)
    {
        auto line = std::make_unique<TokenLine>();
        line->push_back(newToken(m_assembler.getIdStrings(), directive, directive == S_D_CCTOP ? ".cc_top" : ".cc_bottom", 3, "a.S"));
        line->push_back(newToken(m_assembler.getIdStrings(), S_NAME, name, 3, "a.S"));
        return line;
    }

    static std::string text(const VormSection* section)
    {
        std::ostringstream out;
        section->dump(out);
        return out.str();
    }

    std::string m_output = testing::TempDir() + "vorm_assembler_test.o";
    ErrorHandler m_plainErrors;
    TelkUtils m_utils;
    VorpErrorHandler m_errors;
    AssemblerRun m_run;
    VormAssembler& m_assembler;
};

TEST_F(VormAssemblerTest, LineIdsCountTheLinesOfTheRunInTheOrderTheyAreAdded)
{
    VormSection* text = code();
    VormSection* data = m_assembler.addSection(".data", "aw", "progbits", 0, "", false);
    const VormLine* first = m_assembler.addAlign(text, 4, LineLocation("a.S", 1), false);
    const VormLine* second = m_assembler.addUniqueLabel(data, LineLocation("a.S", 2), false);
    // Inserted in front of the first, but added after it.
    const VormLine* third = m_assembler.addAlign(text, text->getLines().begin(), 2, LineLocation("a.S", 3), false);
    EXPECT_EQ(first->getId(), 0u);
    EXPECT_EQ(second->getId(), 1u);
    EXPECT_EQ(third->getId(), 2u);

    // Another run counts its own.
    VormAssembler other(AssemblerOptions{.sourcePath = "b.S", .outputFile = m_output}, &m_utils, &m_errors);
    VormSection* otherText = other.addSection(".text", "ax", "progbits", 0, "", false);
    EXPECT_EQ(other.addAlign(otherText, 4, LineLocation("b.S", 1), false)->getId(), 0u);
    EXPECT_EQ(m_assembler.addAlign(text, 4, LineLocation("a.S", 4), false)->getId(), 3u);
}

TEST_F(VormAssemblerTest, AlignmentUnderUncertainAddresses)
{
    VormAlignDirectiveLine* align = m_assembler.addAlign(code(), 4, LineLocation("a.S", 1), false);
    std::uint32_t minBytes = 0, maxBytes = 0;

    align->setAddress({2, 6});
    align->getByteRange(minBytes, maxBytes);
    EXPECT_EQ(minBytes, 0u);
    EXPECT_EQ(maxBytes, 3u);
    EXPECT_EQ(align->getNextAddress(), (VormAddress{4, 8}));

    // Below the alignment the upper bound wraps round to alignment - 1, a safe bound.
    align->setAddress({2, 3});
    align->getByteRange(minBytes, maxBytes);
    EXPECT_EQ(minBytes, 1u);
    EXPECT_EQ(maxBytes, 3u);
    VormAlignDirectiveLine* low = m_assembler.addAlign(code(), 4, LineLocation("a.S", 2), false);
    low->setAddress({1, 3});
    low->getByteRange(minBytes, maxBytes);
    EXPECT_EQ(minBytes, 1u);
    EXPECT_EQ(maxBytes, 3u);
    EXPECT_EQ(low->getNextAddress(), (VormAddress{4, 4}));

    low->setAddress({3, 3});
    EXPECT_EQ(low->getNumBytes(), 1u);
}

TEST_F(VormAssemblerTest, PaddingEndsWithTheFillPatternAtTheAlignedAddress)
{
    auto encoded = [this](VormAlignDirectiveLine* line, std::uint32_t address) {
        line->setAddress({address, address});
        std::vector<std::uint8_t> bytes(line->getNumBytes());
        line->encode(bytes.data(), code()->getRelocations(), m_assembler, m_errors);
        return bytes;
    };
    EXPECT_EQ(encoded(m_assembler.addAlign(code(), 4, LineLocation("a.S", 1), false), 2),
              (std::vector<std::uint8_t>{0x00, 0x90}));
    EXPECT_EQ(encoded(m_assembler.addAlign(code(), 4, LineLocation("a.S", 1), false), 1),
              (std::vector<std::uint8_t>{0x90, 0x00, 0x90}));
    EXPECT_EQ(encoded(m_assembler.addAlign(code(), 8, 0x11223344, LineLocation("a.S", 1), false), 3),
              (std::vector<std::uint8_t>{0x44, 0x11, 0x22, 0x33, 0x44}));
    VormSection* data = m_assembler.addSection(".data", "aw", "progbits", 0, "", false);
    EXPECT_EQ(m_assembler.addAlign(data, 4, LineLocation("a.S", 1), false)->getFill(), 0u);
}

TEST_F(VormAssemblerTest, SectionsKeepTheirFirstDefinition)
{
    CaptureStderr();
    VormSection* first = m_assembler.addSection(LineLocation("a.S", 1), ".x", "wax?", "nobits", 0, "", false);
    VormSection* again = m_assembler.addSection(LineLocation("a.S", 2), ".x", "!", "bogus", 4, "g", true);
    m_assembler.addSection(LineLocation("a.S", 3), ".g", "aG", "", 0, "grp", true);
    m_assembler.addSection(LineLocation("a.S", 4), ".h", "G", "", 0, "grp", true);
    EXPECT_EQ(GetCapturedStderr(), "a.S:1: Error: A00006 Unrecognised flag to section directive: ?\n");
    EXPECT_EQ(first, again);
    EXPECT_EQ(first->getFlags(), VormAssembler::SHF_WRITE | VormAssembler::SHF_ALLOC | VormAssembler::SHF_EXECINSTR);
    EXPECT_EQ(first->getType(), static_cast<std::uint32_t>(VormSection::NOBITS));
    EXPECT_EQ(m_assembler.getSectionGroups().at("grp"), (std::vector<std::string>{".g", ".h"}));
    EXPECT_TRUE(m_assembler.sectionIsEmpty(".x"));
    EXPECT_TRUE(m_assembler.sectionIsEmpty(".nothere"));
}

TEST_F(VormAssemblerTest, ScheduledEliminationBlocksStartAligned)
{
    VormSection* section = code();
    m_assembler.addLabel(section, newToken(m_assembler.getIdStrings(), S_NAME, "before", 1, "a.S"), false);
    m_assembler.addCCTop(section, ccLine(S_D_CCTOP, "f.function"));
    m_assembler.addLabel(section, newToken(m_assembler.getIdStrings(), S_NAME, "f", 4, "a.S"), true);
    m_assembler.addAlign(section, 2, LineLocation("a.S", 5), false);
    m_assembler.addCCBottom(section, ccLine(S_D_CCBOT, "f.function"));
    // Outside a scheduled block nothing is added, even in code.
    m_assembler.addCCTop(section, ccLine(S_D_CCTOP, "g.function"));
    m_assembler.addLabel(section, newToken(m_assembler.getIdStrings(), S_NAME, "g", 8, "a.S"), false);
    m_assembler.addCCBottom(section, ccLine(S_D_CCBOT, "g.function"));

    ASSERT_EQ(finish(), 0);
    EXPECT_EQ(text(section), ".section .text\nbefore:\n.cc_top f.function\n.align 4\nf:\n.align 2\n"
                             ".cc_bottom f.function\n.cc_top g.function\ng:\n.cc_bottom g.function\n");
    EXPECT_EQ(section->getSize(), 0u);
    EXPECT_EQ(m_assembler.getLabels().findLabel("g")->getValue(), 0u);
}

TEST_F(VormAssemblerTest, FormatChoiceSettlesAddressesAndSizes)
{
    VormSection* data = m_assembler.addSection(".data", "aw", "progbits", 0, "", false);
    m_assembler.addLabel(data, newToken(m_assembler.getIdStrings(), S_NAME, "start", 1, "a.S"), false);
    m_assembler.addAlign(data, 16, 0, LineLocation("a.S", 2), false);
    m_assembler.addLabel(data, newToken(m_assembler.getIdStrings(), S_NAME, "end", 3, "a.S"), false);
    ASSERT_EQ(finish(), 0);
    EXPECT_EQ(data->getSize(), 0u);
    EXPECT_TRUE(m_assembler.getLabels().labelsFinalised());
    EXPECT_EQ(m_assembler.getLabels().findLabel("end")->getValue(), 0u);
}

TEST_F(VormAssemblerTest, ErrorsSkipTheLaterPasses)
{
    VormSection* section = code();
    m_assembler.addCCTop(section, ccLine(S_D_CCTOP, "f.function"));
    VormSection* other = m_assembler.addSection(".b", "ax", "progbits", 0, "", false);
    m_assembler.addCCTop(other, ccLine(S_D_CCTOP, "g.function"));
    CaptureStderr();
    EXPECT_EQ(finish(), 1);
    EXPECT_EQ(GetCapturedStderr(), "a.S:3: Error: A00035 Unterminated cc_top directive.\n"
                                   "a.S:3: Error: A00035 Unterminated cc_top directive.\n");
    EXPECT_FALSE(m_assembler.getLabels().labelsFinalised());
}

TEST_F(VormAssemblerTest, FileNamesAndDefaultAlignment)
{
    CaptureStderr();
    m_assembler.setFilename("a.c", LineLocation("a.S", 1));
    m_assembler.setFilename("a.c", LineLocation("a.S", 2));
    m_assembler.setFilename("b.c", LineLocation("a.S", 3));
    EXPECT_EQ(GetCapturedStderr(), "a.S:3: Error: A00021 Source filename redefined.\n");
    EXPECT_EQ(m_assembler.getFilename(), "b.c");
    VormSection* data = m_assembler.addSection(".data", "aw", "progbits", 0, "", false);
    EXPECT_EQ(m_assembler.getDefaultAlignment(code(), true), 4u);
    EXPECT_EQ(m_assembler.getDefaultAlignment(code(), false), 1u);
    EXPECT_EQ(m_assembler.getDefaultAlignment(data, true), 1u);
}

} // namespace
} // namespace vorp
