#include "layout/SizeIteration.h"

#include "encoding/InstructionGroupingSingle.h"
#include "encoding/VormCodeLine.h"
#include "encoding/VormJTTrampoline.h"
#include "layout/IncrementalIteration.h"
#include "layout/ReferenceIteration.h"
#include "model/VormLine.h"

#include <memory>

namespace vorp {

std::uint32_t openChoices(const InstructionGrouping& grouping)
{
    const auto* single = dynamic_cast<const InstructionGroupingSingle*>(&grouping);
    if (!single || single->getLine()->getType() != CODE_LINE)
        return 0;
    const auto* code = static_cast<const VormCodeLine*>(single->getLine());
    return openChoices(code, dynamic_cast<const VormJTTrampoline*>(code));
}

std::uint32_t openChoices(const VormCodeLine* code, const VormJTTrampoline* trampoline)
{
    if (!code)
        return 0;
    auto of = [](const VormCodeLine& line) {
        return static_cast<std::uint32_t>(line.getFormats().size()) +
               (line.isJumpTableEntry() && line.getJumpTableState() == VormCodeLine::TRAMPOLINE_UNDECIDED);
    };
    std::uint32_t open = of(*code);
    if (trampoline) {
        open += trampoline->getUse() == VormCodeLine::TRAMPOLINE_UNDECIDED;
        for (const VormCodeLine* entry : trampoline->getEntries())
            open += of(*entry);
    }
    return open;
}

SizeIterationResult iterateSizes(InstructionGroupings& groupings, VormLabels& labels,
                                 const SizeIterationSettings& settings, const SizeIterationHooks& hooks)
{
    ReferenceIteration reference(groupings, labels, hooks);
    std::unique_ptr<IncrementalIteration> incremental;
    std::vector<GroupingState> states;
    SizeIterationResult result;
    bool finished = false;
    bool tried = false;
    while (!finished) {
        bool anyChanged = false;
        bool allDone = true;
        if (incremental)
            incremental->pass(result.force, anyChanged, allDone);
        else
            reference.pass(result.force, anyChanged, allDone);
        // A pass that changes nothing is repeated once with force, which breaks stalemates.
        finished = allDone;
        if (!allDone && !anyChanged) {
            if (result.force)
                finished = true;
            else
                result.force = true;
        }
        if (groupings.empty())
            finished = true;
        ++result.passes;
        if (settings.observer) {
            if (incremental) {
                incremental->snapshot(states);
            } else {
                states.resize(groupings.size());
                for (std::size_t i = 0; i < groupings.size(); ++i) {
                    const InstructionGrouping& grouping = *groupings[i];
                    states[i] = GroupingState{grouping.getAddress(), grouping.getNextAddress(), grouping.isDone(),
                                              openChoices(grouping)};
                }
            }
            settings.observer->afterPass(result.passes, result.force, states);
        }
        if (result.passes > settings.maxPasses)
            hooks.passLimitReached();
        // The first pass sees every target behind a line at its widest and walks everything; from
        // the second on a pass can be cheap.
        if (!finished && !tried && settings.incremental) {
            tried = true;
            incremental = std::make_unique<IncrementalIteration>(groupings, labels, hooks);
            if (!incremental->start())
                incremental.reset();
        }
    }
    result.evaluations = reference.evaluations();
    if (incremental) {
        incremental->settle();
        result.evaluations += incremental->evaluations();
    }
    return result;
}

} // namespace vorp
