#include "elf/ElfSymbolTable.h"

#include "diag/ErrorHandler.h"
#include "elf/ElfHandler.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfString.h"
#include "elf/ElfSymbol.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

namespace vorp {

ElfSymbolTable::ElfSymbolTable(ElfHandler* elfHandler, ElfString* nullName)
    : m_elfHandler(elfHandler)
{
    // The null symbol is not entered in the maps: it is found only by the linear searches.
    m_symbols.push_back(new ElfSymbol(nullName->getOffset(), 0, 0, 0, 0, 0));
}

ElfSymbolTable::ElfSymbolTable(ElfHandler* elfHandler, std::istream& in, const ElfSectionHeader* header)
    : m_elfHandler(elfHandler)
{
    const unsigned count = header->sh_size >> 4;
    unsigned char record[ELF32_SYM_BYTES];
    for (unsigned i = 0; i < count; ++i) {
        if (!in.read(reinterpret_cast<char*>(record), ELF32_SYM_BYTES))
            break;
        m_symbols.push_back(new ElfSymbol(record));
    }
}

ElfSymbolTable::~ElfSymbolTable()
{
    for (ElfSymbol* symbol : m_symbols)
        delete symbol;
}

unsigned ElfSymbolTable::add(ElfString* name, Elf32_Addr value, Elf32_Half section, unsigned char binding,
                             unsigned char type, Elf32_Word size)
{
    const unsigned num = numSymbols();
    ElfSymbol* symbol = new ElfSymbol(name->getOffset(), value, section, binding, type, size);
    m_symbols.push_back(symbol);
    m_nameIndex.emplace(name->getName(), num);
    m_symbolIndex.emplace(symbol, static_cast<int>(num));
    return num;
}

const char* ElfSymbolTable::nameOf(const ElfSymbol* symbol) const
{
    return m_elfHandler ? m_elfHandler->getStringsEntry(symbol->st_name) : nullptr;
}

ElfSymbol* ElfSymbolTable::find(const char* name) const
{
    auto found = m_nameIndex.find(name);
    if (found != m_nameIndex.end())
        return m_symbols[found->second];
    for (ElfSymbol* symbol : m_symbols) {
        const char* symbolName = nameOf(symbol);
        if (symbolName && std::strcmp(symbolName, name) == 0)
            return symbol;
    }
    return nullptr;
}

unsigned ElfSymbolTable::findNumByName(const char* name) const
{
    auto found = m_nameIndex.find(name);
    if (found != m_nameIndex.end())
        return found->second;
    for (unsigned i = 0; i < m_symbols.size(); ++i) {
        const char* symbolName = nameOf(m_symbols[i]);
        if (symbolName && std::strcmp(symbolName, name) == 0)
            return i;
    }
    return 0;
}

int ElfSymbolTable::find(const ElfSymbol* symbol) const
{
    auto found = m_symbolIndex.find(symbol);
    if (found != m_symbolIndex.end())
        return found->second;
    for (unsigned i = 0; i < m_symbols.size(); ++i) {
        if (m_symbols[i] == symbol)
            return static_cast<int>(i);
    }
    return -1;
}

ElfSymbol* ElfSymbolTable::findGlobal(const char* name) const
{
    for (ElfSymbol* symbol : m_symbols) {
        const char* symbolName = nameOf(symbol);
        if (symbol->getBinding() == 1 && symbolName && std::strcmp(symbolName, name) == 0)
            return symbol;
    }
    return nullptr;
}

ElfSymbol* ElfSymbolTable::getSymbol(unsigned symbolNum) const
{
    return symbolNum < m_symbols.size() ? m_symbols[symbolNum] : nullptr;
}

Elf32_Addr ElfSymbolTable::symbolValue(unsigned symbolNum) const
{
    assert(symbolNum < m_symbols.size());
    return m_symbols[symbolNum]->st_value;
}

Elf32_Word ElfSymbolTable::symbolSize(unsigned symbolNum) const
{
    assert(symbolNum < m_symbols.size());
    return m_symbols[symbolNum]->st_size;
}

unsigned char ElfSymbolTable::symbolInfo(unsigned symbolNum) const
{
    assert(symbolNum < m_symbols.size());
    return m_symbols[symbolNum]->st_info;
}

Elf32_Half ElfSymbolTable::symbolSectionIndex(unsigned symbolNum) const
{
    assert(symbolNum < m_symbols.size());
    return m_symbols[symbolNum]->st_shndx;
}

std::string ElfSymbolTable::symbolName(unsigned symbolNum) const
{
    assert(symbolNum < m_symbols.size());
    const char* name = nameOf(m_symbols[symbolNum]);
    return name ? std::string(name) : std::string();
}

unsigned char* ElfSymbolTable::createBuffer() const
{
    unsigned char* buffer = new unsigned char[numBytes()];
    for (unsigned i = 0; i < m_symbols.size(); ++i)
        m_symbols[i]->encode(buffer + ELF32_SYM_BYTES * i);
    return buffer;
}

void ElfSymbolTable::updateIndex()
{
    m_nameIndex.clear();
    m_symbolIndex.clear();
    for (unsigned i = 0; i < m_symbols.size(); ++i) {
        const char* name = nameOf(m_symbols[i]);
        if (name)
            m_nameIndex.emplace(name, i);
        m_symbolIndex.emplace(m_symbols[i], static_cast<int>(i));
    }
}

void ElfSymbolTable::check(ErrorHandler* errorHandler, unsigned short lastSection) const
{
    for (const ElfSymbol* symbol : m_symbols) {
        if (symbol->st_shndx > lastSection && symbol->st_shndx <= 0xFEFF) {
            const char* name = nameOf(symbol);
            errorHandler->fatalError(true, "Invalid section table index for symbol '%s'\n", name ? name : "");
        }
    }
}

void ElfSymbolTable::display(const ElfStrings* strings, FILE* out) const
{
    fprintf(out, "\nSymbols:");
    for (unsigned i = 0; i < m_symbols.size(); ++i) {
        fprintf(out, "%d: ", static_cast<int>(i));
        m_symbols[i]->display(strings, out);
    }
}

} // namespace vorp
