#pragma once

#include "elf/ElfTypes.h"

#include <cstdio>
#include <istream>
#include <map>
#include <string>
#include <vector>

namespace vorp {

class ElfHandler;
class ElfSectionHeader;
class ElfString;
class ElfStrings;
class ElfSymbol;
class ErrorHandler;

// The file's one symbol table, ".symtab". Symbols stand in the order in which they were added, with
// locals, globals and weak symbols mixed: nothing sorts them, and the header's sh_info stays 0, so a
// consumer walks the whole table.
class ElfSymbolTable {
public:
    // An empty table holding the null symbol, which is named by `nullName` (the empty string).
    ElfSymbolTable(ElfHandler* elfHandler, ElfString* nullName);
    // Reads sh_size / 16 records at the stream's position. The name maps are built by updateIndex().
    ElfSymbolTable(ElfHandler* elfHandler, std::istream& in, const ElfSectionHeader* header);
    ElfSymbolTable(const ElfSymbolTable&) = delete;
    ElfSymbolTable& operator=(const ElfSymbolTable&) = delete;
    virtual ~ElfSymbolTable();

    // Appends a symbol and returns its number. A second symbol of a known name is kept as well, but
    // look-ups by name keep finding the first.
    unsigned add(ElfString* name, Elf32_Addr value, Elf32_Half section, unsigned char binding, unsigned char type,
                 Elf32_Word size);

    ElfSymbol* find(const char* name) const;
    // 0 if there is none, which is also the null symbol's number.
    unsigned findNumByName(const char* name) const;
    // -1 if the symbol isn't in the table.
    int find(const ElfSymbol* symbol) const;
    // The first symbol of this name bound exactly STB_GLOBAL; weak ones don't count.
    ElfSymbol* findGlobal(const char* name) const;
    // Null past the end.
    ElfSymbol* getSymbol(unsigned symbolNum) const;
    const std::vector<ElfSymbol*>& getSymbols() const { return m_symbols; }

    Elf32_Addr symbolValue(unsigned symbolNum) const;
    Elf32_Word symbolSize(unsigned symbolNum) const;
    unsigned char symbolInfo(unsigned symbolNum) const;
    Elf32_Half symbolSectionIndex(unsigned symbolNum) const;
    // The symbol's name from the string table; empty if it can't be found there.
    std::string symbolName(unsigned symbolNum) const;

    unsigned numSymbols() const { return static_cast<unsigned>(m_symbols.size()); }
    unsigned numBytes() const { return ELF32_SYM_BYTES * numSymbols(); }
    // A new array of numBytes() bytes holding the records in table order; the caller owns it.
    unsigned char* createBuffer() const;

    void updateIndex();
    // Reports every symbol whose section index is neither a real section (up to `lastSection`) nor
    // one of the reserved indices from 0xFF00 upward.
    void check(ErrorHandler* errorHandler, unsigned short lastSection) const;

    void display(const ElfStrings* strings, FILE* out = stdout) const;

private:
    const char* nameOf(const ElfSymbol* symbol) const;

    std::vector<ElfSymbol*> m_symbols;
    ElfHandler* m_elfHandler;
    std::map<std::string, unsigned> m_nameIndex;
    std::map<const ElfSymbol*, int> m_symbolIndex;
};

} // namespace vorp
