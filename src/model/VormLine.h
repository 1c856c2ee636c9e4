#pragma once

#include "diag/Location.h"
#include "model/LineType.h"
#include "model/VormAddress.h"

#include <cstdint>
#include <cstdio>
#include <ostream>

namespace vorp {

struct EncodingFailInfo;
class Relocations;
class VormAssembler;
class AddressReader;
class VormLabels;
class VormSection;
class VorpErrorHandler;

// The smallest thing with an address. Every line knows the range of bytes it may still take; format
// choice narrows addresses and byte ranges until both are exact.
class VormLine {
public:
    VormLine(LineType type, bool schedule);
    VormLine(const VormLine&) = delete;
    VormLine& operator=(const VormLine&) = delete;
    virtual ~VormLine() = default;

    // Writes exactly getNumBytes() bytes and adds the line's relocations.
    virtual void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                        VorpErrorHandler& errorHandler) = 0;
    virtual LineLocation getLocation() const = 0;
    // A target line begins a basic block.
    virtual bool isTargetLine() const { return m_branchTarget; }
    // Only code lines have encodings to choose from. `addresses`, when not null, says where lines are
    // while sizes are open, in place of the addresses last set on them.
    virtual bool chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                               EncodingFailInfo& failInfo, bool final);
    // The line's size will not change any more.
    virtual bool isDone() const { return true; }
    // The smallest and the largest size the line can yet take at its present address.
    virtual void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const = 0;
    // The address range of what follows the line.
    virtual VormAddress getNextAddress() const;
    // The line as assembly text, without a line end.
    virtual void dump(std::ostream& out) const = 0;
    virtual void printListing(FILE* file) = 0;

    LineType getType() const { return m_type; }
    bool getSchedule() const { return m_schedule; }
    // The order in which the line joined its section among all lines of the run.
    std::uint32_t getId() const { return m_id; }
    void setId(std::uint32_t id) { m_id = id; }
    const VormAddress& getAddress() const { return m_address; }
    // The new address must lie within the old one: ranges only narrow.
    void setAddress(const VormAddress& address);
    VormSection* getSection() const { return m_section; }
    void setSection(VormSection* section) { m_section = section; }
    void setBranchTarget(bool target) { m_branchTarget = target; }
    // Where the size iteration keeps the line: the index of its grouping, or NO_LAYOUT_SLOT for a
    // line whose address the iteration does not move.
    static constexpr std::uint32_t NO_LAYOUT_SLOT = UINT32_MAX;
    std::uint32_t getLayoutSlot() const { return m_layoutSlot; }
    void setLayoutSlot(std::uint32_t slot) { m_layoutSlot = slot; }
    // The exact size; only for a line that is done.
    std::uint32_t getNumBytes() const;
    // Writes the line and a line end to standard error.
    void dump() const;
    // Writes the line's text and a line end to the file: the listing form of data lines.
    void printDump(FILE* file) const;

private:
    LineType m_type;
    bool m_schedule;
    std::uint32_t m_id = 0;
    VormAddress m_address;
    std::uint32_t m_layoutSlot = NO_LAYOUT_SLOT;
    VormSection* m_section = nullptr;
    bool m_branchTarget = false;
};

// Ends the run with a fatal message, and without the output file: a line at the given place lies,
// or ends, beyond MAX_ADDRESS.
[[noreturn]] void addressRangeExceeded(const char* file, unsigned line);

} // namespace vorp
