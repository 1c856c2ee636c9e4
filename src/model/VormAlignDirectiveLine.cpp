#include "model/VormAlignDirectiveLine.h"

#include "diag/VorpErrorHandler.h"
#include "model/VormAssembler.h"
#include "model/VormSection.h"

namespace vorp {

namespace {

constexpr std::uint32_t CODE_FILL = 0x900090;

bool isPowerOfTwo(std::uint32_t value)
{
    return value != 0 && (value & (value - 1)) == 0;
}

} // namespace

VormAlignDirectiveLine::VormAlignDirectiveLine(std::uint32_t alignment, const LineLocation& location, bool schedule)
    : VormLine(ALIGN_LINE, schedule), m_alignment(alignment), m_fill(0), m_hasFill(false), m_location(location)
{
}

VormAlignDirectiveLine::VormAlignDirectiveLine(std::uint32_t alignment, std::uint32_t fill,
                                               const LineLocation& location, bool schedule)
    : VormLine(ALIGN_LINE, schedule), m_alignment(alignment), m_fill(fill), m_hasFill(true), m_location(location)
{
}

void VormAlignDirectiveLine::initialise(VormAssembler& assembler, VorpErrorHandler& errorHandler)
{
    m_label = assembler.getLabels().addUniqueAlignLabel(this);
    if (!isPowerOfTwo(m_alignment))
        errorHandler.vorpError(m_location, AssErrorCodes::ALIGN_NOT_POWER_OF_TWO,
                               "alignment value '%d' is not power of two\n", static_cast<int>(m_alignment));
    if (!m_hasFill)
        m_fill = (getSection()->getFlags() & VormAssembler::SHF_EXECINSTR) ? CODE_FILL : 0;
}

// A bad alignment has been reported; it then counts as no alignment, so that nothing divides by 0.
std::uint32_t VormAlignDirectiveLine::pad(std::uint32_t address) const
{
    if (m_alignment == 0)
        return 0;
    const std::uint32_t remainder = address % m_alignment;
    return remainder == 0 ? 0 : m_alignment - remainder;
}

std::uint32_t VormAlignDirectiveLine::roundUp(std::uint32_t address) const
{
    return address + pad(address);
}

void VormAlignDirectiveLine::getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const
{
    const VormAddress& address = getAddress();
    if (address.min == address.max || m_alignment == 0) {
        minBytes = maxBytes = pad(address.max);
        return;
    }
    minBytes = roundUp(address.min) <= address.max ? 0 : pad(address.max);
    // For max below the alignment this wraps around and gives alignment - 1: a safe bound.
    const std::uint32_t below = address.max / m_alignment * m_alignment - 1u;
    maxBytes = below >= address.min ? m_alignment - 1 : pad(address.min);
}

VormAddress VormAlignDirectiveLine::getNextAddress() const
{
    return VormAddress{roundUp(getAddress().min), roundUp(getAddress().max)};
}

void VormAlignDirectiveLine::encode(std::uint8_t* buffer, Relocations&, VormAssembler&, VorpErrorHandler&)
{
    // From the end backwards, so that the fill pattern ends at the aligned address.
    const std::uint32_t count = getNumBytes();
    for (std::uint32_t i = 0; i < count; ++i)
        buffer[count - 1 - i] = static_cast<std::uint8_t>(m_fill >> (8 * (i % 4)));
}

void VormAlignDirectiveLine::dump(std::ostream& out) const
{
    out << ".align " << m_alignment;
    if (m_hasFill)
        out << ", " << m_fill;
}

} // namespace vorp
