#include "ParsedSource.h"
#include "model/VormDataLine.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

using test::ParsedSource;
using Records = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

std::uint32_t bytesOf(const VormLine* line)
{
    std::uint32_t minBytes = 0, maxBytes = 0;
    line->getByteRange(minBytes, maxBytes);
    EXPECT_EQ(minBytes, maxBytes);
    return maxBytes;
}

std::string notes(AssemblerRun& run)
{
    std::string text;
    for (const NoteMemo& note : run.getNotes())
        text += (text.empty() ? "" : " ") + std::to_string(note.getKind()) + ":" + note.getText();
    return text;
}

TEST(AsmWriterTest, LinkerFactDirectives)
{
    ParsedSource s(".call f, g\n.par f, h, \"p\"\n.globpassesref f, g, \"r\"\n.globread f, g, \"t\"\n"
                   ".globwrite f, g, 4, 8, \"t\"\n.parwrite f, g, -1, 2, \"u\"\n.globread f, g, 65535, 65535, \"t\"\n"
                   ".inline_definition k\n.inline_definition m\n");
    ASSERT_EQ(s.diagnostics, "");
    EXPECT_EQ(s.records(), (Records{"769 f: g", "1609 f: h \"p\"", "841 f: g \"r\"", "969 f: g \"t\"",
                                    "1033 f: g \"t\" 262152", "2249 f: g \"u\" -65534", "969 f: g \"t\" -1",
                                    "3138 .L.inlined: \"k\"", "3138 .L.inlined: \"m\""}));
    for (const char* name : {"f", "g", "h"}) {
        EXPECT_EQ(s.label(name)->getSymbolType(), SYMBOL_REQUIRED) << name;
        EXPECT_FALSE(s.label(name)->isBranchTarget()) << name;
    }
    EXPECT_EQ(s.label(".L.inlined")->getSymbolType(), SYMBOL_ABSOLUTE);
    EXPECT_EQ(s.label(".L.inlined")->getValue(), 0u);
    // Strings are shared copies that outlive the tokens.
    EXPECT_EQ(s.exps()[3]->ops[1].string, s.exps()[4]->ops[1].string);
}

TEST(AsmWriterTest, ReadWriteArgumentErrorsAddNothing)
{
    ParsedSource s(".globread p, q, x, y, \"t\"\n.globwrite p, q, 0x10000, 1, \"t\"\n"
                   ".parwrite p, q, 1, 65536, \"t\"\n.globread p, q, x, 65536, \"t\"\n"
                   ".globwrite p, q, 65536, 65536, \"t\"\n");
    EXPECT_EQ(s.diagnostics,
              "a.S:1: Error: A00008 Offset argument of ..globread directive is not a constant expression.\n"
              "a.S:1: Error: A00008 Size argument of ..globread directive is not a constant expression.\n"
              "a.S:2: Error: A00041 Offset argument of ..globwrite directive is greater than 65535.\n"
              "a.S:3: Error: A00041 Size argument of ..parwrite directive is greater than 65535.\n"
              "a.S:4: Error: A00008 Offset argument of ..globread directive is not a constant expression.\n"
              "a.S:4: Error: A00041 Size argument of ..globread directive is greater than 65535.\n"
              "a.S:5: Error: A00041 Offset argument of ..globwrite directive is greater than 65535.\n"
              "a.S:5: Error: A00041 Size argument of ..globwrite directive is greater than 65535.\n");
    EXPECT_TRUE(s.exps().empty());
    EXPECT_EQ(s.label("p"), nullptr);
    EXPECT_EQ(s.label("q"), nullptr);
}

TEST(AsmWriterTest, DataRangesAndSizes)
{
    ParsedSource s(".byte 255, -128\n.byte 256\n.byte -129\n.short 65535, -32768\n.short 65536\n.short -32769\n"
                   ".word 0xffffffff, -1\n.int 1\n.long 2, 3\n.uleb128 127, 128\n.sleb128 -64, 64, -65\n"
                   ".uleb128 0xffffffff, -1, sym\n.byte\n");
    EXPECT_EQ(s.diagnostics, "a.S:2: Error: A00053 value 256 out of range for .byte directive\n"
                             "a.S:3: Error: A00053 value -129 out of range for .byte directive\n"
                             "a.S:5: Error: A00053 value 65536 out of range for .short directive\n"
                             "a.S:6: Error: A00053 value -32769 out of range for .short directive\n");
    // Lines with values out of range are added all the same.
    const std::vector<std::uint32_t> sizes = {2, 1, 1, 4, 2, 2, 8, 4, 8, 3, 5, 15, 0};
    const auto lines = s.lines();
    ASSERT_EQ(lines.size(), sizes.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(bytesOf(lines[i]), sizes[i]) << "line " << i + 1;
    EXPECT_EQ(static_cast<VormDataLine*>(lines[7])->getDataType(), VormDataLine::WORD);
    EXPECT_EQ(static_cast<VormDataLine*>(lines[8])->getDataType(), VormDataLine::WORD);
}

TEST(AsmWriterTest, DataEncodingAndRelocations)
{
    ParsedSource s(".uleb128 127, 128, 0xffffffff, -1\n.sleb128 -64, 64, -65, 63, 0x7fffffff, -1\n"
                   ".short 0x1234\n.word 0x12345678\n.byte -1, sym\n.uleb128 sym\n.sleb128 sym\n.short sym\n");
    ASSERT_EQ(s.diagnostics, "");
    s.settle();
    const auto lines = s.lines();
    ASSERT_EQ(lines.size(), 8u);
    const std::vector<Bytes> expected = {
        {0x7f, 0x80, 0x01, 0xff, 0xff, 0xff, 0xff, 0x0f, 0xff, 0xff, 0xff, 0xff, 0x0f},
        {0x40, 0xc0, 0x00, 0xbf, 0x7f, 0x3f, 0xff, 0xff, 0xff, 0xff, 0x07, 0x7f},
        {0x34, 0x12},
        {0x78, 0x56, 0x34, 0x12},
        {0xff, 0x00},
        {0, 0, 0, 0, 0},
        {0, 0, 0, 0, 0},
        {0, 0},
    };
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(s.encode(lines[i]), expected[i]) << "line " << i + 1;
    // Each relocation lies at the line's address plus the entry's offset in the line.
    EXPECT_EQ(s.relocations(), (Records{"14 sym@32", "13 sym@33", "17 sym@38", "15 sym@43"}));
}

TEST(AsmWriterTest, StringLines)
{
    ParsedSource s(".ascii \"\"\n.asciiz \"\"\n.asciiz\n.ascii\n.ascii \"ab\", \"c\"\n.asciiz \"ab\", \"c\"\n"
                   ".ascii \"\\a\\b\\t\\n\\v\\f\\r\\\"'?\\\\\\001\\006\\016\\177\\377 z~\"\n");
    ASSERT_EQ(s.diagnostics, "");
    const auto lines = s.lines();
    ASSERT_EQ(lines.size(), 5u); // directives without strings add no line
    EXPECT_EQ(bytesOf(lines[0]), 0u);
    EXPECT_EQ(bytesOf(lines[1]), 1u);
    EXPECT_EQ(bytesOf(lines[2]), 3u);
    EXPECT_EQ(bytesOf(lines[3]), 5u);
    EXPECT_EQ(bytesOf(lines[4]), 19u);

    std::ostringstream dump;
    lines[3]->dump(dump);
    dump << '|';
    lines[4]->dump(dump);
    EXPECT_EQ(dump.str(), std::string("asciiz \"ab\", \"c\"|ascii \"\\\a\\\b\\\t\\\n\\\v\\\f\\\r\\\"\\'\\?\\\\"
                                      "\\001\\006\\016\\177\\377 z~\""));

    s.settle();
    EXPECT_EQ(s.encode(lines[1]), Bytes{0});
    EXPECT_EQ(s.encode(lines[2]), (Bytes{'a', 'b', 'c'}));
    EXPECT_EQ(s.encode(lines[3]), (Bytes{'a', 'b', 0, 'c', 0}));
    EXPECT_EQ(s.section()->getSize(), 28u);
}

TEST(AsmWriterTest, CoreNotes)
{
    {
        ParsedSource s("");
        s.run.addDefaultNotes();
        EXPECT_EQ(notes(s.run), "2:TL3 3:REVB");
    }
    {
        ParsedSource s(".ident \"v1\"\n");
        s.settle(); // the defaults come with the passes
        EXPECT_EQ(notes(s.run), "1:v1 2:TL3 3:REVB");
    }
    {
        ParsedSource s(".ident \"hi\"\n.corerev \"REVC\"\n.core \"TL3\"\n");
        ASSERT_EQ(s.diagnostics, "");
        s.run.addDefaultNotes();
        s.run.addDefaultNotes();
        EXPECT_EQ(notes(s.run), "1:hi 3:REVC 2:TL3");
    }
    {
        ParsedSource s(".core \"X\"\n");
        EXPECT_EQ(s.diagnostics, "a.S:1: Error: A00030 Unsupported core \"X\".\n");
        EXPECT_EQ(notes(s.run), "");
    }
    {
        ParsedSource s(".corerev \"REVX\"\n");
        EXPECT_EQ(s.diagnostics, "a.S:1: Error: A00031 Unsupported core revision \"REVX\".\n");
        EXPECT_EQ(notes(s.run), "3:REVX");
        s.run.addDefaultNotes();
        EXPECT_EQ(notes(s.run), "3:REVX 2:TL3");
    }
}

} // namespace
} // namespace vorp
