#include "schedule/VormBasicBlock.h"

#include "encoding/VormCodeLine.h"
#include "model/VormLine.h"

namespace vorp {

void getBlocks(VormSection* section, std::vector<VormBasicBlock>& blocks)
{
    LineList& lines = section->getLines();
    LinePosition start = lines.begin();
    LinePosition end = lines.begin();
    auto close = [&] {
        if (start != end)
            blocks.emplace_back(section, start, end);
        start = end;
    };
    for (auto position = lines.begin(); position != lines.end();) {
        VormLine* line = *position++;
        bool closes = false;
        if (line->getType() == CODE_LINE) {
            const auto* code = static_cast<const VormCodeLine*>(line);
            end = position;
            closes = (code->isBranch() && !code->isLink()) || !code->isDone();
        } else {
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            line->getByteRange(minBytes, maxBytes);
            closes = maxBytes != 0 || line->isTargetLine();
        }
        if (closes)
            close();
    }
    close();
    if (start != lines.end())
        blocks.emplace_back(section, end, lines.end());
}

VormBasicBlock VormBasicBlock::split(LinePosition position)
{
    VormBasicBlock head(m_section, m_begin, position);
    m_begin = position;
    return head;
}

void VormBasicBlock::erase(LinePosition first, LinePosition last)
{
    const bool atBegin = first == m_begin;
    const LinePosition after = m_section->getLines().erase(first, last);
    if (atBegin)
        m_begin = after;
}

void VormBasicBlock::erase(LinePosition position)
{
    erase(position, std::next(position));
}

void VormBasicBlock::insert(LinePosition position, VormLine* line)
{
    line->setSection(m_section);
    const LinePosition inserted = m_section->getLines().insert(position, line);
    if (position == m_begin)
        m_begin = inserted;
}

void VormBasicBlock::dump() const
{
    for (auto position = m_begin; position != m_end; ++position)
        (*position)->dump();
}

} // namespace vorp
