#include "debug/DebugRewriteVisitor.h"

#include "debug/DebugInfoWalker.h"

#include <algorithm>
#include <cassert>

namespace vorp {

LinePosition DebugRewriteEliminationBlockInfo::getBegin() const
{
    assert(begin && "begin");
    return begin.getValue();
}

LinePosition DebugRewriteEliminationBlockInfo::getEnd() const
{
    assert(end && "end");
    return end.getValue();
}

void DebugRewriteVisitor::debugEntryBegin(Optional<LinePosition> position, const DwarfAbbrevEntry& entry,
                                          void*& userData)
{
    ++m_depth;
    if (m_depth != 1 || (entry.tag != DW_TAG_subprogram && entry.tag != DW_TAG_variable))
        return;
    if (!position) {
        m_failedEntries = true;
        return;
    }
    auto info = std::make_unique<DebugRewriteEliminationBlockInfo>();
    info->begin = position;
    userData = info.get();
    m_blocks.push_back(std::move(info));
    m_mayHaveIncomplete = true;
}

void DebugRewriteVisitor::debugEntryAttribute(const DataReader& reader, const DwarfAbbrevEntry& entry,
                                              const DwarfAbbrevAttribute& attribute, void* userData)
{
    checkAttributeForReference(reader, attribute);
    if (!userData)
        return;
    VormLabel* label = nullptr;
    if (entry.tag == DW_TAG_subprogram && attribute.name == DW_AT_low_pc)
        label = DebugInfoWalker::readAddressAttribute(reader, attribute);
    else if (entry.tag == DW_TAG_variable && attribute.name == DW_AT_location)
        label = DebugInfoWalker::readLocationAttribute(reader, attribute);
    else
        return;
    if (label)
        static_cast<DebugRewriteEliminationBlockInfo*>(userData)->label = label;
    else
        m_failedEntries = true;
}

void DebugRewriteVisitor::checkAttributeForReference(const DataReader& reader, const DwarfAbbrevAttribute& attribute)
{
    if (attribute.form < DW_FORM_ref1 || attribute.form > DW_FORM_ref_udata)
        return;
    std::uint64_t value = 0;
    const Optional<LinePosition> position = reader.getPosition();
    if (position && DebugInfoWalker::readReferenceAttribute(reader, attribute, value))
        m_references.push_back({position.getValue(), static_cast<std::uint32_t>(value)});
    else
        m_failedReferences = true;
}

void DebugRewriteVisitor::debugEntryEnd(Optional<LinePosition> position, const DwarfAbbrevEntry&, void* userData)
{
    --m_depth;
    if (position && userData)
        static_cast<DebugRewriteEliminationBlockInfo*>(userData)->end = position;
}

void DebugRewriteVisitor::debugEnd(Optional<LinePosition> position)
{
    removeIncomplete();
    m_end = position;
}

void DebugRewriteVisitor::removeIncomplete()
{
    if (!m_mayHaveIncomplete)
        return;
    m_blocks.erase(std::remove_if(m_blocks.begin(), m_blocks.end(), [](const auto& info) { return !info->isComplete(); }),
                   m_blocks.end());
    m_mayHaveIncomplete = false;
}

} // namespace vorp
