#include "debug/DebugData.h"

#include "model/VormAlignDirectiveLine.h"
#include "model/VormAssembler.h"
#include "model/VormCCDirectiveLine.h"
#include "model/VormLabelLine.h"
#include "model/VormLine.h"
#include "model/VormLocDirectiveLine.h"

#include <algorithm>
#include <iterator>

namespace vorp {

void DebugData::emitDefaultDwarfSections(VormAssembler& assembler)
{
    m_debugInfo.setName(assembler.getOptions().sourcePath);
    m_debugInfo.setCompDir(assembler.getOptions().workingDir);
    m_debugInfo.setProducer("vorp");
    m_debugInfo.encode(assembler);
}

bool DebugData::shouldGenDwarfFromLoc(const VormAssembler& assembler)
{
    return assembler.isSection(".debug_info") && assembler.sectionIsEmpty(".debug_line");
}

bool DebugData::shouldGenDwarfFromLines(const VormAssembler& assembler)
{
    // "debug_line" without its dot, as it always was: a ".debug_line" of the input doesn't stop it.
    return assembler.getOptions().debug && !assembler.isSection(".debug_info") && !assembler.isSection("debug_line");
}

bool DebugData::addToDebugLine(VormAssembler& assembler, VormSection* section, LinePosition position, bool inCC)
{
    VormLine* line = *position;
    if (line->getType() != CODE_LINE)
        return false;
    const LineLocation location = line->getLocation();
    VormLabel* label = assembler.addUniqueLabel(section, position, location, line->getSchedule())->getLabel();
    const std::string file = location.getFile();
    auto found = m_fileNumbers.find(file);
    if (found == m_fileNumbers.end()) {
        found = m_fileNumbers.emplace(file, static_cast<std::uint32_t>(m_fileNumbers.size() + 1)).first;
        m_debugLine.addFile(found->second, file, NoLocation());
    }
    assembler.getLabels().ensureLabelName(label);
    m_debugLine.addEntry(label->getName(), found->second, location.getLine(), 0, true, false, false, false, false, 0,
                         inCC ? label->getName() : "");
    return true;
}

void DebugData::expandDirectives(VormAssembler& assembler, VormSection* section)
{
    LineList& lines = section->getLines();
    if (lines.empty())
        return;
    const bool fromLoc = shouldGenDwarfFromLoc(assembler);
    const bool fromLines = section->getName() == ".text" && shouldGenDwarfFromLines(assembler);
    const VormCCDirectiveLine* openTop = nullptr;
    std::uint32_t blockAlignment = 1;
    bool blockHasScheduled = false;
    LinePosition blockStart = lines.end();
    bool sequenceOpen = false;
    bool sawCode = false;

    auto newNamedLabel = [&assembler, section](LinePosition position, const LineLocation& location, bool schedule) {
        VormLabel* label = assembler.addUniqueLabel(section, position, location, schedule)->getLabel();
        assembler.getLabels().ensureLabelName(label);
        return label;
    };

    for (auto position = lines.begin(); position != lines.end(); ++position) {
        VormLine* line = *position;
        if (line->getSchedule())
            blockHasScheduled = true;
        switch (line->getType()) {
        case CODE_LINE:
            if (fromLines && addToDebugLine(assembler, section, position, openTop != nullptr))
                sawCode = sequenceOpen = true;
            break;
        case ALIGN_LINE:
            if (openTop)
                blockAlignment = std::max(blockAlignment, static_cast<VormAlignDirectiveLine*>(line)->getAlignment());
            break;
        case LOC_LINE:
            if (fromLoc) {
                auto* loc = static_cast<VormLocDirectiveLine*>(line);
                VormLabel* label = newNamedLabel(position, loc->getLocation(), loc->getSchedule());
                m_debugLine.addEntry(label->getName(), loc->getFile(), loc->getLine(), loc->getColumn(),
                                     loc->getIsStmt(), loc->getBasicBlock(), loc->getEndSequence(),
                                     loc->getPrologueEnd(), loc->getEpilogueBegin(), loc->getIsa(),
                                     openTop ? label->getName() : "");
                sequenceOpen = !loc->getEndSequence();
            }
            break;
        case CC_TOP_LINE:
            openTop = static_cast<VormCCDirectiveLine*>(line);
            blockAlignment = 1;
            blockHasScheduled = false;
            blockStart = std::next(position);
            break;
        case CC_BOTTOM_LINE:
            // The block must start aligned wherever the linker puts it.
            blockAlignment = std::max(blockAlignment, assembler.getDefaultAlignment(section, blockHasScheduled));
            if (blockAlignment > 1)
                assembler.addAlign(section, blockStart, blockAlignment, assembler.generatedLocation(), false);
            if (sequenceOpen) {
                // Every line sequence ends with its block. The block stays open for the walk until
                // the next cc_top: what follows still counts as inside.
                VormLabel* label = newNamedLabel(position, assembler.generatedLocation(), line->getSchedule());
                m_debugLine.endSequence(label->getName());
                sequenceOpen = false;
            } else {
                openTop = nullptr;
            }
            break;
        default:
            break;
        }
    }

    if (sequenceOpen) {
        VormLabel* label = newNamedLabel(lines.end(), assembler.generatedLocation(), false);
        m_debugLine.endSequence(label->getName());
    }
    if (sawCode) {
        const std::string low = ".L" + section->getName() + ".low_pc";
        const std::string high = ".L" + section->getName() + ".high_pc";
        assembler.addLabel(section, lines.begin(), newGeneratedToken(assembler.getIdStrings(), S_NAME, low.c_str()), false);
        assembler.addLabel(section, lines.end(), newGeneratedToken(assembler.getIdStrings(), S_NAME, high.c_str()), false);
        m_debugInfo.addRange(low, high);
    }
}

} // namespace vorp
