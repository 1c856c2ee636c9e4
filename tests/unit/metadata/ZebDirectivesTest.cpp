#include "ParsedSource.h"
#include "model/VormCCDirectiveLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorp {
namespace {

using test::ParsedSource;

std::size_t countLines(const VormSection* section, LineType type)
{
    std::size_t count = 0;
    for (const VormLine* line : section->getLines())
        count += line->getType() == type;
    return count;
}

std::vector<const VormCCDirectiveLine*> ccTops(const VormSection* section)
{
    std::vector<const VormCCDirectiveLine*> tops;
    for (const VormLine* line : section->getLines())
        if (line->getType() == CC_TOP_LINE)
            tops.push_back(static_cast<const VormCCDirectiveLine*>(line));
    return tops;
}

TEST(ZebDirectivesTest, BranchEntriesShareOneNamedLabel)
{
    ParsedSource s(".zebbranch\na:\n\tnop\n\t.zebbranch a, b+4, c-4\n\t.zebbranch b+(2*3)\nb:\nc:\n\tnop\n");
    ASSERT_EQ(s.diagnostics, "");
    // The empty directive leaves neither a line nor a record.
    EXPECT_EQ(s.lines().front(), s.label("a")->getTargetLine());
    EXPECT_EQ(countLines(s.section(), LABEL_LINE), 5u); // a, b, c and one per non-empty directive

    const std::vector<ZebBranch*>& branches = s.run.getZebInfo().branches;
    ASSERT_EQ(branches.size(), 4u);
    const char* targets[] = {"a", "b", "c", "b"};
    const int offsets[] = {0, 4, -4, 6};
    for (std::size_t i = 0; i < branches.size(); ++i) {
        EXPECT_EQ(branches[i]->target, s.label(targets[i])) << i;
        EXPECT_EQ(branches[i]->targetOffset, offsets[i]) << i;
        EXPECT_EQ(branches[i]->guard, nullptr) << i;
    }
    EXPECT_EQ(branches[0]->location, branches[1]->location);
    EXPECT_EQ(branches[0]->location, branches[2]->location);
    EXPECT_NE(branches[0]->location, branches[3]->location);
    // Records spell their location before addresses are known.
    EXPECT_TRUE(branches[0]->location->hasName());
    EXPECT_EQ(branches[0]->location->getTargetLine()->getType(), LABEL_LINE);
}

TEST(ZebDirectivesTest, InvalidBranchStopsAtTheFirstBadExpression)
{
    ParsedSource s(".zebbranch .\n.zebbranch 4+a\n.zebbranch a, .+2, b\n.zebbranch a-b\n.zebbranch (a)\n");
    EXPECT_EQ(s.diagnostics, "a.S:1: Error: A00008 .zebbranch invalid syntax for directive\n"
                             "a.S:2: Error: A00008 .zebbranch invalid syntax for directive\n"
                             "a.S:3: Error: A00008 .zebbranch invalid syntax for directive\n"
                             "a.S:4: Error: A00008 .zebbranch invalid syntax for directive\n"
                             "a.S:5: Error: A00008 .zebbranch invalid syntax for directive\n");
    const std::vector<ZebBranch*>& branches = s.run.getZebInfo().branches;
    ASSERT_EQ(branches.size(), 1u);
    EXPECT_EQ(branches[0]->target, s.label("a"));
    EXPECT_EQ(s.label("b"), nullptr);
    // Only the directive with a good first entry has a location.
    EXPECT_EQ(countLines(s.section(), LABEL_LINE), 1u);
}

TEST(ZebDirectivesTest, GuardIsTheLocationInsideAnOpenBlockOfTheSection)
{
    ParsedSource s(".zebloop 1\n.cc_top f.function, f\nf:\n.zebloop 2\n.section .other, \"ax\", @progbits\n"
                   ".zebloop 3\n.text\n.zebloop 4\n.zebthreadstart\n.zebthreadstop\n.zeblabel \"l\", \"d\", \"f\", 0\n"
                   ".zebbranch f\n.cc_bottom f.function\n.zebloop 5\n.zebthreadstart\n.zebbranch f\n");
    ASSERT_EQ(s.diagnostics, "");
    const ZebInfo& info = s.run.getZebInfo();
    ASSERT_EQ(info.loops.size(), 5u);
    const bool guarded[] = {false, true, false, true, false};
    for (std::size_t i = 0; i < info.loops.size(); ++i) {
        EXPECT_EQ(info.loops[i]->count, i + 1);
        EXPECT_EQ(info.loops[i]->guard, guarded[i] ? info.loops[i]->location : nullptr) << i;
    }
    ASSERT_EQ(info.threadStarts.size(), 2u);
    EXPECT_EQ(info.threadStarts[0]->guard, info.threadStarts[0]->location);
    EXPECT_EQ(info.threadStarts[1]->guard, nullptr);
    ASSERT_EQ(info.threadStops.size(), 1u);
    EXPECT_EQ(info.threadStops[0]->guard, info.threadStops[0]->location);
    ASSERT_EQ(info.labels.size(), 1u);
    EXPECT_EQ(info.labels[0]->guard, info.labels[0]->location);
    ASSERT_EQ(info.branches.size(), 2u);
    EXPECT_EQ(info.branches[0]->guard, info.branches[0]->location);
    EXPECT_EQ(info.branches[1]->guard, nullptr);
}

TEST(ZebDirectivesTest, RecordDirectivesFillTheirOwnLists)
{
    ParsedSource s(".zebendpoint \"e1\", \"e2\", \"e3\", 1\n.zeblabel \"l1\", \"l2\", \"l3\", 2\n"
                   ".zebcall \"c1\", \"c2\", \"c3\", 'A'\n.zebcommand \"m1\", \"m2\", \"m3\", 4\n"
                   ".zebsystem \"s1\", \"s2\", \"s3\", 0xffffffff\n");
    ASSERT_EQ(s.diagnostics, "");
    const ZebInfo& info = s.run.getZebInfo();
    const std::vector<ZebMarker*>* markers[] = {&info.endpoints, &info.labels, &info.calls};
    const char* prefixes[] = {"e", "l", "c"};
    const unsigned values[] = {1, 2, 65};
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(markers[i]->size(), 1u) << i;
        const ZebMarker& marker = *markers[i]->front();
        EXPECT_EQ(std::string(marker.first), std::string(prefixes[i]) + "1");
        EXPECT_EQ(std::string(marker.second), std::string(prefixes[i]) + "2");
        EXPECT_EQ(std::string(marker.third), std::string(prefixes[i]) + "3");
        EXPECT_EQ(marker.value, values[i]);
        EXPECT_TRUE(marker.location->hasName());
    }
    ASSERT_EQ(info.commands.size(), 1u);
    EXPECT_EQ(std::string(info.commands[0]->getCommand()), "m1");
    EXPECT_EQ(std::string(info.commands[0]->getCompilationDir()), "m2");
    EXPECT_EQ(std::string(info.commands[0]->getFileName()), "m3");
    EXPECT_EQ(info.commands[0]->getLineNumber(), 4u);
    ASSERT_EQ(info.systems.size(), 1u);
    EXPECT_EQ(std::string(info.systems[0]->getFunctionName()), "s1");
    EXPECT_EQ(info.systems[0]->getLineNumber(), 0xffffffffu);
    // Commands and systems describe the compilation, not a place: only the markers have labels.
    EXPECT_EQ(countLines(s.section(), LABEL_LINE), 3u);
}

TEST(ZebDirectivesTest, GuardedRecordsGetBlocksNumberedAcrossSections)
{
    ParsedSource s(".zeblabel \"a\", \"d\", \"f\", 0\n.zebloop 3\n.cc_top f.function, f\nf:\n"
                   "\t.zeblabel \"b\", \"d\", \"f\", 1\n\t.zebloop 4\n\tnop\n.cc_bottom f.function\n");
    ASSERT_EQ(s.diagnostics, "");
    s.settle();
    for (const char* name : {".zebcommand", ".zebsystem", ".zebbranch", ".zebthreadstart", ".zebthreadstop",
                             ".zebendpoint", ".zebcall"})
        EXPECT_EQ(s.assembler.findSection(name), nullptr) << name;
    const ZebInfo& info = s.run.getZebInfo();
    const VormSection* loopSection = s.assembler.findSection(".zebloop");
    const VormSection* labelSection = s.assembler.findSection(".zeblabel");
    ASSERT_NE(loopSection, nullptr);
    ASSERT_NE(labelSection, nullptr);

    // One block per guarded record; the loops are written before the labels.
    const std::vector<const VormCCDirectiveLine*> loopTops = ccTops(loopSection);
    const std::vector<const VormCCDirectiveLine*> labelTops = ccTops(labelSection);
    ASSERT_EQ(loopTops.size(), 1u);
    ASSERT_EQ(labelTops.size(), 1u);
    EXPECT_EQ(countLines(labelSection, CC_BOTTOM_LINE), 1u);
    const std::string loopName = info.loops[1]->location->getName();
    const std::string labelName = info.labels[1]->location->getName();
    EXPECT_EQ(std::string(loopTops[0]->getPredicate()), loopName);
    EXPECT_EQ(std::string(labelTops[0]->getPredicate()), labelName);

    const std::string loopBlock = loopTops[0]->getName();
    const std::string labelBlock = labelTops[0]->getName();
    const std::string loopPrefix = loopName + ".zeb.";
    const std::string labelPrefix = labelName + ".zeb.";
    ASSERT_EQ(loopBlock.compare(0, loopPrefix.size(), loopPrefix), 0) << loopBlock;
    ASSERT_EQ(labelBlock.compare(0, labelPrefix.size(), labelPrefix), 0) << labelBlock;
    EXPECT_EQ(std::stoul(labelBlock.substr(labelPrefix.size())), std::stoul(loopBlock.substr(loopPrefix.size())) + 1);
}

} // namespace
} // namespace vorp
