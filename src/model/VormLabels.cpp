#include "model/VormLabels.h"

#include "diag/VorpErrorHandler.h"
#include "model/VormLine.h"

#include <cassert>
#include <cstdio>

namespace vorp {

VormLabels::VormLabels(VorpErrorHandler* errorHandler) : m_errorHandler(errorHandler) {}

VormLabels::~VormLabels() = default;

VormLabel* VormLabels::findLabel(const char* name) const
{
    assert(name && "label");
    const auto found = m_nameLabelMap.find(std::string_view(name));
    return found == m_nameLabelMap.end() ? nullptr : found->second;
}

VormLabel* VormLabels::append(std::unique_ptr<VormLabel> label)
{
    label->m_tableGeneration = &m_aliasGeneration;
    m_allLabels.push_back(std::move(label));
    return m_allLabels.back().get();
}

void VormLabels::insertName(VormLabel* label)
{
    assert(m_nameLabelMap.find(label->m_name) == m_nameLabelMap.end());
    m_nameLabelMap.emplace(std::string_view(label->m_name), label);
}

VormLabel* VormLabels::getOrAddLabel(const char* name, bool required, bool branchTarget)
{
    assert(name);
    VormLabel* label = findLabel(name);
    if (!label) {
        label = append(std::make_unique<VormLabel>(name, nullptr, nullptr, 0,
                                                   required ? SYMBOL_REQUIRED : SYMBOL_TENTATIVE));
        insertName(label);
        if (m_labelsFinalised)
            finaliseLabel(label);
    } else if (required && label->m_symbolType == SYMBOL_TENTATIVE) {
        label->m_symbolType = SYMBOL_REQUIRED;
    }
    label->m_branchTarget |= branchTarget;
    if (branchTarget && label->m_targetLine)
        label->m_targetLine->setBranchTarget(true);
    return label;
}

VormLabel* VormLabels::getOrTentativelyAddLabel(const char* name, bool branchTarget)
{
    return getOrAddLabel(name, false, branchTarget);
}

VormLabel* VormLabels::getOrAddRequiredLabel(const char* name, bool branchTarget)
{
    return getOrAddLabel(name, true, branchTarget);
}

VormLabel* VormLabels::addExternLabel(const char* name, const char* typeString)
{
    VormLabel* label = getOrTentativelyAddLabel(name, false);
    if (typeString)
        label->m_typeString = typeString;
    return label;
}

VormLabel* VormLabels::addLocalLabel(const char* name, const char* typeString)
{
    VormLabel* label = addExternLabel(name, typeString);
    label->m_visibility = VISIBILITY_LOCAL;
    return label;
}

VormLabel* VormLabels::addGlobalLabel(const char* name, const char* typeString)
{
    VormLabel* label = getOrTentativelyAddLabel(name, true);
    if (label->m_visibility != VISIBILITY_WEAK)
        label->m_visibility = VISIBILITY_GLOBAL;
    if (typeString)
        label->m_typeString = typeString;
    return label;
}

VormLabel* VormLabels::addWeakLabel(const char* name)
{
    VormLabel* label = getOrTentativelyAddLabel(name, false);
    label->m_visibility = VISIBILITY_WEAK;
    ++m_aliasGeneration;
    return label;
}

void VormLabels::reportDuplicate(const Location& location, const VormLabel* label)
{
    m_errorHandler->vorpError(location, AssErrorCodes::DUPLICATE_LABEL, "Duplicate defined label '%s'\n",
                              label->m_name.c_str());
}

VormLabel* VormLabels::addDefinedLabel(const Location& location, const char* name, VormLabel* alias, VormLine* line,
                                       std::uint32_t value, SymbolType type)
{
    assert(!m_labelsFinalised && "Can't add labels after calling finaliseLabels()");
    VormLabel* label = findLabel(name);
    if (!label) {
        label = append(std::make_unique<VormLabel>(name, alias, line, value, type));
        insertName(label);
        return label;
    }
    if (label->providesDefinition())
        reportDuplicate(location, label);
    label->define(alias, line, value, type);
    return label;
}

VormLabel* VormLabels::addDefinedLabel(const char* name, VormLine* target)
{
    assert(target != __null);
    return addDefinedLabel(target->getLocation(), name, nullptr, target, 0, SYMBOL_DEFINED);
}

VormLabel* VormLabels::addAlignLabel(const char* name, VormLine* target)
{
    assert(target != __null);
    return addDefinedLabel(target->getLocation(), name, nullptr, target, 0, SYMBOL_ALIGN);
}

VormLabel* VormLabels::addAbsoluteLabel(const Location& location, const char* name, std::uint32_t value)
{
    return addDefinedLabel(location, name, nullptr, nullptr, value, SYMBOL_ABSOLUTE);
}

VormLabel* VormLabels::addLinksetLabel(const Location& location, const char* name)
{
    return addDefinedLabel(location, name, nullptr, nullptr, 0, SYMBOL_LINKSET);
}

VormLabel* VormLabels::addAliasLabel(const Location& location, const char* name, const char* targetName)
{
    VormLabel* target = getOrAddRequiredLabel(targetName, true);
    return addDefinedLabel(location, name, target, nullptr, 0, SYMBOL_ALIAS);
}

VormLabel* VormLabels::addUniqueDefinedLabel(VormLabel* alias, VormLine* line, std::uint32_t value, SymbolType type)
{
    VormLabel* label = append(std::make_unique<VormLabel>(alias, line, value, type));
    if (m_labelsFinalised)
        finaliseLabel(label);
    return label;
}

VormLabel* VormLabels::addUniqueDefinedLabel(VormLine* target)
{
    assert(target != __null);
    return addUniqueDefinedLabel(nullptr, target, 0, SYMBOL_DEFINED);
}

VormLabel* VormLabels::addUniqueAlignLabel(VormLine* target)
{
    assert(target != __null);
    return addUniqueDefinedLabel(nullptr, target, 0, SYMBOL_ALIGN);
}

VormLabel* VormLabels::addUniqueLinksetLabel()
{
    return addUniqueDefinedLabel(nullptr, nullptr, 0, SYMBOL_LINKSET);
}

VormLabel* VormLabels::addUniqueUndefinedLabel()
{
    return addUniqueDefinedLabel(nullptr, nullptr, 0, SYMBOL_REQUIRED);
}

void VormLabels::defineLabel(VormLabel* label, VormLine* line)
{
    if (label->providesDefinition())
        reportDuplicate(line->getLocation(), label);
    label->define(nullptr, line, 0, SYMBOL_DEFINED);
}

void VormLabels::ensureLabelName(VormLabel* label)
{
    if (!label->m_unnamed)
        return;
    assert(label->getTargetLine());
    label->m_name = ".Ldefined." + std::to_string(label->getTargetLine()->getId());
    label->m_unnamed = false;
    insertName(label);
}

std::string VormLabels::genUniqueLabelName()
{
    std::string name = ".L" + std::to_string(m_labelCounter);
    while (findLabel(name.c_str()))
        name = ".L" + std::to_string(++m_labelCounter);
    return name;
}

void VormLabels::finaliseLabels()
{
    assert(!m_labelsFinalised && "finaliseLabels() called twice");
    const std::size_t count = m_allLabels.size();
    for (std::size_t i = 0; i < count; ++i)
        finaliseLabel(m_allLabels[i].get());
    m_labelsFinalised = true;
}

void VormLabels::finaliseLabel(VormLabel* label)
{
    if (label->m_unnamed) {
        label->m_name = genUniqueLabelName();
        insertName(label);
    }
    label->finalise();
}

void VormLabels::displayLabels() const
{
    printf("VormLabels::DisplayLabels: LabelMap:\n");
    printf("====================================\n");
    for (const auto& label : m_allLabels)
        printf("label: %s\n", label->getName());
}

} // namespace vorp
