#pragma once

#include <string>
#include <utility>
#include <vector>

namespace vorp {

class VormAssembler;

// The minimal compilation unit written for -g on plain assembly: one abbreviation and one entry
// without children, which ties the generated line table to the object.
class DebugInfo {
public:
    void setName(std::string name) { m_name = std::move(name); }
    void setCompDir(std::string compDir) { m_compDir = std::move(compDir); }
    void setProducer(std::string producer) { m_producer = std::move(producer); }
    void addRange(std::string low, std::string high) { m_ranges.emplace_back(std::move(low), std::move(high)); }
    const std::vector<std::pair<std::string, std::string>>& getRanges() const { return m_ranges; }

    // ".debug_abbrev", then ".debug_info".
    void encode(VormAssembler& assembler);
    void encodeDebugAbbrev(VormAssembler& assembler);
    void encodeDebugInfo(VormAssembler& assembler);

private:
    // True when the unit has a code range; only one is possible.
    bool hasRange() const;

    std::string m_name;
    std::string m_compDir;
    std::vector<std::pair<std::string, std::string>> m_ranges;
    std::string m_producer;
};

} // namespace vorp
