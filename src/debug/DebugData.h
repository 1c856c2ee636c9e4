#pragma once

#include "debug/DebugFrame.h"
#include "debug/DebugInfo.h"
#include "debug/DebugLine.h"
#include "model/VormSection.h"

#include <cstdint>
#include <map>
#include <string>

namespace vorp {

class VormAssembler;
class VorpErrorHandler;

// The debug sections a run builds: the line program, the call frames and, with -g on plain
// assembly, the compilation unit.
class DebugData {
public:
    explicit DebugData(VorpErrorHandler* errorHandler) : m_debugLine(errorHandler) {}

    DebugLine& getDebugLine() { return m_debugLine; }
    DebugFrame& getDebugFrame() { return m_debugFrame; }
    DebugInfo& getDebugInfo() { return m_debugInfo; }

    // Line rows come from .loc when the compiler wrote its own ".debug_info" and no line table;
    // from every instruction of ".text" with -g on plain assembly.
    static bool shouldGenDwarfFromLoc(const VormAssembler& assembler);
    static bool shouldGenDwarfFromLines(const VormAssembler& assembler);
    static bool shouldGenDwarf(const VormAssembler& assembler)
    {
        return shouldGenDwarfFromLoc(assembler) || shouldGenDwarfFromLines(assembler);
    }

    // One walk over a section before sizes are known: a labelled row for each .loc (or each
    // instruction of ".text" with -g), the end of a sequence with every block, and the alignment
    // each elimination block must start with wherever the linker puts it.
    void expandDirectives(VormAssembler& assembler, VormSection* section);
    // The compilation unit for -g on plain assembly.
    void emitDefaultDwarfSections(VormAssembler& assembler);
    // The line program, once every section has been walked.
    void encodeLines(VormAssembler& assembler, bool fromLines) { m_debugLine.encode(assembler, fromLines); }

private:
    // A row for the code line at `position`, with a label in front of it; false for lines that get
    // none.
    bool addToDebugLine(VormAssembler& assembler, VormSection* section, LinePosition position, bool inCC);

    DebugLine m_debugLine;
    DebugFrame m_debugFrame;
    DebugInfo m_debugInfo;
    std::map<std::string, std::uint32_t> m_fileNumbers;
};

} // namespace vorp
