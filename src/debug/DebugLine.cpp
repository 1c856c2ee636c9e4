#include "debug/DebugLine.h"

#include "debug/DataWriter.h"
#include "debug/DebugFrame.h"
#include "diag/VorpErrorHandler.h"
#include "model/VormAssembler.h"

#include <cassert>

namespace vorp {

void DebugLine::addFile(unsigned index, const std::string& name, const Location& location)
{
    if (index == 0) {
        m_errorHandler->vorpError(location, AssErrorCodes::FILENAME_INDEX, "Invalid filename index.");
        return;
    }
    std::string& slot = m_files[index];
    if (!slot.empty() && slot != name)
        m_errorHandler->vorpError(location, AssErrorCodes::SOURCE_FILENAME, "Filename index is not unique.");
    slot = name;
}

std::vector<std::string> DebugLine::getFiles() const
{
    std::vector<std::string> files;
    for (const auto& [index, file] : m_files) {
        files.resize(index - 1);
        files.push_back(file);
    }
    return files;
}

void DebugLine::addEntry(const char* label, unsigned file, unsigned line, unsigned column, bool isStmt,
                         bool basicBlock, bool endSequence, bool prologueEnd, bool epilogueBegin, unsigned isa,
                         const std::string& ccName)
{
    m_rows.push_back(
        DebugLineRow{label, file, line, column, isStmt, basicBlock, endSequence, prologueEnd, epilogueBegin, isa, ccName});
}

void DebugLine::endSequence(const char* label)
{
    assert(!m_rows.empty());
    DebugLineRow row = m_rows.back();
    row.address = label;
    row.endSequence = true;
    row.basicBlock = false;
    row.prologueEnd = false;
    row.epilogueBegin = false;
    m_rows.push_back(row);
}

void DebugLine::validate()
{
    const unsigned numFiles = m_files.empty() ? 0 : m_files.rbegin()->first;
    bool contiguous = m_files.size() == numFiles;
    for (const auto& file : m_files)
        contiguous = contiguous && !file.second.empty();
    if (!contiguous) {
        m_errorHandler->vorpError(NoLocation(), AssErrorCodes::LOC_DIRECTIVE,
                                  "File indicies for .file directive are not contiguous.");
        return;
    }
    for (const DebugLineRow& row : m_rows) {
        if (row.file > numFiles)
            m_errorHandler->vorpError(NoLocation(), AssErrorCodes::LOC_DIRECTIVE, "Invalid file index in .loc directive.");
    }
    if (!m_rows.empty() && !m_rows.back().endSequence)
        endSequence(m_rows.back().address.c_str());
}

namespace {

enum : unsigned char {
    DW_LNS_copy = 1,
    DW_LNS_advance_line = 3,
    DW_LNS_set_file = 4,
    DW_LNS_negate_stmt = 6,
    DW_LNS_set_basic_block = 7,
    DW_LNS_set_prologue_end = 10,
    DW_LNS_set_epilogue_begin = 11,
    DW_LNE_end_sequence = 1,
    DW_LNE_set_address = 2,
};

constexpr int lineBase = -100;
constexpr int lineRange = 243;
constexpr int opcodeBase = 13;

} // namespace

void DebugLine::encode(VormAssembler& assembler, bool fromLines)
{
    validate();
    DataWriter writer(assembler, assembler.addSection(".debug_line", "", "progbits", 0, "", false));
    if (fromLines)
        writer.emitLabel(".Ldebug_line_begin");
    writer.emitDifference(".Ldebug_line_end", ".Ldebug_line_version");
    writer.emitLabel(".Ldebug_line_version");
    writer.emitU16(3);
    writeHeader(writer);
    writeLineNumberProgram(writer);
    writer.emitLabel(".Ldebug_line_end");
}

void DebugLine::writeHeader(DataWriter& writer) const
{
    writer.emitDifference(".Ldebug_line_header_end", ".Ldebug_line_header_begin");
    writer.emitLabel(".Ldebug_line_header_begin");
    writer.emitU8(1); // minimum_instruction_length
    writer.emitU8(1); // default_is_stmt
    writer.emitU8(static_cast<unsigned char>(lineBase));
    writer.emitU8(static_cast<unsigned char>(lineRange));
    writer.emitU8(opcodeBase);
    for (unsigned char length : {0, 1, 1, 1, 1, 0, 0, 0, 1, 0, 0, 1})
        writer.emitU8(length);
    writer.emitU8(0); // no include directories
    for (const auto& [index, file] : m_files) {
        writer.emitString(file);
        writer.emitUleb128(0); // directory
        writer.emitUleb128(0); // time
        writer.emitUleb128(0); // length
    }
    writer.emitU8(0);
    writer.emitLabel(".Ldebug_line_header_end");
}

void DebugLine::resetState(DebugLineRow& state)
{
    state.address.clear();
    state.file = 1;
    state.line = 1;
    state.column = 0;
    state.isStmt = true;
    state.basicBlock = false;
    state.endSequence = false;
    state.prologueEnd = false;
    state.epilogueBegin = false;
    state.isa = 0;
}

void DebugLine::writeLineNumberProgram(DataWriter& writer) const
{
    DebugLineRow state;
    resetState(state);
    for (const DebugLineRow& row : m_rows)
        writeLineNumberEntry(writer, state, row);
    if (!m_rows.empty() && !m_rows.back().ccName.empty())
        writer.emitCCBottom();
}

void DebugLine::writeLineNumberEntry(DataWriter& writer, DebugLineRow& state, const DebugLineRow& row) const
{
    if (row.ccName != state.ccName) {
        if (!state.ccName.empty())
            writer.emitCCBottom();
        if (!row.ccName.empty())
            writer.emitCCTop(row.ccName + ".line." + std::to_string(DebugFrame::nextCCTopNumber(writer.getAssembler())), row.ccName);
        state.ccName = row.ccName;
    }
    if (row.file != state.file) {
        writer.emitU8(DW_LNS_set_file);
        writer.emitUleb128(row.file);
        state.file = row.file;
    }
    if (row.isStmt != state.isStmt) {
        writer.emitU8(DW_LNS_negate_stmt);
        state.isStmt = row.isStmt;
    }
    if (row.basicBlock)
        writer.emitU8(DW_LNS_set_basic_block);
    if (row.prologueEnd)
        writer.emitU8(DW_LNS_set_prologue_end);
    if (row.epilogueBegin)
        writer.emitU8(DW_LNS_set_epilogue_begin);
    if (row.address != state.address) {
        writer.emitU8(0);
        writer.emitUleb128(5);
        writer.emitU8(DW_LNE_set_address);
        writer.emitReference(row.address);
        state.address = row.address;
    }
    if (row.line != state.line) {
        const int delta = static_cast<int>(row.line - state.line);
        if (!row.endSequence && delta >= lineBase && delta <= lineBase + lineRange - 1) {
            // A special opcode that moves the line only: the address is always set, never advanced.
            writer.emitU8(static_cast<unsigned char>(delta - lineBase + opcodeBase));
            state.basicBlock = false;
            state.prologueEnd = false;
            state.epilogueBegin = false;
            state.line = row.line;
            return;
        }
        writer.emitU8(DW_LNS_advance_line);
        writer.emitSleb128(delta);
        state.line = row.line;
    }
    if (row.endSequence) {
        writer.emitU8(0);
        writer.emitUleb128(1);
        writer.emitU8(DW_LNE_end_sequence);
        resetState(state);
        return;
    }
    writer.emitU8(DW_LNS_copy);
    state.basicBlock = false;
    state.prologueEnd = false;
    state.epilogueBegin = false;
}

} // namespace vorp
