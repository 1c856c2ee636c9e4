#include "vorp-dump/ObjectDumper.h"

#include "diag/ErrorHandler.h"
#include "elf/ElfHandler.h"
#include "elf/ElfRelocationTable.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"
#include "elf/ElfSymbolTable.h"

#include <cstdio>
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace vorp {
namespace {

unsigned char* bytesOf(std::initializer_list<Elf32_Word> words)
{
    auto* data = new unsigned char[4 * words.size()];
    unsigned at = 0;
    for (const Elf32_Word w : words) {
        std::memcpy(data + at, &w, 4);
        at += 4;
    }
    return data;
}

TEST(ObjectDumperTest, DumpsEveryPartOfAWrittenObject)
{
    const std::string path = testing::TempDir() + "vorp_dump_" + std::to_string(getpid()) + ".o";
    ErrorHandler handler;
    {
        ElfHandler elf(&handler, ElfHandler::ET_REL);
        const unsigned text = elf.addProgbitsSection(0, 4, bytesOf({0x90001b10}), ".text", 6, 4, 0);
        elf.addNobitsSection(0, 8, ".bss", 3, 1, 0);
        elf.addAbsoluteSymbol("sig", 0, ElfHandler::STB_WEAK, ElfHandler::STT_NOTYPE, 0);
        const unsigned f = elf.addSymbol("f", 0, static_cast<Elf32_Half>(text), ElfHandler::STB_GLOBAL,
                                         ElfHandler::STT_FUNC, 4);
        const unsigned g = elf.addUndefinedSymbol("g", ElfHandler::STB_GLOBAL, ElfHandler::STT_NOTYPE, 0);
        ElfRelocationTable* table = elf.newRelocationTable();
        table->addRelocation(0, 9, g, -4);
        elf.addRelocations(text, table);
        const unsigned typeString = elf.addString("a \"b\"")->getOffset();
        elf.addExprSection(0, 40, bytesOf({69, f, g, f, 0, 2370, g, typeString, 0, 0}), ".expr", 0, 4, 4);
        elf.addNoteSection(".telknote", 2, "TL3", 3);
        const unsigned group = elf.addGroupSection(12, bytesOf({1, text, 0x7fffffff}));
        elf.getSectionHeader(group)->sh_info = elf.getSymbolTable()->findNumByName("sig");
        ASSERT_TRUE(elf.writeToFile(path.c_str()));
    }
    ElfHandler loaded(&handler, path.c_str());
    const std::string text = ObjectDumper(loaded).dump();
    std::remove(path.c_str());

    EXPECT_EQ(text, "Object: type REL machine 0xb49e sections 9\n"
                    "Sections:\n"
                    "  0: \"\" NULL - offset 0 size 0 link 0 info 0 align 0 entsize 0\n"
                    "  1: .text PROGBITS ax offset 412 size 4 link 0 info 0 align 4 entsize 0\n"
                    "  2: .bss NOBITS wa offset 0 size 8 link 0 info 0 align 1 entsize 0\n"
                    "  3: .rela.text RELA - offset 416 size 12 link 7 info 1 align 1 entsize 12\n"
                    "  4: .expr EXPR - offset 428 size 40 link 0 info 0 align 4 entsize 4\n"
                    "  5: .telknote NOTE - offset 468 size 20 link 0 info 0 align 0 entsize 0\n"
                    "  6: .group GROUP - offset 488 size 12 link 0 info 1 align 4 entsize 4\n"
                    "  7: .symtab SYMTAB - offset 500 size 64 link 8 info 0 align 1 entsize 16\n"
                    "  8: .strtab STRTAB - offset 564 size 76 link 0 info 0 align 1 entsize 0\n"
                    "Contents of section .text:\n"
                    "  0000: 10 1b 00 90\n"
                    "Symbols:\n"
                    "  1: 0x00000000 size 0 WEAK NOTYPE ABS sig\n"
                    "  2: 0x00000000 size 4 GLOBAL FUNC .text f\n"
                    "  3: 0x00000000 size 0 GLOBAL NOTYPE UND g\n"
                    "Relocations for .text:\n"
                    "  0x00000000 type 9 g -4\n"
                    "Linker expressions:\n"
                    "  0: kind 69 (op 1 SSc) label f: g, f, 0\n"
                    "  1: kind 2370 (op 37 scc) label g: \"a \\\"b\\\"\", 0, 0\n"
                    "Notes:\n"
                    "  5: type 2 TELK \"TL3\"\n"
                    "Groups:\n"
                    "  6: signature sig flags 1 members .text 0x7fffffff\n");
}

TEST(ObjectDumperTest, NamesAndFlags)
{
    EXPECT_EQ(ObjectDumper::nameText(".L1"), ".L1");
    EXPECT_EQ(ObjectDumper::nameText(""), "\"\"");
    EXPECT_EQ(ObjectDumper::nameText("a b"), "\"a b\"");
    EXPECT_EQ(ObjectDumper::quoted("x\n\x01"), "\"x\\n\\x01\"");
    EXPECT_EQ(ObjectDumper::sectionFlagLetters(0), "-");
    EXPECT_EQ(ObjectDumper::sectionFlagLetters(0x30000037), "waxMSdc");
    EXPECT_EQ(ObjectDumper::sectionFlagLetters(0x102), "a+0x100");
    EXPECT_EQ(ObjectDumper::sectionTypeName(21), "NETINFO");
    EXPECT_EQ(ObjectDumper::sectionTypeName(99), "99");
}

} // namespace
} // namespace vorp
