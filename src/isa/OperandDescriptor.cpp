#include "isa/OperandDescriptor.h"

#include <algorithm>
#include <cassert>

namespace vorp {

OperandDescriptor::OperandDescriptor(AsmOperandType type, std::vector<Range> ranges, std::vector<Range> mapsTo)
    : m_ranges(std::move(ranges)), m_mapsTo(std::move(mapsTo)), m_type(type)
{
}

bool OperandDescriptor::matches(int value) const
{
    return std::any_of(m_ranges.begin(), m_ranges.end(),
                       [value](const Range& range) { return range.first <= value && value <= range.second; });
}

OperandDescriptor::MatchResult OperandDescriptor::matches(int minimum, int current, int maximum) const
{
    for (const Range& range : m_ranges) {
        if (range.first <= minimum && range.second >= maximum)
            return MATCH_DEFINITE;
        if (range.first <= maximum && range.second >= minimum)
            return matches(current) ? MATCH_CURRENT : MATCH_POSSIBLE;
    }
    return MATCH_NONE;
}

void OperandDescriptor::findRanges(EncodingFailInfo::Ranges& ranges) const
{
    for (const Range& range : m_ranges) {
        if (std::find(ranges.begin(), ranges.end(), range) == ranges.end())
            ranges.push_back(range);
    }
}

int OperandDescriptor::map(int value) const
{
    assert(!m_mapsTo.empty() && "Trying to map when not required");
    for (std::size_t i = 0; i < m_ranges.size(); ++i) {
        if (m_ranges[i].first <= value && value <= m_ranges[i].second)
            return value + m_mapsTo[i].first - m_ranges[i].first;
    }
    assert(0 && "Mapping failed");
    return 0;
}

void OperandDescriptor::printRanges(FILE* out, bool inverted) const
{
    const char* sign = inverted ? "-" : "";
    for (std::size_t i = 0; i < m_ranges.size(); ++i) {
        if (i)
            fputc(';', out);
        if (m_ranges[i].first == m_ranges[i].second)
            fprintf(out, "%s%d", sign, m_ranges[i].first);
        else
            fprintf(out, "%s%d,%s%d", sign, m_ranges[i].first, sign, m_ranges[i].second);
    }
}

OperandDescriptorReg::OperandDescriptorReg(std::vector<Range> ranges, bool isUse, bool isDef)
    : OperandDescriptor(OPERAND_REGISTER, std::move(ranges), {}), m_isDef(isDef), m_isUse(isUse)
{
}

void OperandDescriptorReg::print(FILE* out) const
{
    fputs("r[", out);
    printRanges(out, false);
    fputs("] ", out);
}

OperandDescriptorImm::OperandDescriptorImm(std::vector<Range> ranges, std::vector<Range> mapsTo, int scale,
                                           bool inverted, Mode mode, bool labelAllowed)
    : OperandDescriptor(OPERAND_IMMEDIATE, std::move(ranges), std::move(mapsTo)), m_mode(mode), m_scale(scale),
      m_inverted(inverted), m_labelAllowed(labelAllowed)
{
}

void OperandDescriptorImm::print(FILE* out) const
{
    fputs("i[", out);
    printRanges(out, m_inverted);
    fputs("] ", out);
}

} // namespace vorp
