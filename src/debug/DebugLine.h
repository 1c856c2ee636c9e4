#pragma once

#include "diag/Location.h"

#include <map>
#include <string>
#include <vector>

namespace vorp {

class DataWriter;
class VormAssembler;
class VorpErrorHandler;

// One row of the line-number program. Rows never hold addresses: each names a label at its place.
struct DebugLineRow {
    std::string address;
    unsigned file = 1;
    unsigned line = 1;
    unsigned column = 0;
    bool isStmt = true;
    bool basicBlock = false;
    bool endSequence = false;
    bool prologueEnd = false;
    bool epilogueBegin = false;
    unsigned isa = 0;
    std::string ccName; // inside an elimination block: the row's own label
};

// The rows and files of ".debug_line", collected from .loc directives or from code lines.
class DebugLine {
public:
    explicit DebugLine(VorpErrorHandler* errorHandler) : m_errorHandler(errorHandler) {}

    // `.file N "NAME"`: index 0 is error 42; a different name for a used index is error 21 (the
    // new name is stored all the same).
    void addFile(unsigned index, const std::string& name, const Location& location);
    void addEntry(const char* label, unsigned file, unsigned line, unsigned column, bool isStmt, bool basicBlock,
                  bool endSequence, bool prologueEnd, bool epilogueBegin, unsigned isa, const std::string& ccName);
    // A copy of the last row at `label`, ending the sequence.
    void endSequence(const char* label);
    // Reports gaps in the files and rows naming files that don't exist (error 43), and ends an
    // open last sequence.
    void validate();
    // Writes ".debug_line" as a DWARF 3 line program. From lines, the section begins with the label
    // the generated compilation unit refers to.
    void encode(VormAssembler& assembler, bool fromLines);
    void writeHeader(DataWriter& writer) const;
    void writeLineNumberProgram(DataWriter& writer) const;
    void writeLineNumberEntry(DataWriter& writer, DebugLineRow& state, const DebugLineRow& row) const;
    static void resetState(DebugLineRow& state);

    // The file table by index from 1, a gap as an empty name.
    std::vector<std::string> getFiles() const;
    const std::vector<DebugLineRow>& getRows() const { return m_rows; }

private:
    // By index. Sparse: a `.file` may name any index, and a table with a gap is refused only
    // at the end, when all `.file` lines are in.
    std::map<unsigned, std::string> m_files;
    std::vector<DebugLineRow> m_rows;
    VorpErrorHandler* m_errorHandler;
};

} // namespace vorp
