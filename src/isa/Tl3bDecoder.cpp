#include "isa/Tl3bDecoder.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <map>

namespace vorp {

namespace {

constexpr std::uint32_t NUM_HALFWORDS = 0x10000;

unsigned countOperands(const std::string& signature)
{
    return static_cast<unsigned>(std::count(signature.begin(), signature.end(), '%'));
}

} // namespace

struct Tl3bDecoder::FormatInfo {
    struct Value {
        std::uint32_t field;
        std::int32_t written;
    };
    struct Operand {
        bool linear = false;
        bool inverted = false;
        std::vector<Value> values;                       // a short operand: every value it may take
        std::vector<std::pair<unsigned, unsigned>> bits; // a long immediate: its bit, the word's bit
    };
    struct Half {
        std::vector<unsigned> operands; // the short operands that reach the halfword
        std::uint32_t linearMask = 0;   // the halfword's bits that long immediates fill
        // The halfword with those bits clear, and the combination of operand values it stands for.
        std::vector<std::pair<std::uint32_t, std::uint32_t>> keys;
    };

    const EncoderFormat* format = nullptr;
    std::string display;
    std::string exact;
    unsigned numOperands = 0;
    std::vector<Operand> operands;
    Half halves[2];

    unsigned numBytes() const { return static_cast<unsigned>(format->getNumBytes()); }
    // The halfword of an encoded value: the first is the high one of a 4-byte value.
    std::uint32_t half(std::uint32_t value, unsigned which) const
    {
        return numBytes() == 2 ? value : (which == 0 ? value >> 16 : value & 0xFFFF);
    }
    // The fields and written values of the operands of one halfword for a combination.
    void apply(unsigned which, std::uint32_t combo, EncoderFormat::Fields& fields, DecodedInstruction& out) const
    {
        for (unsigned operand : halves[which].operands) {
            const std::vector<Value>& values = operands[operand].values;
            const Value& value = values[combo % values.size()];
            combo /= static_cast<std::uint32_t>(values.size());
            fields[operand] = value.field;
            out.operands[operand] = value.written;
        }
    }
};

Tl3bDecoder::Tl3bDecoder(bool architectural)
{
    m_table.build(m_defaultEncoders, m_architecturalEncoders);
    const EncoderMap& encoders = architectural ? m_architecturalEncoders : m_defaultEncoders;
    // The instructions of the syntax show a format; a name that selects it alone writes it exactly,
    // a format name ("ADD_3r") rather than an instruction that happens to have one format.
    std::map<const EncoderFormat*, std::string> display;
    std::map<const EncoderFormat*, std::string> exact;
    std::vector<const EncoderFormat*> order;
    for (const auto& [name, encoder] : encoders) {
        const bool isInstruction = name.find('_') == std::string::npos;
        for (unsigned i = 0; i < encoder->numFormats(); ++i) {
            const EncoderFormat* format = encoder->getFormat(i);
            if (!display.count(format) && !exact.count(format))
                order.push_back(format);
            if (isInstruction && !display.count(format))
                display[format] = name;
            if (encoder->numFormats() == 1 && (!exact.count(format) || !isInstruction))
                exact[format] = name;
        }
    }
    for (const EncoderFormat* format : order) {
        assert(exact.count(format) && "every format has a name of its own");
        m_formats.emplace_back();
        FormatInfo& info = m_formats.back();
        info.format = format;
        info.exact = exact[format];
        info.display = display.count(format) ? display[format] : info.exact;
        analyse(info);
        m_numbers[format] = m_formats.size() - 1;
    }
    buildIndex();
}

Tl3bDecoder::~Tl3bDecoder() = default;

void Tl3bDecoder::analyse(FormatInfo& info) const
{
    const EncoderFormat& format = *info.format;
    info.numOperands = countOperands(format.getSignature());
    const std::uint32_t base = format.encodeFields({});
    auto encodeOne = [&](unsigned operand, std::uint32_t field) {
        EncoderFormat::Fields fields{};
        fields[operand] = field;
        return format.encodeFields(fields) ^ base;
    };
    for (unsigned i = 0; i < info.numOperands; ++i) {
        const OperandDescriptor* desc = format.getDescriptor(i);
        FormatInfo::Operand operand;
        std::size_t count = 0;
        int highest = 0;
        for (const OperandDescriptor::Range& range : desc->getRanges()) {
            count += static_cast<std::size_t>(range.second - range.first + 1);
            highest = std::max(highest, range.second);
        }
        operand.inverted = desc->isImm() && static_cast<const OperandDescriptorImm*>(desc)->isInverted();
        operand.linear = desc->isImm() && count > LINEAR_LIMIT;
        if (operand.linear) {
            assert(!desc->hasMap());
            for (unsigned bit = 0; (std::uint32_t(highest) >> bit) != 0; ++bit) {
                const std::uint32_t changed = encodeOne(i, 1u << bit);
                assert(std::popcount(changed) == 1 && "a long immediate lies in bit slices");
                const auto position = static_cast<unsigned>(std::countr_zero(changed));
                operand.bits.emplace_back(bit, position);
                const unsigned which = info.numBytes() == 4 && position < 16 ? 1 : 0;
                info.halves[which].linearMask |= info.half(changed, which);
            }
            info.operands.push_back(std::move(operand));
            continue;
        }
        std::uint32_t reach = 0;
        for (const OperandDescriptor::Range& range : desc->getRanges()) {
            for (int value = range.first; value <= range.second; ++value) {
                const auto field = static_cast<std::uint32_t>(desc->hasMap() ? desc->map(value) : value);
                const bool known = std::any_of(operand.values.begin(), operand.values.end(),
                                               [field](const FormatInfo::Value& v) { return v.field == field; });
                if (known)
                    continue;
                operand.values.push_back({field, operand.inverted ? -value : value});
                reach |= encodeOne(i, field);
            }
        }
        const unsigned which = info.numBytes() == 4 && (reach >> 16) == 0 && reach != 0 ? 1 : 0;
        assert((info.numBytes() == 2 || which == 1 || (reach & 0xFFFF) == 0) && "a short operand in one halfword");
        info.halves[which].operands.push_back(i);
        info.operands.push_back(std::move(operand));
    }
    for (unsigned which = 0; which < info.numBytes() / 2; ++which) {
        FormatInfo::Half& half = info.halves[which];
        std::uint32_t combos = 1;
        for (unsigned operand : half.operands)
            combos *= static_cast<std::uint32_t>(info.operands[operand].values.size());
        for (std::uint32_t combo = 0; combo < combos; ++combo) {
            EncoderFormat::Fields fields{};
            DecodedInstruction scratch;
            info.apply(which, combo, fields, scratch);
            half.keys.emplace_back(info.half(format.encodeFields(fields), which) & ~half.linearMask, combo);
        }
        std::stable_sort(half.keys.begin(), half.keys.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
    }
}

void Tl3bDecoder::buildIndex()
{
    // Every first halfword each format can start with; the bits of long immediates take all values.
    std::vector<std::pair<std::uint32_t, Entry>> starts;
    for (std::uint32_t f = 0; f < m_formats.size(); ++f) {
        const FormatInfo::Half& first = m_formats[f].halves[0];
        for (const auto& [key, combo] : first.keys) {
            std::uint32_t free = 0;
            do {
                starts.push_back({key | free, Entry{f, combo}});
                free = (free - first.linearMask) & first.linearMask;
            } while (free != 0);
        }
    }
    // Aliases: fewest written operands first, then short forms, then the order of the formats.
    std::stable_sort(starts.begin(), starts.end(), [this](const auto& a, const auto& b) {
        if (a.first != b.first)
            return a.first < b.first;
        const FormatInfo& x = m_formats[a.second.format];
        const FormatInfo& y = m_formats[b.second.format];
        if (x.numOperands != y.numOperands)
            return x.numOperands < y.numOperands;
        if (x.numBytes() != y.numBytes())
            return x.numBytes() < y.numBytes();
        return a.second.format < b.second.format;
    });
    m_offsets.assign(NUM_HALFWORDS + 1, 0);
    m_entries.reserve(starts.size());
    for (const auto& [halfword, entry] : starts) {
        ++m_offsets[halfword + 1];
        m_entries.push_back(entry);
    }
    for (std::uint32_t h = 0; h < NUM_HALFWORDS; ++h)
        m_offsets[h + 1] += m_offsets[h];
}

bool Tl3bDecoder::decodeLong(const FormatInfo& info, std::uint32_t comboFirst, std::uint32_t word,
                             DecodedInstruction& out) const
{
    const FormatInfo::Half& second = info.halves[1];
    const std::uint32_t key = (word & 0xFFFF) & ~second.linearMask;
    const auto found = std::lower_bound(second.keys.begin(), second.keys.end(), key,
                                        [](const auto& entry, std::uint32_t k) { return entry.first < k; });
    if (found == second.keys.end() || found->first != key)
        return false;
    EncoderFormat::Fields fields{};
    info.apply(0, comboFirst, fields, out);
    info.apply(1, found->second, fields, out);
    for (unsigned i = 0; i < info.numOperands; ++i) {
        const FormatInfo::Operand& operand = info.operands[i];
        if (!operand.linear)
            continue;
        std::uint32_t field = 0;
        for (const auto& [bit, position] : operand.bits)
            field |= ((word >> position) & 1u) << bit;
        if (!info.format->getDescriptor(i)->matches(static_cast<int>(field)))
            return false;
        fields[i] = field;
        out.operands[i] = operand.inverted ? -static_cast<std::int32_t>(field) : static_cast<std::int32_t>(field);
    }
    return info.format->encodeFields(fields) == word;
}

bool Tl3bDecoder::decode(const unsigned char* bytes, std::size_t available, DecodedInstruction& out) const
{
    if (available < 2)
        return false;
    const std::uint32_t first = bytes[0] | std::uint32_t(bytes[1]) << 8;
    for (std::uint32_t e = m_offsets[first]; e < m_offsets[first + 1]; ++e) {
        const Entry& entry = m_entries[e];
        const FormatInfo& info = m_formats[entry.format];
        out = DecodedInstruction{};
        out.format = info.format;
        out.numBytes = info.numBytes();
        out.numOperands = info.numOperands;
        if (info.numBytes() == 2) {
            EncoderFormat::Fields fields{};
            info.apply(0, entry.combo, fields, out);
            return true;
        }
        if (available < 4)
            continue;
        const std::uint32_t word = first << 16 | bytes[2] | std::uint32_t(bytes[3]) << 8;
        if (decodeLong(info, entry.combo, word, out))
            return true;
    }
    out = DecodedInstruction{};
    return false;
}

std::size_t Tl3bDecoder::numFormats() const
{
    return m_formats.size();
}

const EncoderFormat* Tl3bDecoder::format(std::size_t index) const
{
    assert(index < m_formats.size());
    return m_formats[index].format;
}

const Tl3bDecoder::FormatInfo& Tl3bDecoder::infoOf(const EncoderFormat* format) const
{
    const auto found = m_numbers.find(format);
    assert(found != m_numbers.end() && "a format of the decoder");
    return m_formats[found->second];
}

const std::string& Tl3bDecoder::displayName(const EncoderFormat* format) const
{
    return infoOf(format).display;
}

const std::string& Tl3bDecoder::exactName(const EncoderFormat* format) const
{
    return infoOf(format).exact;
}

std::string Tl3bDecoder::render(const DecodedInstruction& instruction, const std::string& name,
                                const std::function<std::string(unsigned)>& immediate)
{
    std::string text = name;
    const std::string& signature = instruction.format->getSignature();
    if (!signature.empty())
        text += ' ';
    unsigned operand = 0;
    for (std::size_t i = 0; i < signature.size(); ++i) {
        if (signature[i] == ',') {
            text += ", ";
        } else if (signature[i] == '%' && i + 1 < signature.size()) {
            if (signature[++i] == 'r') {
                const char* reg = Tl3bInstructionTable::registerName(instruction.operands[operand]);
                text += reg ? reg : "?";
            } else {
                text += immediate(operand);
            }
            ++operand;
        } else {
            text += signature[i];
        }
    }
    return text;
}

std::int64_t Tl3bDecoder::pcTarget(const DecodedInstruction& instruction, unsigned operand, std::uint32_t address)
{
    const auto* desc = static_cast<const OperandDescriptorImm*>(instruction.format->getDescriptor(operand));
    return std::int64_t(address) + instruction.numBytes +
           std::int64_t(instruction.operands[operand]) * (std::int64_t(1) << desc->getScale());
}

} // namespace vorp
