#include "debug/DebugInfoRewriter.h"

#include "debug/DebugInfoWalker.h"
#include "debug/DwarfAbbrevTable.h"
#include "diag/VorpErrorHandler.h"
#include "frontend/Operand.h"
#include "debug/EliminationBlocks.h"
#include "model/VormAssembler.h"
#include "model/VormDataLine.h"
#include "model/VormLabelLine.h"

#include <algorithm>

namespace vorp {

namespace {

bool hasCCTop(const VormSection* section)
{
    const LineList& lines = section->getLines();
    return std::any_of(lines.begin(), lines.end(), [](const VormLine* line) { return line->getType() == CC_TOP_LINE; });
}

// The abbreviations as far as they can be read; a failed read ends the table quietly.
void readAbbrevs(VormAssembler& assembler, VormSection* section, DwarfAbbrevTable& table)
{
    DataReader reader(assembler, section);
    std::uint32_t code = reader.readULEB128();
    while (code != 0 && !reader.hasError()) {
        const std::uint32_t tag = reader.readULEB128();
        const bool hasChildren = reader.readU8() != 0;
        DwarfAbbrevEntry* entry = table.addEntry(code, tag, hasChildren);
        for (;;) {
            const std::uint32_t name = reader.readULEB128();
            if (name == 0 || reader.hasError())
                break;
            entry->addAttribute(name, reader.readULEB128());
        }
        reader.readULEB128(); // the form that closes the list
        code = reader.readULEB128();
    }
}

} // namespace

void DebugInfoRewriter::warning(const char* format, const char* argument)
{
    if (m_warn)
        m_assembler.getErrorHandler().vorpWarning(NoLocation(), AssErrorCodes::DEBUG_REWRITE, format, argument);
}

void DebugInfoRewriter::rewriteDwarf()
{
    VormSection* info = m_assembler.findSection(".debug_info");
    VormSection* abbrev = m_assembler.findSection(".debug_abbrev");
    if (!info || !abbrev || hasCCTop(info))
        return;
    DwarfAbbrevTable table;
    readAbbrevs(m_assembler, abbrev, table);

    DebugRewriteVisitor visitor;
    if (!DebugInfoWalker(m_assembler, info, &table).accept(visitor)) {
        warning("failed to parse debug information\n");
        return;
    }
    if (!visitor.getEnd()) {
        warning("DWARF compilation unit ends in unexpected location\n");
        return;
    }
    if (visitor.getFailedReferences())
        warning("failed to analyze all references in the .debug_info section\n");
    if (visitor.getFailedEntries())
        warning("failed to analyze all entries in the .debug_info section\n");
    if (!rewriteDebugInfoSize(info, visitor.getEnd().getValue())) {
        warning("failed to rewrite size field of .debug_info section\n");
        return;
    }
    for (const auto& block : visitor.getBlocks())
        EliminationBlocks::addEliminationBlock(m_assembler, info, block->getBegin(), block->getEnd(), block->label);
    for (const char* name : {".debug_pubnames", ".debug_pubtypes", ".debug_aranges"})
        eliminateDwarfSection(name);
    for (const char* name : {".debug_ranges", ".debug_frame", ".debug_loc"}) {
        if (!m_assembler.sectionIsEmpty(name))
            warning("unable to rewrite %s section\n", name);
    }
    if (!rewriteDebugInfoReferences(info, visitor.getReferences()))
        warning("failed to rewrite references contained in the .debug_info section\n");
}

void DebugInfoRewriter::eliminateDwarfSection(const std::string& name)
{
    VormSection* section = m_assembler.findSection(name);
    if (!section || hasCCTop(section))
        return;
    LineList& lines = section->getLines();
    EliminationBlocks::addEliminationBlock(m_assembler, section, lines.begin(), lines.end(), nullptr);
}

bool DebugInfoRewriter::rewriteDebugInfoSize(VormSection* section, LinePosition end)
{
    const LinePosition first = section->getFirstNonZeroSizedLine();
    if (first == section->getLines().end() || (*first)->getType() != DATA_LINE)
        return false;
    auto* line = static_cast<VormDataLine*>(*first);
    if (line->getDataType() != VormDataLine::WORD || line->numEntries() != 1)
        return false;
    // The length counts from the end of the length field to the end of the unit.
    return rewriteAsLabelDiff(section, line, std::next(first), end);
}

bool DebugInfoRewriter::rewriteAsLabelDiff(VormSection* section, VormDataLine* dataLine, LinePosition from,
                                           LinePosition to)
{
    if (dataLine->getDataType() != VormDataLine::WORD || dataLine->numEntries() == 0)
        return false;
    const LineLocation location = dataLine->getLocation();
    VormLabels& labels = m_assembler.getLabels();
    VormLabel* fromLabel = m_assembler.addUniqueLabel(section, from, location, false)->getLabel();
    VormLabel* toLabel = m_assembler.addUniqueLabel(section, to, location, false)->getLabel();
    labels.ensureLabelName(fromLabel);
    labels.ensureLabelName(toLabel);
    IdStrings& strings = m_assembler.getIdStrings();
    dataLine->replaceOperand(m_assembler, 0,
                             newBinaryOperand(strings, Operand::SUBTRACT, newSymbolOperand(strings, toLabel->getName()),
                                              newSymbolOperand(strings, fromLabel->getName())));
    return true;
}

bool DebugInfoRewriter::rewriteDebugInfoReferences(VormSection* section,
                                                   const std::vector<DebugRewriteEntryReference>& references)
{
    std::vector<DebugRewriteEntryReference> sorted = references;
    std::stable_sort(sorted.begin(), sorted.end(), DebugRewriteEntryReference::offsetLess);
    LineList& lines = section->getLines();
    LinePosition line = lines.begin();
    std::uint32_t offset = 0;
    for (const DebugRewriteEntryReference& reference : sorted) {
        if ((*reference.position)->getType() != DATA_LINE)
            return false;
        while (line != lines.end() && offset < reference.offset) {
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            (*line)->getByteRange(minBytes, maxBytes);
            if (minBytes != maxBytes)
                return false;
            offset += minBytes;
            ++line;
        }
        // A target inside a line can't have a label.
        if (line == lines.end() || offset > reference.offset)
            return false;
        for (;;) {
            if (line == lines.end())
                return false;
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            (*line)->getByteRange(minBytes, maxBytes);
            if (maxBytes != 0)
                break;
            ++line;
        }
        if (!rewriteAsLabelDiff(section, static_cast<VormDataLine*>(*reference.position), lines.begin(), line))
            return false;
    }
    return true;
}

} // namespace vorp
