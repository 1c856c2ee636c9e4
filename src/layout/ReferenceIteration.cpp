#include "layout/ReferenceIteration.h"

#include "isa/EncodingFailInfo.h"

#include <algorithm>

namespace vorp {

ReferenceIteration::ReferenceIteration(InstructionGroupings& groupings, VormLabels& labels,
                                       const SizeIterationHooks& hooks)
    : m_groupings(groupings), m_labels(labels), m_hooks(hooks)
{
    for (std::size_t i = 0; i < groupings.size(); ++i)
        m_undone.push_back(i);
}

void ReferenceIteration::pass(bool& force, bool& anyChanged, bool& allDone)
{
    VormAddress address{0, 0};
    anyChanged = false;
    allDone = true;
    // Looks at an undone grouping; true when its size changed.
    auto choose = [&](InstructionGrouping& grouping) {
        EncodingFailInfo failInfo;
        bool changed = false;
        ++m_evaluations;
        if (!grouping.chooseEncoder(force, m_labels, nullptr, changed, failInfo))
            m_hooks.noMatchingFormat(failInfo);
        if (changed) {
            anyChanged = true;
            force = false;
        }
        allDone = allDone && grouping.isDone();
        return changed;
    };
    std::size_t next = 0; // the grouping the full walk goes on with
    if (m_addressesCurrent) {
        next = m_groupings.size();
        for (std::size_t i : m_undone) {
            if (choose(*m_groupings[i])) {
                address = m_groupings[i]->getNextAddress();
                next = i + 1;
                break;
            }
        }
    }
    for (std::size_t i = next; i < m_groupings.size(); ++i) {
        InstructionGrouping& grouping = *m_groupings[i];
        grouping.setAddress(address);
        if (!grouping.isDone())
            choose(grouping);
        address = grouping.getNextAddress();
    }
    m_addressesCurrent = true;
    std::erase_if(m_undone, [this](std::size_t i) { return m_groupings[i]->isDone(); });
}

} // namespace vorp
