#include "debug/DwarfAbbrevTable.h"

namespace vorp {

DwarfAbbrevEntry* DwarfAbbrevTable::addEntry(unsigned code, unsigned tag, bool hasChildren)
{
    auto entry = std::make_unique<DwarfAbbrevEntry>();
    entry->code = code;
    entry->tag = tag;
    entry->hasChildren = hasChildren;
    DwarfAbbrevEntry* result = entry.get();
    if (m_entries.count(code))
        m_shadowed.push_back(std::move(entry));
    else
        m_entries.emplace(code, std::move(entry));
    return result;
}

const DwarfAbbrevEntry* DwarfAbbrevTable::find(unsigned code) const
{
    auto found = m_entries.find(code);
    return found == m_entries.end() ? nullptr : found->second.get();
}

void DwarfAbbrevAttribute::dump(std::ostream& out) const
{
    out << "  " << getDwarfAttributeName(name) << " " << getDwarfFormName(form) << "\n";
}

void DwarfAbbrevEntry::dump(std::ostream& out) const
{
    out << code << ": " << getDwarfTagName(tag) << (hasChildren ? " children\n" : "\n");
    for (const DwarfAbbrevAttribute& attribute : attributes)
        attribute.dump(out);
}

void DwarfAbbrevTable::dump(std::ostream& out) const
{
    for (const auto& [code, entry] : m_entries)
        entry->dump(out);
}

const char* getDwarfTagName(unsigned tag)
{
    switch (tag) {
    case 0x01: return "DW_TAG_array_type";
    case 0x04: return "DW_TAG_enumeration_type";
    case 0x05: return "DW_TAG_formal_parameter";
    case 0x0b: return "DW_TAG_lexical_block";
    case 0x0d: return "DW_TAG_member";
    case 0x0f: return "DW_TAG_pointer_type";
    case 0x11: return "DW_TAG_compile_unit";
    case 0x13: return "DW_TAG_structure_type";
    case 0x15: return "DW_TAG_subroutine_type";
    case 0x16: return "DW_TAG_typedef";
    case 0x21: return "DW_TAG_subrange_type";
    case 0x24: return "DW_TAG_base_type";
    case 0x26: return "DW_TAG_const_type";
    case 0x2e: return "DW_TAG_subprogram";
    case 0x34: return "DW_TAG_variable";
    case 0x35: return "DW_TAG_volatile_type";
    default: return "DW_TAG_unknown";
    }
}

const char* getDwarfAttributeName(unsigned name)
{
    switch (name) {
    case 0x01: return "DW_AT_sibling";
    case 0x02: return "DW_AT_location";
    case 0x03: return "DW_AT_name";
    case 0x0b: return "DW_AT_byte_size";
    case 0x10: return "DW_AT_stmt_list";
    case 0x11: return "DW_AT_low_pc";
    case 0x12: return "DW_AT_high_pc";
    case 0x13: return "DW_AT_language";
    case 0x1b: return "DW_AT_comp_dir";
    case 0x25: return "DW_AT_producer";
    case 0x27: return "DW_AT_prototyped";
    case 0x34: return "DW_AT_artificial";
    case 0x3a: return "DW_AT_decl_file";
    case 0x3b: return "DW_AT_decl_line";
    case 0x3c: return "DW_AT_declaration";
    case 0x3e: return "DW_AT_encoding";
    case 0x3f: return "DW_AT_external";
    case 0x40: return "DW_AT_frame_base";
    case 0x49: return "DW_AT_type";
    default: return "DW_AT_unknown";
    }
}

namespace {

struct FormInfo {
    const char* name;
    unsigned size; // 0: none
};

const FormInfo p_forms[] = {
    {"DW_FORM_addr", 4},     {"DW_FORM_unknown", 0},  {"DW_FORM_block2", 0},    {"DW_FORM_block4", 0},
    {"DW_FORM_data2", 2},    {"DW_FORM_data4", 4},    {"DW_FORM_data8", 8},     {"DW_FORM_string", 0},
    {"DW_FORM_block", 0},    {"DW_FORM_block1", 0},   {"DW_FORM_data1", 1},     {"DW_FORM_flag", 1},
    {"DW_FORM_sdata", 0},    {"DW_FORM_strp", 4},     {"DW_FORM_udata", 0},     {"DW_FORM_ref_addr", 4},
    {"DW_FORM_ref1", 1},     {"DW_FORM_ref2", 2},     {"DW_FORM_ref4", 4},      {"DW_FORM_ref8", 8},
    {"DW_FORM_ref_udata", 0}, {"DW_FORM_indirect", 0},
};

} // namespace

const char* getDwarfFormName(unsigned form)
{
    return form >= 1 && form <= 22 ? p_forms[form - 1].name : "DW_FORM_unknown";
}

bool getDwarfFormSize(unsigned form, unsigned& size)
{
    if (form < 1 || form > 22) {
        size = 0;
        return false;
    }
    // Form 2 has a size of 0 in the table, which counts as none but is still given out.
    if (form == 2) {
        size = 0;
        return false;
    }
    const unsigned known = p_forms[form - 1].size;
    if (known == 0)
        return false;
    size = known;
    return true;
}

} // namespace vorp
