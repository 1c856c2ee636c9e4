#include "debug/DataReader.h"

#include "model/Relocations.h"
#include "frontend/Operand.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"

#include <cassert>

namespace vorp {

namespace {

std::uint32_t maxBytes(const VormLine* line)
{
    std::uint32_t min = 0;
    std::uint32_t max = 0;
    line->getByteRange(min, max);
    return max;
}

} // namespace

bool isSafeToEncode(VormLine* line)
{
    switch (line->getType()) {
    case ASCII_LINE: return true;
    case DATA_LINE: return !static_cast<VormDataLine*>(line)->requiresRelocations();
    default: return false;
    }
}

DataReader::DataReader(VormAssembler& assembler, VormSection* section) : m_assembler(assembler)
{
    setSection(section);
}

void DataReader::setSection(VormSection* section)
{
    m_line = section->getLines().begin();
    m_end = section->getLines().end();
    m_position = SPENT;
    m_offset = 0;
}

void DataReader::skipZeroSizeLines()
{
    while (m_line != m_end && maxBytes(*m_line) == 0)
        ++m_line;
}

VormLine* DataReader::nextNonZeroSizeLine()
{
    skipZeroSizeLines();
    return m_line == m_end ? nullptr : *m_line;
}

bool DataReader::fillBuffer()
{
    if (!bufferIsEmpty())
        return true;
    VormLine* line = nextNonZeroSizeLine();
    if (!line || !isSafeToEncode(line))
        return false;
    const std::uint32_t numBytes = line->getNumBytes();
    assert(numBytes > 0);
    m_buffer.assign(numBytes, 0);
    // Safe lines add no relocations; the list only satisfies the interface.
    Relocations unused;
    line->encode(m_buffer.data(), unused, m_assembler, m_assembler.getErrorHandler());
    m_offset += numBytes;
    m_position = 0;
    ++m_line;
    return true;
}

std::uint8_t DataReader::readU8()
{
    if (!fillBuffer()) {
        m_error = true;
        return 0;
    }
    return m_buffer[m_position++];
}

std::uint16_t DataReader::readU16()
{
    const std::uint16_t low = readU8();
    const std::uint16_t high = readU8();
    return static_cast<std::uint16_t>(low | (high << 8));
}

std::uint32_t DataReader::readU32()
{
    std::uint32_t value = 0;
    for (unsigned shift = 0; shift < 32; shift += 8)
        value |= static_cast<std::uint32_t>(readU8()) << shift;
    return value;
}

std::uint64_t DataReader::readU64()
{
    const std::uint64_t low = readU32();
    const std::uint64_t high = readU32();
    return low | (high << 32);
}

bool DataReader::readLEB128(std::uint32_t& value, unsigned& shift)
{
    value = 0;
    shift = 0;
    for (;;) {
        const std::uint8_t byte = readU8();
        if (m_error)
            return false;
        if (shift < 32)
            value |= static_cast<std::uint32_t>(byte & 0x7f) << shift;
        shift += 7;
        if (!(byte & 0x80))
            return true;
    }
}

std::uint32_t DataReader::readULEB128()
{
    std::uint32_t value = 0;
    unsigned shift = 0;
    readLEB128(value, shift);
    return value;
}

std::int32_t DataReader::readSLEB128()
{
    std::uint32_t value = 0;
    unsigned shift = 0;
    // Returned as read, without sign extension: keep it, the callers only skip the value.
    if (readLEB128(value, shift))
        return static_cast<std::int32_t>(value);
    if (shift < 32)
        value |= ~std::uint32_t(0) << shift;
    return static_cast<std::int32_t>(value);
}

std::string DataReader::readString()
{
    std::string text;
    for (;;) {
        const char c = static_cast<char>(readU8());
        if (m_error || c == '\0')
            break;
        text += c;
    }
    return text;
}

VormLabel* DataReader::readDataReference(VormDataLine::Type type) const
{
    if (!bufferIsEmpty())
        return nullptr;
    LinePosition position = m_line;
    while (position != m_end && maxBytes(*position) == 0)
        ++position;
    if (position == m_end || (*position)->getType() != DATA_LINE)
        return nullptr;
    const auto* data = static_cast<const VormDataLine*>(*position);
    if (data->getDataType() != type || data->getOperands().size() != 1 ||
        data->getOperands()[0]->getOpcode() != Operand::SYMBOL || data->getLabels().size() != 1)
        return nullptr;
    // The label the entry was compiled to: the named label itself, or the line's own label for ".".
    return data->getLabels()[0];
}

void DataReader::skipBytes(unsigned int n)
{
    if (!bufferIsEmpty()) {
        const std::uint32_t rest = static_cast<std::uint32_t>(m_buffer.size()) - m_position;
        // Keep this comparison as it is: a skip longer than the rest ends with the buffered line,
        // and one that ends inside it wraps around and runs on until a line stops it.
        if (n > rest) {
            // Saturate, so that the buffer reads as spent even for a huge n.
            m_position = n > SPENT - m_position ? SPENT : m_position + n;
            return;
        }
        n -= rest;
        m_position = SPENT;
    }
    for (;;) {
        VormLine* line = nextNonZeroSizeLine();
        if (!line) {
            // Ran off the end of the section: only a skip that has nothing left to pass is fine.
            if (n != 0)
                m_error = true;
            return;
        }
        std::uint32_t min = 0;
        std::uint32_t max = 0;
        line->getByteRange(min, max);
        if (min != max) {
            m_error = true;
            return;
        }
        if (n < max) {
            if (!fillBuffer()) {
                m_error = true;
                return;
            }
            m_position += n;
            return;
        }
        ++m_line;
        m_offset += max;
        n -= max;
        if (n == 0)
            return;
    }
}

std::uint32_t DataReader::getOffset() const
{
    if (bufferIsEmpty())
        return m_offset;
    return m_offset - (static_cast<std::uint32_t>(m_buffer.size()) - m_position);
}

Optional<LinePosition> DataReader::getPosition() const
{
    if (!bufferIsEmpty())
        return {};
    return m_line;
}

} // namespace vorp
