#include "ParsedSource.h"
#include "debug/EliminationBlocks.h"
#include "model/VormAlignDirectiveLine.h"
#include "model/VormCCDirectiveLine.h"
#include "model/VormDataLine.h"
#include "model/VormLabelLine.h"
#include "model/VormPostponedExp.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorp {
namespace {

using test::ParsedSource;
using Records = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

VormDataLine* dataLine(VormLine* line)
{
    EXPECT_EQ(line->getType(), DATA_LINE);
    return static_cast<VormDataLine*>(line);
}

std::vector<VormCCDirectiveLine*> blockLines(ParsedSource& s, LineType type)
{
    std::vector<VormCCDirectiveLine*> found;
    for (VormLine* line : s.lines())
        if (line->getType() == type)
            found.push_back(static_cast<VormCCDirectiveLine*>(line));
    return found;
}

const char* const kNotReducible =
    "a.S:1: Error: A00028 Non-constant expression cannot be reduced to linker expressions.\n";

TEST(LinkerRecordsTest, PlainSymbolIsRelocatedWithoutRecord)
{
    for (const char* source : {".word a\n", ".word (a)\n", ".word ((a))\n"}) {
        SCOPED_TRACE(source);
        ParsedSource s(source);
        EXPECT_EQ(s.diagnostics, "");
        EXPECT_TRUE(s.exps().empty());
        VormDataLine* data = dataLine(s.lines().at(0));
        ASSERT_NE(s.label("a"), nullptr);
        EXPECT_EQ(data->getLabels(), std::vector<VormLabel*>{s.label("a")});
        EXPECT_EQ(s.label("a")->getSymbolType(), SYMBOL_REQUIRED);
        EXPECT_TRUE(s.label("a")->isBranchTarget()); // mentioned by data in an allocated section
        s.settle();
        EXPECT_EQ(s.encode(data), (Bytes{0, 0, 0, 0}));
        EXPECT_EQ(s.relocations(), Records{"1 a@0"});
    }
    // Data outside allocated memory makes no branch target of what it mentions.
    ParsedSource s(".section .info, \"\"\n.word b\n");
    ASSERT_NE(s.label("b"), nullptr);
    EXPECT_FALSE(s.label("b")->isBranchTarget());
}

TEST(LinkerRecordsTest, LeavesAttachToAGivenResult)
{
    ParsedSource s("");
    const LineLocation location("a.S", 1);
    auto leaf = [](Operand::Opcode opcode, Token token) {
        auto* operand = new Operand(opcode);
        operand->addToken(token);
        return operand;
    };
    auto compile = [&](const Operand& operand, VormLabel* current, bool allocated, VormLabel* result) {
        return VormPostponedExp::compile(s.assembler, &operand, location, current, allocated, result);
    };
    const Operand plus(Operand::UNARY_PLUS, leaf(Operand::SYMBOL, newToken(s.assembler.getIdStrings(), S_NAME, "a", 1, "a.S")));
    const Operand dot(Operand::PAREN, leaf(Operand::SYMBOL, newToken(s.assembler.getIdStrings(), S_NAME, ".", 1, "a.S")));
    const Operand seven(Operand::UNARY_PLUS, leaf(Operand::INTEGER, newUnsignedConstToken(s.assembler.getIdStrings(), 7, 1, "a.S")));

    // Without a result a symbol stands for itself, and unary plus and parentheses leave no trace.
    VormLabel* a = compile(plus, nullptr, false, nullptr);
    ASSERT_EQ(a, s.label("a"));
    EXPECT_FALSE(a->isBranchTarget());
    VormLabel* here = s.assembler.getLabels().addUniqueLinksetLabel();
    EXPECT_EQ(compile(dot, here, false, nullptr), here);
    EXPECT_TRUE(s.exps().empty());

    VormLabel* x = s.assembler.getLabels().addLinksetLabel(location, "x");
    VormLabel* y = s.assembler.getLabels().addLinksetLabel(location, "y");
    EXPECT_EQ(compile(plus, nullptr, true, x), x);
    EXPECT_TRUE(a->isBranchTarget());
    EXPECT_EQ(compile(seven, nullptr, false, y), y);
    VormLabel* bare = compile(seven, nullptr, false, nullptr);
    EXPECT_EQ(s.records(), (Records{"65 x: a", "64 y: 7", "64 #1: 7"}));
    EXPECT_EQ(bare, s.nameless(1));
    EXPECT_EQ(bare->getSymbolType(), SYMBOL_LINKSET);
}

TEST(LinkerRecordsTest, OperatorsBecomeRecordStreams)
{
    {
        ParsedSource s(".word a+1\n");
        EXPECT_EQ(s.records(), (Records{"64 #1: 1", "69 #2: a #1 0"}));
        EXPECT_EQ(s.nameless(1)->getSymbolType(), SYMBOL_LINKSET);
        EXPECT_EQ(s.nameless(2)->getSymbolType(), SYMBOL_LINKSET);
        VormDataLine* data = dataLine(s.lines().at(0));
        EXPECT_EQ(data->getLabels(), std::vector<VormLabel*>{s.nameless(2)});
        s.settle();
        s.encode(data);
        EXPECT_EQ(s.relocations(), Records{"1 #2@0"});
    }
    {
        // Children's records come first; an integer child is a record of its own.
        ParsedSource s(".word a-(b+2)\n");
        EXPECT_EQ(s.records(), (Records{"64 #1: 2", "69 #2: b #1 0", "261 #3: a #2 0"}));
    }
    {
        ParsedSource s(".word a ? b $: 3\n");
        EXPECT_EQ(s.records(), (Records{"64 #1: 3", "3733 #2: a b #1"}));
    }
    const std::pair<const char*, const char*> kinds[] = {
        {".word a $M b\n", "133 #1: a b 0"}, {".word a*b\n", "197 #1: a b 0"},  {".word a<b\n", "453 #1: a b 0"},
        {".word a>b\n", "517 #1: a b 0"},    {".word a<=b\n", "581 #1: a b 0"}, {".word a>=b\n", "645 #1: a b 0"},
    };
    for (const auto& [source, record] : kinds) {
        ParsedSource s(source);
        EXPECT_EQ(s.records(), Records{record}) << source;
    }
}

TEST(LinkerRecordsTest, CurrentLocationIsOneLabelPerDataLine)
{
    ParsedSource s(".short 7\n.word .-a, 4, .-b\n");
    ASSERT_EQ(s.diagnostics, "");
    // Both entries see the start of the line as ".", through the same nameless label.
    EXPECT_EQ(s.records(), (Records{"261 #1: #2 a 0", "261 #3: #2 b 0"}));
    VormDataLine* data = dataLine(s.lines().at(1));
    EXPECT_EQ(s.nameless(2)->getSymbolType(), SYMBOL_DEFINED);
    EXPECT_EQ(s.nameless(2)->getTargetLine(), data);
    EXPECT_EQ(data->getLabels(), (std::vector<VormLabel*>{s.nameless(1), nullptr, s.nameless(3)}));
    s.settle();
    EXPECT_EQ(s.encode(data), (Bytes{0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0}));
    // At the line's address plus the entry's offset in the line.
    EXPECT_EQ(s.relocations(), (Records{"1 #1@2", "1 #3@10"}));
}

TEST(LinkerRecordsTest, OperatorsTheLinkerLacksAreError28)
{
    for (const char* source : {".word -a\n", ".word a<<1\n", ".word a>>1\n", ".word a&b\n", ".word a|b\n",
                               ".word a/b\n", ".set x, -a\n"}) {
        ParsedSource s(source);
        EXPECT_EQ(s.diagnostics, kNotReducible) << source;
        EXPECT_TRUE(s.exps().empty()) << source;
    }
    ParsedSource s(".word -a\n");
    EXPECT_EQ(s.lines().size(), 1u); // the line stays
    // Beneath another operator the error is reported once and the whole entry goes.
    ParsedSource nested(".word -a*2\n");
    EXPECT_EQ(nested.diagnostics, kNotReducible);
}

TEST(LinkerRecordsTest, SetAndSizeAttachRecordsToTheirLabels)
{
    {
        ParsedSource s(".set x, a+b\n.set y, 2+3\n.set z, b\n");
        ASSERT_EQ(s.diagnostics, "");
        EXPECT_EQ(s.records(), Records{"69 x: a b 0"});
        EXPECT_EQ(s.label("x")->getSymbolType(), SYMBOL_LINKSET);
        EXPECT_TRUE(s.label("a")->isBranchTarget());
        EXPECT_EQ(s.label("y")->getSymbolType(), SYMBOL_ABSOLUTE);
        EXPECT_EQ(s.label("y")->getValue(), 5u);
        EXPECT_EQ(s.label("z")->getSymbolType(), SYMBOL_ALIAS);
        EXPECT_EQ(s.label("z")->getAliasedLabel(), s.label("b"));
        EXPECT_EQ(s.assembler.getLabels().getAllLabels().size(), 5u); // no nameless label for x's value
    }
    {
        ParsedSource s(".byte 1\ny = .+4\n");
        EXPECT_EQ(s.records(), (Records{"64 #1: 4", "69 y: #2 #1 0"}));
        ASSERT_EQ(s.lines().size(), 2u);
        ASSERT_EQ(s.lines()[1]->getType(), LABEL_LINE);
        EXPECT_EQ(static_cast<VormLabelLine*>(s.lines()[1])->getLabel(), s.nameless(2));
    }
    {
        ParsedSource s("f:\n.byte 1\n.size f, .-f\n.size g, 8\n.size h, k\n");
        ASSERT_EQ(s.diagnostics, "");
        EXPECT_EQ(s.records(), (Records{"261 #1: #2 f 0", "3012 #1: 0 f", "3012 k: 0 h"}));
        EXPECT_EQ(s.lines().size(), 3u);
        EXPECT_EQ(s.lines()[2]->getType(), LABEL_LINE);
        EXPECT_EQ(s.label("g")->getSize(), 8u);
        EXPECT_EQ(s.label("f")->getSize(), 0u);
        EXPECT_FALSE(s.label("f")->isBranchTarget()); // .size mentions without making branch targets
        EXPECT_FALSE(s.label("k")->isBranchTarget());
    }
}

TEST(LinkerRecordsTest, ResourceSuffixesTellFactsAboutTheFunction)
{
    ParsedSource s("f.nstackwords = 4\nf.maxtimers = 2\nf.nstackwords.pragma = 1\n.maxtimers = 2\n"
                   "g.locnochandec = 1\n.set h.calldepth, h.maxthreads\nk.maxsync = a+1\n");
    ASSERT_EQ(s.diagnostics, "");
    EXPECT_EQ(s.records(), (Records{"1089 f: f.nstackwords", "1281 f: f.maxtimers", "3073 f: f.nstackwords.pragma",
                                    "1985 g: g.locnochandec", "1153 h: h.calldepth", "64 #1: 1",
                                    "69 k.maxsync: a #1 0", "1409 k: k.maxsync"}));
    EXPECT_EQ(s.label("f")->getSymbolType(), SYMBOL_REQUIRED);
    EXPECT_FALSE(s.label("f")->isBranchTarget());
    EXPECT_EQ(s.label("f.nstackwords")->getSymbolType(), SYMBOL_ABSOLUTE);
    EXPECT_EQ(s.label(".maxtimers")->getValue(), 2u);
}

TEST(LinkerRecordsTest, EliminationBlocksWalkBackwards)
{
    ParsedSource s("before:\n.cc_top b1.function, pred\ninside:\n.byte 1\n.cc_bottom b1.function\nbetween:\n"
                   ".cc_top b2\n.cc_bottom b2\nafter:\n.align 4\n");
    ASSERT_EQ(s.diagnostics, "");
    s.settle();
    ASSERT_TRUE(s.exps().empty());
    EliminationBlocks::addEliminationBlocks(s.assembler, s.section());

    const auto tops = blockLines(s, CC_TOP_LINE);
    const auto bottoms = blockLines(s, CC_BOTTOM_LINE);
    ASSERT_EQ(tops.size(), 2u);
    ASSERT_EQ(bottoms.size(), 2u);
    auto* align = static_cast<VormAlignDirectiveLine*>(s.lines().back());
    ASSERT_EQ(align->getType(), ALIGN_LINE);

    // Records in reverse line order: the alignment (4, 3 pad bytes, default fill), the empty block,
    // then the first block, whose subject is its predicate.
    EXPECT_EQ(s.records(), (Records{"2176 #1: 4 3 9437328", "2117 #2: #2 #3", "2117 pred: #4 #5"}));
    EXPECT_EQ(s.nameless(1), align->getLabel());
    EXPECT_EQ(s.nameless(2), tops[1]->getLabel());
    EXPECT_EQ(s.nameless(3), bottoms[1]->getLabel());
    EXPECT_EQ(s.nameless(4), tops[0]->getLabel());
    EXPECT_EQ(s.nameless(5), bottoms[0]->getLabel());
    EXPECT_EQ(s.label("pred")->getSymbolType(), SYMBOL_REQUIRED);
    EXPECT_EQ(s.label("inside")->getCCBottom(), bottoms[0]);
    for (const char* outside : {"before", "between", "after"})
        EXPECT_EQ(s.label(outside)->getCCBottom(), nullptr) << outside;
    EXPECT_EQ(align->getLabel()->getCCBottom(), nullptr);
}

TEST(LinkerRecordsTest, AddEliminationBlockWrapsExistingLines)
{
    ParsedSource s("x:\n.byte 1\ny:\n");
    auto position = [&](std::size_t index) { return std::next(s.section()->getLines().begin(), index); };
    EliminationBlocks::addEliminationBlock(s.assembler, s.section(), position(1), position(2), s.label("x"));
    EliminationBlocks::addEliminationBlock(s.assembler, s.section(), position(4), s.section()->getLines().end(),
                                           nullptr);
    const auto tops = blockLines(s, CC_TOP_LINE);
    const auto bottoms = blockLines(s, CC_BOTTOM_LINE);
    ASSERT_EQ(tops.size(), 2u);
    ASSERT_EQ(bottoms.size(), 2u);
    const std::vector<LineType> shape = {LABEL_LINE, CC_TOP_LINE, DATA_LINE, CC_BOTTOM_LINE,
                                         CC_TOP_LINE, LABEL_LINE, CC_BOTTOM_LINE};
    std::vector<LineType> types;
    for (VormLine* line : s.lines())
        types.push_back(line->getType());
    EXPECT_EQ(types, shape);

    const std::string first = tops[0]->getName();
    ASSERT_EQ(first.rfind("vorp.cc", 0), 0u);
    EXPECT_EQ(std::string(tops[1]->getName()), "vorp.cc" + std::to_string(std::stoul(first.substr(7)) + 1));
    for (int i = 0; i < 2; ++i) {
        EXPECT_STREQ(bottoms[i]->getName(), tops[i]->getName());
        EXPECT_EQ(bottoms[i]->getTop(), tops[i]);
        EXPECT_EQ(bottoms[i]->getToken(0).line, 0);
        EXPECT_STREQ(bottoms[i]->getToken(0).file, "<unknown>");
    }
    EXPECT_STREQ(tops[0]->getPredicate(), "x");
    EXPECT_STREQ(tops[1]->getPredicate(), "");

    s.settle();
    EliminationBlocks::addEliminationBlocks(s.assembler, s.section());
    EXPECT_EQ(s.records(), (Records{"2117 #1: #1 #2", "2117 x: #3 #4"})); // no predicate: the block itself
    EXPECT_EQ(s.nameless(1), tops[1]->getLabel());
    EXPECT_EQ(s.label("y")->getCCBottom(), bottoms[1]);
    EXPECT_EQ(s.label("x")->getCCBottom(), nullptr);
}

} // namespace
} // namespace vorp
