#pragma once

#include <cstdint>
#include <string>

namespace vorp {

class VormCCDirectiveLine;
class VormLine;
class VormSection;

enum SymbolType {
    SYMBOL_DEFINED = 0,   // a location: the address of its target line
    SYMBOL_REQUIRED = 1,  // referred to by something written: the linker must find it
    SYMBOL_TENTATIVE = 2, // only mentioned (.globl, .type, .extern): nothing needs it yet
    SYMBOL_ABSOLUTE = 3,  // a constant from .set
    SYMBOL_ALIAS = 4,     // another name for m_alias
    SYMBOL_LINKSET = 5,   // computed by the linker from a linker expression
    SYMBOL_ALIGN = 6,     // just behind an alignment line
};

enum Visibility {
    VISIBILITY_UNSET = 0,
    VISIBILITY_GLOBAL = 1,
    VISIBILITY_WEAK = 2,
    VISIBILITY_LOCAL = 3,
};

// A symbol: a name the source defines or mentions, or a nameless place a pass points at.
class VormLabel {
public:
    // A nameless label; it gets a name from ensureLabelName or when labels are finalised.
    VormLabel(VormLabel* alias, VormLine* targetLine, std::uint32_t value, SymbolType type);
    VormLabel(std::string name, VormLabel* alias, VormLine* targetLine, std::uint32_t value, SymbolType type);

    // Only once the label has a name: a nameless one before finalisation has none yet.
    const char* getName() const;
    bool hasName() const { return !m_unnamed || m_valueFinalised; }
    bool isUnnamed() const { return m_unnamed; }

    VormLine* getTargetLine() const { return m_targetLine; }
    VormLabel* getAliasedLabel() const { return m_alias; }
    // Defined over an alias, a label takes the new definition silently: an alias is no definition.
    bool providesDefinition() const;
    // The section of the target line, or null.
    VormSection* getSection() const;
    // Follows aliases, but never through a weak label (the linker may replace it) and not around
    // a cycle, which gives this label back.
    VormLabel* getLabelFollowAliases();

    SymbolType getSymbolType() const { return m_symbolType; }
    std::uint32_t getValue() const { return m_value; }
    bool isValueFinalised() const { return m_valueFinalised; }
    Visibility getVisibility() const { return m_visibility; }
    void setVisibility(Visibility visibility)
    {
        m_visibility = visibility;
        aliasesChanged();
    }
    // Every change to what an alias chain resolves to must call this: resolved chains are kept.
    void aliasesChanged()
    {
        if (m_tableGeneration)
            ++*m_tableGeneration;
    }
    bool isBranchTarget() const { return m_branchTarget; }
    std::uint32_t getSymbolNumber() const { return m_symbolNumber; }
    void setSymbolNumber(std::uint32_t number) { m_symbolNumber = number; }
    std::uint32_t getSize() const { return m_size; }
    void setSize(std::uint32_t size) { m_size = size; }
    std::uint8_t getElfType() const { return m_elfType; }
    void setElfType(std::uint8_t type) { m_elfType = type; }
    const std::string& getTypeString() const { return m_typeString; }
    void setTypeString(const std::string& text) { m_typeString = text; }
    VormCCDirectiveLine* getCCBottom() const { return m_ccBottom; }
    void setCCBottom(VormCCDirectiveLine* bottom) { m_ccBottom = bottom; }

    // Decides visibility, then the value. Once only.
    void finalise();

private:
    friend class VormLabels;

    void define(VormLabel* alias, VormLine* targetLine, std::uint32_t value, SymbolType type);
    void finaliseVisibility();
    void finaliseValue();

    bool m_unnamed;
    std::string m_name;
    VormLabel* m_alias;
    VormLine* m_targetLine;
    std::uint32_t m_value;
    std::uint32_t m_symbolNumber = 0;
    SymbolType m_symbolType;
    bool m_valueFinalised = false;
    std::uint32_t m_size = 0;
    std::uint8_t m_elfType = 0;
    Visibility m_visibility = VISIBILITY_UNSET;
    std::string m_typeString;
    bool m_branchTarget = false;
    VormCCDirectiveLine* m_ccBottom = nullptr;
    // The end of the alias chain, valid while m_aliasGeneration equals the generation of the table
    // the label is in. A label in no table keeps nothing.
    VormLabel* m_aliasTarget = nullptr;
    std::uint64_t m_aliasGeneration = 0;
    std::uint64_t* m_tableGeneration = nullptr;
};

} // namespace vorp
