#include "encoding/AssembleSupport.h"
#include "isa/Tl3bDecoder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace vorp {
namespace {

using encoding_test::assemble;

std::vector<unsigned char> parseBytes(const std::string& hex)
{
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i + 2 <= hex.size(); i += 3)
        bytes.push_back(static_cast<unsigned char>(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

// The values a test writes for an operand: both ends and the middle of each of its ranges, as a
// constant is written in the source (negative for a backward field).
std::vector<int> sampleValues(const OperandDescriptor* desc)
{
    const bool inverted = desc->isImm() && static_cast<const OperandDescriptorImm*>(desc)->isInverted();
    std::vector<int> values;
    for (const OperandDescriptor::Range& range : desc->getRanges()) {
        for (int value : {range.first, range.first + (range.second - range.first) / 2, range.second})
            values.push_back(inverted ? -value : value);
    }
    return values;
}

// One line for a format: every operand at its first sample, but operand `varied` at `value`.
struct Written {
    std::vector<int> operands;
    std::string text;
};

Written writeLine(const Tl3bDecoder& decoder, const EncoderFormat* format, int varied, int value)
{
    DecodedInstruction instruction;
    instruction.format = format;
    Written written;
    for (unsigned i = 0; i < format->numDescriptors() && i < 6; ++i) {
        if (format->getSignature().find('%') == std::string::npos)
            break;
        const std::vector<int> samples = sampleValues(format->getDescriptor(i));
        written.operands.push_back(static_cast<int>(i) == varied ? value : samples[samples.size() / 2]);
    }
    const unsigned count = static_cast<unsigned>(std::count(format->getSignature().begin(),
                                                            format->getSignature().end(), '%'));
    written.operands.resize(count);
    for (unsigned i = 0; i < count; ++i)
        instruction.operands[i] = written.operands[i];
    instruction.numOperands = count;
    written.text = Tl3bDecoder::render(instruction, decoder.exactName(format), [&](unsigned operand) {
        return std::to_string(written.operands[operand]);
    });
    return written;
}

// Every format of a syntax, its operands at the ends and in the middle of their ranges: the assembler
// encodes the line, the decoder reads back the same format and operands, and the decoded text
// assembles to the same bytes again.
void roundTrip(bool architectural)
{
    const Tl3bDecoder decoder(architectural);
    const std::string prefix = architectural ? ".syntax architectural\n" : "";
    ASSERT_GT(decoder.numFormats(), 150u);
    unsigned lines = 0;
    for (std::size_t f = 0; f < decoder.numFormats(); ++f) {
        const EncoderFormat* format = decoder.format(f);
        std::vector<Written> written;
        const unsigned count = static_cast<unsigned>(std::count(format->getSignature().begin(),
                                                                format->getSignature().end(), '%'));
        written.push_back(writeLine(decoder, format, -1, 0));
        for (unsigned i = 0; i < count; ++i) {
            for (int value : sampleValues(format->getDescriptor(i)))
                written.push_back(writeLine(decoder, format, static_cast<int>(i), value));
        }
        std::string text = prefix;
        for (const Written& line : written)
            text += line.text + "\n";
        const encoding_test::Assembled assembled = assemble(text);
        ASSERT_EQ(assembled.messages, "") << text;
        const std::vector<unsigned char> bytes = parseBytes(assembled.bytes);
        ASSERT_EQ(bytes.size(), written.size() * static_cast<std::size_t>(format->getNumBytes())) << text;

        std::string again = prefix;
        for (std::size_t n = 0; n < written.size(); ++n) {
            DecodedInstruction decoded;
            const unsigned char* at = bytes.data() + n * static_cast<std::size_t>(format->getNumBytes());
            ASSERT_TRUE(decoder.decode(at, bytes.size() - (at - bytes.data()), decoded)) << written[n].text;
            ++lines;
            EXPECT_EQ(decoded.format->getName(), format->getName()) << written[n].text;
            EXPECT_EQ(decoded.numBytes, static_cast<unsigned>(format->getNumBytes()));
            // An alias with fewer operands (`mov`, `nop`) leaves out operands that are 0.
            ASSERT_LE(decoded.numOperands, written[n].operands.size()) << written[n].text;
            for (std::size_t i = 0; i < written[n].operands.size(); ++i) {
                const int expected = written[n].operands[i];
                const int got = i < decoded.numOperands ? decoded.operands[i] : 0;
                EXPECT_EQ(got, expected) << written[n].text << " operand " << i;
            }
            again += Tl3bDecoder::render(decoded, decoder.exactName(decoded.format), [&](unsigned operand) {
                return std::to_string(decoded.operands[operand]);
            }) + "\n";
        }
        const encoding_test::Assembled reassembled = assemble(again);
        EXPECT_EQ(reassembled.messages, "") << again;
        EXPECT_EQ(reassembled.bytes, assembled.bytes) << again;
    }
    EXPECT_GT(lines, 1000u);
}

TEST(DecoderTest, EveryFormatRoundTripsInTheDefaultSyntax)
{
    roundTrip(false);
}

TEST(DecoderTest, EveryFormatRoundTripsInTheArchitecturalSyntax)
{
    roundTrip(true);
}

TEST(DecoderTest, AliasesTakeTheShortestNameThatAssemblesBack)
{
    const Tl3bDecoder decoder;
    const auto name = [&](const std::string& line) {
        const std::vector<unsigned char> bytes = parseBytes(encoding_test::bytesOf(line + "\n"));
        DecodedInstruction decoded;
        EXPECT_TRUE(decoder.decode(bytes.data(), bytes.size(), decoded)) << line;
        return Tl3bDecoder::render(decoded, decoder.displayName(decoded.format), [&](unsigned operand) {
            return std::to_string(decoded.operands[operand]);
        });
    };
    const struct {
        const char* written;
        const char* shown;
    } cases[] = {
        {"add r0, r0, 0", "nop"},
        {"add r1, r2, 0", "mov r1, r2"},
        {"add r1, r2, 3", "add r1, r2, 3"},
        {"add r1, r2, r3", "add r1, r2, r3"},
        // Operands the default syntax writes in another order come back in that order.
        {"crc8 r1, r2, r3, r4", "crc8 r1, r2, r3, r4"},
        {"ldw lr, sp[3]", "ldw lr, sp[3]"},
        {"shl r3, r8, 16", "shl r3, r8, 16"},
    };
    for (const auto& c : cases) {
        const std::string shown = name(c.written);
        EXPECT_EQ(shown, c.shown);
        // What is shown assembles to the same bits.
        EXPECT_EQ(encoding_test::bytesOf(shown + "\n"), encoding_test::bytesOf(std::string(c.written) + "\n"));
    }
}

TEST(DecoderTest, BitsOfNoFormatAreNotDecoded)
{
    const Tl3bDecoder decoder;
    DecodedInstruction decoded;
    // The mask code 11 of a shift count is one no constant encodes to (32 is code 0).
    const std::vector<unsigned char> code11 = parseBytes(encoding_test::bytesOf("shl r0, r0, 24\n"));
    std::vector<unsigned char> bytes = code11;
    bytes[0] = static_cast<unsigned char>(bytes[0] + 1); // code 10 -> 11
    EXPECT_FALSE(decoder.decode(bytes.data(), bytes.size(), decoded));
    // A prefix with nothing behind it, or an odd byte, is no instruction.
    const std::vector<unsigned char> prefix = parseBytes(encoding_test::bytesOf("clrsr 100\n"));
    EXPECT_FALSE(decoder.decode(prefix.data(), 2, decoded));
    EXPECT_TRUE(decoder.decode(prefix.data(), 4, decoded));
    EXPECT_FALSE(decoder.decode(prefix.data(), 1, decoded));
    // Every halfword either decodes or doesn't, without reading past what is there.
    unsigned decodedCount = 0;
    for (unsigned h = 0; h < 0x10000; ++h) {
        const unsigned char two[2] = {static_cast<unsigned char>(h), static_cast<unsigned char>(h >> 8)};
        if (decoder.decode(two, 2, decoded)) {
            EXPECT_EQ(decoded.numBytes, 2u);
            ++decodedCount;
        }
    }
    EXPECT_GT(decodedCount, 30000u);
    EXPECT_LT(decodedCount, 0x10000u);
}

TEST(DecoderTest, PcRelativeTargets)
{
    const Tl3bDecoder decoder;
    const std::vector<unsigned char> bytes = parseBytes(encoding_test::bytesOf("BRBU_u6 -5\nBRFU_lu6 100\n"));
    DecodedInstruction decoded;
    ASSERT_TRUE(decoder.decode(bytes.data(), bytes.size(), decoded));
    EXPECT_EQ(Tl3bDecoder::pcTarget(decoded, 0, 0x100), 0x100 + 2 - 10);
    ASSERT_TRUE(decoder.decode(bytes.data() + 2, bytes.size() - 2, decoded));
    EXPECT_EQ(decoded.numBytes, 4u);
    EXPECT_EQ(Tl3bDecoder::pcTarget(decoded, 0, 0x102), 0x102 + 4 + 200);
}

} // namespace
} // namespace vorp
