#pragma once

#include "model/AddressReader.h"
#include "layout/AddressChain.h"
#include "layout/IndexSet.h"
#include "layout/SizeIteration.h"
#include "layout/WatchList.h"

#include <cstdint>
#include <functional>
#include <queue>
#include <vector>

namespace vorp {

class VormCodeLine;
class VormJTTrampoline;
class VormLine;

// The passes of the plain iteration, each at the cost of what can change in it.
//
// A pass of the plain loop gives every grouping the address that the sizes in front of it add up
// to, and offers every undone one a choice, in which a pc-relative operand reads its own address
// (set in this pass) and its target's (set in this pass if the target stands in front, left from
// the pass before if behind). Here the addresses live in two AddressChains, one with the sizes
// as they are now and one with the sizes at the end of the pass before, so any address either
// way is found without a walk, and no line address is set until the end.
//
// A choice that changed nothing answers the same until one of the distances it looked at crosses
// a boundary of a format's range. After each such choice its distances are kept, with how far
// each may move, and turned into watches on the ends of the address ranges involved (WatchList).
// A distance moves by both of its ends, so each end watches for half the way; when one fires, the
// distance is worked out again, and only if it has really gone far enough is the grouping looked
// at again; otherwise the watches are set anew for what is left of the way. Watches on what stands in front of the grouping are moved by the changes
// of this pass as they happen; watches on what stands behind it follow the other chain and are
// moved at the end of the pass. A forced pass also looks at every grouping whose last answer left
// a short format merely possible, until the first change ends the force.
class IncrementalIteration final : public AddressReader {
public:
    IncrementalIteration(InstructionGroupings& groupings, VormLabels& labels, const SizeIterationHooks& hooks);
    ~IncrementalIteration() override;
    IncrementalIteration(const IncrementalIteration&) = delete;
    IncrementalIteration& operator=(const IncrementalIteration&) = delete;

    // Takes over after a full pass. False for a section it can't follow (an address space
    // overflow, unusual alignments); the plain passes then go on.
    bool start();
    void pass(bool& force, bool& anyChanged, bool& allDone);
    // Gives every grouping the address of the last pass, as the plain passes leave them.
    void settle();
    void snapshot(std::vector<GroupingState>& states) const;
    std::uint64_t evaluations() const { return m_evaluations; }

    VormAddress addressOf(const VormLine& line) override;
    void noteDistance(const VormLine& here, const VormAddress& hereAddress, const VormLine& there,
                      const VormAddress& thereAddress, int addend, const OperandDescriptorImm& desc,
                      unsigned bytes) override;

private:
    struct Slot {
        InstructionGrouping* grouping = nullptr;
        VormLine* line = nullptr;     // for a grouping of one line
        VormCodeLine* code = nullptr; // that line, if it is an instruction
        VormJTTrampoline* trampoline = nullptr;
        bool done = false;
    };
    // A distance that the last choice of a grouping looked at, and the limits within which the
    // choice answers the same (see limitsOf).
    struct Distance {
        const VormLine* here;
        const VormLine* there;
        int addend;
        bool watchCurrent; // the optimistic value decides whether force removes a shorter format
        std::int64_t lFire, uFire, cLow, cHigh;
        // What the choice read: the optimistic value can move either way, so its limits hold
        // against how far each of its ends has moved since.
        std::int64_t hereMin, targetLow;
    };
    struct Read {
        const VormLine* here;
        VormAddress hereAddress;
        const VormLine* there;
        VormAddress thereAddress;
        int addend;
        const OperandDescriptorImm* desc;
        unsigned bytes;
    };

    std::uint32_t choices(const Slot& slot) const;
    // No format left lies in size between the shortest and the longest.
    static bool twoSizes(const VormCodeLine* code);
    void evaluate(std::uint32_t index, bool& force, bool& anyChanged);
    // Keeps the distances of the last choice and watches them; false when one can't be followed.
    bool watch(std::uint32_t index);
    // Sets the watches of a grouping's distances anew from where their ends are now; false when a
    // distance has left its limits and the grouping must be looked at.
    bool arm(std::uint32_t index, bool asRead);
    // An address as grouping `owner` reads it: in front of it as now, behind as the pass before.
    VormAddress addressFor(const VormLine& line, std::uint32_t owner) const;
    void fired();
    void endPass();
    void lookNextPass(std::uint32_t index);
    std::uint32_t bound(std::uint32_t delta) const;
    bool live(std::uint32_t owner, std::uint32_t generation) const { return m_generation[owner] == generation; }

    InstructionGroupings& m_groupings;
    VormLabels& m_labels;
    const SizeIterationHooks& m_hooks;
    std::vector<Slot> m_slots;
    AddressChain m_now;    // sizes as they are
    AddressChain m_before; // sizes at the end of the pass before
    WatchList m_watches;
    std::vector<std::uint32_t> m_generation;
    std::vector<std::uint8_t> m_queued; // bit 1: in this pass's agenda, bit 2: for the next pass
    std::vector<std::uint32_t> m_nextPass;
    std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> m_agenda;
    IndexSet m_forceSensitive;
    struct Change {
        std::uint32_t position;
        std::uint32_t grown;  // of the minimum size
        std::uint32_t shrunk; // of the maximum size
    };
    std::vector<Change> m_changes;
    std::vector<Read> m_reads;
    std::vector<std::vector<Distance>> m_distances;
    std::vector<std::uint32_t> m_fired;
    // Addresses read during one choice: the same few, many times.
    struct Cached {
        std::uint32_t slot;
        VormAddress address;
    };
    Cached m_cache[2] = {{UINT32_MAX, {}}, {UINT32_MAX, {}}};
    std::uint32_t m_current = 0;
    std::uint32_t m_alignment = 1; // the largest in the section
    std::size_t m_undone = 0;
    std::uint64_t m_evaluations = 0;
    // From start() to settle() format choice reads line addresses from this iteration.
    bool m_installed = false;
};

} // namespace vorp
