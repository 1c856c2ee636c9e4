#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <vector>

namespace vorp {

struct DwarfAbbrevAttribute {
    unsigned name;
    unsigned form;

    void dump(std::ostream& out) const;
};

struct DwarfAbbrevEntry {
    unsigned code = 0;
    unsigned tag = 0;
    bool hasChildren = false;
    std::vector<DwarfAbbrevAttribute> attributes;

    void addAttribute(unsigned name, unsigned form) { attributes.push_back({name, form}); }
    void dump(std::ostream& out) const;
};

// The abbreviations of ".debug_abbrev", by code.
class DwarfAbbrevTable {
public:
    // A new entry for the caller to fill. A code seen before keeps its first entry; the new one is
    // filled and never found.
    DwarfAbbrevEntry* addEntry(unsigned code, unsigned tag, bool hasChildren);
    const DwarfAbbrevEntry* find(unsigned code) const;
    void dump(std::ostream& out) const;

private:
    std::map<unsigned, std::unique_ptr<DwarfAbbrevEntry>> m_entries;
    std::vector<std::unique_ptr<DwarfAbbrevEntry>> m_shadowed;
};

// DWARF names, for dumps.
const char* getDwarfTagName(unsigned tag);
const char* getDwarfAttributeName(unsigned name);
const char* getDwarfFormName(unsigned form);
// The fixed size of a form; false when it has none (or it is 0), and `size` is then left alone
// except outside the known forms, where it becomes 0.
bool getDwarfFormSize(unsigned form, unsigned& size);

} // namespace vorp
