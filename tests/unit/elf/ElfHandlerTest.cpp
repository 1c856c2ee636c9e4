#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "elf/ElfBlock.h"
#include "elf/ElfGroup.h"
#include "elf/ElfHandler.h"
#include "elf/ElfHeader.h"
#include "elf/ElfProgramHeader.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"
#include "elf/ElfStrings.h"
#include "elf/ElfSymbol.h"
#include "elf/ElfSymbolTable.h"
#include "elf/ElfTestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace vorp {
namespace {

using namespace elftest;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// Sections, symbols, a relocation table, an empty expression section, two notes of one name and a
// group: the shape of an assembler's object file.
struct SmallObject {
    unsigned sig = 0, main = 0, ext = 0;

    void build(ElfHandler& elf)
    {
        EXPECT_EQ(elf.addProgbitsSection(0, 6, copyOf("\x01\x02\x03\x04\x05\x06", 6), ".text", 6, 4, 0), 1u);
        EXPECT_EQ(elf.addProgbitsSection(0, 3, copyOf("abc", 3), ".data", 3, 8, 0), 2u);
        EXPECT_EQ(elf.addNobitsSection(0, 16, ".bss", 3, 4, 0), 3u);
        sig = elf.addAbsoluteSymbol("sig", 0, ElfHandler::STB_WEAK, ElfHandler::STT_NOTYPE, 0);
        elf.addAbsoluteSymbol("prog.S", 0, ElfHandler::STB_LOCAL, ElfHandler::STT_FILE, 0);
        elf.addSymbol("loc", 2, 1, ElfHandler::STB_LOCAL, ElfHandler::STT_NOTYPE, 0);
        main = elf.addSymbol("main", 0, 1, ElfHandler::STB_GLOBAL, ElfHandler::STT_FUNC, 6);
        elf.addSymbol(".data", 0, 2, ElfHandler::STB_LOCAL, ElfHandler::STT_OBJECT, 3);
        ext = elf.addUndefinedSymbol("ext", ElfHandler::STB_GLOBAL, ElfHandler::STT_NOTYPE, 0);
        EXPECT_EQ(elf.addCommonSymbol("comm", 8, 4, ElfHandler::STB_GLOBAL, ElfHandler::STT_OBJECT), 7u);

        // Offsets go backwards on purpose: the table keeps the order of addition.
        ElfRelocationTable* table = elf.newRelocationTable();
        table->addRelocation(4, 7, ext, 16);
        table->addRelocation(0, 5, main, -4);
        EXPECT_EQ(elf.addRelocations(1, table), 4u);
        EXPECT_EQ(elf.addExprSection(0, 0, new unsigned char[0], ".expr", 0, 4, 4), 5u);
        EXPECT_EQ(elf.addNoteSection(".telknote", 2, "TL3", 3), 6u);
        EXPECT_EQ(elf.addNoteSection(".telknote", 3, "REVB", 4), 7u);
        auto* words = new unsigned char[12];
        const std::uint32_t group[3] = {ElfHandler::GRP_COMDAT, 1, 2};
        std::memcpy(words, group, 12);
        const unsigned groupSection = elf.addGroupSection(12, words);
        EXPECT_EQ(groupSection, 8u);
        elf.getSectionHeader(groupSection)->sh_info = elf.getSymbolTable()->findNumByName("sig");
    }
};

const char kStrtab[] = "\0.text\0.data\0.bss\0sig\0prog.S\0loc\0main\0ext\0comm\0.rela.text\0.expr\0.telknote\0"
                       ".group\0.symtab\0.strtab";

TEST(ElfHandlerTest, WritesHeadersBlocksAndTablesWithoutPadding)
{
    ErrorHandler handler;
    SmallObject object;
    const std::string path = tempPath("small.o");
    {
        ElfHandler elf(&handler, ElfHandler::ET_REL);
        object.build(elf);
        EXPECT_TRUE(elf.writeToFile(path.c_str()));
    }
    const std::vector<unsigned char> f = readBytes(path);
    ASSERT_EQ(f.size(), 802u);

    const unsigned char ident[16] = {0x7F, 'E', 'L', 'F', 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(f.data(), ident, 16), 0);
    EXPECT_EQ(u16(f, 16), 1u);      // relocatable
    EXPECT_EQ(u16(f, 18), 0xB49Eu); // machine
    EXPECT_EQ(u32(f, 20), 1u);
    EXPECT_EQ(u32(f, 24), 0u);
    EXPECT_EQ(u32(f, 28), 52u);
    EXPECT_EQ(u32(f, 32), 52u);
    EXPECT_EQ(u32(f, 36), 0u);
    EXPECT_EQ(u16(f, 40), 52u);
    EXPECT_EQ(u16(f, 42), 32u);
    EXPECT_EQ(u16(f, 44), 0u);
    EXPECT_EQ(u16(f, 46), 40u);
    EXPECT_EQ(u16(f, 48), 11u);
    EXPECT_EQ(u16(f, 50), 10u);

    for (unsigned field = NAME; field <= ENTSIZE; ++field)
        EXPECT_EQ(shdr(f, 0, field), 0u) << field;
    // Blocks start right after the 11 headers and follow one another whatever the alignment.
    const std::uint32_t expected[11][10] = {
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
        {1, 1, 6, 0, 492, 6, 0, 0, 4, 0},
        {7, 1, 3, 0, 498, 3, 0, 0, 8, 0},
        {13, 8, 3, 0, 0, 16, 0, 0, 4, 0},
        {47, 4, 0, 0, 501, 24, 9, 1, 1, 12},
        {58, 20, 0, 0, 525, 0, 0, 0, 4, 4},
        {64, 7, 0, 0, 525, 20, 0, 0, 0, 0},
        {64, 7, 0, 0, 545, 20, 0, 0, 0, 0},
        {74, 17, 0, 0, 565, 12, 0, 1, 4, 4},
        {81, 2, 0, 0, 577, 128, 10, 0, 1, 16},
        {89, 3, 0, 0, 705, 97, 0, 0, 1, 0},
    };
    for (unsigned num = 1; num < 11; ++num) {
        for (unsigned field = NAME; field <= ENTSIZE; ++field)
            EXPECT_EQ(shdr(f, num, field), expected[num][field]) << "section " << num << " field " << field;
    }

    EXPECT_EQ(std::memcmp(f.data() + 492, "\x01\x02\x03\x04\x05\x06" "abc", 9), 0);
    // One string table for section and symbol names; ".data" is stored once.
    EXPECT_EQ(std::memcmp(f.data() + 705, kStrtab, sizeof(kStrtab)), 0);

    struct Sym {
        std::uint32_t name, value, size;
        unsigned char info;
        std::uint16_t shndx;
    };
    const Sym symbols[8] = {
        {0, 0, 0, 0x00, 0},        {18, 0, 0, 0x20, 0xFFF1}, {22, 0, 0, 0x04, 0xFFF1}, {29, 2, 0, 0x00, 1},
        {33, 0, 6, 0x12, 1},       {7, 0, 3, 0x01, 2},       {38, 0, 0, 0x10, 0},      {42, 4, 8, 0x11, 0xFFF2},
    };
    for (unsigned i = 0; i < 8; ++i) {
        const std::size_t at = 577 + 16 * i;
        EXPECT_EQ(u32(f, at), symbols[i].name) << i;
        EXPECT_EQ(u32(f, at + 4), symbols[i].value) << i;
        EXPECT_EQ(u32(f, at + 8), symbols[i].size) << i;
        EXPECT_EQ(f[at + 12], symbols[i].info) << i;
        EXPECT_EQ(f[at + 13], 0u) << i;
        EXPECT_EQ(u16(f, at + 14), symbols[i].shndx) << i;
    }

    // Relocations in order of addition, with addends.
    EXPECT_EQ(u32(f, 501), 4u);
    EXPECT_EQ(u32(f, 505), (6u << 8) | 7u);
    EXPECT_EQ(u32(f, 509), 16u);
    EXPECT_EQ(u32(f, 513), 0u);
    EXPECT_EQ(u32(f, 517), (4u << 8) | 5u);
    EXPECT_EQ(static_cast<std::int32_t>(u32(f, 521)), -4);

    // Note records: name size, descriptor size, type, "TELK", descriptor padded with zeros.
    const unsigned char note1[20] = {4, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 'T', 'E', 'L', 'K', 'T', 'L', '3', 0};
    const unsigned char note2[20] = {4, 0, 0, 0, 4, 0, 0, 0, 3, 0, 0, 0, 'T', 'E', 'L', 'K', 'R', 'E', 'V', 'B'};
    EXPECT_EQ(std::memcmp(f.data() + 525, note1, 20), 0);
    EXPECT_EQ(std::memcmp(f.data() + 545, note2, 20), 0);

    EXPECT_EQ(u32(f, 565), 1u);
    EXPECT_EQ(u32(f, 569), 1u);
    EXPECT_EQ(u32(f, 573), 2u);
    std::remove(path.c_str());
}

TEST(ElfHandlerTest, ReadsBackWhatItWroteAndWritesItAgainUnchanged)
{
    ErrorHandler handler;
    const std::string path = tempPath("round.o");
    const std::string again = tempPath("round2.o");
    {
        ElfHandler elf(&handler, ElfHandler::ET_REL);
        SmallObject().build(elf);
        elf.writeToFile(path.c_str());
    }
    CaptureStderr();
    {
        ElfHandler elf(&handler, path.c_str());
        ASSERT_EQ(elf.getSectionHeaders().size(), 11u);
        EXPECT_EQ(elf.getType(), 1u);
        EXPECT_EQ(elf.getSectionHeader(1)->getName(elf.getStrings()), ".text");
        EXPECT_EQ(elf.getSectionHeader(4)->getName(elf.getStrings()), ".rela.text");
        EXPECT_EQ(elf.getSectionHeader(11), nullptr);
        EXPECT_EQ(elf.getSectionSize(3), 16u);
        unsigned char text[6];
        elf.writeSectionData(1, text);
        EXPECT_EQ(std::memcmp(text, "\x01\x02\x03\x04\x05\x06", 6), 0);

        ASSERT_EQ(elf.numSymbols(), 8u);
        EXPECT_EQ(elf.getSymbolName(4), "main");
        EXPECT_EQ(elf.getSymbolSize(4), 6u);
        EXPECT_EQ(elf.getSymbolSectionIndex(7), 0xFFF2u);
        EXPECT_EQ(elf.getSymbolValue(7), 4u);
        EXPECT_TRUE(elf.isSymbolGlobal(1));  // weak
        EXPECT_FALSE(elf.isSymbolGlobal(3)); // local
        unsigned value = 99;
        EXPECT_TRUE(elf.lookupSymbolValue("loc", &value));
        EXPECT_EQ(value, 2u);
        EXPECT_FALSE(elf.lookupSymbolValue("nowhere", &value));

        const auto& tables = elf.getSectionHeader(1)->getRelocations();
        ASSERT_EQ(tables.size(), 1u);
        const std::list<ElfRelocation>& relocations = tables[0]->getRelocations();
        ASSERT_EQ(relocations.size(), 2u);
        EXPECT_EQ(relocations.front().getOffset(), 4u);
        EXPECT_EQ(relocations.front().getSymbol(), 6u);
        EXPECT_EQ(relocations.front().getType(), 7u);
        EXPECT_EQ(relocations.back().getAddend(), -4);
        EXPECT_TRUE(tables[0]->getRequiresAddend());
        std::set<ElfSymbol*> referenced;
        elf.getReferencedSymbols(referenced, 1, 0, 4);
        ASSERT_EQ(referenced.size(), 1u);
        EXPECT_EQ(*referenced.begin(), elf.getSymbolTable()->find("main"));

        ASSERT_EQ(elf.getGroups().getGroups().size(), 1u);
        const ElfGroup* group = elf.getGroups().getGroups()[0];
        EXPECT_TRUE(group->isComdat());
        EXPECT_EQ(group->getNumSections(), 2u);
        EXPECT_EQ(group->getSignatureSymbol(), elf.getSymbolTable()->find("sig"));
        ASSERT_EQ(group->getSections().size(), 2u);
        EXPECT_EQ(group->getSections()[1], elf.getSectionHeader(2));

        EXPECT_TRUE(elf.writeToFile(again.c_str()));
    }
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(readBytes(again), readBytes(path));
    std::remove(path.c_str());
    std::remove(again.c_str());
}

TEST(ElfHandlerTest, EmptyFilesSegmentsAndTheEntryPoint)
{
    ErrorHandler handler;
    const std::string path = tempPath("empty.o");
    {
        ElfHandler elf(&handler, ElfHandler::ET_REL);
        CaptureStderr();
        elf.writeToFile(path.c_str());
        EXPECT_EQ(GetCapturedStderr(), ""); // no entry point is looked for
    }
    std::vector<unsigned char> f = readBytes(path);
    ASSERT_EQ(f.size(), 172u + 16 + 17);
    EXPECT_EQ(u16(f, 48), 3u);
    EXPECT_EQ(u16(f, 50), 2u);
    EXPECT_EQ(shdr(f, 1, OFFSET), 172u);
    EXPECT_EQ(shdr(f, 1, SIZE), 16u);
    EXPECT_EQ(shdr(f, 2, OFFSET), 188u);
    EXPECT_EQ(std::memcmp(f.data() + 188, "\0.symtab\0.strtab", 17), 0);

    // An executable: one segment with a section inside it and a nobits section in its memory tail.
    {
        ElfHandler elf(&handler, ElfHandler::ET_EXEC);
        EXPECT_EQ(elf.addSegment(0x1000, 8, 12, copyOf("ABCDEFGH", 8), 5, 4), 0u);
        EXPECT_EQ(elf.addProgbitsSection(0x1004, 4, 0, 4, ".text", 6, 4, 0), 1u);
        EXPECT_EQ(elf.addNobitsSection(0x1008, 4, 0, 8, ".bss", 3, 4, 0), 2u);
        elf.addSymbol("_start", 0x1004, 1, ElfHandler::STB_GLOBAL, ElfHandler::STT_FUNC, 0);
        const auto segments = elf.getProgramSegments();
        ASSERT_EQ(segments.size(), 1u);
        EXPECT_EQ(segments[0].address, 0x1000u);
        EXPECT_EQ(segments[0].fileSize, 8u);
        EXPECT_EQ(std::memcmp(segments[0].data, "ABCDEFGH", 8), 0);
        elf.writeToFile(path.c_str());
        EXPECT_EQ(elf.getEntryPoint(), 0x1004u);
    }
    f = readBytes(path);
    EXPECT_EQ(u16(f, 16), 2u);
    EXPECT_EQ(u32(f, 24), 0x1004u);
    EXPECT_EQ(u32(f, 28), 52u);
    EXPECT_EQ(u32(f, 32), 84u); // behind the one program header
    EXPECT_EQ(u16(f, 44), 1u);
    const std::size_t blocks = 84 + 5 * 40;
    const std::uint32_t phdr[8] = {1, static_cast<std::uint32_t>(blocks), 0x1000, 0x1000, 8, 12, 5, 4};
    for (unsigned i = 0; i < 8; ++i)
        EXPECT_EQ(u32(f, 52 + 4 * i), phdr[i]) << i;
    EXPECT_EQ(u32(f, 84 + 40 * 1 + 16), blocks + 4);
    EXPECT_EQ(u32(f, 84 + 40 * 2 + 16), blocks + 8);
    EXPECT_EQ(std::memcmp(f.data() + blocks, "ABCDEFGH", 8), 0);

    {
        ElfHandler elf(&handler, ElfHandler::ET_EXEC);
        CaptureStderr();
        elf.writeToFile(path.c_str());
        EXPECT_EQ(GetCapturedStderr(), "WARNING: '_start' symbol not found - setting ELF entry point to 0.\n");
        EXPECT_EQ(elf.getEntryPoint(), 0u);
    }
    std::remove(path.c_str());
}

TEST(ElfHandlerTest, SectionDataIsModifiedInPlace)
{
    ErrorHandler handler;
    ElfHandler elf(&handler, ElfHandler::ET_REL);
    const unsigned text = elf.addProgbitsSection(0, 12, copyOf("0123456789ab", 12), ".text", 6, 1, 0);
    const unsigned bss = elf.addNobitsSection(0, 8, ".bss", 3, 1, 0);

    elf.modifySectionData(text, 1, 0x44434241);
    unsigned char out[16] = {};
    elf.writeSectionData(text, out);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 12), "0123ABCD89ab");

    elf.contractSectionData(text, 2, 3);
    EXPECT_EQ(elf.getSectionSize(text), 9u);
    elf.writeSectionData(text, out);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 9), "01BCD89ab");

    unsigned offset = 99;
    ElfBlock* block = elf.findBlock(elf.getSectionHeader(text), offset);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(offset, 0u);
    ASSERT_TRUE(block->extendData(4));
    EXPECT_EQ(block->getSize(), 16u);
    // Four new bytes at 3, and one byte below them, filled with the pattern from the top down.
    elf.expandSectionData(text, 3, 4, 0, 0x11223344, 1);
    EXPECT_EQ(elf.getSectionSize(text), 13u);
    elf.writeSectionData(text, out);
    const unsigned char expanded[13] = {'0', '1', 0x44, 0x11, 0x22, 0x33, 0x44, 'C', 'D', '8', '9', 'a', 'b'};
    EXPECT_EQ(std::memcmp(out, expanded, 13), 0);

    elf.expandSectionData(bss, 0, 4, 0, 0, 0);
    elf.contractSectionData(bss, 0, 2);
    EXPECT_EQ(elf.getSectionSize(bss), 10u);

    // Relocations follow the bytes they refer to.
    const unsigned a = elf.addSymbol("a", 0, text, ElfHandler::STB_LOCAL, 0, 0);
    const unsigned b = elf.addSymbol("b", 8, text, ElfHandler::STB_LOCAL, 0, 0);
    ElfRelocationTable* table = elf.newRelocationTable();
    table->addRelocation(1, 1, a, 0);
    table->addRelocation(5, 1, b, 0);
    table->addRelocation(9, 1, a, 0);
    elf.addRelocations(text, table);
    elf.adjustRelocationOffsets(6, 2, text);
    elf.adjustRelocationOffsets(0, 1, 99); // no such section: nothing happens
    std::vector<std::pair<unsigned, bool>> after;
    for (const ElfRelocation& r : table->getRelocations())
        after.emplace_back(r.getOffset(), r.getRemoved());
    EXPECT_EQ(after, (std::vector<std::pair<unsigned, bool>>{{1, false}, {5, true}, {7, false}}));

    std::set<ElfSymbol*> referenced;
    ElfSymbolTable* symbols = elf.getSymbolTable();
    elf.getReferencedSymbols(referenced, symbols->getSymbol(a), symbols->getSymbol(b));
    EXPECT_EQ(referenced, (std::set<ElfSymbol*>{symbols->getSymbol(a), symbols->getSymbol(b)}));
    elf.substituteRelocationReferences(a, b);
    referenced.clear();
    elf.getReferencedSymbols(referenced, text);
    EXPECT_EQ(referenced, std::set<ElfSymbol*>{symbols->getSymbol(b)});
    EXPECT_EQ(table->getRelocations().front().getType(), 1u);
}

TEST(ElfHandlerTest, DisplaysASmallModel)
{
    ErrorHandler handler;
    ElfHandler elf(&handler, ElfHandler::ET_REL);
    const unsigned text = elf.addProgbitsSection(0, 5, copyOf("\x01\x02\x03\x04\x05", 5), ".text", 6, 1, 0);
    const unsigned f = elf.addSymbol("f", 1, text, ElfHandler::STB_GLOBAL, ElfHandler::STT_FUNC, 4);
    ElfRelocationTable* table = elf.newRelocationTable();
    table->addRelocation(2, 3, f, -1);
    elf.addRelocations(text, table);

    CapturedFile captured;
    elf.display(captured.file());
    const std::string text1 = captured.text();
    const std::string start = "Elf32_Ehdr.e_ident = 7f454c46010101000000000000000000\n"
                              "Elf32_Ehdr.e_type = 00000001\n";
    EXPECT_EQ(text1.compare(0, start.size(), start), 0) << text1;
    EXPECT_NE(text1.find("Elf32_Ehdr.e_machine = 0000b49e\nElf32_Ehdr.e_version = 00000001\n"), std::string::npos);
    EXPECT_NE(text1.find("Elf32_Ehdr.e_shnum = 00000003\nElf32_Ehdr.e_shstrndx = 00000000\n"), std::string::npos);
    EXPECT_NE(text1.find("\nSection Header 1\nSection name: .text\nElf32_Shdr.sh_name = 00000001\n"
                         "Elf32_Shdr.sh_type = 00000001\nElf32_Shdr.sh_flags = 00000006\n"),
              std::string::npos);
    EXPECT_NE(text1.find("\nBlock 0\nBlock of data at 0x00000000, size 5 bytes\nNot a program segmentSection 1\n"
                         "\n0x00000000: 01020304 05\n"),
              std::string::npos);
    EXPECT_NE(text1.find("\nSymbols:0: name: , st_name = 00000000, st_value = 00000000, st_size = 00000000, "
                         "st_info = 00, st_other = 00, st_shndx = 00000000\n"
                         "1: name: f, st_name = 00000007, st_value = 00000001, st_size = 00000004, "
                         "st_info = 12, st_other = 00, st_shndx = 00000001\n"),
              std::string::npos);
    EXPECT_NE(text1.find("\nStrings:00000000 \n00000001 .text\n00000007 f\n00000009 .rela.text\n"), std::string::npos);
    const std::string relocations = "\nRelocation table contains 1  entry::\nIndex 0\nOffset: 00000002\n"
                                    "Type: 00000003\nSymbol: 00000001\nAddend: ffffffff\n";
    ASSERT_GE(text1.size(), relocations.size());
    EXPECT_EQ(text1.substr(text1.size() - relocations.size()), relocations);
}

TEST(ElfHandlerTest, ReportsFilesItCannotLoad)
{
    ReportingErrorHandler handler;
    const std::string missing = tempPath("does-not-exist.o");
    CaptureStderr();
    {
        ElfHandler elf(&handler, missing.c_str());
        EXPECT_EQ(elf.numSymbols(), 1u);
        EXPECT_EQ(elf.getSectionHeaders().size(), 1u);
    }
    EXPECT_EQ(GetCapturedStderr(), "ERROR: Unable to open elf file '" + missing + "' for loading\n");

    auto loadMessages = [&handler](const std::vector<unsigned char>& bytes) {
        std::istringstream in(std::string(bytes.begin(), bytes.end()));
        CaptureStderr();
        ElfHandler elf(&handler, in);
        return GetCapturedStderr();
    };
    EXPECT_EQ(loadMessages({'#', '!', '/', 'b', 'i', 'n'}), "ERROR: Header is not an ELF file\n");
    EXPECT_EQ(loadMessages({}), "ERROR: Header is not an ELF file\n");

    const std::string path = tempPath("bad.o");
    {
        ElfHandler elf(&handler, ElfHandler::ET_REL);
        SmallObject().build(elf);
        elf.writeToFile(path.c_str());
    }
    const std::vector<unsigned char> good = readBytes(path);
    auto cut = [&good](std::size_t size) { return std::vector<unsigned char>(good.begin(), good.begin() + size); };
    EXPECT_EQ(loadMessages(cut(30)), "ERROR: Elf file is truncated in the header\n");
    EXPECT_EQ(loadMessages(cut(100)), "ERROR: Elf file is truncated in section header 1\n");
    EXPECT_EQ(loadMessages(cut(600)), "ERROR: Elf file is truncated in section 9\n"
                                      "ERROR: Elf file is truncated in section 10\n");

    std::vector<unsigned char> bad = good;
    putU32(bad, 52 + 40 * 2 + 4, 99);  // .data gets an unknown type
    putU32(bad, 52 + 40 * 4 + 28, 50); // .rela.text names section 50
    EXPECT_EQ(loadMessages(bad), "ERROR: Unsupported section type 99 in section 2\n"
                                 "ERROR: Invalid sh_info 50 for section 4\n");
    bad = good;
    bad[4] = 2; // 64-bit
    EXPECT_EQ(loadMessages(bad), "ERROR: Only 32-bit little-endian elf files are supported\n");

    // With the assembler's handler the first problem ends the run: it is printed, then thrown.
    ErrorHandler ending;
    std::istringstream in(std::string(good.begin(), good.begin() + 600));
    CaptureStderr();
    EXPECT_THROW(ElfHandler(&ending, in), FatalError);
    EXPECT_EQ(GetCapturedStderr(), "ERROR: Elf file is truncated in section 9\n");
    std::remove(path.c_str());
}

TEST(ElfHandlerTest, ReadelfAcceptsTheWrittenFile)
{
    if (std::system("which readelf > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "readelf is not installed";
    ErrorHandler handler;
    const std::string path = tempPath("readelf.o");
    {
        ElfHandler elf(&handler, ElfHandler::ET_REL);
        SmallObject().build(elf);
        elf.writeToFile(path.c_str());
    }
    const std::string report = tempPath("readelf.txt");
    const std::string command = "readelf -h -S -s -r -n '" + path + "' > '" + report + "' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    const std::vector<unsigned char> bytes = readBytes(report);
    const std::string text(bytes.begin(), bytes.end());
    // The format's own choices draw known remarks: group sections with sh_link 0, an unsorted
    // symbol table with sh_info 0, and e_phoff 52 with no program headers. Nothing else may show.
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.find("Link field (0) should index a symtab") != std::string::npos ||
            line.find("found at index >= .symtab's sh_info value of 0") != std::string::npos ||
            line.find("non-zero program header offset, but no program headers") != std::string::npos)
            continue;
        EXPECT_EQ(line.find("Warning"), std::string::npos) << line;
        EXPECT_EQ(line.find("Error"), std::string::npos) << line;
    }
    EXPECT_NE(text.find(".rela.text"), std::string::npos) << text;
    EXPECT_NE(text.find("TELK"), std::string::npos) << text;
    EXPECT_NE(text.find("main"), std::string::npos) << text;
    std::remove(path.c_str());
    std::remove(report.c_str());
}

} // namespace
} // namespace vorp
