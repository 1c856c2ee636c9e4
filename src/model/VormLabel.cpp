#include "model/VormLabel.h"

#include "model/VormLine.h"

#include <cassert>
#include <vector>

namespace vorp {

VormLabel::VormLabel(VormLabel* alias, VormLine* targetLine, std::uint32_t value, SymbolType type)
    : m_unnamed(true), m_alias(alias), m_targetLine(targetLine), m_value(value), m_symbolType(type)
{
}

VormLabel::VormLabel(std::string name, VormLabel* alias, VormLine* targetLine, std::uint32_t value,
                     SymbolType type)
    : m_unnamed(false), m_name(std::move(name)), m_alias(alias), m_targetLine(targetLine), m_value(value),
      m_symbolType(type)
{
}

const char* VormLabel::getName() const
{
    assert(!m_unnamed || m_valueFinalised);
    return m_name.c_str();
}

bool VormLabel::providesDefinition() const
{
    switch (m_symbolType) {
    case SYMBOL_DEFINED:
    case SYMBOL_ABSOLUTE:
    case SYMBOL_LINKSET:
    case SYMBOL_ALIGN:
        return true;
    default:
        return false;
    }
}

VormSection* VormLabel::getSection() const
{
    return m_targetLine ? m_targetLine->getSection() : nullptr;
}

VormLabel* VormLabel::getLabelFollowAliases()
{
    if (m_symbolType != SYMBOL_ALIAS)
        return this;
    // Generation 0 is never current: nothing is kept outside a table.
    const std::uint64_t generation = m_tableGeneration ? *m_tableGeneration : 0;
    if (generation != 0 && m_aliasGeneration == generation)
        return m_aliasTarget;
    // Every label on the way resolves to the same end, so all of them keep it: long chains are
    // then walked once, not once per label.
    std::vector<VormLabel*> path{this};
    VormLabel* current = this;
    VormLabel* slow = this;
    VormLabel* result = nullptr;
    for (unsigned steps = 1;; ++steps) {
        VormLabel* next = current->m_alias;
        assert(next);
        if (next->m_visibility == VISIBILITY_WEAK) {
            result = current;
            break;
        }
        if (next->m_symbolType != SYMBOL_ALIAS) {
            result = next;
            break;
        }
        if (generation != 0 && next->m_aliasGeneration == generation) {
            result = next->m_aliasTarget;
            break;
        }
        current = next;
        path.push_back(current);
        if (steps % 2 == 0)
            slow = slow->m_alias;
        // A cycle: the label stands for itself, and nothing is kept.
        if (current == slow)
            return this;
    }
    for (VormLabel* label : path) {
        label->m_aliasTarget = result;
        label->m_aliasGeneration = generation;
    }
    return result;
}

void VormLabel::define(VormLabel* alias, VormLine* targetLine, std::uint32_t value, SymbolType type)
{
    m_alias = alias;
    aliasesChanged();
    m_targetLine = targetLine;
    m_value = value;
    m_symbolType = type;
}

void VormLabel::finalise()
{
    finaliseVisibility();
    finaliseValue();
}

void VormLabel::finaliseVisibility()
{
    if (m_visibility != VISIBILITY_UNSET)
        return;
    switch (m_symbolType) {
    case SYMBOL_REQUIRED:
    case SYMBOL_TENTATIVE:
        m_visibility = VISIBILITY_GLOBAL;
        return;
    case SYMBOL_DEFINED:
    case SYMBOL_ABSOLUTE:
    case SYMBOL_ALIAS:
    case SYMBOL_LINKSET:
    case SYMBOL_ALIGN:
        m_visibility = VISIBILITY_LOCAL;
        return;
    }
    assert(0 && "Unknown symbol type");
}

void VormLabel::finaliseValue()
{
    assert(!m_valueFinalised && "trying to finalise already finalised label");
    if (m_symbolType == SYMBOL_DEFINED) {
        m_value = m_targetLine->getAddress().min;
    } else if (m_symbolType == SYMBOL_ALIGN) {
        m_value = m_targetLine->getAddress().min + m_targetLine->getNumBytes();
    }
    m_valueFinalised = true;
}

} // namespace vorp
