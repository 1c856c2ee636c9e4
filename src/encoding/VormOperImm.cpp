#include "encoding/VormOperImm.h"

#include "diag/FatalError.h"
#include "diag/VorpErrorHandler.h"
#include "model/AddressReader.h"
#include "isa/OperandDescriptor.h"
#include "encoding/VormCodeLine.h"
#include "model/Relocations.h"
#include "frontend/VormExprEval.h"
#include "frontend/VorpTokeniser.h"
#include "model/AddressReader.h"
#include "model/VormLabels.h"
#include "model/VormLine.h"

#include <cassert>
#include <cstdlib>
#include <utility>

namespace vorp {

bool VormOperImm::getValues(VormCodeLine* line, unsigned& tokenNum, unsigned instructionBytes, int& minimum,
                            int& current, int& maximum, const OperandDescriptorImm* desc, bool largest,
                            Relocations* relocations, std::uint32_t relocationType, bool final)
{
    const LexTokenVector* tokens = &line->getTokens();
    int constant = 0;
    if (VormExprEval().tryEvaluateExpression(tokens, tokenNum, constant)) {
        // Constants are written in the operand's units: they are not scaled.
        if (desc->isInverted())
            constant = static_cast<int>(0u - static_cast<std::uint32_t>(constant));
        --tokenNum;
        minimum = current = maximum = constant;
        return true;
    }

    const Token& name = line->getToken(tokenNum);
    if (name.symbol != S_NAME)
        return false;
    if (!desc->isLabelAllowed()) {
        if (VorpTokeniser::isRegister(name))
            return false;
        m_labels.getErrorHandler().vorpError(line->getLocation(), AssErrorCodes::LABEL_AS_IMMEDIATE,
                                  "Instruction '%s' does not allow a label as an immediate\n",
                                  line->getInstructionName());
        throw FatalError(1);
    }

    int addend = 0;
    if (tokenNum + 1 < line->numTokens() &&
        (line->getToken(tokenNum + 1).symbol == S_PLUS || line->getToken(tokenNum + 1).symbol == S_MINUS)) {
        ++tokenNum;
        if (!VormExprEval().tryEvaluateExpression(tokens, tokenNum, addend))
            addend = 0;
        --tokenNum;
    }

    // Marked a branch target whatever the instruction: its line then starts a new block.
    VormLabel* label = line->getCachedLabel(tokenNum, name.text);
    if (!label) {
        label = m_labels.getOrAddRequiredLabel(name.text, true);
        // Once the label has its line, asking again changes nothing: keep the answer.
        if (label->getTargetLine())
            line->setCachedLabel(tokenNum, name.text, label);
    }
    VormLabel* target = label->getLabelFollowAliases();
    AddressReader* reader = final ? nullptr : m_reader;
    const VormAddress here = reader ? reader->addressOf(*line) : line->getAddress();
    auto relocate = [&] {
        if (final)
            relocations->add(label, here.min, addend, relocationType);
        return largest;
    };

    if (target->providesDefinition() && label->getSymbolType() != SYMBOL_LINKSET &&
        label->getVisibility() != VISIBILITY_WEAK) {
        const OperandDescriptorImm::Mode mode = desc->getMode();
        if (mode == OperandDescriptorImm::MODE_ABSOLUTE && target->getSymbolType() == SYMBOL_ABSOLUTE) {
            int value = static_cast<int>(target->getValue());
            if (desc->isInverted())
                value = static_cast<int>(0u - static_cast<std::uint32_t>(value));
            minimum = current = maximum = value;
            return true;
        }
        if ((mode == OperandDescriptorImm::MODE_CP_RELATIVE || mode == OperandDescriptorImm::MODE_DP_RELATIVE) &&
            target->getSymbolType() == SYMBOL_DEFINED) {
            if (final && (target->getTargetLine()->getAddress().min + static_cast<std::uint32_t>(addend)) % 4 != 0) {
                m_labels.getErrorHandler().vorpError(line->getLocation(), AssErrorCodes::MISALIGNED_LABEL,
                                          "label '%s' must be word aligned to be used with a %s relative offset\n",
                                          name.text, mode == OperandDescriptorImm::MODE_CP_RELATIVE ? "cp" : "dp");
                throw FatalError(1);
            }
            return relocate();
        }
        if (mode == OperandDescriptorImm::MODE_PC_RELATIVE && target->getSymbolType() == SYMBOL_DEFINED &&
            target->getSection() == line->getSection()) {
            const VormLine& thereLine = *target->getTargetLine();
            const VormAddress there = reader ? reader->addressOf(thereLine) : thereLine.getAddress();
            if (reader)
                reader->noteDistance(*line, here, thereLine, there, addend, *desc, instructionBytes);
            std::uint32_t lo = there.min + static_cast<std::uint32_t>(addend);
            std::uint32_t hi = there.max + static_cast<std::uint32_t>(addend);
            if (lo > hi)
                std::swap(lo, hi);
            int high = static_cast<int>(hi - (here.min + instructionBytes));
            int now = static_cast<int>(lo - (here.min + instructionBytes));
            int low = static_cast<int>(lo - instructionBytes - here.max);
            const int scale = desc->getScale();
            if (scale > 0) {
                if (final && (std::abs(high) & ((1 << scale) - 1))) {
                    m_labels.getErrorHandler().vorpError(line->getLocation(), AssErrorCodes::MISALIGNED_LABEL,
                                              "misaligned scaled immediate value detected. label: %s\n", name.text);
                    throw FatalError(1);
                }
                high >>= scale;
                now >>= scale;
                low >>= scale;
            }
            if (desc->isInverted()) {
                const int oldLow = low;
                low = -high;
                high = -oldLow;
                now = -now;
            }
            minimum = low;
            current = now;
            maximum = high;
            if (final) {
                assert(desc->matches(minimum, current, maximum) == OperandDescriptor::MATCH_DEFINITE);
                relocate();
            }
            return true;
        }
    }
    return relocate();
}

void VormOperImm::getValue(VormCodeLine* line, unsigned tokenNum, unsigned instructionBytes, int& value,
                           const OperandDescriptorImm* desc, Relocations* relocations, std::uint32_t relocationType)
{
    int minimum = 0;
    int current = 0;
    int maximum = 0;
    unsigned position = tokenNum;
    getValues(line, position, instructionBytes, minimum, current, maximum, desc, true, relocations, relocationType,
              true);
    assert(minimum == maximum);
    value = minimum;
}

} // namespace vorp
