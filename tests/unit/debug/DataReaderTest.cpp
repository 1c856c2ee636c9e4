#include "ParsedSource.h"
#include "debug/DataReader.h"
#include "debug/DataWriter.h"
#include "model/VormLabel.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

namespace vorp {
namespace {

// The lines of `body` in ".debug_info", before any pass, and a reader at their start.
struct Reading {
    explicit Reading(const std::string& body)
        : source(".section .debug_info, \"\", @progbits\n" + body),
          section(source.assembler.findSection(".debug_info")), reader(source.assembler, section)
    {
        EXPECT_EQ(source.diagnostics, "");
    }

    test::ParsedSource source;
    VormSection* section;
    DataReader reader;
};

TEST(DataReaderTest, FixedWidthReadsAreLittleEndianAndCrossLines)
{
    Reading r(".byte 1\n.short 0x0302\nmid:\n.word 0x07060504\n.byte 8, 9, 10, 11\n.byte 12, 13, 14, 15\n");
    EXPECT_EQ(r.reader.readU8(), 1u);
    EXPECT_EQ(r.reader.readU32(), 0x05040302u);
    EXPECT_EQ(r.reader.readU16(), 0x0706u);
    EXPECT_EQ(r.reader.getOffset(), 7u);
    EXPECT_EQ(r.reader.readU64(), 0x0f0e0d0c0b0a0908ull);
    EXPECT_FALSE(r.reader.hasError());

    // The end of the section is a failed read, which gives 0 and stays.
    EXPECT_EQ(r.reader.readU8(), 0u);
    EXPECT_TRUE(r.reader.hasError());
    EXPECT_EQ(r.reader.getOffset(), 15u);

    // Back at the start the bytes come again; the failure doesn't go away.
    r.reader.setSection(r.section);
    EXPECT_EQ(r.reader.getOffset(), 0u);
    EXPECT_EQ(r.reader.readU16(), 0x0201u);
    EXPECT_TRUE(r.reader.hasError());
}

TEST(DataReaderTest, Leb128)
{
    Reading r(".uleb128 624485\n.byte 0xff, 0xff, 0xff, 0xff, 0x7f\n"
              ".byte 0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00\n.byte 0x42\n"
              ".byte 0x7f\n.sleb128 -2\n.byte 0x80\n.byte 0x81\n");
    EXPECT_EQ(r.reader.readULEB128(), 624485u);
    // Bits beyond the 32nd drop out, and a long encoding is read to its end.
    EXPECT_EQ(r.reader.readULEB128(), 0xffffffffu);
    EXPECT_EQ(r.reader.readULEB128(), 1u);
    EXPECT_EQ(r.reader.readU8(), 0x42u);

    EXPECT_EQ(r.reader.readSLEB128(), 127);
    // A value that ends normally is not sign-extended.
    EXPECT_EQ(r.reader.readSLEB128(), 0x7e);
    EXPECT_FALSE(r.reader.hasError());
    // Cut off after 14 bits: the bits above are set.
    EXPECT_EQ(r.reader.readSLEB128(), static_cast<std::int32_t>(0xffffc080u));
    EXPECT_TRUE(r.reader.hasError());
}

TEST(DataReaderTest, WrittenLinesReadBack)
{
    Reading r("");
    {
        DataWriter writer(r.source.assembler, r.section);
        writer.emitSleb128(-4);
        writer.emitLabel("here");
        writer.emitU16(0xbeef);
        writer.emitString("xy");
        writer.emitUleb128(300);
    }
    r.reader.setSection(r.section);
    EXPECT_EQ(r.reader.readULEB128(), 0xfffffffcu);
    EXPECT_EQ(r.reader.getOffset(), 5u);
    EXPECT_EQ(r.reader.readU16(), 0xbeefu);
    EXPECT_EQ(r.reader.readString(), "xy");
    EXPECT_EQ(r.reader.readULEB128(), 300u);
    EXPECT_EQ(r.reader.getOffset(), 12u);
    EXPECT_FALSE(r.reader.hasError());
}

TEST(DataReaderTest, StringsJoinLinesAndStopAtTheEnd)
{
    Reading r(".byte 0x68\n.byte 0x69\n.ascii \"!\"\n.byte 0\n.asciiz \"ab\", \"c\"\n.ascii \"de\"\n");
    EXPECT_EQ(r.reader.readString(), "hi!");
    EXPECT_EQ(r.reader.readString(), "ab");
    EXPECT_EQ(r.reader.readString(), "c");
    EXPECT_FALSE(r.reader.hasError());
    EXPECT_EQ(r.reader.readString(), "de");
    EXPECT_TRUE(r.reader.hasError());
}

TEST(DataReaderTest, PositionsExistOnlyBetweenLines)
{
    Reading r("first:\n.word 0x01020304\nsecond:\n.byte 9\n");
    Optional<LinePosition> start = r.reader.getPosition();
    ASSERT_TRUE(start.hasValue());
    EXPECT_EQ(start.getValue(), r.section->getLines().begin());

    r.reader.readU8();
    EXPECT_FALSE(r.reader.getPosition().hasValue());
    EXPECT_FALSE(r.reader.bufferIsEmpty());
    r.reader.readU16();
    EXPECT_FALSE(r.reader.getPosition().hasValue());
    r.reader.readU8();
    Optional<LinePosition> next = r.reader.getPosition();
    ASSERT_TRUE(next.hasValue());
    EXPECT_EQ(*next.getValue(), r.source.label("second")->getTargetLine());
    EXPECT_EQ(r.reader.getOffset(), 4u);

    // The label line is passed over, not consumed.
    EXPECT_EQ(r.reader.nextNonZeroSizeLine(), *std::next(next.getValue()));
    EXPECT_EQ(r.reader.readU8(), 9u);
    EXPECT_EQ(r.reader.nextNonZeroSizeLine(), nullptr);
}

TEST(DataReaderTest, RelocatedWordsStopReadsButNotSkips)
{
    Reading r(".byte 5\nref:\n.word foo\n.short 0x0706\n.word foo\n.word foo + 4\n.word foo, foo\n.word .\n");
    VormLabel* foo = r.source.label("foo");
    ASSERT_NE(foo, nullptr);
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::WORD), nullptr) << "not at the reference yet";
    EXPECT_EQ(r.reader.readU8(), 5u);

    Optional<LinePosition> before = r.reader.getPosition();
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::BYTE), nullptr);
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::WORD), foo);
    // Looking consumed nothing.
    EXPECT_EQ(r.reader.getPosition().getValue(), before.getValue());
    EXPECT_EQ(r.reader.getOffset(), 1u);

    EXPECT_EQ(r.reader.readU8(), 0u);
    EXPECT_TRUE(r.reader.hasError());
    EXPECT_EQ(r.reader.getOffset(), 1u);
    r.reader.skipBytes(4);
    EXPECT_EQ(r.reader.getOffset(), 5u);
    EXPECT_EQ(r.reader.readU8(), 6u);
    // Inside a line there is no reference to be had.
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::WORD), nullptr);
    EXPECT_EQ(r.reader.readU8(), 7u);
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::WORD), foo);
    r.reader.skipBytes(4);

    // An expression or a second entry is no bare reference.
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::WORD), nullptr);
    r.reader.skipBytes(4);
    EXPECT_EQ(r.reader.readDataReference(VormDataLine::WORD), nullptr);
    r.reader.skipBytes(8);
    // "." is the line's own place.
    VormLabel* dot = r.reader.readDataReference(VormDataLine::WORD);
    ASSERT_NE(dot, nullptr);
    EXPECT_EQ(dot->getTargetLine(), r.reader.nextNonZeroSizeLine());
}

TEST(DataReaderTest, SkipsPassWholeLinesAndEncodeOnlyWhereTheyEnd)
{
    // Whole lines of fixed size go by unencoded, whatever they are.
    Reading r(".byte 1\n.skip 3\n.word foo\n.L1:\n.short 0x0302\n.word 0x07060504\n.byte 8, 9\n.skip 2\n");
    r.reader.skipBytes(9);
    EXPECT_EQ(r.reader.getOffset(), 9u);
    EXPECT_FALSE(r.reader.hasError());
    EXPECT_EQ(r.reader.readU8(), 3u);

    // With the buffer spent, even a skip of nothing reads the next line into the buffer.
    r.reader.skipBytes(0);
    EXPECT_FALSE(r.reader.bufferIsEmpty());
    EXPECT_EQ(r.reader.getOffset(), 10u);
    EXPECT_EQ(r.reader.readU8(), 4u);
    // Skipping just the rest of the buffered line does the same for the line after.
    r.reader.skipBytes(3);
    EXPECT_EQ(r.reader.getOffset(), 14u);
    EXPECT_FALSE(r.reader.bufferIsEmpty());
    EXPECT_EQ(r.reader.readU8(), 8u);

    // More than the rest ends with the buffered line: the excess is not taken from what follows.
    r.reader.skipBytes(5);
    EXPECT_TRUE(r.reader.bufferIsEmpty());
    EXPECT_EQ(r.reader.getOffset(), 16u);
    EXPECT_FALSE(r.reader.hasError());

    // A skip into a line that can't be encoded fails.
    r.reader.skipBytes(1);
    EXPECT_TRUE(r.reader.hasError());
}

TEST(DataReaderTest, SkipsEndingInsideTheBufferRunOn)
{
    // Less than the rest of the line wraps around and runs on to a line that stops it.
    Reading r(".word 0x04030201\n.byte 5, 6\n.align 4\n.byte 7\n");
    EXPECT_EQ(r.reader.readU8(), 1u);
    r.reader.skipBytes(1);
    EXPECT_TRUE(r.reader.hasError());
    EXPECT_EQ(r.reader.getOffset(), 6u);

    // Skipping stops at a line whose size isn't known yet.
    Reading undecided(".byte 5, 6\n.align 4\n.byte 7\n");
    undecided.reader.skipBytes(2);
    EXPECT_FALSE(undecided.reader.hasError());
    undecided.reader.skipBytes(1);
    EXPECT_TRUE(undecided.reader.hasError());
}

TEST(DataReaderTest, OnlyLinesWithKnownBytesAreSafe)
{
    Reading r("lab:\n.ascii \"a\"\n.byte 1\n.word foo\n.skip 1\n");
    std::vector<VormLine*> lines(r.section->getLines().begin(), r.section->getLines().end());
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_FALSE(isSafeToEncode(lines[0]));
    EXPECT_TRUE(isSafeToEncode(lines[1]));
    EXPECT_TRUE(isSafeToEncode(lines[2]));
    EXPECT_FALSE(isSafeToEncode(lines[3]));
    EXPECT_FALSE(isSafeToEncode(lines[4]));
}

} // namespace
} // namespace vorp
