#pragma once

#include "encoding/InstructionGrouping.h"
#include "model/VormAddress.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vorp {

struct EncodingFailInfo;
class VormCodeLine;
class VormJTTrampoline;
class VormLabels;

// What a pass left in one grouping: enough to tell two ways of running the passes apart.
struct GroupingState {
    VormAddress address;
    VormAddress next;
    bool done = false;
    // How much is still open: formats left, and undecided jump-table entries and trampolines.
    std::uint32_t choices = 0;
    bool operator==(const GroupingState&) const = default;
};

// Told the state of every grouping after each pass; for tests that compare two iterations.
class SizeIterationObserver {
public:
    virtual ~SizeIterationObserver() = default;
    virtual void afterPass(unsigned pass, bool force, const std::vector<GroupingState>& groupings) = 0;
};

struct SizeIterationSettings {
    std::uint32_t maxPasses = 4000;
    // Off: every pass walks the whole section, as the plain loop does. On: a pass looks only at what
    // can change in it. Both give the same passes, state for state.
    bool incremental = true;
    SizeIterationObserver* observer = nullptr;
};

struct SizeIterationHooks {
    // Neither returns.
    std::function<void(EncodingFailInfo&)> noMatchingFormat;
    std::function<void()> passLimitReached;
};

struct SizeIterationResult {
    unsigned passes = 0;
    bool force = false;
    std::uint64_t evaluations = 0;
};

// Chooses the formats of a section's groupings: passes that narrow address ranges and remove
// formats until nothing changes, with one forced pass to break a stalemate. Leaves every
// grouping with the address of the last pass, ready for commit and the last walk.
SizeIterationResult iterateSizes(InstructionGroupings& groupings, VormLabels& labels,
                                 const SizeIterationSettings& settings, const SizeIterationHooks& hooks);

// How much is left to choose in a grouping (GroupingState::choices).
std::uint32_t openChoices(const InstructionGrouping& grouping);
std::uint32_t openChoices(const VormCodeLine* code, const VormJTTrampoline* trampoline);

} // namespace vorp
