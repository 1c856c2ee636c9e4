#pragma once

#include "debug/DebugInfoVisitor.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace vorp {

class VormLabel;

// The lines of one top-level entry and the label whose code or data it describes.
struct DebugRewriteEliminationBlockInfo {
    Optional<LinePosition> begin;
    Optional<LinePosition> end;
    VormLabel* label = nullptr;

    bool isComplete() const { return begin && end && label; }
    LinePosition getBegin() const;
    LinePosition getEnd() const;
};

// A numeric reference inside the unit: the line that holds it and the offset it names.
struct DebugRewriteEntryReference {
    LinePosition position;
    std::uint32_t offset;

    static bool offsetLess(const DebugRewriteEntryReference& a, const DebugRewriteEntryReference& b)
    {
        return a.offset < b.offset;
    }
};

// Finds what the rewriting needs: the top-level subprograms and variables that have an address,
// and every reference between entries.
class DebugRewriteVisitor : public DebugInfoVisitor {
public:
    void debugEntryBegin(Optional<LinePosition> position, const DwarfAbbrevEntry& entry, void*& userData) override;
    void debugEntryAttribute(const DataReader& reader, const DwarfAbbrevEntry& entry,
                             const DwarfAbbrevAttribute& attribute, void* userData) override;
    void debugEntryEnd(Optional<LinePosition> position, const DwarfAbbrevEntry& entry, void* userData) override;
    void debugEnd(Optional<LinePosition> position) override;

    bool getFailedReferences() const { return m_failedReferences; }
    bool getFailedEntries() const { return m_failedEntries; }
    const Optional<LinePosition>& getEnd() const { return m_end; }
    const std::vector<std::unique_ptr<DebugRewriteEliminationBlockInfo>>& getBlocks() const { return m_blocks; }
    const std::vector<DebugRewriteEntryReference>& getReferences() const { return m_references; }

private:
    void checkAttributeForReference(const DataReader& reader, const DwarfAbbrevAttribute& attribute);
    // Declarations have no address: their infos stay incomplete and are dropped here, silently.
    void removeIncomplete();

    int m_depth = -1;
    bool m_mayHaveIncomplete = false;
    bool m_failedReferences = false;
    bool m_failedEntries = false;
    Optional<LinePosition> m_end;
    std::vector<std::unique_ptr<DebugRewriteEliminationBlockInfo>> m_blocks;
    std::vector<DebugRewriteEntryReference> m_references;
};

} // namespace vorp
