#include "diag/IdStrings.h"
#include "diag/VorpErrorHandler.h"
#include "frontend/Token.h"
#include "model/VormLabelLine.h"
#include "model/VormLabels.h"
#include "model/VormSection.h"
#include "model/VormTokenLine.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace vorp {
namespace {

// A line whose byte range the test chooses.
struct RangeLine : VormLine {
    RangeLine(std::uint32_t lo, std::uint32_t hi) : VormLine(DATA_LINE, false), m_min(lo), m_max(hi) {}
    void encode(std::uint8_t*, Relocations&, VormAssembler&, VorpErrorHandler&) override {}
    LineLocation getLocation() const override { return LineLocation("r.S", 1); }
    void getByteRange(std::uint32_t& lo, std::uint32_t& hi) const override { lo = m_min, hi = m_max; }
    void dump(std::ostream& out) const override { out << "range " << m_min << ' ' << m_max; }
    void printListing(FILE*) override {}
    std::uint32_t m_min, m_max;
};

struct TestTokenLine : VormTokenLine {
    using VormTokenLine::VormTokenLine;
    void encode(std::uint8_t*, Relocations&, VormAssembler&, VorpErrorHandler&) override {}
    void getByteRange(std::uint32_t& lo, std::uint32_t& hi) const override { lo = hi = 4; }
    void printListing(FILE*) override {}
};

// "add r0 , r1 , 4" where only the first token stands at file:line.
std::unique_ptr<TestTokenLine> addLine(IdStrings& strings, const char* file, int line)
{
    const char* o = "other.S";
    const Token tokens[] = {newToken(strings, S_NAME, "add", line, file),    newToken(strings, S_NAME, "r0", line + 1, o),
                            newToken(strings, S_COMMA, nullptr, line + 1, o), newToken(strings, S_NAME, "r1", line + 1, o),
                            newToken(strings, S_COMMA, nullptr, line + 1, o), newUnsignedConstToken(strings, 4, line + 1, o)};
    return std::make_unique<TestTokenLine>(CODE_LINE, true, std::unique_ptr<TokenLine>(newTokenLine(tokens, 6)));
}

TEST(VormLineTest, AddressesOnlyNarrow)
{
    RangeLine line(2, 6);
    EXPECT_EQ(line.getAddress(), (VormAddress{0, 0x3fffffff}));
    line.setAddress(VormAddress{0, 0x3fffffff});
    line.setAddress(VormAddress{10, 20});
    EXPECT_EQ(line.getNextAddress(), (VormAddress{12, 26}));
    EXPECT_DEATH(line.setAddress(VormAddress{9, 20}), "New address not refinement of previous address");
    EXPECT_DEATH(line.setAddress(VormAddress{10, 21}), "New address not refinement of previous address");
    line.setAddress(VormAddress{14, 14});
    EXPECT_EQ(line.getNextAddress(), (VormAddress{16, 20}));

    // The exact size exists only once the byte range is one value.
    EXPECT_EQ(RangeLine(6, 6).getNumBytes(), 6u);
    EXPECT_DEATH(line.getNumBytes(), "min == max");
}

TEST(VormLineTest, TokenLineDumpsWithoutBlankBeforeCommaAndStandsAtFirstToken)
{
    IdStrings strings;
    auto line = addLine(strings, "t.S", 7);
    std::ostringstream out;
    line->dump(out);
    EXPECT_EQ(out.str(), "add r0, r1, 4");
    EXPECT_STREQ(line->getLocation().getFile(), "t.S");
    EXPECT_EQ(line->getLocation().getLine(), 7u);
    EXPECT_STREQ(line->getToken(3).text, "r1");
    EXPECT_DEATH(line->getToken(6), "tokenNum < numTokens\\(\\)");

    testing::internal::CaptureStderr();
    static_cast<const VormLine&>(*line).dump();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "add r0, r1, 4\n");
}

TEST(VormLineTest, SectionDumpsItsLinesAndFindsTheFirstSizedOne)
{
    VormSection section(".text", 6, VormSection::PROGBITS, 0, "", false);
    EXPECT_EQ(section.getFirstNonZeroSizedLine(), section.getLines().end());
    VormLabel label("start", nullptr, nullptr, 0, SYMBOL_TENTATIVE);
    section.getLines().push_back(new VormLabelLine(&label, LineLocation("a.S", 1), false));
    section.getLines().push_back(new RangeLine(0, 0));
    EXPECT_EQ(section.getFirstNonZeroSizedLine(), section.getLines().end());
    section.getLines().push_back(new RangeLine(0, 2));
    section.getLines().push_back(new RangeLine(4, 4));
    EXPECT_EQ(section.getFirstNonZeroSizedLine(), std::next(section.getLines().begin(), 2));

    std::ostringstream out;
    section.dump(out);
    EXPECT_EQ(out.str(), ".section .text\nstart:\nrange 0 0\nrange 0 2\nrange 4 4\n");
}

TEST(VormLineTest, LabelLineDumpAndTargetFollowTheLabel)
{
    VorpErrorHandler handler;
    VormLabels labels(&handler);
    VormLabel* unnamed = labels.addUniqueUndefinedLabel();
    VormLabelLine line(unnamed, LineLocation("a.S", 4), false);
    labels.defineLabel(unnamed, &line);
    std::ostringstream before;
    line.dump(before);
    EXPECT_EQ(before.str(), "(unnamed label):");
    EXPECT_FALSE(line.isTargetLine());
    line.setBranchTarget(true); // the label, not the line, decides
    EXPECT_FALSE(line.isTargetLine());

    labels.finaliseLabels();
    std::ostringstream after;
    line.dump(after);
    EXPECT_EQ(after.str(), ".L0:");
}

} // namespace
} // namespace vorp
