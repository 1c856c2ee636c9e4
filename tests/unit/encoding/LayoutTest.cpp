#include "encoding/AssembleSupport.h"

#include <gtest/gtest.h>

namespace vorp {
namespace {

using encoding_test::archBytesOf;
using encoding_test::bytesOf;

// W3(a, b, c): subopcode hi(a) + 3 hi(b) + 9 hi(c) in bits 10..6, then lo(a), lo(b), lo(c).
// W2(x, y): extra = hi(x) + 3 hi(y); (extra % 5) << 6, (extra / 5) << 5, lo(x) << 2, lo(y).
// Bytes are little-endian halfwords, the prefix or first halfword of a long form first.

TEST(LayoutTest, ShortRegisterLayouts)
{
    EXPECT_EQ(bytesOf("clre\n"), "ED 07 ");      // 0r: the base
    EXPECT_EQ(bytesOf("bau r11\n"), "FB 27 ");   // 1r: 27F0 + 11
    // 2r: W2(5, 9): extra 1 + 3 * 2 = 7 -> 2 << 6 | 1 << 5 | 1 << 2 | 1 = A5; 96C0 + A5.
    EXPECT_EQ(bytesOf("neg r5, r9\n"), "65 97 ");
    // r2r: W2(9, 5), the operands reversed: extra 2 + 3 = 5 -> 0 | 1 << 5 | 1 << 2 | 1 = 25.
    EXPECT_EQ(bytesOf("out res[r5], r9\n"), "E5 AE ");
    // rus: W2(1, 3) = 7 on CED0; 24 maps to 10: W2(2, 10): extra 6 -> 40 | 20 | 8 | 2 on A6D0.
    EXPECT_EQ(bytesOf("chkct res[r1], 3\nmkmsk r2, 24\n"), "D7 CE 3A A7 ");
    // 3r: W3(4, 7, 10): 1 + 3 + 18 = 22 -> 580, lo 0, 3, 2 -> E; 1800 + 58E.
    EXPECT_EQ(bytesOf("sub r4, r7, r10\n"), "8E 1D ");
    // 2rus: 16 maps to 9: W3(3, 8, 9): 0 + 6 + 18 = 24 -> 600, lo 3, 0, 1 -> 31; A000 + 631.
    EXPECT_EQ(bytesOf("shl r3, r8, 16\n"), "31 A6 ");
}

TEST(LayoutTest, ShortImmediateLayouts)
{
    // u6: a constant is written in units and not scaled: 7740 + 10.
    EXPECT_EQ(bytesOf("entsp 10\n"), "4A 77 ");
    // A backward branch counts the other way: -5 is the field 5.
    EXPECT_EQ(bytesOf("BRBU_u6 -5\n"), "05 77 ");
    // ru6: lr is 15, all four bits: 5C00 + 15 << 6 + 3.
    EXPECT_EQ(bytesOf("ldw lr, sp[3]\n"), "C3 5F ");
    // u10: 1000 is 3E8.
    EXPECT_EQ(bytesOf("bla cp[1000]\n"), "E8 E3 ");
}

TEST(LayoutTest, PrefixedLayouts)
{
    // lu6: 100 = 1 << 6 | 36: prefix F001, then 7B00 + 24.
    EXPECT_EQ(bytesOf("clrsr 100\n"), "01 F0 24 7B ");
    // lru6: 1234 >> 6 = 48, low bits 34; E800 + r2 << 6 = E880.
    EXPECT_EQ(bytesOf("setc res[r2], 0x1234\n"), "48 F0 B4 E8 ");
    // lu10: FFFFF >> 10 = 3FF and FFFFF & 3FF = 3FF: both fields all ones.
    EXPECT_EQ(bytesOf("bla cp[0xFFFFF]\n"), "FF F3 FF E3 ");
}

TEST(LayoutTest, LongRegisterLayouts)
{
    // l2r: W2(5, 9) = A5 on FEC0, then the base 07EC.
    EXPECT_EQ(bytesOf("bitrev r5, r9\n"), "65 FF EC 07 ");
    // lr2r: W2(9, 5) = 25 on FED0.
    EXPECT_EQ(bytesOf("setclk res[r5], r9\n"), "F5 FE EC 0F ");
    // l3r: W3(4, 7, 10) = 58E on F800.
    EXPECT_EQ(bytesOf("xor r4, r7, r10\n"), "8E FD EC 0F ");
    // l2rus: 24 maps to 10: W3(1, 2, 10): 18 -> 480, lo 1, 2, 2 -> 1A. 32 maps to 0: lo 1, 2 -> 18.
    EXPECT_EQ(bytesOf("ashr r1, r2, 24\nashr r1, r2, 32\n"), "9A FC EC 97 18 F8 EC 97 ");
    // l4r: W3(op1, op3, op4) = W3(1, 3, 4): 9 -> 240, lo 1, 3, 0 -> 1C; then W1(2) on 0FE0.
    EXPECT_EQ(bytesOf("maccs r1, r2, r3, r4\n"), "5C FA E2 0F ");
    EXPECT_EQ(archBytesOf("MACCS r1, r2, r3, r4"), "5C FA E2 0F ");
    // l6r: W3(1, 3, 4) = 25C, then W3(2, 5, 6): 0 + 3 + 9 = 12 -> 300, lo 2, 1, 2 -> 26.
    EXPECT_EQ(bytesOf("lmul r1, r2, r3, r4, r5, r6\n"), "5C FA 26 03 ");
}

// The same operands give other bits in the two syntaxes for a few instructions.
TEST(LayoutTest, DefaultSyntaxPlacesSomeOperandsElsewhere)
{
    // Architectural l4r: W3(1, 3, 4) = 25C, W1(2). Default: W1(1), W3(2, 3, 4): 240 | 2C = 26C.
    EXPECT_EQ(bytesOf("crc8 r1, r2, r3, r4\n"), "6C FA E1 07 ");
    EXPECT_EQ(archBytesOf("CRC8 r1, r2, r3, r4"), "5C FA E2 07 ");
    // Architectural l5r: W3(1, 3, 4) = 25C, W2(2, 5): extra 3 -> C0 | 8 | 1 = C9.
    // Default: W3(2, 3, 4) = 26C, W2(1, 5): C0 | 4 | 1 = C5.
    EXPECT_EQ(bytesOf("ladd r1, r2, r3, r4, r5\n"), "6C FA 95 07 ");
    EXPECT_EQ(archBytesOf("LADD r1, r2, r3, r4, r5"), "5C FA 99 07 ");
    EXPECT_EQ(bytesOf("lsub r1, r2, r3, r4, r5\n"), "6C FA 85 0F ");
    EXPECT_EQ(archBytesOf("LSUB r1, r2, r3, r4, r5"), "5C FA 89 0F ");
    // Default ldivu: W3(1, 4, 5): 0 + 3 + 9 = 12 -> 300, lo 1, 0, 1 -> 11; W2(2, 3) = B.
    EXPECT_EQ(bytesOf("ldivu r1, r2, r3, r4, r5\n"), "11 FB CB 06 ");
    EXPECT_EQ(archBytesOf("LDIVU r1, r2, r3, r4, r5"), "5C FA 89 07 ");
    // Default outpw: W3(2, 1, 8): 18 -> 480, lo 2, 1, 0 -> 24. Architectural W3(1, 2, 8): 480 | 18.
    EXPECT_EQ(bytesOf("outpw res[r1], r2, 8\n"), "A4 FC ED 97 ");
    EXPECT_EQ(archBytesOf("OUTPW r1, r2, 8"), "98 FC ED 97 ");
    // Default init: W2(6, 1): extra 1 -> 40 | 8 | 1 = 49. Architectural W2(1, 6): C0 | 4 | 2 = C6.
    EXPECT_EQ(bytesOf("init t[r1]:pc, r6\n"), "09 07 ");
    EXPECT_EQ(archBytesOf("TINITPC r1, r6"), "86 07 ");
    EXPECT_EQ(bytesOf("init t[r1]:lr, r6\n"), "09 FF EC 17 ");
    EXPECT_EQ(archBytesOf("TINITLR r1, r6"), "86 FF EC 17 ");
    // Default set: W3(1, 9, 4): 0 + 6 + 9 = 15 -> 3C0, lo 1, 1, 0 -> 14.
    // Architectural W3(4, 1, 9): 1 + 0 + 18 = 19 -> 4C0, lo 0, 1, 1 -> 5.
    EXPECT_EQ(bytesOf("set t[r4]:r1, r9\n"), "D4 BB ");
    EXPECT_EQ(archBytesOf("TSETR r4, r1, r9"), "C5 BC ");
}

} // namespace
} // namespace vorp
