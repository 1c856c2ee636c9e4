#include "model/VormDirectiveLine.h"

#include "model/VormDirective.h"

#include <cstring>

namespace vorp {

VormDirectiveLine::VormDirectiveLine(LineType type, bool schedule, std::unique_ptr<TokenLine> tokens,
                                     VormDirective* directive)
    : VormTokenLine(type, schedule, std::move(tokens)), m_directive(directive)
{
}

void VormDirectiveLine::initialise(VormAssembler& assembler, VorpErrorHandler& errorHandler)
{
    m_directive->initialise(this, assembler, errorHandler);
}

void VormDirectiveLine::encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                               VorpErrorHandler& errorHandler)
{
    m_directive->encode(relocations, this, assembler, errorHandler);
    getBytes(buffer);
}

void VormDirectiveLine::getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const
{
    minBytes = maxBytes = m_numBytes;
}

void VormDirectiveLine::printListing(FILE* file)
{
    m_directive->printListing(this, file);
}

void VormDirectiveLine::setAllBytes(std::uint8_t value)
{
    m_bytes.reset();
    m_allSame = true;
    m_fill = value;
}

void VormDirectiveLine::setBytes(const std::uint8_t* source)
{
    m_allSame = false;
    m_bytes = std::make_unique<std::uint8_t[]>(m_numBytes);
    std::memcpy(m_bytes.get(), source, m_numBytes);
}

void VormDirectiveLine::getBytes(std::uint8_t* buffer) const
{
    if (m_bytes)
        std::memcpy(buffer, m_bytes.get(), m_numBytes);
    else if (m_allSame)
        std::memset(buffer, m_fill, m_numBytes);
}

} // namespace vorp
