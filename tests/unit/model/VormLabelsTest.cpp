#include "diag/VorpErrorHandler.h"
#include "model/VormLabelLine.h"
#include "model/VormLabels.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vorp {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// A line of a chosen size standing at "s.S:<lineNum>".
struct SizedLine : VormLine {
    SizedLine(std::uint32_t lo, std::uint32_t hi, unsigned lineNum)
        : VormLine(DATA_LINE, false), m_min(lo), m_max(hi), m_lineNum(lineNum) {}
    void encode(std::uint8_t*, Relocations&, VormAssembler&, VorpErrorHandler&) override {}
    LineLocation getLocation() const override { return LineLocation("s.S", m_lineNum); }
    void getByteRange(std::uint32_t& lo, std::uint32_t& hi) const override { lo = m_min, hi = m_max; }
    void dump(std::ostream& out) const override { out << "sized"; }
    void printListing(FILE*) override {}
    std::uint32_t m_min, m_max;
    unsigned m_lineNum;
};

class VormLabelsTest : public testing::Test {
protected:
    VormLine* sized(std::uint32_t minBytes, std::uint32_t maxBytes, unsigned lineNum = 1)
    {
        m_lines.push_back(std::make_unique<SizedLine>(minBytes, maxBytes, lineNum));
        return m_lines.back().get();
    }
    VormLine* labelLine(VormLabel* label, unsigned lineNum)
    {
        m_lines.push_back(std::make_unique<VormLabelLine>(label, LineLocation("a.S", lineNum), false));
        return m_lines.back().get();
    }

    VorpErrorHandler m_handler;
    VormLabels m_labels{&m_handler};
    std::vector<std::unique_ptr<VormLine>> m_lines;
};

TEST_F(VormLabelsTest, SecondDefinitionIsReportedAndWins)
{
    VormLabel* x = m_labels.getOrTentativelyAddLabel("x", false);
    VormLine* first = labelLine(x, 1);
    VormLine* second = labelLine(x, 3);
    CaptureStderr();
    m_labels.defineLabel(x, first);
    m_labels.defineLabel(x, second);
    EXPECT_EQ(GetCapturedStderr(), "a.S:3: Error: A00045 Duplicate defined label 'x'\n");
    EXPECT_EQ(x->getTargetLine(), second);

    // An alias is no definition: defining over it is silent, and so is a second alias.
    CaptureStderr();
    m_labels.addAliasLabel(LineLocation("a.S", 5), "a", "b");
    m_labels.addAliasLabel(LineLocation("a.S", 6), "a", "c");
    EXPECT_EQ(m_labels.findLabel("a")->getAliasedLabel(), m_labels.findLabel("c"));
    VormLabel* a = m_labels.findLabel("a");
    m_labels.defineLabel(a, sized(0, 0, 7));
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(a->getAliasedLabel(), nullptr);

    // An absolute value is a definition; the error stands at the location given.
    CaptureStderr();
    m_labels.addAbsoluteLabel(LineLocation("k.S", 2), "k", 1);
    VormLabel* k = m_labels.addAbsoluteLabel(LineLocation("k.S", 7), "k", 2);
    m_labels.defineLabel(k, sized(0, 0, 8));
    m_labels.addDefinedLabel("k", sized(0, 0, 9));
    EXPECT_EQ(GetCapturedStderr(), "k.S:7: Error: A00045 Duplicate defined label 'k'\n"
                                   "s.S:8: Error: A00045 Duplicate defined label 'k'\n"
                                   "s.S:9: Error: A00045 Duplicate defined label 'k'\n");
    EXPECT_EQ(k->getSymbolType(), SYMBOL_DEFINED);

    // A definition keeps what an earlier mention set: that's how ".globl g" before "g:" works.
    VormLabel* g = m_labels.addGlobalLabel("g", "typed");
    g->setSize(12);
    VormLine* line = sized(4, 4);
    EXPECT_EQ(m_labels.addDefinedLabel(LineLocation("a.S", 1), "g", nullptr, line, 0, SYMBOL_DEFINED), g);
    EXPECT_EQ(g->getVisibility(), VISIBILITY_GLOBAL);
    EXPECT_EQ(g->getSize(), 12u);
    EXPECT_TRUE(g->isBranchTarget());
    EXPECT_EQ(g->getTargetLine(), line);
}

TEST_F(VormLabelsTest, ReferencesOnlyStrengthenAndMarkBranchTargets)
{
    VormLabel* t = m_labels.getOrTentativelyAddLabel("t", true);
    EXPECT_EQ(t->getSymbolType(), SYMBOL_TENTATIVE);
    EXPECT_EQ(m_labels.getOrAddRequiredLabel("t", false), t);
    EXPECT_EQ(t->getSymbolType(), SYMBOL_REQUIRED);
    m_labels.getOrTentativelyAddLabel("t", false);
    EXPECT_EQ(t->getSymbolType(), SYMBOL_REQUIRED);
    EXPECT_TRUE(t->isBranchTarget());

    // A required reference to a defined label leaves it defined; the mark reaches its line.
    VormLine* line = sized(2, 2);
    VormLabel* d = m_labels.addDefinedLabel("d", line);
    EXPECT_FALSE(line->isTargetLine());
    m_labels.getOrAddRequiredLabel("d", true);
    EXPECT_EQ(d->getSymbolType(), SYMBOL_DEFINED);
    EXPECT_TRUE(line->isTargetLine());

    // A label line follows its label's mark, whether the mark comes before or after the line.
    VormLabel* before = m_labels.getOrAddRequiredLabel("before", true);
    VormLabel* after = m_labels.getOrTentativelyAddLabel("after", false);
    VormLine* beforeLine = labelLine(before, 1);
    VormLine* afterLine = labelLine(after, 2);
    m_labels.defineLabel(before, beforeLine);
    m_labels.defineLabel(after, afterLine);
    EXPECT_TRUE(beforeLine->isTargetLine());
    EXPECT_FALSE(afterLine->isTargetLine());
    m_labels.getOrTentativelyAddLabel("after", true);
    EXPECT_TRUE(afterLine->isTargetLine());

    // Being aliased makes a label required and a branch target, and marks its line.
    VormLine* targetLine = sized(0, 0);
    VormLabel* target = m_labels.addDefinedLabel("target", targetLine);
    VormLabel* alias = m_labels.addAliasLabel(LineLocation("a.S", 1), "alias", "target");
    EXPECT_EQ(alias->getAliasedLabel(), target);
    EXPECT_TRUE(target->isBranchTarget());
    EXPECT_TRUE(targetLine->isTargetLine());
    VormLabel* fresh = m_labels.addAliasLabel(LineLocation("a.S", 2), "alias2", "fresh");
    EXPECT_EQ(fresh->getAliasedLabel()->getSymbolType(), SYMBOL_REQUIRED);
    EXPECT_TRUE(fresh->getAliasedLabel()->isBranchTarget());
}

TEST_F(VormLabelsTest, VisibilityIsKeptOrDecidedByType)
{
    m_labels.addWeakLabel("w1");
    m_labels.addGlobalLabel("w1", nullptr);
    m_labels.addGlobalLabel("w2", nullptr);
    m_labels.addWeakLabel("w2");
    m_labels.addLocalLabel("loc", nullptr);
    m_labels.getOrAddRequiredLabel("loc", false);
    m_labels.getOrAddRequiredLabel("req", false);
    m_labels.addExternLabel("ext", nullptr);
    m_labels.addDefinedLabel("def", sized(0, 0));
    m_labels.addAliasLabel(LineLocation("a.S", 2), "ali", "def");
    VormLabel* linkset = m_labels.addUniqueLinksetLabel();
    m_labels.finaliseLabels();

    EXPECT_EQ(m_labels.findLabel("w1")->getVisibility(), VISIBILITY_WEAK);
    EXPECT_EQ(m_labels.findLabel("w2")->getVisibility(), VISIBILITY_WEAK);
    EXPECT_EQ(m_labels.findLabel("loc")->getVisibility(), VISIBILITY_LOCAL);
    EXPECT_EQ(m_labels.findLabel("loc")->getSymbolType(), SYMBOL_REQUIRED);
    EXPECT_EQ(m_labels.findLabel("req")->getVisibility(), VISIBILITY_GLOBAL);
    EXPECT_EQ(m_labels.findLabel("ext")->getVisibility(), VISIBILITY_GLOBAL);
    EXPECT_EQ(m_labels.findLabel("def")->getVisibility(), VISIBILITY_LOCAL);
    EXPECT_EQ(m_labels.findLabel("ali")->getVisibility(), VISIBILITY_LOCAL);
    EXPECT_EQ(linkset->getVisibility(), VISIBILITY_LOCAL);
}

TEST_F(VormLabelsTest, FollowingAliasesStopsAtWeakLabelsAndCycles)
{
    const LineLocation at("a.S", 1);
    VormLabel* plain = m_labels.getOrAddRequiredLabel("plain", false);
    EXPECT_EQ(plain->getLabelFollowAliases(), plain);

    VormLabel* a = m_labels.addAliasLabel(at, "a", "b");
    m_labels.addAliasLabel(at, "b", "c");
    VormLabel* c = m_labels.addDefinedLabel("c", sized(0, 0));
    EXPECT_EQ(a->getLabelFollowAliases(), c);

    // Never through a weak label, alias or not: the linker may replace it.
    m_labels.addAliasLabel(at, "p", "q");
    m_labels.addAliasLabel(at, "q", "r");
    m_labels.addWeakLabel("r");
    EXPECT_EQ(m_labels.findLabel("p")->getLabelFollowAliases(), m_labels.findLabel("q"));
    m_labels.addWeakLabel("q");
    EXPECT_EQ(m_labels.findLabel("p")->getLabelFollowAliases(), m_labels.findLabel("p"));

    VormLabel* x = m_labels.addAliasLabel(at, "x", "y");
    m_labels.addAliasLabel(at, "y", "x");
    EXPECT_EQ(x->getLabelFollowAliases(), x);

    VormLabel* l1 = m_labels.addAliasLabel(at, "l1", "l2");
    m_labels.addAliasLabel(at, "l2", "l3");
    m_labels.addAliasLabel(at, "l3", "l4");
    m_labels.addAliasLabel(at, "l4", "l1");
    EXPECT_EQ(l1->getLabelFollowAliases(), l1);
    // A chain that runs into a cycle it isn't part of gives its start too.
    VormLabel* tail = m_labels.addAliasLabel(at, "tail", "l2");
    EXPECT_EQ(tail->getLabelFollowAliases(), tail);
}

// A record's label takes the stable name of its line; a source label that already holds that name
// is an internal error (the input can reach it: the names are documented), as for any name given
// twice.
TEST_F(VormLabelsTest, StableNameTakenBySourceLabelEndsAtTheAssertion)
{
    VormLine* line = sized(0, 0);
    line->setId(2);
    m_labels.addDefinedLabel(".Ldefined.2", sized(0, 0));
    VormLabel* record = m_labels.addUniqueDefinedLabel(line);
    EXPECT_DEATH(m_labels.ensureLabelName(record), "m_nameLabelMap.find\\(label->m_name\\) == m_nameLabelMap.end\\(\\)");
}

TEST_F(VormLabelsTest, NamelessLabelsGetFreeNamesInCreationOrder)
{
    VormLine* line = sized(0, 0);
    m_labels.addDefinedLabel(".L0", sized(0, 0));
    m_labels.addDefinedLabel(".L2", sized(0, 0));
    VormLabel* first = m_labels.addUniqueDefinedLabel(line);
    VormLabel* ensured = m_labels.addUniqueDefinedLabel(line);
    VormLabel* second = m_labels.addUniqueUndefinedLabel();
    VormLabel* third = m_labels.addUniqueAlignLabel(line);
    EXPECT_FALSE(first->hasName());

    m_labels.ensureLabelName(ensured);
    const std::string stable = ".Ldefined." + std::to_string(line->getId());
    EXPECT_STREQ(ensured->getName(), stable.c_str());
    EXPECT_EQ(m_labels.findLabel(stable.c_str()), ensured);
    m_labels.ensureLabelName(ensured); // already named: nothing happens

    m_labels.finaliseLabels();
    EXPECT_STREQ(first->getName(), ".L1");
    EXPECT_STREQ(ensured->getName(), stable.c_str());
    EXPECT_STREQ(second->getName(), ".L3");
    EXPECT_STREQ(third->getName(), ".L4");

    // Late labels are finalised as they come and take the next free name.
    VormLabel* late = m_labels.addUniqueDefinedLabel(line);
    EXPECT_TRUE(late->isValueFinalised());
    EXPECT_STREQ(late->getName(), ".L5");
    VormLabel* lateName = m_labels.getOrAddRequiredLabel("late", false);
    EXPECT_TRUE(lateName->isValueFinalised());
    EXPECT_EQ(lateName->getVisibility(), VISIBILITY_GLOBAL);
    // A name handed out but not used is handed out again.
    EXPECT_EQ(m_labels.genUniqueLabelName(), ".L6");
    EXPECT_EQ(m_labels.genUniqueLabelName(), ".L6");
}

TEST_F(VormLabelsTest, ValuesComeFromTheTargetLine)
{
    VormLine* code = sized(2, 4);
    code->setAddress(VormAddress{8, 12});
    VormLine* align = sized(6, 6);
    align->setAddress(VormAddress{16, 16});
    VormLabel* defined = m_labels.addDefinedLabel("defined", code);
    VormLabel* behind = m_labels.addAlignLabel("behind", align);
    VormLabel* absolute = m_labels.addAbsoluteLabel(LineLocation("a.S", 1), "absolute", 0xdeadbeef);
    m_labels.finaliseLabels();
    EXPECT_EQ(defined->getValue(), 8u);
    EXPECT_EQ(behind->getValue(), 22u);
    EXPECT_EQ(absolute->getValue(), 0xdeadbeefu);
    EXPECT_EQ(m_labels.addUniqueDefinedLabel(align)->getValue(), 16u);
}

TEST_F(VormLabelsTest, MisuseIsAnInternalError)
{
    VormLabel* unnamed = m_labels.addUniqueUndefinedLabel();
    EXPECT_DEATH(unnamed->getName(), "!m_unnamed \\|\\| m_valueFinalised");
    EXPECT_DEATH(m_labels.addDefinedLabel("x", nullptr), "target != __null");
    m_labels.finaliseLabels();
    EXPECT_DEATH(m_labels.finaliseLabels(), "finaliseLabels\\(\\) called twice");
    EXPECT_DEATH(m_labels.addAbsoluteLabel(LineLocation("a.S", 1), "x", 1),
                 "Can't add labels after calling finaliseLabels\\(\\)");
}

} // namespace
} // namespace vorp
