#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <vector>

namespace vorp {

// The DWARF numbers this assembler writes or looks at.
enum DwarfTag : unsigned {
    DW_TAG_compile_unit = 0x11,
    DW_TAG_subprogram = 0x2e,
    DW_TAG_variable = 0x34,
};
enum DwarfAttribute : unsigned {
    DW_AT_location = 0x02,
    DW_AT_name = 0x03,
    DW_AT_stmt_list = 0x10,
    DW_AT_low_pc = 0x11,
    DW_AT_high_pc = 0x12,
    DW_AT_language = 0x13,
    DW_AT_comp_dir = 0x1b,
    DW_AT_producer = 0x25,
};
enum DwarfForm : unsigned {
    DW_FORM_addr = 1,
    DW_FORM_block2 = 3,
    DW_FORM_block4 = 4,
    DW_FORM_data2 = 5,
    DW_FORM_data4 = 6,
    DW_FORM_string = 8,
    DW_FORM_block = 9,
    DW_FORM_block1 = 10,
    DW_FORM_sdata = 13,
    DW_FORM_udata = 15,
    DW_FORM_ref1 = 17,
    DW_FORM_ref2 = 18,
    DW_FORM_ref4 = 19,
    DW_FORM_ref8 = 20,
    DW_FORM_ref_udata = 21,
};
enum : unsigned {
    DW_CHILDREN_no = 0,
    DW_OP_addr = 3,
    DW_LANG_Mips_Assembler = 0x8001,
};

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
