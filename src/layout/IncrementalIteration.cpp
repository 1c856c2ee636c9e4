#include "layout/IncrementalIteration.h"

#include "isa/EncodingFailInfo.h"
#include "isa/EncoderFormat.h"
#include "encoding/InstructionGroupingSingle.h"
#include "isa/OperandDescriptor.h"
#include "encoding/VormCodeLine.h"
#include "encoding/VormJTTrampoline.h"
#include "model/VormAlignDirectiveLine.h"
#include "model/VormLine.h"
#include "schedule/InstructionGroupingScheduled.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace vorp {

namespace {

constexpr std::int64_t INF = std::int64_t{1} << 62;
constexpr std::uint32_t IN_AGENDA = 1;
constexpr std::uint32_t NEXT_PASS = 2;

// How far the distances of one pc-relative operand can move before a format answers otherwise.
// With `lo`/`hi` the target's range (addend included) and `here` the line's:
//   L = lo - here.max only rises, U = hi - here.min only falls, C = lo - here.min (the optimistic
//   estimate) moves either way.
// The answer of `matches` (ignoring the optimistic value) stays while L < lFire and U > uFire;
// whether the optimistic value fits stays while C lies in [cLow, cHigh].
struct DistanceLimits {
    bool followed = false;
    std::int64_t L = 0, U = 0, C = 0;
    std::int64_t lFire = INF, uFire = -INF;
    std::int64_t cLow = -INF, cHigh = INF;
    OperandDescriptor::MatchResult match = OperandDescriptor::MATCH_NONE;
};

bool fitsInt(std::int64_t value)
{
    return value > std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max();
}

// With `overlapOnly`, only whether the value range still meets a range counts: for a format of the
// longest size, which no answer but "no" removes.
DistanceLimits limitsOf(const VormAddress& here, const VormAddress& there, int addend,
                        const OperandDescriptorImm& desc, unsigned bytes, bool overlapOnly)
{
    DistanceLimits limits;
    const std::int64_t lo = std::int64_t{there.min} + addend;
    const std::int64_t hi = std::int64_t{there.max} + addend;
    // A target range that wraps around the address space swaps its ends: not followed.
    if (lo < 0 || hi > std::int64_t{UINT32_MAX})
        return limits;
    limits.L = lo - here.max;
    limits.U = hi - here.min;
    limits.C = lo - here.min;
    const std::int64_t b = bytes;
    if (!fitsInt(limits.L - b) || !fitsInt(limits.U - b) || !fitsInt(limits.C - b))
        return limits;
    const int scale = desc.getScale() > 0 ? desc.getScale() : 0;
    const std::int64_t unit = std::int64_t{1} << scale;
    std::int64_t low = (limits.L - b) >> scale;
    std::int64_t high = (limits.U - b) >> scale;
    std::int64_t now = (limits.C - b) >> scale;
    const bool inverted = desc.isInverted();
    if (inverted) {
        const std::int64_t oldLow = low;
        low = -high;
        high = -oldLow;
        now = -now;
    }
    limits.match = desc.matches(static_cast<int>(low), static_cast<int>(now), static_cast<int>(high));

    // The answer changes only where the low end reaches a range's start or passes its end, or the
    // high end reaches a range's end or falls below its start.
    std::int64_t nextLow = INF;
    std::int64_t nextHigh = -INF;
    std::int64_t below = -INF; // last point at or below `now` where "fits" can change
    std::int64_t above = INF;  // first point above it
    for (const OperandDescriptor::Range& range : desc.getRanges()) {
        for (const std::int64_t point : {std::int64_t{range.first}, std::int64_t{range.second} + 1}) {
            if (point > low && (!overlapOnly || point != range.first))
                nextLow = std::min(nextLow, point);
            if (point <= now)
                below = std::max(below, point);
            else
                above = std::min(above, point);
        }
        for (const std::int64_t point : {std::int64_t{range.second}, std::int64_t{range.first} - 1}) {
            if (point < high && (!overlapOnly || point != range.second))
                nextHigh = std::max(nextHigh, point);
        }
    }
    // Back from the operand's units to distances in bytes: the low end in scaled units is
    // floor((L - b) / unit) (or the negated high end), and so on.
    if (!inverted) {
        if (nextLow != INF)
            limits.lFire = nextLow * unit + b;
        if (nextHigh != -INF)
            limits.uFire = nextHigh * unit + unit - 1 + b;
        if (below != -INF)
            limits.cLow = below * unit + b;
        if (above != INF)
            limits.cHigh = above * unit - 1 + b;
    } else {
        if (nextLow != INF)
            limits.uFire = -nextLow * unit + unit - 1 + b;
        if (nextHigh != -INF)
            limits.lFire = -nextHigh * unit + b;
        if (above != INF)
            limits.cLow = -(above - 1) * unit + b;
        if (below != -INF)
            limits.cHigh = (-below + 1) * unit - 1 + b;
    }
    assert(limits.L < limits.lFire && limits.U > limits.uFire);
    assert(limits.cLow <= limits.C && limits.C <= limits.cHigh);
    limits.followed = true;
    return limits;
}

std::uint32_t roundUp(std::uint32_t value, std::uint32_t alignment)
{
    return (value + alignment - 1) / alignment * alignment;
}

} // namespace

IncrementalIteration::IncrementalIteration(InstructionGroupings& groupings, VormLabels& labels,
                                           const SizeIterationHooks& hooks)
    : m_groupings(groupings), m_labels(labels), m_hooks(hooks)
{
}

IncrementalIteration::~IncrementalIteration() = default;

bool IncrementalIteration::start()
{
    const std::size_t count = m_groupings.size();
    m_slots.assign(count, Slot{});
    std::vector<AddressChain::Leaf> leaves(count);
    for (std::size_t i = 0; i < count; ++i) {
        Slot& slot = m_slots[i];
        slot.grouping = m_groupings[i].get();
        if (auto* single = dynamic_cast<InstructionGroupingSingle*>(slot.grouping)) {
            slot.line = single->getLine();
            if (slot.line->getType() == CODE_LINE) {
                slot.code = static_cast<VormCodeLine*>(slot.line);
                slot.trampoline = dynamic_cast<VormJTTrampoline*>(slot.code);
            }
            if (slot.line->getType() == ALIGN_LINE) {
                const std::uint32_t alignment = static_cast<VormAlignDirectiveLine*>(slot.line)->getAlignment();
                leaves[i] = {AddressChain::ALIGN, alignment, alignment};
                m_alignment = std::max(m_alignment, alignment);
            } else {
                std::uint32_t minBytes = 0;
                std::uint32_t maxBytes = 0;
                slot.line->getByteRange(minBytes, maxBytes);
                leaves[i] = {AddressChain::SIZE, minBytes, maxBytes};
            }
        } else if (auto* scheduled = dynamic_cast<InstructionGroupingScheduled*>(slot.grouping)) {
            const std::uint32_t size = scheduled->getFixedSize();
            leaves[i] = {AddressChain::SIZE, size, size};
        } else {
            return false;
        }
    }
    if (!m_now.build(leaves))
        return false;
    m_before = m_now;
    // Beyond the address space the plain passes cut and saturate addresses; leave that to them.
    if (m_now.addressOf(count).max > MAX_ADDRESS)
        return false;
    if (m_alignment & (m_alignment - 1))
        return false;

    VormAddress address{0, 0};
    for (std::size_t i = 0; i < count; ++i) {
        Slot& slot = m_slots[i];
        assert(slot.grouping->getAddress() == address);
        address = m_now.nextAddress(i, address);
        if (slot.line) {
            slot.line->setLayoutSlot(static_cast<std::uint32_t>(i));
        } else {
            const VormBasicBlock& block = static_cast<InstructionGroupingScheduled*>(slot.grouping)->getBlock();
            for (auto position = block.begin(); position != block.end(); ++position)
                (*position)->setLayoutSlot(VormLine::NO_LAYOUT_SLOT);
        }
    }

    m_watches.reset(count);
    m_generation.assign(count, 0);
    m_queued.assign(count, 0);
    m_distances.assign(count, {});
    m_forceSensitive.reset(count);
    // Every undone grouping saw the targets behind it at their widest in the first pass: all are
    // looked at in the second.
    for (std::uint32_t i = 0; i < count; ++i) {
        m_slots[i].done = m_slots[i].grouping->isDone();
        if (!m_slots[i].done) {
            ++m_undone;
            lookNextPass(i);
        }
    }
    m_installed = true;
    return true;
}

std::uint32_t IncrementalIteration::bound(std::uint32_t delta) const
{
    // Past an alignment a change of size moves what follows by up to the change rounded up to it.
    return roundUp(delta, m_alignment);
}

VormAddress IncrementalIteration::addressFor(const VormLine& line, std::uint32_t owner) const
{
    const std::uint32_t slot = line.getLayoutSlot();
    if (slot == VormLine::NO_LAYOUT_SLOT)
        return line.getAddress();
    assert(slot < m_slots.size());
    return slot <= owner ? m_now.addressOf(slot) : m_before.addressOf(slot);
}

VormAddress IncrementalIteration::addressOf(const VormLine& line)
{
    const std::uint32_t slot = line.getLayoutSlot();
    for (const Cached& cached : m_cache) {
        if (cached.slot == slot && slot != VormLine::NO_LAYOUT_SLOT)
            return cached.address;
    }
    const VormAddress address = addressFor(line, m_current);
    m_cache[1] = m_cache[0];
    m_cache[0] = Cached{slot, address};
    return address;
}

void IncrementalIteration::noteDistance(const VormLine& here, const VormAddress& hereAddress, const VormLine& there,
                                        const VormAddress& thereAddress, int addend,
                                        const OperandDescriptorImm& desc, unsigned bytes)
{
    m_reads.push_back(Read{&here, hereAddress, &there, thereAddress, addend, &desc, bytes});
}

bool IncrementalIteration::twoSizes(const VormCodeLine* code)
{
    if (!code || code->getFormats().empty())
        return true;
    const auto& formats = code->getFormats();
    const int shortest = formats.front()->getNumBytes();
    const int longest = formats.back()->getNumBytes();
    return std::all_of(formats.begin(), formats.end(), [&](const EncoderFormat* format) {
        return format->getNumBytes() == shortest || format->getNumBytes() == longest;
    });
}

std::uint32_t IncrementalIteration::choices(const Slot& slot) const
{
    return openChoices(slot.code, slot.trampoline);
}

void IncrementalIteration::lookNextPass(std::uint32_t index)
{
    if (!(m_queued[index] & NEXT_PASS)) {
        m_queued[index] |= NEXT_PASS;
        m_nextPass.push_back(index);
    }
}

void IncrementalIteration::pass(bool& force, bool& anyChanged, bool& allDone)
{
    anyChanged = false;
    for (std::uint32_t index : m_nextPass) {
        m_queued[index] &= ~NEXT_PASS;
        if (!(m_queued[index] & IN_AGENDA)) {
            m_queued[index] |= IN_AGENDA;
            m_agenda.push(index);
        }
    }
    m_nextPass.clear();
    std::uint32_t forceFrom = 0;
    for (;;) {
        std::uint32_t next = m_agenda.empty() ? UINT32_MAX : m_agenda.top();
        if (force)
            next = std::min(next, m_forceSensitive.next(forceFrom));
        if (next == UINT32_MAX)
            break;
        if (!m_agenda.empty() && m_agenda.top() == next) {
            m_agenda.pop();
            m_queued[next] &= ~IN_AGENDA;
        }
        forceFrom = next + 1;
        if (!m_slots[next].done)
            evaluate(next, force, anyChanged);
    }
    m_current = static_cast<std::uint32_t>(m_slots.size());
    endPass();
    m_current = 0;
    allDone = m_undone == 0;
}

void IncrementalIteration::evaluate(std::uint32_t index, bool& force, bool& anyChanged)
{
    m_current = index;
    m_reads.clear();
    m_cache[0].slot = m_cache[1].slot = UINT32_MAX;
    Slot& slot = m_slots[index];
    const AddressChain::Leaf leaf = m_now.leaf(index);
    const std::uint32_t before = choices(slot);
    EncodingFailInfo failInfo;
    bool changed = false;
    ++m_evaluations;
    if (!slot.grouping->chooseEncoder(force, m_labels, m_installed ? this : nullptr, changed, failInfo))
        m_hooks.noMatchingFormat(failInfo);
    if (changed) {
        anyChanged = true;
        force = false;
        std::uint32_t minBytes = 0;
        std::uint32_t maxBytes = 0;
        slot.line->getByteRange(minBytes, maxBytes);
        assert(minBytes >= leaf.minBytes && maxBytes <= leaf.maxBytes);
        m_now.setSize(index, minBytes, maxBytes);
        const Change change{index, minBytes - leaf.minBytes, leaf.maxBytes - maxBytes};
        m_changes.push_back(change);
        m_watches.moved(index, bound(change.grown) + bound(change.shrunk));
        m_watches.collect([this](std::uint32_t owner, std::uint32_t generation) { return live(owner, generation); },
                          [this](std::uint32_t owner) { m_fired.push_back(owner); });
        fired();
    }
#ifndef NDEBUG
    // Jump-table entries keep their two bytes whatever their trampoline decides.
    if (slot.trampoline) {
        for (const VormCodeLine* entry : slot.trampoline->getEntries()) {
            if (entry->getLayoutSlot() == VormLine::NO_LAYOUT_SLOT)
                continue;
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            entry->getByteRange(minBytes, maxBytes);
            const AddressChain::Leaf& entryLeaf = m_now.leaf(entry->getLayoutSlot());
            assert(minBytes == entryLeaf.minBytes && maxBytes == entryLeaf.maxBytes);
        }
    }
#endif
    ++m_generation[index];
    m_forceSensitive.erase(index);
    if (slot.grouping->isDone()) {
        slot.done = true;
        --m_undone;
        m_distances[index].clear();
        return;
    }
    // A choice that changed the size may remove more next time. One that removed formats but kept
    // the size gives the same answers again for the same distances when no format lies between
    // the shortest and the longest: these two are then still of the sizes they were, which is all
    // that a choice reads of the formats besides their own answers. Such a choice is watched.
    if (changed || (choices(slot) != before && !twoSizes(slot.code)) || !watch(index))
        lookNextPass(index);
}

bool IncrementalIteration::watch(std::uint32_t index)
{
    const Slot& slot = m_slots[index];
    bool sensitive = slot.trampoline && slot.trampoline->getUse() == VormCodeLine::TRAMPOLINE_UNDECIDED;
    const std::uint32_t lastSize =
        slot.code && !slot.code->getFormats().empty() ? slot.code->getFormats().back()->getNumBytes() : 0;

    std::vector<Distance>& distances = m_distances[index];
    distances.clear();
    std::sort(m_reads.begin(), m_reads.end(), [](const Read& a, const Read& b) {
        return std::tie(a.here, a.there, a.addend) < std::tie(b.here, b.there, b.addend);
    });
    for (const Read& read : m_reads) {
        if (read.here->getLayoutSlot() == VormLine::NO_LAYOUT_SLOT)
            return false;
        // A format of the longest size, when there is a shorter one, stays unless no range is met:
        // whether a range holds all values makes no difference to it.
        const auto* hereCode = static_cast<const VormCodeLine*>(read.here);
        const auto& formats = hereCode->getFormats();
        const bool overlapOnly = !formats.empty() && read.bytes == static_cast<unsigned>(formats.back()->getNumBytes()) &&
                                 formats.front()->getNumBytes() != formats.back()->getNumBytes();
        const DistanceLimits limits =
            limitsOf(read.hereAddress, read.thereAddress, read.addend, *read.desc, read.bytes, overlapOnly);
        if (!limits.followed)
            return false;
        if (distances.empty() || distances.back().here != read.here || distances.back().there != read.there ||
            distances.back().addend != read.addend)
            distances.push_back(Distance{read.here, read.there, read.addend, false, INF, -INF, -INF, INF,
                                         read.hereAddress.min, std::int64_t{read.thereAddress.min} + read.addend});
        Distance& distance = distances.back();
        distance.lFire = std::min(distance.lFire, limits.lFire);
        distance.uFire = std::max(distance.uFire, limits.uFire);
        // Force removes a shorter format only while its optimistic value doesn't fit.
        if (read.here == slot.line && read.bytes != lastSize) {
            if (limits.match == OperandDescriptor::MATCH_POSSIBLE)
                sensitive = true;
            if (limits.match == OperandDescriptor::MATCH_CURRENT) {
                distance.watchCurrent = true;
                distance.cLow = std::max(distance.cLow, limits.cLow);
                distance.cHigh = std::min(distance.cHigh, limits.cHigh);
            }
        }
    }
    if (sensitive)
        m_forceSensitive.insert(index);
    return arm(index, false);
}

bool IncrementalIteration::arm(std::uint32_t index, bool asRead)
{
    ++m_generation[index];
    const bool sensitive = m_forceSensitive.contains(index);
    for (const Distance& distance : m_distances[index]) {
        // The distance as it stands now, every address as it is now: what a later choice reads
        // lies between this and what the last one read. Or, for a look later in this pass, the
        // distance as that look would read it.
        const std::uint32_t hereSlot = distance.here->getLayoutSlot();
        const std::uint32_t thereSlot = distance.there->getLayoutSlot();
        const VormAddress here = m_now.addressOf(hereSlot);
        const VormAddress there = thereSlot == VormLine::NO_LAYOUT_SLOT ? distance.there->getAddress()
                                  : asRead                             ? addressFor(*distance.there, index)
                                                                       : m_now.addressOf(thereSlot);
        const std::int64_t lo = std::int64_t{there.min} + distance.addend;
        const std::int64_t hi = std::int64_t{there.max} + distance.addend;
        const std::int64_t L = lo - here.max;
        const std::int64_t U = hi - here.min;
        if (L >= distance.lFire || U <= distance.uFire)
            return false;
        std::int64_t budget = std::min(distance.lFire - L, U - distance.uFire);
        if (distance.watchCurrent && !sensitive) {
            // C = lo - here.min left [cLow, cHigh] downwards only if the line's minimum has risen
            // that far, upwards only if the target's minimum has.
            const std::int64_t C = distance.targetLow - distance.hereMin;
            const std::int64_t down = (C - distance.cLow) - (std::int64_t{here.min} - distance.hereMin);
            const std::int64_t up = (distance.cHigh - C) - (lo - distance.targetLow);
            if (down < 0 || up < 0)
                m_forceSensitive.insert(index);
            else
                budget = std::min(budget, std::min(down, up) + 1);
        }
        if (budget >= INF / 2)
            continue;
        const std::uint32_t at = thereSlot == VormLine::NO_LAYOUT_SLOT ? hereSlot : std::max(hereSlot, thereSlot);
        m_watches.add(at, index, m_generation[index], budget,
                      [this](std::uint32_t owner, std::uint32_t generation) { return live(owner, generation); });
    }
    return true;
}

void IncrementalIteration::fired()
{
    // Watches are set anew only after the list has been gone through.
    for (std::uint32_t owner : m_fired) {
        if (m_slots[owner].done || arm(owner, false))
            continue;
        // The distance has left its limits: the grouping is looked at in the next pass, and in
        // this one too if the distance it would read now has left them already. Else it is
        // watched as it reads it, in case its own address moves further before its turn.
        lookNextPass(owner);
        if (owner <= m_current || (m_queued[owner] & IN_AGENDA) || arm(owner, true))
            continue;
        m_queued[owner] |= IN_AGENDA;
        m_agenda.push(owner);
    }
    m_fired.clear();
}

void IncrementalIteration::endPass()
{
    for (const Change& change : m_changes) {
        const AddressChain::Leaf& leaf = m_now.leaf(change.position);
        m_before.setSize(change.position, leaf.minBytes, leaf.maxBytes);
    }
    m_changes.clear();
}

void IncrementalIteration::settle()
{
    m_installed = false;
    VormAddress address{0, 0};
    for (const auto& grouping : m_groupings) {
        grouping->setAddress(address);
        address = grouping->getNextAddress();
    }
}

void IncrementalIteration::snapshot(std::vector<GroupingState>& states) const
{
    states.resize(m_slots.size());
    VormAddress address{0, 0};
    for (std::size_t i = 0; i < m_slots.size(); ++i) {
        GroupingState& state = states[i];
        state.address = address;
        address = m_now.nextAddress(i, address);
        state.next = address;
        state.done = m_slots[i].grouping->isDone();
        state.choices = choices(m_slots[i]);
    }
}

} // namespace vorp
