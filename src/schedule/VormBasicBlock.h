#pragma once

#include "model/VormSection.h"

#include <vector>

namespace vorp {

class VormLine;

// A stretch [begin, end) of a section's lines that the scheduler may reorder.
class VormBasicBlock {
public:
    VormBasicBlock(VormSection* section, LinePosition begin, LinePosition end)
        : m_section(section), m_begin(begin), m_end(end)
    {
    }

    VormSection* getSection() const { return m_section; }
    LinePosition begin() const { return m_begin; }
    LinePosition end() const { return m_end; }
    bool empty() const { return m_begin == m_end; }

    // The block [begin, position); this block then starts at `position`.
    VormBasicBlock split(LinePosition position);
    // These change the section's own list; the block's begin follows its first line.
    void erase(LinePosition first, LinePosition last);
    void erase(LinePosition position);
    void insert(LinePosition position, VormLine* line);
    // Each line on standard error.
    void dump() const;

private:
    VormSection* m_section;
    LinePosition m_begin;
    LinePosition m_end;
};

// The blocks the scheduler may reorder, covering every line. A block ends after a branch that
// doesn't link, after an instruction of undecided size, and before a target line or a line that
// takes bytes; lines since the last instruction go to the head of the next block.
void getBlocks(VormSection* section, std::vector<VormBasicBlock>& blocks);

} // namespace vorp
