#pragma once

#include "elf/ElfGroupList.h"
#include "elf/ElfRelocationTable.h"
#include "elf/ElfTypes.h"

#include <cstdio>
#include <istream>
#include <list>
#include <set>
#include <string>
#include <functional>
#include <vector>

namespace vorp {

class ElfBlock;
class ElfHeader;
class ElfProgramHeader;
class ElfSectionHeader;
class ElfString;
class ElfStrings;
class ElfSymbol;
class ElfSymbolTable;
class ErrorHandler;

// An in-memory ELF32 little-endian file: header, program and section headers, data blocks, one
// symbol table and one string table (shared by section and symbol names), relocation tables and
// groups. Sections and symbols are added one at a time; file offsets are worked out only when the
// file is written. Blocks are laid out back to back with no padding: sh_addralign never moves a
// file offset. A model is written once.
class ElfHandler {
public:
    static constexpr unsigned char ET_REL = 1;
    static constexpr unsigned char ET_EXEC = 2;

    static constexpr Elf32_Word PT_LOAD = 1;

    static constexpr Elf32_Word SHT_NULL = 0;
    static constexpr Elf32_Word SHT_PROGBITS = 1;
    static constexpr Elf32_Word SHT_SYMTAB = 2;
    static constexpr Elf32_Word SHT_STRTAB = 3;
    static constexpr Elf32_Word SHT_RELA = 4;
    static constexpr Elf32_Word SHT_NOTE = 7;
    static constexpr Elf32_Word SHT_NOBITS = 8;
    static constexpr Elf32_Word SHT_REL = 9;
    static constexpr Elf32_Word SHT_GROUP = 17;
    // This object format's own section types, directly above SHT_SYMTAB_SHNDX (18).
    static constexpr Elf32_Word SHT_INFO = 19;
    static constexpr Elf32_Word SHT_EXPR = 20;
    static constexpr Elf32_Word SHT_NETINFO = 21;
    // Section numbers from here up are reserved, so a file holds at most this many sections.
    static constexpr unsigned SHN_LORESERVE = 0xff00;

    // Section flags; the last two are this target's own.
    static constexpr Elf32_Word SHF_WRITE = 0x1;
    static constexpr Elf32_Word SHF_ALLOC = 0x2;
    static constexpr Elf32_Word SHF_EXECINSTR = 0x4;
    static constexpr Elf32_Word SHF_MERGE = 0x10;
    static constexpr Elf32_Word SHF_STRINGS = 0x20;
    static constexpr Elf32_Word SHF_DP_SECTION = 0x10000000;
    static constexpr Elf32_Word SHF_CP_SECTION = 0x20000000;

    static constexpr Elf32_Half SHN_UNDEF = 0;
    static constexpr Elf32_Half SHN_ABS = 0xFFF1;
    static constexpr Elf32_Half SHN_COMMON = 0xFFF2;

    static constexpr unsigned char STB_LOCAL = 0;
    static constexpr unsigned char STB_GLOBAL = 1;
    static constexpr unsigned char STB_WEAK = 2;

    static constexpr unsigned char STT_NOTYPE = 0;
    static constexpr unsigned char STT_OBJECT = 1;
    static constexpr unsigned char STT_FUNC = 2;
    static constexpr unsigned char STT_SECTION = 3;
    static constexpr unsigned char STT_FILE = 4;

    static constexpr Elf32_Word GRP_COMDAT = 1;

    // The vendor name of every note record.
    static constexpr const char* NOTE_VENDOR = "TELK";

    // A loadable segment with file contents, as getProgramSegments() lists them.
    struct Segment {
        Elf32_Addr address;
        unsigned fileSize;
        const unsigned char* data;
    };

    // A new, empty file of type 1 (relocatable) or 2 (executable).
    ElfHandler(ErrorHandler* errorHandler, unsigned char type);
    // Loads a file.
    ElfHandler(ErrorHandler* errorHandler, const char* fileName);
    ElfHandler(ErrorHandler* errorHandler, std::istream& in);
    ElfHandler(const ElfHandler&) = delete;
    ElfHandler& operator=(const ElfHandler&) = delete;
    virtual ~ElfHandler();

    // Adding sections; each returns the new section's number. `data` passes into the model, which
    // releases it with delete[]: allocate it as an unsigned char array, also when it is empty.
    unsigned addProgbitsSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                                Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    // A section inside the block of segment `segmentNo`, at `offset` in it.
    unsigned addProgbitsSection(Elf32_Addr address, unsigned numBytes, unsigned segmentNo, unsigned offset,
                                const char* name, Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    // Header only; sh_offset stays 0.
    unsigned addNobitsSection(Elf32_Addr address, unsigned numBytes, const char* name, Elf32_Word flags,
                              Elf32_Word alignment, Elf32_Word entrySize);
    // Header only, placed in the memory tail of segment `segmentNo`.
    unsigned addNobitsSection(Elf32_Addr address, unsigned numBytes, unsigned segmentNo, unsigned offset,
                              const char* name, Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    unsigned addNetinfoSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                               Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    unsigned addInfoSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                            Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    unsigned addExprSection(Elf32_Addr address, unsigned numBytes, unsigned char* data, const char* name,
                            Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    // One note record with the vendor "TELK"; `data` is copied.
    unsigned addNoteSection(const char* name, Elf32_Word noteType, const void* data, unsigned length);
    // A ".group" section of `size` bytes: the flags word, then member section numbers. Takes
    // ownership of `data`. sh_info (the signature symbol) is the caller's to set.
    unsigned addGroupSection(unsigned size, unsigned char* data);
    // A PT_LOAD segment with a block of `fileBytes`; returns the program header's number.
    unsigned addSegment(Elf32_Addr address, unsigned fileBytes, unsigned memBytes, unsigned char* data,
                        Elf32_Word flags, Elf32_Word alignment);
    // Encodes `table` (with addends) into a ".rela" section for section `sectionNo`. Returns the
    // new section's number.
    unsigned addRelocations(unsigned sectionNo, ElfRelocationTable* table);
    // A new empty table that lives as long as the model.
    ElfRelocationTable* newRelocationTable();

    // Adding symbols; each returns the symbol's number. Binding is STB_LOCAL, STB_GLOBAL or STB_WEAK.
    unsigned addSymbol(const char* name, Elf32_Addr value, Elf32_Half section, unsigned char binding,
                       unsigned char type, Elf32_Word size, const char* unused = nullptr);
    unsigned addAbsoluteSymbol(const char* name, Elf32_Addr value, unsigned char binding, unsigned char type,
                               Elf32_Word size, const char* unused = nullptr);
    unsigned addCommonSymbol(const char* name, Elf32_Word size, Elf32_Word alignment, unsigned char binding,
                             unsigned char type, const char* unused = nullptr);
    unsigned addUndefinedSymbol(const char* name, unsigned char binding, unsigned char type, Elf32_Word size,
                                const char* unused = nullptr);

    // Queries.
    ElfSymbolTable* getSymbolTable() const { return m_symbolTable; }
    ElfStrings* getStrings() const { return m_strings; }
    ElfHeader* getHeader() const { return m_header; }
    const std::vector<ElfSectionHeader*>& getSectionHeaders() const { return m_sectionHeaders; }
    const std::vector<ElfProgramHeader*>& getProgramHeaders() const { return m_programHeaders; }
    const std::vector<ElfBlock*>& getBlocks() const { return m_blocks; }
    const ElfGroupList& getGroups() const { return m_groups; }
    // Null past the end.
    ElfSectionHeader* getSectionHeader(unsigned sectionIndex) const;
    Elf32_Addr getEntryPoint() const;
    unsigned getType() const;
    Elf32_Word getSectionSize(unsigned sectionNo) const;
    ElfString* findString(const char* name) const;
    ElfString* addString(const char* name);
    // Points into the string table's running copy; good until the next name is added.
    const char* getStringsEntry(unsigned offset) const;
    unsigned numSymbols() const;
    std::string getSymbolName(unsigned index) const;
    Elf32_Addr getSymbolValue(unsigned index) const;
    Elf32_Word getSymbolSize(unsigned index) const;
    unsigned char getSymbolInfo(unsigned index) const;
    Elf32_Half getSymbolSectionIndex(unsigned index) const;
    // True for global and weak symbols.
    bool isSymbolGlobal(unsigned index) const;
    bool lookupSymbolValue(const char* name, unsigned* value) const;
    // Reports symbols whose section index names no section.
    void check() const;

    // Section data.
    void writeSectionData(unsigned sectionNo, unsigned char* out) const;
    // Word `index` is counted from the start of the section's block, not of the section.
    void modifySectionData(unsigned sectionNo, unsigned index, Elf32_Word value);
    void contractSectionData(unsigned sectionNo, unsigned offset, unsigned bytes);
    // Opens `bytes` at `offset` inside the block, which must already have room, and fills from
    // offset - extra to offset + bytes - 1 with `pattern`, working down from the top.
    void expandSectionData(unsigned sectionNo, unsigned offset, unsigned bytes, unsigned ignored, Elf32_Word pattern,
                           unsigned extra);
    void adjustRelocationOffsets(Elf32_Addr offset, int delta, unsigned sectionNo);
    void substituteRelocationReferences(Elf32_Word oldSymbol, Elf32_Word newSymbol);
    void getReferencedSymbols(std::set<ElfSymbol*>& symbols, unsigned sectionNo) const;
    void getReferencedSymbols(std::set<ElfSymbol*>& symbols, unsigned sectionNo, Elf32_Addr begin,
                              Elf32_Addr end) const;
    void getReferencedSymbols(std::set<ElfSymbol*>& symbols, const ElfSymbol* topSym, const ElfSymbol* botSym) const;
    std::vector<Segment> getProgramSegments() const;

    ElfBlock* findBlock(const ElfProgramHeader* phdr) const;
    ElfBlock* findBlock(const ElfSectionHeader* header, unsigned& offset) const;

    // Lays out and writes the file, adding ".symtab" and ".strtab". False if it couldn't be written.
    bool writeToFile(const char* fileName);
    // The same into an open stream; false at the first failed write, with errno telling why.
    bool write(std::FILE* out);
    // The same into memory.
    void write(std::vector<std::uint8_t>& out);
    // The same through `put(data, size)`, which says whether it could.
    bool write(const std::function<bool(const void*, std::size_t)>& put);
    // The bytes the last write() put out.
    std::uint64_t bytesWritten() const { return m_bytesWritten; }
    void display(FILE* out = stdout) const;

private:
    void createEmpty(unsigned char type);
    void releaseAll();

    unsigned addDataSection(Elf32_Word type, Elf32_Addr address, unsigned numBytes, unsigned char* data,
                            const char* name, Elf32_Word flags, Elf32_Word alignment, Elf32_Word entrySize);
    unsigned addSectionHeader(ElfSectionHeader* header);
    unsigned addProgramHeader(ElfProgramHeader* header);
    unsigned addRelocationHeader(ElfSectionHeader* header);
    void addBlock(ElfBlock* block);
    unsigned addSymbolTable(unsigned offset);
    unsigned addStringTable(unsigned offset);
    void updateRelocationSymbolTableLinks(unsigned symbolTableSection);
    void refreshLoadedSymbolSections();
    void setElfAddresses();

    void readFileStream(std::istream& in);
    bool readContents(std::istream& in);
    void readSections(std::istream& in, std::uint64_t length);
    void finishLoading();
    bool blockAlreadyLoaded(const ElfSectionHeader* header, ElfBlock*& block, unsigned& offset) const;

    ElfHeader* m_header = nullptr;
    std::vector<ElfProgramHeader*> m_programHeaders;
    std::vector<ElfSectionHeader*> m_sectionHeaders;
    std::vector<ElfSectionHeader*> m_relocationHeaders;
    std::vector<ElfBlock*> m_blocks;
    std::list<ElfRelocationTable> m_relocationTables;
    ElfStrings* m_strings = nullptr;
    ElfSymbolTable* m_symbolTable = nullptr;
    ElfGroupList m_groups;
    bool m_hasSymbolSections = false;
    ErrorHandler* m_errorHandler;
    // The loaded ".symtab" and ".strtab", 0 for a new file.
    unsigned m_symbolSection = 0;
    unsigned m_stringSection = 0;
    std::uint64_t m_bytesWritten = 0;

    // Writes the file through `put(data, size)`, which says whether it could, after telling
    // `reserve` how many bytes will come.
    template <typename Reserve, typename Put>
    bool writeWith(Reserve reserve, Put put);
};

} // namespace vorp
