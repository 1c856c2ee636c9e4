#pragma once

#include "model/VormDataLine.h"
#include "model/VormSection.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vorp {

class VormAssembler;
class VormLabel;
class VormLine;

// A value that may be missing: the value and whether it is there.
template <typename T>
class Optional {
public:
    Optional() = default;
    Optional(const T& value) : m_value(value), m_present(true) {}

    bool hasValue() const { return m_present; }
    explicit operator bool() const { return m_present; }
    // Only when there is one.
    const T& getValue() const { return m_value; }

private:
    T m_value{};
    bool m_present = false;
};

// Whether a line's bytes can be had before the labels are final: strings, and data lines with no
// entry for the linker to fill in.
bool isSafeToEncode(VormLine* line);

// Reads a section of data lines as a byte stream, encoding one line at a time. A line it can't
// encode (a relocated `.word`, an instruction) stops the reads; at a line boundary such a line can
// still be passed with skipBytes when its size is fixed. Nothing is reported: hasError() is the only
// sign of a failed read, it stays set, and the failing read gives 0.
class DataReader {
public:
    DataReader(VormAssembler& assembler, VormSection* section);

    // Back to the first line of the section, at offset 0. A failure seen before stays.
    void setSection(VormSection* section);

    std::uint8_t readU8();
    std::uint16_t readU16();
    std::uint32_t readU32();
    std::uint64_t readU64();
    // Bits beyond the 32nd are dropped.
    std::uint32_t readULEB128();
    // No sign extension for a value that ends normally: callers only use it to move past the
    // value, and depend on the old behaviour. Only a read that failed part-way fills the top bits.
    std::int32_t readSLEB128();
    // Up to and including a zero byte, which is not part of the result.
    std::string readString();
    // At a line boundary, the label that the next line names when it is a `type` line of one bare
    // label; else null. Reads nothing and leaves the reader where it is.
    VormLabel* readDataReference(VormDataLine::Type type) const;
    // Whole lines of fixed size are passed without being encoded, relocated or not; only a skip
    // that ends inside a line needs to encode it.
    void skipBytes(unsigned int n);

    // The bytes consumed so far.
    std::uint32_t getOffset() const;
    // Between lines, the position of the next one; inside a line, nothing.
    Optional<LinePosition> getPosition() const;
    bool bufferIsEmpty() const { return m_position >= m_buffer.size(); }
    // Passes lines that take no bytes; the line there is not consumed. Null at the end.
    VormLine* nextNonZeroSizeLine();
    bool hasError() const { return m_error; }

private:
    static constexpr std::uint32_t SPENT = 0xFFFFFFFF;

    void skipZeroSizeLines();
    // Seven bits a byte from the low end, bits beyond the 32nd lost; false when a failed read
    // ended it rather than a byte with a clear top bit.
    bool readLEB128(std::uint32_t& value, unsigned& shift);
    bool fillBuffer();

    VormAssembler& m_assembler;
    LinePosition m_line;
    LinePosition m_end;
    std::vector<std::uint8_t> m_buffer;
    std::uint32_t m_position = SPENT;
    std::uint32_t m_offset = 0;
    bool m_error = false;
};

} // namespace vorp
