#include "layout/FormatChoice.h"

#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "encoding/CodeLines.h"
#include "encoding/InstructionGroupingSingle.h"
#include "isa/EncodingFailInfo.h"
#include "layout/SizeIteration.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"
#include "schedule/InstructionGroupingScheduled.h"
#include "schedule/VormBasicBlock.h"

#include <algorithm>
#include <cassert>

namespace vorp {

void getInstructionGroupings(VormAssembler& assembler, VormSection* section, InstructionGroupings& groupings,
                             bool& hasScheduling)
{
    hasScheduling = false;
    for (const VormLine* line : section->getLines())
        hasScheduling = hasScheduling || line->getSchedule();
    if (!hasScheduling) {
        for (VormLine* line : section->getLines())
            groupings.push_back(std::make_unique<InstructionGroupingSingle>(line));
        return;
    }

    // Addresses are still at their widest: this pass removes only what no address can save, and
    // leaves many lines done, which is what lets them into a scheduled block.
    for (VormLine* line : section->getLines()) {
        EncodingFailInfo failInfo;
        bool changed = false;
        if (!line->chooseEncoder(false, assembler.getLabels(), nullptr, changed, failInfo, false))
            noMatchingFormatError(assembler, failInfo);
    }

    auto addSingles = [&groupings](LinePosition first, LinePosition last) {
        for (auto position = first; position != last; ++position)
            groupings.push_back(std::make_unique<InstructionGroupingSingle>(*position));
    };
    std::vector<VormBasicBlock> blocks;
    getBlocks(section, blocks);
    for (VormBasicBlock& block : blocks) {
        LinePosition firstCode = block.begin();
        while (firstCode != block.end() && (*firstCode)->getType() != CODE_LINE)
            ++firstCode;
        if (firstCode == block.end())
            firstCode = block.begin();
        const VormBasicBlock head = block.split(firstCode);
        addSingles(head.begin(), head.end());

        // Only settled lines of no size but instructions may be reordered: anything else cuts the
        // block and stays where it is.
        for (LinePosition position = block.begin(); position != block.end();) {
            VormLine* line = *position;
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            line->getByteRange(minBytes, maxBytes);
            if (line->getSchedule() && line->isDone() && (line->getType() == CODE_LINE || maxBytes == 0)) {
                ++position;
                continue;
            }
            const VormBasicBlock before = block.split(position);
            // Lines without an instruction have nothing to reorder, and a scheduled grouping
            // would keep their addresses open through the whole iteration: a branch to a label
            // among them could then never be sized.
            if (std::any_of(before.begin(), before.end(),
                            [](const VormLine* line) { return line->getType() == CODE_LINE; }))
                groupings.push_back(std::make_unique<InstructionGroupingScheduled>(before, assembler.getOptions().debugScheduling));
            else
                addSingles(before.begin(), before.end());
            groupings.push_back(std::make_unique<InstructionGroupingSingle>(line));
            ++position;
            block.split(position);
        }

        if (!block.empty()) {
            LinePosition afterLastCode = block.begin();
            for (auto position = block.begin(); position != block.end(); ++position)
                if ((*position)->getType() == CODE_LINE)
                    afterLastCode = std::next(position);
            groupings.push_back(std::make_unique<InstructionGroupingScheduled>(block.split(afterLastCode),
                                                                            assembler.getOptions().debugScheduling));
            addSingles(block.begin(), block.end());
        }
    }
}

void chooseInstructionFormats(VormAssembler& assembler, VormSection* section)
{
    InstructionGroupings groupings;
    bool hasScheduling = false;
    getInstructionGroupings(assembler, section, groupings, hasScheduling);

    const AssemblerOptions& options = assembler.getOptions();
    RunStatistics& statistics = assembler.statistics();
    SizeIterationSettings settings;
    settings.maxPasses = options.maxEncodingPasses;
    settings.incremental = !options.referenceSizeIteration;
    settings.observer = options.sizeIterationObserver;
    SizeIterationHooks hooks;
    hooks.noMatchingFormat = [&assembler](EncodingFailInfo& failInfo) { noMatchingFormatError(assembler, failInfo); };
    hooks.passLimitReached = [&, section] {
        statistics.formatPasses.push_back({section->getName(), options.maxEncodingPasses + 1});
        assembler.getUtils()->errorHandler->fatalError(true, "vorp: Error: unable to resolve encoder choice after %d loops\n",
                                          static_cast<int>(options.maxEncodingPasses));
    };
    const SizeIterationResult result = iterateSizes(groupings, assembler.getLabels(), settings, hooks);
    const bool force = result.force;
    statistics.formatPasses.push_back({section->getName(), result.passes});
    statistics.groupingsEvaluated += result.evaluations;
    if (hasScheduling) {
        for (const auto& grouping : groupings)
            grouping->commit();
    }

    LineList& lines = section->getLines();
    if (lines.empty()) {
        section->setSize(0);
        return;
    }
    assert(lines.front()->getAddress().min == 0);
    VormAddress address{0, 0};
    for (VormLine* line : lines) {
        line->setAddress(address);
        if (line->getType() == CODE_LINE && (address.min & 1))
            assembler.getErrorHandler().vorpError(line->getLocation(), AssErrorCodes::MISALIGNED_CODE, "Misaligned code detected!\n");
        EncodingFailInfo failInfo;
        bool changed = false;
        if (!line->chooseEncoder(force, assembler.getLabels(), nullptr, changed, failInfo, true))
            noMatchingFormatError(assembler, failInfo);
        assert(line->isDone());
        address = line->getNextAddress();
    }
    assert(address.min == address.max);
    section->setSize(address.min);
}

void chooseInstructionFormats(VormAssembler& assembler)
{
    for (const auto& section : assembler.getSections())
        chooseInstructionFormats(assembler, section.get());
}

} // namespace vorp
