#include "debug/EliminationBlocks.h"

#include "model/VormAlignDirectiveLine.h"
#include "model/VormAssembler.h"
#include "model/VormCCDirectiveLine.h"
#include "model/VormLabelLine.h"

#include <cassert>
#include <cstring>
#include <string>

namespace vorp {

void EliminationBlocks::addEliminationBlock(VormAssembler& assembler, VormSection* section, LinePosition start,
                                            LinePosition end, VormLabel* label)
{
    const std::string name = "vorp.cc" + std::to_string(assembler.nameCounters().eliminationBlocks++);
    auto top = std::make_unique<TokenLine>();
    top->push_back(newGeneratedToken(assembler.getIdStrings(), S_D_CCTOP, "cc_top"));
    top->push_back(newGeneratedToken(assembler.getIdStrings(), S_NAME, name.c_str()));
    top->push_back(newGeneratedToken(assembler.getIdStrings(), S_COMMA, ","));
    top->push_back(newGeneratedToken(assembler.getIdStrings(), S_NAME, label ? label->getName() : ""));
    VormCCDirectiveLine* topLine = assembler.addCCTop(section, start, std::move(top));

    auto bottom = std::make_unique<TokenLine>();
    bottom->push_back(newGeneratedToken(assembler.getIdStrings(), S_D_CCBOT, "cc_bottom"));
    bottom->push_back(newGeneratedToken(assembler.getIdStrings(), S_NAME, name.c_str()));
    assembler.addCCBottom(section, end, std::move(bottom), topLine);
}

void EliminationBlocks::addEliminationBlocks(VormAssembler& assembler, VormSection* section)
{
    VormLinkerExps& exps = assembler.getLinkerExps();
    VormCCDirectiveLine* lastCCBottom = nullptr;
    LineList& lines = section->getLines();
    for (auto position = lines.rbegin(); position != lines.rend(); ++position) {
        VormLine* line = *position;
        switch (line->getType()) {
        case ALIGN_LINE: {
            auto* align = static_cast<VormAlignDirectiveLine*>(line);
            exps.addExp(2176, align->getLabel())
                .addConstOp(static_cast<std::int32_t>(align->getAlignment()))
                .addConstOp(static_cast<std::int32_t>(align->getNumBytes()))
                .addConstOp(static_cast<std::int32_t>(align->getFill()));
            align->getLabel()->setCCBottom(lastCCBottom);
            break;
        }
        case LABEL_LINE:
            static_cast<VormLabelLine*>(line)->getLabel()->setCCBottom(lastCCBottom);
            break;
        case CC_BOTTOM_LINE: {
            auto* bottom = static_cast<VormCCDirectiveLine*>(line);
            VormCCDirectiveLine* top = bottom->getTop();
            assert(!lastCCBottom && "Nested cc_bottom");
            assert(std::strcmp(bottom->getName(), top->getName()) == 0);
            const char* predicate = top->getPredicate();
            VormLabel* subject =
                predicate[0] ? assembler.getLabels().getOrAddRequiredLabel(predicate, false) : top->getLabel();
            exps.addExp(2117, subject).addSymOp(top->getLabel()).addSymOp(bottom->getLabel());
            lastCCBottom = bottom;
            break;
        }
        case CC_TOP_LINE:
            assert(lastCCBottom && "cc_top without a cc_bottom");
            lastCCBottom = nullptr;
            break;
        default:
            break;
        }
    }
    assert(!lastCCBottom && "Unterminated cc_bottom");
}

} // namespace vorp
