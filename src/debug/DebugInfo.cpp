#include "debug/DebugInfo.h"

#include "debug/DataWriter.h"
#include "debug/DwarfAbbrevTable.h"
#include "model/VormAssembler.h"

#include <cassert>

namespace vorp {

namespace {

VormSection* addDebugSection(VormAssembler& assembler, const char* name)
{
    return assembler.addSection(name, "", "progbits", 0, "", false);
}

} // namespace

bool DebugInfo::hasRange() const
{
    if (m_ranges.size() > 1)
        assert(0 && "Multiple ranges not supported");
    return m_ranges.size() == 1;
}

void DebugInfo::encode(VormAssembler& assembler)
{
    encodeDebugAbbrev(assembler);
    encodeDebugInfo(assembler);
}

void DebugInfo::encodeDebugAbbrev(VormAssembler& assembler)
{
    DataWriter writer(assembler, addDebugSection(assembler, ".debug_abbrev"));
    auto attribute = [&writer](unsigned name, unsigned form) {
        writer.emitUleb128(name);
        writer.emitUleb128(form);
    };
    writer.emitLabel(".Ldebug_abbrev_begin");
    writer.emitUleb128(1);
    writer.emitUleb128(DW_TAG_compile_unit);
    writer.emitU8(DW_CHILDREN_no);
    attribute(DW_AT_stmt_list, DW_FORM_data4);
    if (hasRange()) {
        attribute(DW_AT_low_pc, DW_FORM_addr);
        attribute(DW_AT_high_pc, DW_FORM_addr);
    }
    attribute(DW_AT_name, DW_FORM_string);
    attribute(DW_AT_comp_dir, DW_FORM_string);
    attribute(DW_AT_producer, DW_FORM_string);
    attribute(DW_AT_language, DW_FORM_data2);
    attribute(0, 0);
    writer.emitUleb128(0);
}

void DebugInfo::encodeDebugInfo(VormAssembler& assembler)
{
    DataWriter writer(assembler, addDebugSection(assembler, ".debug_info"));
    writer.emitDifference(".Ldebug_info_end", ".Ldebug_info_version");
    writer.emitLabel(".Ldebug_info_version");
    writer.emitU16(3);
    writer.emitReference(".Ldebug_abbrev_begin");
    writer.emitU8(4);
    writer.emitUleb128(1);
    // The offset into the line table is a relocated reference, although its form says data4.
    writer.emitReference(".Ldebug_line_begin");
    if (hasRange()) {
        writer.emitReference(m_ranges.front().first);
        writer.emitReference(m_ranges.front().second);
    }
    writer.emitString(m_name);
    writer.emitString(m_compDir);
    writer.emitString(m_producer);
    writer.emitU16(static_cast<unsigned short>(DW_LANG_Mips_Assembler));
    writer.emitLabel(".Ldebug_info_end");
}

} // namespace vorp
