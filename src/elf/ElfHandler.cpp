#include "elf/ElfHandler.h"

#include "diag/ErrorHandler.h"
#include "elf/ElfBlock.h"
#include "elf/ElfGroup.h"
#include "elf/ElfHeader.h"
#include "elf/ElfProgramHeader.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"
#include "elf/ElfStrings.h"
#include "elf/ElfSymbol.h"
#include "elf/ElfSymbolTable.h"

#include <cassert>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <new>
#include <sstream>

namespace vorp {

namespace {

// Earlier reads may have left the stream failed; a seek must still take effect.
void seekTo(std::istream& in, std::uint64_t offset)
{
    in.clear();
    in.seekg(static_cast<std::streamoff>(offset));
}

unsigned roundUp4(unsigned value)
{
    return (value + 3) & ~3u;
}

} // namespace

ElfHandler::ElfHandler(ErrorHandler* errorHandler, unsigned char type)
    : m_errorHandler(errorHandler)
{
    assert(type == 1 || type == 2);
    createEmpty(type);
}

ElfHandler::ElfHandler(ErrorHandler* errorHandler, const char* fileName)
    : m_errorHandler(errorHandler)
{
    try {
        std::ifstream in(fileName, std::ios::in | std::ios::binary);
        if (!in) {
            m_header = new ElfHeader();
            m_errorHandler->fatalError(true, "ERROR: Unable to open elf file '%s' for loading\n", fileName);
            finishLoading();
            return;
        }
        readFileStream(in);
    } catch (...) {
        // A handler that throws instead of exiting must not leak what was loaded so far.
        releaseAll();
        throw;
    }
}

ElfHandler::ElfHandler(ErrorHandler* errorHandler, std::istream& in)
    : m_errorHandler(errorHandler)
{
    try {
        readFileStream(in);
    } catch (...) {
        releaseAll();
        throw;
    }
}

ElfHandler::~ElfHandler()
{
    releaseAll();
}

void ElfHandler::releaseAll()
{
    delete m_header;
    m_header = nullptr;
    delete m_strings;
    m_strings = nullptr;
    delete m_symbolTable;
    m_symbolTable = nullptr;
    for (ElfProgramHeader* header : m_programHeaders)
        delete header;
    for (ElfSectionHeader* header : m_sectionHeaders)
        delete header;
    for (ElfBlock* block : m_blocks)
        delete block;
    m_programHeaders.clear();
    m_sectionHeaders.clear();
    m_relocationHeaders.clear();
    m_blocks.clear();
    m_relocationTables.clear();
}

void ElfHandler::createEmpty(unsigned char type)
{
    m_header = new ElfHeader();
    m_header->createDefaultHeader(type);
    m_strings = new ElfStrings(m_errorHandler);
    ElfString* nullString = m_strings->find("");
    assert(nullString != __null);
    m_symbolTable = new ElfSymbolTable(this, nullString);
    addSectionHeader(new ElfSectionHeader(0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

// ---- building -------------------------------------------------------------------------------

unsigned ElfHandler::addSectionHeader(ElfSectionHeader* header)
{
    m_sectionHeaders.push_back(header);
    return m_header->e_shnum++;
}

unsigned ElfHandler::addProgramHeader(ElfProgramHeader* header)
{
    m_programHeaders.push_back(header);
    m_header->e_shoff += ELF32_PHDR_BYTES;
    return m_header->e_phnum++;
}

unsigned ElfHandler::addRelocationHeader(ElfSectionHeader* header)
{
    m_relocationHeaders.push_back(header);
    return addSectionHeader(header);
}

void ElfHandler::addBlock(ElfBlock* block)
{
    m_blocks.push_back(block);
}

unsigned ElfHandler::addDataSection(Elf32_Word type, Elf32_Addr address, unsigned numBytes, unsigned char* data,
                                    const char* name, Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize)
{
    ElfString* str = addString(name);
    auto* header = new ElfSectionHeader(m_header->e_shnum, str->getOffset(), type, flags, address, numBytes, 0, 0,
                                        alignment, entrySize);
    const unsigned num = addSectionHeader(header);
    auto* block = new ElfBlock(numBytes, data);
    block->addSectionHeader(0, header);
    addBlock(block);
    return num;
}

unsigned ElfHandler::addProgbitsSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                                        Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize)
{
    return addDataSection(SHT_PROGBITS, address, numBytes, data, name, flags, alignment, entrySize);
}

unsigned ElfHandler::addProgbitsSection(Elf32_Addr address, unsigned numBytes, unsigned segmentNo, unsigned offset,
                                        const char* name, Elf32_Word flags, Elf32_Word alignment,
                                        Elf32_Word entrySize)
{
    assert(segmentNo < m_programHeaders.size());
    ElfBlock* block = findBlock(m_programHeaders[segmentNo]);
    assert(block);
    assert(offset + numBytes <= block->getSize());
    ElfString* str = addString(name);
    auto* header = new ElfSectionHeader(m_header->e_shnum, str->getOffset(), SHT_PROGBITS, flags, address, numBytes,
                                        0, 0, alignment, entrySize);
    const unsigned num = addSectionHeader(header);
    block->addSectionHeader(offset, header);
    return num;
}

unsigned ElfHandler::addNobitsSection(Elf32_Addr address, unsigned numBytes, const char* name, Elf32_Word flags,
                                      Elf32_Word alignment, Elf32_Word entrySize)
{
    ElfString* str = addString(name);
    return addSectionHeader(new ElfSectionHeader(m_header->e_shnum, str->getOffset(), SHT_NOBITS, flags, address,
                                                 numBytes, 0, 0, alignment, entrySize));
}

unsigned ElfHandler::addNobitsSection(Elf32_Addr address, unsigned numBytes, unsigned segmentNo, unsigned offset,
                                      const char* name, Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize)
{
    assert(segmentNo < m_programHeaders.size());
    ElfProgramHeader* codePHdr = m_programHeaders[segmentNo];
    assert(offset >= codePHdr->p_filesz && offset <= codePHdr->p_memsz);
    ElfBlock* block = findBlock(codePHdr);
    assert(block);
    ElfString* str = addString(name);
    auto* header = new ElfSectionHeader(m_header->e_shnum, str->getOffset(), SHT_NOBITS, flags, address, numBytes, 0,
                                        0, alignment, entrySize);
    const unsigned num = addSectionHeader(header);
    block->addSectionHeader(offset, header);
    return num;
}

unsigned ElfHandler::addNetinfoSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                                       Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize)
{
    return addDataSection(SHT_NETINFO, address, numBytes, data, name, flags, alignment, entrySize);
}

unsigned ElfHandler::addInfoSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                                    Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize)
{
    return addDataSection(SHT_INFO, address, numBytes, data, name, flags, alignment, entrySize);
}

unsigned ElfHandler::addExprSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                                    Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize)
{
    return addDataSection(SHT_EXPR, address, numBytes, data, name, flags, alignment, entrySize);
}

unsigned ElfHandler::addNoteSection(const char* name, Elf32_Word noteType, const void* data, unsigned length)
{
    // The descriptor sits at the fixed offset 16, right behind a vendor name of four bytes.
    const Elf32_Word nameBytes = static_cast<Elf32_Word>(std::strlen(NOTE_VENDOR));
    const unsigned size = roundUp4(nameBytes) + roundUp4(length) + 12;
    auto* note = new unsigned char[size];
    std::memset(note, 0, size);
    const Elf32_Word descBytes = length;
    std::memcpy(note + 0, &nameBytes, 4);
    std::memcpy(note + 4, &descBytes, 4);
    std::memcpy(note + 8, &noteType, 4);
    std::memcpy(note + 12, NOTE_VENDOR, nameBytes);
    if (length)
        std::memcpy(note + 16, data, length);
    return addDataSection(SHT_NOTE, 0, size, note, name, 0, 0, 0);
}

unsigned ElfHandler::addGroupSection(unsigned size, unsigned char* data)
{
    // sh_link stays 0: a group's signature is looked up in the file's one symbol table.
    return addDataSection(SHT_GROUP, 0, size, data, ".group", 0, 4, 4);
}

unsigned ElfHandler::addSegment(Elf32_Addr address, unsigned fileBytes, unsigned memBytes, unsigned char* data,
                                Elf32_Word flags, Elf32_Word alignment)
{
    assert(fileBytes <= memBytes);
    auto* phdr = new ElfProgramHeader(m_header->e_phnum, PT_LOAD, address, fileBytes, memBytes, flags, alignment);
    const unsigned num = addProgramHeader(phdr);
    auto* block = new ElfBlock(fileBytes, data);
    block->setProgramHeader(phdr);
    addBlock(block);
    return num;
}

ElfRelocationTable* ElfHandler::newRelocationTable()
{
    m_relocationTables.emplace_back();
    return &m_relocationTables.back();
}

unsigned ElfHandler::addRelocations(unsigned sectionNo, ElfRelocationTable* table)
{
    assert(sectionNo < m_sectionHeaders.size());
    ElfSectionHeader* target = m_sectionHeaders[sectionNo];
    const std::string name = ".rela" + target->getName(m_strings);
    target->addRelocations(table);
    // Always with addends; sh_link is filled in once ".symtab" has its number.
    ElfBlock* block = table->encode(true);
    ElfString* str = addString(name.c_str());
    auto* header = new ElfSectionHeader(m_header->e_shnum, str->getOffset(), SHT_RELA, 0, 0, block->getSize(), 0,
                                        sectionNo, 1, ELF32_RELA_BYTES);
    const unsigned num = addRelocationHeader(header);
    addBlock(block);
    block->addSectionHeader(0, header);
    return num;
}

// ---- symbols --------------------------------------------------------------------------------

unsigned ElfHandler::addSymbol(const char* name, Elf32_Addr value, Elf32_Half section, unsigned char binding,
                               unsigned char type, Elf32_Word size, const char*)
{
    assert(binding == 1 || binding == 0 || binding == 2);
    return m_symbolTable->add(addString(name), value, section, binding, type, size);
}

unsigned ElfHandler::addAbsoluteSymbol(const char* name, Elf32_Addr value, unsigned char binding, unsigned char type,
                                       Elf32_Word size, const char*)
{
    assert(binding == 1 || binding == 0 || binding == 2);
    return m_symbolTable->add(addString(name), value, SHN_ABS, binding, type, size);
}

unsigned ElfHandler::addCommonSymbol(const char* name, Elf32_Word size, Elf32_Word alignment, unsigned char binding,
                                     unsigned char type, const char*)
{
    assert(binding == 1 || binding == 0 || binding == 2);
    return m_symbolTable->add(addString(name), alignment, SHN_COMMON, binding, type, size);
}

unsigned ElfHandler::addUndefinedSymbol(const char* name, unsigned char binding, unsigned char type, Elf32_Word size,
                                        const char*)
{
    assert(binding == 1 || binding == 0 || binding == 2);
    return m_symbolTable->add(addString(name), 0, SHN_UNDEF, binding, type, size);
}

// ---- queries --------------------------------------------------------------------------------

ElfSectionHeader* ElfHandler::getSectionHeader(unsigned sectionIndex) const
{
    if (sectionIndex >= m_sectionHeaders.size())
        return nullptr;
    assert(m_sectionHeaders[sectionIndex]->getNum() == sectionIndex);
    return m_sectionHeaders[sectionIndex];
}

Elf32_Addr ElfHandler::getEntryPoint() const
{
    return m_header ? m_header->e_entry : 0;
}

unsigned ElfHandler::getType() const
{
    return m_header ? m_header->e_type : 0;
}

Elf32_Word ElfHandler::getSectionSize(unsigned sectionNo) const
{
    assert(sectionNo < m_sectionHeaders.size());
    return m_sectionHeaders[sectionNo]->sh_size;
}

ElfString* ElfHandler::findString(const char* name) const
{
    return m_strings->find(name);
}

ElfString* ElfHandler::addString(const char* name)
{
    return m_strings->add(name);
}

const char* ElfHandler::getStringsEntry(unsigned offset) const
{
    return m_strings ? m_strings->getEntry(offset) : nullptr;
}

unsigned ElfHandler::numSymbols() const
{
    return m_symbolTable ? m_symbolTable->numSymbols() : 0;
}

std::string ElfHandler::getSymbolName(unsigned index) const
{
    assert(m_symbolTable != __null);
    return m_symbolTable->symbolName(index);
}

Elf32_Addr ElfHandler::getSymbolValue(unsigned index) const
{
    assert(m_symbolTable != __null);
    return m_symbolTable->symbolValue(index);
}

Elf32_Word ElfHandler::getSymbolSize(unsigned index) const
{
    assert(m_symbolTable != __null);
    return m_symbolTable->symbolSize(index);
}

unsigned char ElfHandler::getSymbolInfo(unsigned index) const
{
    assert(m_symbolTable != __null);
    return m_symbolTable->symbolInfo(index);
}

Elf32_Half ElfHandler::getSymbolSectionIndex(unsigned index) const
{
    assert(m_symbolTable != __null);
    return m_symbolTable->symbolSectionIndex(index);
}

bool ElfHandler::isSymbolGlobal(unsigned index) const
{
    const unsigned binding = getSymbolInfo(index) >> 4;
    return binding == STB_GLOBAL || binding == STB_WEAK;
}

bool ElfHandler::lookupSymbolValue(const char* name, unsigned* value) const
{
    const ElfSymbol* symbol = m_symbolTable ? m_symbolTable->find(name) : nullptr;
    if (!symbol)
        return false;
    *value = symbol->st_value;
    return true;
}

void ElfHandler::check() const
{
    if (m_symbolTable)
        m_symbolTable->check(m_errorHandler, static_cast<unsigned short>(m_sectionHeaders.size() - 1));
}

// ---- section data ---------------------------------------------------------------------------

ElfBlock* ElfHandler::findBlock(const ElfProgramHeader* phdr) const
{
    for (ElfBlock* block : m_blocks) {
        if (block->getProgramHeader() == phdr)
            return block;
    }
    return nullptr;
}

ElfBlock* ElfHandler::findBlock(const ElfSectionHeader* header, unsigned& offset) const
{
    for (ElfBlock* block : m_blocks) {
        if (block->findSection(header, offset))
            return block;
    }
    return nullptr;
}

void ElfHandler::writeSectionData(unsigned sectionNo, unsigned char* out) const
{
    assert(sectionNo < m_sectionHeaders.size());
    const ElfSectionHeader* header = m_sectionHeaders[sectionNo];
    unsigned offset = 0;
    ElfBlock* block = findBlock(header, offset);
    assert(block);
    std::memcpy(out, block->getData() + offset, header->sh_size);
}

void ElfHandler::modifySectionData(unsigned sectionNo, unsigned index, Elf32_Word value)
{
    assert(sectionNo < m_sectionHeaders.size());
    unsigned offset = 0;
    ElfBlock* block = findBlock(m_sectionHeaders[sectionNo], offset);
    assert(block);
    assert(4 * index + 4 <= block->getSize());
    std::memcpy(block->getData() + 4 * index, &value, 4);
}

void ElfHandler::contractSectionData(unsigned sectionNo, unsigned offset, unsigned bytes)
{
    assert(sectionNo < m_sectionHeaders.size());
    ElfSectionHeader* header = m_sectionHeaders[sectionNo];
    if (header->sh_type != SHT_NOBITS) {
        unsigned start = 0;
        ElfBlock* block = findBlock(header, start);
        assert(block);
        assert(offset + bytes <= header->sh_size);
        unsigned char* at = block->getData() + start + offset;
        std::memmove(at, at + bytes, header->sh_size - offset - bytes);
    }
    header->sh_size -= bytes;
}

void ElfHandler::expandSectionData(unsigned sectionNo, unsigned offset, unsigned bytes, unsigned, Elf32_Word pattern,
                                   unsigned extra)
{
    assert(sectionNo < m_sectionHeaders.size());
    ElfSectionHeader* header = m_sectionHeaders[sectionNo];
    const unsigned oldSize = header->sh_size;
    header->sh_size += bytes;
    if (header->sh_type == SHT_NOBITS)
        return;
    unsigned start = 0;
    ElfBlock* block = findBlock(header, start);
    assert(block);
    assert(start + header->sh_size <= block->getSize());
    assert(extra <= offset);
    unsigned char* data = block->getData() + start;
    for (unsigned i = oldSize; i > offset; --i)
        data[i - 1 + bytes] = data[i - 1];
    // The highest byte takes the pattern's lowest byte, and so on downwards.
    unsigned k = 0;
    for (unsigned i = offset + bytes; i > offset - extra; --i, ++k)
        data[i - 1] = static_cast<unsigned char>(pattern >> (8 * (k % 4)));
}

void ElfHandler::adjustRelocationOffsets(Elf32_Addr offset, int delta, unsigned sectionNo)
{
    if (sectionNo >= m_sectionHeaders.size())
        return;
    for (ElfRelocationTable* table : m_sectionHeaders[sectionNo]->getRelocations())
        table->adjustOffsets(offset, delta);
}

void ElfHandler::substituteRelocationReferences(Elf32_Word oldSymbol, Elf32_Word newSymbol)
{
    for (ElfRelocationTable& table : m_relocationTables)
        table.substituteSymbol(oldSymbol, newSymbol);
}

void ElfHandler::getReferencedSymbols(std::set<ElfSymbol*>& symbols, unsigned sectionNo) const
{
    getReferencedSymbols(symbols, sectionNo, 0, std::numeric_limits<Elf32_Addr>::max());
}

void ElfHandler::getReferencedSymbols(std::set<ElfSymbol*>& symbols, unsigned sectionNo, Elf32_Addr begin,
                                      Elf32_Addr end) const
{
    if (sectionNo >= m_sectionHeaders.size())
        return;
    const bool whole = begin == 0 && end == std::numeric_limits<Elf32_Addr>::max();
    for (const ElfRelocationTable* table : m_sectionHeaders[sectionNo]->getRelocations()) {
        for (const ElfRelocation& relocation : table->getRelocations()) {
            if (whole || (relocation.getOffset() >= begin && relocation.getOffset() < end))
                symbols.insert(m_symbolTable->getSymbol(relocation.getSymbol()));
        }
    }
}

void ElfHandler::getReferencedSymbols(std::set<ElfSymbol*>& symbols, const ElfSymbol* topSym,
                                      const ElfSymbol* botSym) const
{
    assert(topSym && botSym);
    assert(topSym->st_shndx == botSym->st_shndx);
    getReferencedSymbols(symbols, topSym->st_shndx, topSym->st_value, botSym->st_value);
}

std::vector<ElfHandler::Segment> ElfHandler::getProgramSegments() const
{
    std::vector<Segment> segments;
    for (const ElfBlock* block : m_blocks) {
        const ElfProgramHeader* phdr = block->getProgramHeader();
        if (phdr && phdr->p_type == PT_LOAD && phdr->p_filesz != 0)
            segments.push_back(Segment{phdr->p_vaddr, phdr->p_filesz, block->getData()});
    }
    return segments;
}

// ---- layout and writing ---------------------------------------------------------------------

unsigned ElfHandler::addSymbolTable(unsigned offset)
{
    ElfString* str = addString(".symtab");
    const unsigned num = m_header->e_shnum;
    // sh_info stays 0: the table is not sorted into locals and globals.
    auto* header = new ElfSectionHeader(num, str->getOffset(), SHT_SYMTAB, 0, 0, m_symbolTable->numBytes(), num + 1,
                                        0, 1, ELF32_SYM_BYTES);
    addSectionHeader(header);
    auto* block = new ElfBlock(m_symbolTable->numBytes(), m_symbolTable->createBuffer());
    block->addSectionHeader(0, header);
    block->updateOffsets(offset);
    addBlock(block);
    return num;
}

unsigned ElfHandler::addStringTable(unsigned offset)
{
    // The name goes in first, so that the table holds it.
    ElfString* str = addString(".strtab");
    const unsigned num = m_header->e_shnum;
    m_header->e_shstrndx = static_cast<Elf32_Half>(num);
    auto* header = new ElfSectionHeader(num, str->getOffset(), SHT_STRTAB, 0, 0, m_strings->numBytes(), 0, 0, 1, 0);
    addSectionHeader(header);
    auto* block = new ElfBlock(m_strings->numBytes(), m_strings->createBuffer(true));
    block->addSectionHeader(0, header);
    block->updateOffsets(offset);
    addBlock(block);
    return num;
}

void ElfHandler::updateRelocationSymbolTableLinks(unsigned symbolTableSection)
{
    for (ElfSectionHeader* header : m_relocationHeaders)
        header->sh_link = symbolTableSection;
}

void ElfHandler::refreshLoadedSymbolSections()
{
    // A loaded file keeps its own ".symtab" and ".strtab"; their contents are encoded afresh, where
    // they have blocks of their own.
    m_header->e_phoff = ELF32_EHDR_BYTES;
    m_header->e_shoff = ELF32_EHDR_BYTES + ELF32_PHDR_BYTES * m_header->e_phnum;
    unsigned offset = 0;
    ElfSectionHeader* symbols = m_sectionHeaders[m_symbolSection];
    ElfBlock* block = findBlock(symbols, offset);
    if (block && !block->getProgramHeader() && block->getSectionHeaders().size() == 1) {
        block->replaceData(m_symbolTable->numBytes(), m_symbolTable->createBuffer());
        symbols->sh_size = m_symbolTable->numBytes();
    }
    ElfSectionHeader* strings = m_sectionHeaders[m_stringSection];
    block = findBlock(strings, offset);
    if (block && !block->getProgramHeader() && block->getSectionHeaders().size() == 1) {
        block->replaceData(m_strings->numBytes(), m_strings->createBuffer(true));
        strings->sh_size = m_strings->numBytes();
    }
}

void ElfHandler::setElfAddresses()
{
    if (m_hasSymbolSections)
        refreshLoadedSymbolSections();
    // The two tables still to come have their headers counted, but their blocks come last.
    unsigned offset = m_header->e_shoff + ELF32_SHDR_BYTES * m_header->e_shnum;
    if (!m_hasSymbolSections)
        offset += 2 * ELF32_SHDR_BYTES;
    for (ElfBlock* block : m_blocks) {
        block->updateOffsets(offset);
        offset += block->getSize();
    }
    if (!m_hasSymbolSections) {
        const unsigned symbolTableSection = addSymbolTable(offset);
        updateRelocationSymbolTableLinks(symbolTableSection);
        addStringTable(offset + m_symbolTable->numBytes());
    }
    if (m_header->e_type == ET_EXEC) {
        const ElfSymbol* start = m_symbolTable->find("_start");
        if (start) {
            m_header->e_entry = start->st_value;
        } else {
            m_errorHandler->fatalError(false, "WARNING: '_start' symbol not found - setting ELF entry point to 0.\n");
            m_header->e_entry = 0;
        }
    }
}

bool ElfHandler::writeToFile(const char* fileName)
{
    std::FILE* out = std::fopen(fileName, "wb");
    if (!out) {
        m_errorHandler->fatalError(true, "ERROR: Unable to open output file '%s' for writing elf\n", fileName);
        return false;
    }
    const bool written = write(out);
    return std::fclose(out) == 0 && written;
}

template <typename Reserve, typename Put>
bool ElfHandler::writeWith(Reserve reserve, Put put)
{
    setElfAddresses();
    // The headers are small: they are encoded first and written in one go.
    std::ostringstream headers(std::ios::out | std::ios::binary);
    m_header->write(headers);
    for (const ElfProgramHeader* header : m_programHeaders)
        header->write(headers);
    for (const ElfSectionHeader* header : m_sectionHeaders)
        header->write(headers);
    const std::string headerBytes = headers.str();
    std::uint64_t total = headerBytes.size();
    for (const ElfBlock* block : m_blocks)
        total += block->getSize();
    reserve(total);
    m_bytesWritten = 0;
    auto counted = [this, &put](const void* data, std::size_t size) {
        if (size != 0 && !put(data, size))
            return false;
        m_bytesWritten += size;
        return true;
    };
    if (!counted(headerBytes.data(), headerBytes.size()))
        return false;
    for (const ElfBlock* block : m_blocks) {
        if (!counted(block->getData(), block->getSize()))
            return false;
    }
    return true;
}

bool ElfHandler::write(std::FILE* out)
{
    return writeWith([](std::uint64_t) {},
                     [out](const void* data, std::size_t size) { return std::fwrite(data, 1, size, out) == size; });
}

bool ElfHandler::write(const std::function<bool(const void*, std::size_t)>& put)
{
    return writeWith([](std::uint64_t) {}, put);
}

void ElfHandler::write(std::vector<std::uint8_t>& out)
{
    out.clear();
    auto reserve = [&out](std::uint64_t total) { out.reserve(total); };
    auto append = [&out](const void* data, std::size_t size) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        out.insert(out.end(), bytes, bytes + size);
        return true;
    };
    writeWith(reserve, append);
}

void ElfHandler::display(FILE* out) const
{
    m_header->display(out);
    for (unsigned i = 0; i < m_programHeaders.size(); ++i) {
        fprintf(out, "\nProgram Header %d\n", static_cast<int>(i));
        m_programHeaders[i]->display(out);
    }
    for (unsigned i = 0; i < m_sectionHeaders.size(); ++i) {
        fprintf(out, "\nSection Header %d\n", static_cast<int>(i));
        m_sectionHeaders[i]->display(m_strings, out);
    }
    for (unsigned i = 0; i < m_blocks.size(); ++i) {
        fprintf(out, "\nBlock %d\n", static_cast<int>(i));
        m_blocks[i]->display(out);
    }
    if (m_symbolTable)
        m_symbolTable->display(m_strings, out);
    if (m_strings)
        m_strings->display(out);
    for (const ElfRelocationTable& table : m_relocationTables)
        table.display(out);
}

// ---- reading --------------------------------------------------------------------------------

void ElfHandler::readFileStream(std::istream& in)
{
    m_header = new ElfHeader();
    readContents(in);
    finishLoading();
}

bool ElfHandler::readContents(std::istream& in)
{
    // The length of the input, where the stream can tell it, so that no range beyond it is trusted.
    std::uint64_t length = std::numeric_limits<std::uint64_t>::max();
    in.seekg(0, std::ios::end);
    const std::streamoff end = in.tellg();
    if (in && end >= 0)
        length = static_cast<std::uint64_t>(end);
    in.clear();
    in.seekg(0, std::ios::beg);
    auto fits = [length](std::uint64_t offset, std::uint64_t bytes) { return offset + bytes <= length; };

    m_header->read(in);
    const bool complete = static_cast<bool>(in);
    if (!m_header->hasElfMagic()) {
        m_errorHandler->fatalError(true, "ERROR: Header is not an ELF file\n");
        return false;
    }
    if (!complete || !fits(0, ELF32_EHDR_BYTES)) {
        m_errorHandler->fatalError(true, "ERROR: Elf file is truncated in the header\n");
        return false;
    }
    if (m_header->e_ident[4] != 1 || m_header->e_ident[5] != 1) {
        m_errorHandler->fatalError(true, "ERROR: Only 32-bit little-endian elf files are supported\n");
        return false;
    }

    for (unsigned i = 0; i < m_header->e_phnum; ++i) {
        const std::uint64_t at = m_header->e_phoff + std::uint64_t(ELF32_PHDR_BYTES) * i;
        if (!fits(at, ELF32_PHDR_BYTES)) {
            m_errorHandler->fatalError(true, "ERROR: Elf file is truncated in program header %u\n", i);
            return false;
        }
        seekTo(in, at);
        m_programHeaders.push_back(new ElfProgramHeader(i, in));
    }
    for (unsigned i = 0; i < m_header->e_shnum; ++i) {
        const std::uint64_t at = m_header->e_shoff + std::uint64_t(ELF32_SHDR_BYTES) * i;
        if (!fits(at, ELF32_SHDR_BYTES)) {
            m_errorHandler->fatalError(true, "ERROR: Elf file is truncated in section header %u\n", i);
            return false;
        }
        seekTo(in, at);
        m_sectionHeaders.push_back(new ElfSectionHeader(i, in));
    }
    for (ElfProgramHeader* phdr : m_programHeaders) {
        if (!fits(phdr->p_offset, phdr->p_filesz)) {
            m_errorHandler->fatalError(true, "ERROR: Elf file is truncated in segment %u\n", phdr->getNum());
            continue;
        }
        auto* data = new (std::nothrow) unsigned char[phdr->p_filesz];
        if (!data) {
            m_errorHandler->fatalError(true, "ERROR: Failed to allocate memory for data segment\n");
            continue;
        }
        seekTo(in, phdr->p_offset);
        in.read(reinterpret_cast<char*>(data), phdr->p_filesz);
        auto* block = new ElfBlock(phdr->p_filesz, data);
        block->setProgramHeader(phdr);
        addBlock(block);
    }
    readSections(in, length);
    return true;
}

bool ElfHandler::blockAlreadyLoaded(const ElfSectionHeader* header, ElfBlock*& block, unsigned& offset) const
{
    for (ElfBlock* candidate : m_blocks) {
        const ElfProgramHeader* phdr = candidate->getProgramHeader();
        if (header->sh_type == SHT_NOBITS) {
            // Bytes that only occupy memory: the segment's memory image has to cover them.
            if (phdr && header->sh_addr >= phdr->p_vaddr &&
                std::uint64_t(header->sh_addr) + header->sh_size <= std::uint64_t(phdr->p_vaddr) + phdr->p_memsz) {
                block = candidate;
                offset = header->sh_addr - phdr->p_vaddr;
                return true;
            }
        } else if (phdr && header->sh_offset >= phdr->p_offset &&
                   std::uint64_t(header->sh_offset) + header->sh_size <=
                       std::uint64_t(phdr->p_offset) + candidate->getSize()) {
            block = candidate;
            offset = header->sh_offset - phdr->p_offset;
            return true;
        }
    }
    return false;
}

void ElfHandler::readSections(std::istream& in, std::uint64_t length)
{
    const unsigned lastSection = static_cast<unsigned>(m_sectionHeaders.size()) - 1;
    for (unsigned i = 1; i < m_sectionHeaders.size(); ++i) {
        ElfSectionHeader* header = m_sectionHeaders[i];
        ElfBlock* block = nullptr;
        unsigned offset = 0;
        if (blockAlreadyLoaded(header, block, offset)) {
            block->addSectionHeader(offset, header);
        } else if (header->sh_type != SHT_NOBITS) {
            if (std::uint64_t(header->sh_offset) + header->sh_size > length) {
                m_errorHandler->fatalError(true, "ERROR: Elf file is truncated in section %u\n", i);
                continue;
            }
            auto* data = new (std::nothrow) unsigned char[header->sh_size];
            if (!data) {
                m_errorHandler->fatalError(true, "ERROR: Failed to allocate memory for data section\n");
                continue;
            }
            seekTo(in, header->sh_offset);
            in.read(reinterpret_cast<char*>(data), header->sh_size);
            block = new ElfBlock(header->sh_size, data);
            block->addSectionHeader(0, header);
            addBlock(block);
        }

        switch (header->sh_type) {
        case SHT_PROGBITS:
        case SHT_NOTE:
        case SHT_NOBITS:
        case SHT_INFO:
        case SHT_EXPR:
        case SHT_NETINFO:
            break;
        case SHT_SYMTAB:
            if (m_symbolTable) {
                m_errorHandler->fatalError(true, "ERROR: Only one symbol table is supported\n");
                break;
            }
            seekTo(in, header->sh_offset);
            m_symbolTable = new ElfSymbolTable(this, in, header);
            m_symbolSection = i;
            break;
        case SHT_STRTAB:
            if (m_strings) {
                m_errorHandler->fatalError(true, "ERROR: Only one string table is supported\n");
                break;
            }
            seekTo(in, header->sh_offset);
            m_strings = new ElfStrings(m_errorHandler, in, header);
            m_stringSection = i;
            break;
        case SHT_RELA:
        case SHT_REL: {
            if (!block)
                break;
            m_relocationTables.emplace_back(block, header);
            m_relocationHeaders.push_back(header);
            if (header->sh_info > lastSection)
                m_errorHandler->fatalError(true, "ERROR: Invalid sh_info %d for section %d\n",
                                           static_cast<int>(header->sh_info), static_cast<int>(i));
            else
                m_sectionHeaders[header->sh_info]->addRelocations(&m_relocationTables.back());
            break;
        }
        case SHT_GROUP:
            seekTo(in, header->sh_offset);
            m_groups.addGroup(new ElfGroup(m_errorHandler, in, header));
            break;
        default:
            m_errorHandler->fatalError(true, "ERROR: Unsupported section type %d in section %d\n",
                                       static_cast<int>(header->sh_type), static_cast<int>(i));
            break;
        }
    }
}

void ElfHandler::finishLoading()
{
    // The model stays consistent whatever the input was: the header counts what was read, entry 0
    // is the null section, and both tables exist.
    if (m_sectionHeaders.empty())
        m_sectionHeaders.push_back(new ElfSectionHeader(0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    m_header->e_phnum = static_cast<Elf32_Half>(m_programHeaders.size());
    m_header->e_shnum = static_cast<Elf32_Half>(m_sectionHeaders.size());
    m_hasSymbolSections = m_symbolTable && m_strings;
    if (!m_strings)
        m_strings = new ElfStrings(m_errorHandler);
    if (!m_symbolTable) {
        ElfString* nullString = m_strings->add("");
        assert(nullString != __null);
        m_symbolTable = new ElfSymbolTable(this, nullString);
    } else {
        m_symbolTable->updateIndex();
    }
    m_groups.postProcess(this);
}

} // namespace vorp
