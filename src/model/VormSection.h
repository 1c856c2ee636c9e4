#pragma once

#include "model/Relocations.h"

#include <cstdint>
#include <list>
#include <ostream>
#include <string>
#include <vector>

namespace vorp {

struct DebugFrameProc;
class VormCCDirectiveLine;
class VormLine;

using LineList = std::list<VormLine*>;
// A place in a section's line list. Positions stay valid while lines are inserted.
using LinePosition = LineList::iterator;

// One section of the object: its ELF attributes and its lines in address order. Owns its lines.
class VormSection {
public:
    enum Type : std::uint32_t { PROGBITS = 0, NOBITS = 1, NETINFO = 2 };

    VormSection(std::string name, std::uint32_t flags, std::uint32_t type, std::uint32_t entrySize,
                std::string group, bool comdat);
    VormSection(const VormSection&) = delete;
    VormSection& operator=(const VormSection&) = delete;
    ~VormSection();

    const std::string& getName() const { return m_name; }
    std::uint32_t getFlags() const { return m_flags; }
    std::uint32_t getType() const { return m_type; }
    std::uint32_t getEntrySize() const { return m_entrySize; }
    const std::string& getGroup() const { return m_group; }
    bool isComdat() const { return m_comdat; }
    std::uint32_t getSize() const { return m_size; }
    // The end address of the last line. Sizes are addresses too: a section is at most MAX_ADDRESS long.
    void setSize(std::uint32_t size);

    VormCCDirectiveLine* getOpenCCTop() const { return m_openCCTop; }
    void setOpenCCTop(VormCCDirectiveLine* top) { m_openCCTop = top; }
    DebugFrameProc* getCurrentProc() const { return m_currentProc; }
    void setCurrentProc(DebugFrameProc* proc) { m_currentProc = proc; }

    LineList& getLines() { return m_lines; }
    const LineList& getLines() const { return m_lines; }
    Relocations& getRelocations() { return m_relocations; }

    // The position of the first line that may take bytes, or the end.
    LinePosition getFirstNonZeroSizedLine();

    // ".section <name>", then every line.
    void dump(std::ostream& out) const;
    void dump() const;

private:
    std::string m_name;
    std::uint32_t m_flags;
    VormCCDirectiveLine* m_openCCTop = nullptr;
    DebugFrameProc* m_currentProc = nullptr;
    LineList m_lines;
    Relocations m_relocations;
    std::uint32_t m_type;
    std::uint32_t m_entrySize;
    std::uint32_t m_size = 0;
    std::string m_group;
    bool m_comdat;
};

} // namespace vorp
