#pragma once

#include "isa/EncodingFailInfo.h"

#include <cstdio>
#include <utility>
#include <vector>

namespace vorp {

enum AsmOperandType { OPERAND_REGISTER = 0, OPERAND_IMMEDIATE = 1 };

// One operand slot of a format: the values it allows, as inclusive ranges, and for some
// immediates the codes those values are encoded as.
class OperandDescriptor {
public:
    using Range = std::pair<int, int>;

    enum MatchResult { MATCH_DEFINITE = 0, MATCH_CURRENT = 1, MATCH_POSSIBLE = 2, MATCH_NONE = 3 };

    virtual ~OperandDescriptor() = default;
    virtual void print(FILE* out) const = 0;

    bool isReg() const { return m_type == OPERAND_REGISTER; }
    bool isImm() const { return m_type == OPERAND_IMMEDIATE; }
    const std::vector<Range>& getRanges() const { return m_ranges; }

    bool matches(int value) const;
    // The first range that holds [minimum, maximum] gives MATCH_DEFINITE; the first range that only
    // overlaps it ends the search too, with MATCH_CURRENT when `current` lies in some range.
    MatchResult matches(int minimum, int current, int maximum) const;
    // Appends the ranges not already listed.
    void findRanges(EncodingFailInfo::Ranges& ranges) const;
    // The encoded value of a legal value, for descriptors with a map.
    int map(int value) const;
    bool hasMap() const { return !m_mapsTo.empty(); }

protected:
    OperandDescriptor(AsmOperandType type, std::vector<Range> ranges, std::vector<Range> mapsTo);
    // "lo,hi" or "lo" for each range, separated by ";", with a "-" before every number when inverted.
    void printRanges(FILE* out, bool inverted) const;

private:
    std::vector<Range> m_ranges;
    std::vector<Range> m_mapsTo;
    AsmOperandType m_type;
};

class OperandDescriptorReg : public OperandDescriptor {
public:
    OperandDescriptorReg(std::vector<Range> ranges, bool isUse, bool isDef);

    void print(FILE* out) const override;
    bool isUse() const { return m_isUse; }
    bool isDef() const { return m_isDef; }

private:
    bool m_isDef;
    bool m_isUse;
};

class OperandDescriptorImm : public OperandDescriptor {
public:
    enum Mode { MODE_ABSOLUTE = 0, MODE_PC_RELATIVE = 1, MODE_CP_RELATIVE = 2, MODE_DP_RELATIVE = 3 };

    OperandDescriptorImm(std::vector<Range> ranges, std::vector<Range> mapsTo, int scale, bool inverted, Mode mode,
                         bool labelAllowed);

    void print(FILE* out) const override;
    Mode getMode() const { return m_mode; }
    int getScale() const { return m_scale; }
    bool isInverted() const { return m_inverted; }
    bool isLabelAllowed() const { return m_labelAllowed; }

private:
    Mode m_mode;
    int m_scale;
    bool m_inverted;
    bool m_labelAllowed;
};

} // namespace vorp
