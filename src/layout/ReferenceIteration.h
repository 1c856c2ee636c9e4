#pragma once

#include "layout/SizeIteration.h"

#include <cstdint>
#include <vector>

namespace vorp {

// The plain pass: every grouping in order gets the carried address and, unless done, is offered a
// choice. The one shortcut keeps it exact: until a pass changes a size no address can move, so the
// groupings in front of its first change keep the addresses of the pass before and only the undone
// ones among them are looked at. This is the iteration the incremental one must match.
class ReferenceIteration {
public:
    ReferenceIteration(InstructionGroupings& groupings, VormLabels& labels, const SizeIterationHooks& hooks);

    void pass(bool& force, bool& anyChanged, bool& allDone);
    std::uint64_t evaluations() const { return m_evaluations; }

private:
    InstructionGroupings& m_groupings;
    VormLabels& m_labels;
    const SizeIterationHooks& m_hooks;
    bool m_addressesCurrent = false;
    std::vector<std::size_t> m_undone;
    std::uint64_t m_evaluations = 0;
};

} // namespace vorp
