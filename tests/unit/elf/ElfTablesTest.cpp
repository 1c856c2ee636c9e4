#include "diag/ErrorHandler.h"
#include "elf/ElfBlock.h"
#include "elf/ElfHandler.h"
#include "elf/ElfRelocationTable.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"
#include "elf/ElfStrings.h"
#include "elf/ElfSymbol.h"
#include "elf/ElfSymbolTable.h"
#include "elf/ElfTestSupport.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vorp {
namespace {

using namespace elftest;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(ElfStringsTest, PoolsOnlyIdenticalNamesAndKeepsOffsets)
{
    ErrorHandler handler;
    ElfStrings strings(&handler);
    EXPECT_EQ(strings.numBytes(), 1u);
    ElfString* empty = strings.add("");
    EXPECT_EQ(empty->getOffset(), 0u);
    EXPECT_EQ(strings.numBytes(), 1u);

    ElfString* abc = strings.add("abc");
    EXPECT_EQ(abc->getOffset(), 1u);
    EXPECT_EQ(strings.add("abc"), abc);
    EXPECT_EQ(strings.numBytes(), 5u);
    // A tail of another name is a string of its own.
    ElfString* bc = strings.add("bc");
    EXPECT_NE(bc, abc);
    EXPECT_EQ(bc->getOffset(), 5u);
    EXPECT_EQ(strings.find("bc"), bc);
    EXPECT_EQ(strings.find("c"), nullptr);

    // The running copy grows and keeps every name readable by offset.
    std::vector<unsigned> offsets;
    for (int i = 0; i < 200; ++i)
        offsets.push_back(strings.add(("name" + std::to_string(i)).c_str())->getOffset());
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(strings.getString(offsets[i]), "name" + std::to_string(i));
    EXPECT_EQ(strings.getString(2), "bc");
    EXPECT_EQ(strings.getEntry(strings.numBytes()), nullptr);
    EXPECT_EQ(abc->getOffset(), 1u);

    unsigned char* file = strings.createBuffer(true);
    EXPECT_EQ(std::memcmp(file, "\0abc\0bc\0name0\0name1\0", 20), 0);
    EXPECT_EQ(file[strings.numBytes() - 1], 0u);
    delete[] file;

    CapturedFile captured;
    ElfStrings small(&handler);
    small.add(".text");
    small.display(captured.file());
    EXPECT_EQ(captured.text(), "\nStrings:00000000 \n00000001 .text\n");
}

TEST(ElfStringsTest, LoadsATableAndReportsAMissingTerminator)
{
    ReportingErrorHandler handler;
    ElfSectionHeader header(1, 0, ElfHandler::SHT_STRTAB, 0, 0, 11, 0, 0, 1, 0);
    std::istringstream in(std::string("\0ab\0\0cd\0xyz", 11));
    CaptureStderr();
    ElfStrings strings(&handler, in, &header);
    EXPECT_EQ(GetCapturedStderr(), "ERROR: Strings not correctly terminated\n");
    EXPECT_EQ(strings.getString(1), "ab");
    EXPECT_EQ(strings.getString(5), "cd");
    EXPECT_EQ(strings.getString(8), "xyz");
    EXPECT_EQ(strings.find("cd")->getOffset(), 5u);
    // New names go behind the loaded ones.
    EXPECT_EQ(strings.add("new")->getOffset(), 12u);
    EXPECT_EQ(strings.getString(12), "new");

    std::istringstream good(std::string("\0ab\0", 4));
    ElfSectionHeader goodHeader(1, 0, ElfHandler::SHT_STRTAB, 0, 0, 4, 0, 0, 1, 0);
    CaptureStderr();
    ElfStrings loaded(&handler, good, &goodHeader);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(loaded.numBytes(), 4u);
    EXPECT_EQ(loaded.find("ab")->getOffset(), 1u);
}

TEST(ElfSymbolTableTest, LooksUpByNameNumberAndBinding)
{
    ReportingErrorHandler handler;
    ElfHandler elf(&handler, ElfHandler::ET_REL);
    ElfSymbolTable* table = elf.getSymbolTable();
    elf.addProgbitsSection(0, 0, new unsigned char[0], ".text", 0, 1, 0);
    const unsigned first = elf.addSymbol("dup", 1, 1, ElfHandler::STB_LOCAL, 0, 0);
    const unsigned second = elf.addSymbol("dup", 2, 1, ElfHandler::STB_GLOBAL, 0, 0);
    elf.addSymbol("weakling", 3, 1, ElfHandler::STB_WEAK, 0, 0);
    elf.addSymbol("high", 4, 0xFF00, ElfHandler::STB_GLOBAL, 0, 0);
    elf.addSymbol("bad", 5, 0xFEFF, ElfHandler::STB_GLOBAL, 0, 0);

    EXPECT_EQ(first, 1u);
    EXPECT_EQ(second, 2u);
    EXPECT_EQ(table->numSymbols(), 6u);
    EXPECT_EQ(table->numBytes(), 96u);
    EXPECT_EQ(table->findNumByName("dup"), 1u);
    EXPECT_EQ(table->find("dup")->st_value, 1u);
    EXPECT_EQ(table->findGlobal("dup"), table->getSymbol(2));
    EXPECT_EQ(table->findGlobal("weakling"), nullptr);
    EXPECT_EQ(table->findNumByName("unknown"), 0u);
    EXPECT_EQ(table->find("unknown"), nullptr);
    EXPECT_EQ(table->find(""), table->getSymbol(0));
    EXPECT_EQ(table->find(table->getSymbol(4)), 4);
    const ElfSymbol stranger(0, 0, 0, 0, 0, 0);
    EXPECT_EQ(table->find(&stranger), -1);
    EXPECT_EQ(table->getSymbol(6), nullptr);
    EXPECT_EQ(table->symbolInfo(3), 0x20u);
    EXPECT_EQ(table->getSymbol(3)->getBinding(), 2u);

    ElfSymbol typed(0, 0, 0, ElfHandler::STB_GLOBAL, ElfHandler::STT_FUNC, 0);
    EXPECT_EQ(typed.getType(), 2u);
    EXPECT_EQ(typed.getBinding(), 1u);
    unsigned char record[16];
    table->getSymbol(1)->encode(record);
    EXPECT_EQ(ElfSymbol(record).st_value, 1u);

    // Reserved indices from 0xFF00 pass; 0xFEFF names no section of this small file.
    CaptureStderr();
    elf.check();
    EXPECT_EQ(GetCapturedStderr(), "Invalid section table index for symbol 'bad'\n");
    CaptureStderr();
    table->check(&handler, 0);
    EXPECT_EQ(GetCapturedStderr(), "Invalid section table index for symbol 'dup'\n"
                                   "Invalid section table index for symbol 'dup'\n"
                                   "Invalid section table index for symbol 'weakling'\n"
                                   "Invalid section table index for symbol 'bad'\n");
}

TEST(ElfRelocationTableTest, EncodesInOrderAndAdjustsOffsets)
{
    ElfRelocationTable empty;
    ElfBlock* none = empty.encode(true);
    EXPECT_EQ(none->getSize(), 0u);
    delete none;

    ElfRelocationTable table;
    table.addRelocation(8, 2, 3, 0);
    table.addRelocation(4, 1, 0x123456, 0);
    EXPECT_FALSE(table.getWriteAddend());
    table.addRelocation(0, 0xFF, 1, -8);
    EXPECT_TRUE(table.getWriteAddend());
    EXPECT_EQ(table.getNumEntries(), 3u);

    ElfRelocationTable copy = table;
    ElfBlock* block = copy.encode(false);
    ASSERT_EQ(block->getSize(), 24u);
    const std::vector<unsigned char> bytes(block->getData(), block->getData() + 24);
    EXPECT_EQ(u32(bytes, 0), 8u);
    EXPECT_EQ(u32(bytes, 4), 0x302u);
    EXPECT_EQ(u32(bytes, 12), 0x12345601u);
    EXPECT_EQ(u32(bytes, 20), 0x1FFu);
    EXPECT_EQ(copy.getElfBlock(), block);
    delete block;

    // A loaded table keeps its addends, so it may only be written with them.
    ElfBlock* withAddends = table.encode(true);
    ElfSectionHeader rela(2, 0, ElfHandler::SHT_RELA, 0, 0, 36, 0, 1, 1, 12);
    withAddends->addSectionHeader(0, &rela);
    ElfRelocationTable loaded(withAddends, &rela);
    EXPECT_TRUE(loaded.getRequiresAddend());
    ASSERT_EQ(loaded.getNumEntries(), 3u);
    EXPECT_EQ(loaded.getRelocations().back().getAddend(), -8);
    EXPECT_EQ(loaded.getRelocations().back().getType(), 0xFFu);
    ElfSectionHeader rel(2, 0, ElfHandler::SHT_REL, 0, 0, 24, 0, 1, 1, 12);
    ElfRelocationTable plain(withAddends, &rel);
    EXPECT_FALSE(plain.getRequiresAddend());
    EXPECT_EQ(plain.getNumEntries(), 2u);
    EXPECT_EQ(plain.getRelocations().back().getAddend(), 0);
    delete withAddends;

    // Bytes inserted (negative delta) push later relocations up.
    table.adjustOffsets(4, -4);
    std::vector<unsigned> offsets;
    for (const ElfRelocation& r : table.getRelocations())
        offsets.push_back(r.getOffset());
    EXPECT_EQ(offsets, (std::vector<unsigned>{12, 8, 0}));
    table.substituteSymbol(3, 9);
    EXPECT_EQ(table.getRelocations().front().getSymbol(), 9u);
    EXPECT_EQ(table.getRelocations().front().getType(), 2u);

    CapturedFile captured;
    ElfRelocationTable two;
    two.addRelocation(1, 2, 3, 4);
    two.addRelocation(5, 6, 7, 8);
    two.display(captured.file());
    EXPECT_EQ(captured.text().substr(0, 48), "\nRelocation table contains 2  entries::\nIndex 0\n");
}

TEST(ElfRelocationTableTest, RelaSectionsAndGroupsShareNames)
{
    ErrorHandler handler;
    ElfHandler elf(&handler, ElfHandler::ET_REL);
    const unsigned odd = elf.addProgbitsSection(0, 4, new unsigned char[4](), ".rela.x", 0, 1, 0);
    const unsigned sym = elf.addSymbol("s", 0, odd, ElfHandler::STB_LOCAL, 0, 0);
    ElfRelocationTable* table = elf.newRelocationTable();
    table->addRelocation(0, 1, sym, 0);
    const unsigned rela = elf.addRelocations(odd, table);
    EXPECT_EQ(elf.getSectionHeader(rela)->getName(elf.getStrings()), ".rela.rela.x");
    EXPECT_EQ(elf.getSectionHeader(rela)->sh_size, 12u); // addends are always written
    EXPECT_EQ(elf.getSectionHeader(odd)->getRelocations().front(), table);

    const unsigned g1 = elf.addGroupSection(4, new unsigned char[4]());
    const unsigned g2 = elf.addGroupSection(4, new unsigned char[4]());
    EXPECT_EQ(elf.getSectionHeader(g1)->sh_name, elf.getSectionHeader(g2)->sh_name);
    EXPECT_EQ(elf.getSectionHeader(g1)->sh_link, 0u);
    EXPECT_EQ(elf.findString(".group")->getOffset(), elf.getSectionHeader(g1)->sh_name);
}

TEST(ElfRelocationTableDeathTest, BrokenCallsStopTheRun)
{
    ElfRelocationTable table;
    EXPECT_DEATH(table.addRelocation(0, 1, 0, 0), "symbol != 0");
    ElfBlock* block = table.encode(true);
    EXPECT_DEATH(table.encode(true), "m_elfBlock == __null");
    delete block;
    ErrorHandler handler;
    EXPECT_DEATH(ElfHandler(&handler, 3), "type == 1 \\|\\| type == 2");
}

} // namespace
} // namespace vorp
