#include "model/VormDataLine.h"

#include "model/Relocations.h"
#include "frontend/ExprEval.h"
#include "model/VormAssembler.h"
#include "model/VormPostponedExp.h"

#include <cassert>

namespace vorp {

namespace {

std::uint32_t integerValue(const Operand* operand)
{
    return operand->getToken(0).constantValue;
}

std::uint32_t ulebSize(std::uint32_t value)
{
    std::uint32_t size = 1;
    while (value >= 0x80) {
        value >>= 7;
        ++size;
    }
    return size;
}

std::uint32_t slebSize(std::int32_t value)
{
    std::uint32_t size = 1;
    while (!((value >= -64 && value < 64))) {
        value >>= 7;
        ++size;
    }
    return size;
}

std::uint8_t* writeUleb(std::uint8_t* out, std::uint32_t value)
{
    do {
        std::uint8_t byte = value & 0x7f;
        value >>= 7;
        if (value)
            byte |= 0x80;
        *out++ = byte;
    } while (value);
    return out;
}

std::uint8_t* writeSleb(std::uint8_t* out, std::int32_t value)
{
    for (;;) {
        const std::uint8_t byte = value & 0x7f;
        value >>= 7;
        if ((value == 0 && !(byte & 0x40)) || (value == -1 && (byte & 0x40))) {
            *out++ = byte;
            return out;
        }
        *out++ = byte | 0x80;
    }
}

} // namespace

VormDataLine::VormDataLine(const LineLocation& location, Type type, std::vector<Operand*> operands)
    : VormLine(DATA_LINE, false), m_location(location), m_type(type), m_operands(std::move(operands))
{
}

VormDataLine::~VormDataLine()
{
    for (Operand* operand : m_operands)
        Operand::deepFree(operand);
}

void VormDataLine::init(VormAssembler& assembler)
{
    m_labels.assign(m_operands.size(), nullptr);
    VormLabel* currentLabel = nullptr;
    for (unsigned i = 0; i < m_operands.size(); ++i) {
        m_operands[i] = ExprEval::optimise(assembler.getIdStrings(), m_operands[i]);
        if (m_operands[i]->getOpcode() == Operand::INTEGER)
            continue;
        if (!currentLabel && ExprEval::usesCurrentLocation(m_operands[i]))
            currentLabel = assembler.getLabels().addUniqueDefinedLabel(this);
        compileOperand(assembler, i, currentLabel);
    }
    if (m_operands.empty() || requiresRelocations())
        return;
    m_values.reserve(m_operands.size());
    m_texts.reserve(m_operands.size());
    for (Operand* operand : m_operands) {
        m_values.push_back(integerValue(operand));
        m_texts.push_back(tokenCharStar(&operand->getToken(0)));
        Operand::deepFree(operand);
    }
    std::vector<Operand*>().swap(m_operands);
    std::vector<VormLabel*>().swap(m_labels);
}

void VormDataLine::expandConstants(IdStrings& strings)
{
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        Token token = newUnsignedConstToken(strings, m_values[i], m_location.getLine(), m_location.getFile());
        token.constantText = m_texts[i];
        auto* operand = new Operand(Operand::INTEGER);
        operand->addToken(token);
        m_operands.push_back(operand);
    }
    m_labels.assign(m_operands.size(), nullptr);
    std::vector<std::uint32_t>().swap(m_values);
    std::vector<const char*>().swap(m_texts);
}

void VormDataLine::compileOperand(VormAssembler& assembler, unsigned index, VormLabel* currentLabel)
{
    const bool allocated = (getSection()->getFlags() & VormAssembler::SHF_ALLOC) != 0;
    m_labels[index] = VormPostponedExp::compile(assembler, m_operands[index], m_location, currentLabel, allocated,
                                                nullptr);
}

void VormDataLine::replaceOperand(VormAssembler& assembler, unsigned num, Operand* operand)
{
    if (m_operands.empty())
        expandConstants(assembler.getIdStrings());
    assert(num <= m_operands.size());
    Operand::deepFree(m_operands[num]);
    m_labels[num] = nullptr;
    m_operands[num] = ExprEval::optimise(assembler.getIdStrings(), operand);
    if (m_operands[num]->getOpcode() == Operand::INTEGER)
        return;
    assert(!ExprEval::usesCurrentLocation(m_operands[num]));
    compileOperand(assembler, num, nullptr);
}

bool VormDataLine::valueFits(Type type, int value)
{
    switch (type) {
    case BYTE: return value >= -128 && value <= 255;
    case SHORT: return value >= -32768 && value <= 65535;
    default: return true;
    }
}

std::uint32_t VormDataLine::getEntrySize() const
{
    switch (m_type) {
    case BYTE: return 1;
    case SHORT: return 2;
    case WORD: return 4;
    default: assert(0 && "variable entry size"); return 0;
    }
}

std::uint32_t VormDataLine::getEntrySize(const Operand* operand) const
{
    if (!hasVariableEntrySize())
        return getEntrySize();
    if (operand->getOpcode() != Operand::INTEGER)
        return 5;
    return valueSize(integerValue(operand));
}

std::uint32_t VormDataLine::valueSize(std::uint32_t value) const
{
    if (!hasVariableEntrySize())
        return getEntrySize();
    return m_type == ULEB128 ? ulebSize(value) : slebSize(static_cast<std::int32_t>(value));
}

std::uint32_t VormDataLine::getSize() const
{
    if (!hasVariableEntrySize())
        return getEntrySize() * static_cast<std::uint32_t>(numEntries());
    std::uint32_t size = 0;
    for (const Operand* operand : m_operands)
        size += getEntrySize(operand);
    for (const std::uint32_t value : m_values)
        size += valueSize(value);
    return size;
}

void VormDataLine::getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const
{
    minBytes = maxBytes = getSize();
}

bool VormDataLine::requiresRelocations() const
{
    for (const VormLabel* label : m_labels) {
        if (label)
            return true;
    }
    return false;
}

std::uint32_t VormDataLine::getRelocationType() const
{
    static const std::uint32_t types[] = {14, 15, 1, 13, 17};
    return types[m_type];
}

const char* VormDataLine::getDirectiveName() const
{
    static const char* const names[] = {".byte", ".short", ".word", ".uleb128", ".sleb128"};
    return names[m_type];
}

void VormDataLine::encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler&, VorpErrorHandler&)
{
    assert(m_labels.size() == m_operands.size());
    std::uint8_t* out = buffer;
    for (const std::uint32_t value : m_values)
        out = writeValue(out, value);
    for (unsigned i = 0; i < m_operands.size(); ++i) {
        const std::uint32_t size = getEntrySize(m_operands[i]);
        if (m_labels[i]) {
            relocations.add(m_labels[i], getAddress().min + static_cast<std::uint32_t>(out - buffer), 0,
                            getRelocationType());
            for (std::uint32_t b = 0; b < size; ++b)
                out[b] = 0;
            out += size;
            continue;
        }
        assert(m_operands[i]->getOpcode() == Operand::INTEGER);
        out = writeValue(out, integerValue(m_operands[i]));
    }
}

std::uint8_t* VormDataLine::writeValue(std::uint8_t* out, std::uint32_t value) const
{
    if (m_type == ULEB128)
        return writeUleb(out, value);
    if (m_type == SLEB128)
        return writeSleb(out, static_cast<std::int32_t>(value));
    const std::uint32_t size = getEntrySize();
    for (std::uint32_t b = 0; b < size; ++b)
        out[b] = static_cast<std::uint8_t>(value >> (8 * b));
    return out + size;
}

void VormDataLine::dump(std::ostream& out) const
{
    out << getDirectiveName() << ' ';
    for (std::size_t i = 0; i < m_texts.size(); ++i)
        out << (i ? ", " : "") << m_texts[i];
    for (unsigned i = 0; i < m_operands.size(); ++i) {
        if (i)
            out << ", ";
        m_operands[i]->dump(out);
    }
}

void VormDataLine::printListing(FILE* file)
{
    printDump(file);
}

} // namespace vorp
