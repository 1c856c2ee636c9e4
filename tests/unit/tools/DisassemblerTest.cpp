#include "vorp-dump/Disassembler.h"

#include "diag/ErrorHandler.h"
#include "elf/ElfHandler.h"
#include "elf/ElfRelocationTable.h"
#include "encoding/AssembleSupport.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

namespace vorp {
namespace {

constexpr Elf32_Word CODE_FLAGS = ElfHandler::SHF_ALLOC | ElfHandler::SHF_EXECINSTR;

std::vector<unsigned char> parseHex(const std::string& hex)
{
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i + 2 <= hex.size(); i += 3)
        bytes.push_back(static_cast<unsigned char>(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

std::string hexOf(const std::vector<unsigned char>& bytes)
{
    std::string text;
    char hex[4];
    for (unsigned char byte : bytes) {
        std::snprintf(hex, sizeof(hex), "%02X ", byte);
        text += hex;
    }
    return text;
}

// A code section ".text" of the given bytes, with labels and relocations, written and read back.
struct Object {
    struct Symbol {
        const char* name;
        Elf32_Addr value;
    };
    struct Reloc {
        Elf32_Addr offset;
        unsigned char type;
        const char* symbol; // undefined
        Elf32_Sword addend;
    };

    Object(const std::vector<unsigned char>& bytes, const std::vector<Symbol>& symbols,
           const std::vector<Reloc>& relocations)
        : path(testing::TempDir() + "vorp_disassembler_" + std::to_string(getpid()) + ".o")
    {
        {
            ElfHandler elf(&handler, ElfHandler::ET_REL);
            auto* data = new unsigned char[bytes.size() + 1];
            std::memcpy(data, bytes.data(), bytes.size());
            const unsigned text = elf.addProgbitsSection(0, static_cast<unsigned>(bytes.size()), data, ".text",
                                                         CODE_FLAGS, 2, 0);
            // A data section is not shown.
            elf.addProgbitsSection(0, 2, new unsigned char[2]{0x10, 0x1b}, ".data", ElfHandler::SHF_ALLOC, 2, 0);
            for (const Symbol& symbol : symbols)
                elf.addSymbol(symbol.name, symbol.value, static_cast<Elf32_Half>(text), ElfHandler::STB_LOCAL,
                              ElfHandler::STT_NOTYPE, 0);
            if (!relocations.empty()) {
                ElfRelocationTable* table = elf.newRelocationTable();
                for (const Reloc& r : relocations) {
                    const unsigned symbol =
                        elf.addUndefinedSymbol(r.symbol, ElfHandler::STB_GLOBAL, ElfHandler::STT_NOTYPE, 0);
                    table->addRelocation(r.offset, r.type, symbol, r.addend);
                }
                elf.addRelocations(text, table);
            }
            EXPECT_TRUE(elf.writeToFile(path.c_str()));
        }
        loaded = std::make_unique<ElfHandler>(&handler, path.c_str());
    }
    ~Object() { std::remove(path.c_str()); }

    std::string path;
    ErrorHandler handler;
    std::unique_ptr<ElfHandler> loaded;
};

std::vector<unsigned char> code(const std::string& source)
{
    return parseHex(encoding_test::bytesOf(source));
}

// A halfword that no format decodes.
std::vector<unsigned char> undecodable(const Tl3bDecoder& decoder)
{
    for (unsigned h = 0;; ++h) {
        const unsigned char bytes[2] = {static_cast<unsigned char>(h), static_cast<unsigned char>(h >> 8)};
        DecodedInstruction decoded;
        if (!decoder.decode(bytes, 2, decoded))
            return {bytes[0], bytes[1]};
    }
}

// Reassembles and assembles again; the bytes must be the section's.
void expectRoundTrip(const Disassembler& disassembler, const std::vector<unsigned char>& bytes)
{
    const std::string source = disassembler.reassembly();
    const encoding_test::Assembled again = encoding_test::assemble(source);
    EXPECT_EQ(again.messages, "") << source;
    EXPECT_EQ(again.bytes, hexOf(bytes)) << source;
}

TEST(DisassemblerTest, ListsCodeWithLabelsTargetsRelocationsAndData)
{
    const Tl3bDecoder decoder;
    std::vector<unsigned char> bytes;
    auto append = [&bytes](const std::vector<unsigned char>& more) { bytes.insert(bytes.end(), more.begin(), more.end()); };
    append(code("ldc r1, 0\n"));          // 0
    append(code("BRBU_u6 -2\n"));         // 2: back to 0
    append(undecodable(decoder));         // 4
    append(code("BLRF_lu10 0\n"));        // 6: filled by a relocation
    append(code("ldc r2, 4096\n"));       // 10: a label in its middle
    append(code("BRFU_u6 1\n"));          // 14: to 18
    append(code("clrsr 100\n"));          // 16: cut after its prefix
    bytes.resize(18);
    bytes.push_back(0xab);                // 18: an odd byte
    const Object object(bytes, {{"start", 0}, {"mid", 12}, {"end", 19}}, {{6, 11, "ext", 4}});
    const Disassembler disassembler(*object.loaded, decoder);

    char undecodableText[64];
    std::snprintf(undecodableText, sizeof(undecodableText), "  00000004: %02x %02x        .short 0x%02x%02x\n",
                  bytes[4], bytes[5], bytes[5], bytes[4]);
    EXPECT_EQ(disassembler.listing(), std::string("Disassembly of section .text:\n"
                                                  "start:\n"
                                                  "  00000000: 40 68        ldc r1, 0\n"
                                                  "  00000002: 02 77        bu 0x0 <start>\n") +
                                          undecodableText +
                                          "  00000006: 00 f0 00 d0  bl ext+4  # reloc 11 ext+4\n"
                                          "  0000000a: 40 f0        .short 0xf040\n"
                                          "mid:\n"
                                          "  0000000c: 80 68        ldc r2, 0\n"
                                          "  0000000e: 01 73        bu 0x12 <mid+0x6>\n"
                                          "  00000010: 01 f0        .short 0xf001\n"
                                          "  00000012: ab           .byte 0xab\n"
                                          "end:\n");
    const std::string source = disassembler.reassembly();
    // Every branch target has a label; the relocated operand names its symbol.
    EXPECT_NE(source.find("BRBU_u6 start\n"), std::string::npos) << source;
    EXPECT_NE(source.find("BLRF_lu10 ext+4\n"), std::string::npos) << source;
    EXPECT_NE(source.find(".Ldis_1_18:\n"), std::string::npos) << source;
    EXPECT_NE(source.find("BRFU_u6 .Ldis_1_18\n"), std::string::npos) << source;
    expectRoundTrip(disassembler, bytes);
}

TEST(DisassemblerTest, MarksJumpTablesByTheirTrampolineLabels)
{
    const Tl3bDecoder decoder;
    // bru, then two entries to their trampolines, then one trampoline.
    const std::vector<unsigned char> bytes = code("bru r0\nBRFU_u6 1\nBRFU_u6 0\nBRFU_lu6 0\n");
    const Object object(bytes, {{"a_jmptable_0x1a", 6}, {"b_jmptable_0x1a", 6}}, {{2, 8, "a", 0}, {4, 8, "b", 0}});
    const std::string listing = Disassembler(*object.loaded, decoder).listing();
    EXPECT_NE(listing.find("  00000000: e0 2f        bru r0\n"
                           "  # jump table 0x1a: 2 entries\n"
                           "  00000002:"),
              std::string::npos)
        << listing;
    EXPECT_NE(listing.find("  # trampolines of jump table 0x1a\n"
                           "a_jmptable_0x1a:\n"),
              std::string::npos)
        << listing;
}

// Any bytes at all: the listing covers every byte once, and the source made of them assembles back
// to the same bytes, branches landing anywhere included.
TEST(DisassemblerTest, RandomBytesRoundTrip)
{
    const Tl3bDecoder decoder;
    std::mt19937 random(23);
    for (int run = 0; run < 40; ++run) {
        std::vector<unsigned char> bytes(64 + random() % 64);
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(random());
        // Short branches often, so that targets fall everywhere, in the middle of instructions too.
        for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
            if (random() % 4 == 0)
                bytes[at + 1] = static_cast<unsigned char>(random() % 2 ? 0x73 : 0x77);
        }
        const Object object(bytes, {}, {});
        const Disassembler disassembler(*object.loaded, decoder);
        const std::string listing = disassembler.listing();
        std::size_t listed = 0;
        for (std::size_t line = listing.find("\n  "); line != std::string::npos; line = listing.find("\n  ", line + 1))
            listed += (listing.find("  ", line + 13) - (line + 13) + 1) / 3;
        EXPECT_EQ(listed, bytes.size()) << listing;
        expectRoundTrip(disassembler, bytes);
    }
}

} // namespace
} // namespace vorp
