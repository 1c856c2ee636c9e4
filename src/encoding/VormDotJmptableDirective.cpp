#include "encoding/VormDotJmptableDirective.h"

#include "diag/VorpErrorHandler.h"
#include "isa/Encoder.h"
#include "encoding/CodeLines.h"
#include "encoding/VormCodeLine.h"
#include "encoding/VormJTTrampoline.h"
#include "model/VormAssembler.h"
#include "model/VormDirectiveLine.h"

#include <cassert>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace vorp {

void VormDotJmptableDirective::initialise(VormDirectiveLine* line, VormAssembler& assembler,
                                          VorpErrorHandler& errorHandler)
{
    VormSection* section = line->getSection();
    std::vector<VormCodeLine*> entries;
    for (unsigned i = 1; i < line->numTokens(); i += 2)
        entries.push_back(addBranch(assembler, section, line->getToken(i).text, line->getLineNum(), line->getFileName()));

    if (entries.size() > 32)
        errorHandler.vorpError(line->getLocation(), AssErrorCodes::JUMP_TABLE_SIZE,
                               "Too many labels in jump table directive.\n");

    // An entry that can't reach its target branches with the short forward form to the trampoline.
    const EncoderFormat* shortForward = nullptr;
    const Encoder* bu = assembler.findEncoder("bu", VormAssembler::SYNTAX_DEFAULT);
    for (unsigned i = 0; bu && i < bu->numFormats(); ++i) {
        if (bu->getFormat(i)->getName() == "BRFU_u6")
            shortForward = bu->getFormat(i);
    }
    assert(shortForward);

    char suffix[32];
    std::snprintf(suffix, sizeof(suffix), "_jmptable_0x%x", m_tableCounter);
    std::map<std::string, VormJTTrampoline*> trampolines; // one per target within this table
    for (VormCodeLine* entry : entries) {
        const std::string target = entry->getJumpTableEntryTarget();
        const std::string name = target + suffix;
        VormJTTrampoline*& trampoline = trampolines[target];
        if (!trampoline) {
            assembler.addLabel(
                section, newToken(assembler.getIdStrings(), S_NAME, name.c_str(), line->getLineNum(), line->getFileName()),
                false);
            trampoline = addJTTrampoline(
                assembler, section,
                newBranchTokenLine(assembler, target.c_str(), line->getLineNum(), line->getFileName()));
        }
        trampoline->addTrampolineUse(entry);
        entry->setJumpTableEntry(assembler.getIdStrings().idString(name), shortForward);
    }
    ++m_tableCounter;
}

} // namespace vorp
