#include "RelocationResolver.h"

#include "LittleEndian.h"

#include "elf/ElfHandler.h"
#include "elf/ElfRelocation.h"
#include "elf/ElfSectionHeader.h"

#include <algorithm>

namespace vorp {

namespace {

constexpr unsigned EXPR_RECORD_BYTES = 20;
constexpr unsigned MAX_DEPTH = 1000;

// The data relocation types and the bytes they patch.
unsigned patchedBytes(unsigned type)
{
    switch (type) {
    case 1: return 4;  // .word
    case 14: return 1; // .byte
    case 15: return 2; // .short
    default: return 0;
    }
}

enum : unsigned { OP_ADD = 1, OP_MAX = 2, OP_MULTIPLY = 3, OP_SUBTRACT = 4 };

} // namespace

RelocationResolver::RelocationResolver(const ElfHandler& elf, std::vector<unsigned char> fileBytes)
    : m_elf(elf), m_bytes(std::move(fileBytes))
{
    readRecords();
}

void RelocationResolver::readRecords()
{
    auto word = [this](std::uint64_t at) { return littleWord(&m_bytes[at]); };
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        if (header->sh_type != ElfHandler::SHT_EXPR)
            continue;
        const std::uint64_t end = std::uint64_t(header->sh_offset) + header->sh_size;
        if (end > m_bytes.size())
            continue;
        for (std::uint64_t at = header->sh_offset; at + EXPR_RECORD_BYTES <= end; at += EXPR_RECORD_BYTES) {
            const Record record{word(at), {word(at + 8), word(at + 12), word(at + 16)}};
            const unsigned op = record.kind >> 6;
            if (op == OP_ADD || op == OP_MAX || op == OP_MULTIPLY || op == OP_SUBTRACT)
                m_records.emplace(word(at + 4), record);
        }
    }
}

bool RelocationResolver::recordValue(const Record& record, std::int64_t& value, unsigned depth) const
{
    std::int64_t operands[2] = {0, 0};
    for (unsigned i = 0; i < 2; ++i) {
        switch ((record.kind >> (2 * i)) & 3) {
        case 0:
            operands[i] = static_cast<Elf32_Sword>(record.ops[i]);
            break;
        case 1:
            if (!symbolValue(record.ops[i], operands[i], depth + 1))
                return false;
            break;
        default:
            return false;
        }
    }
    // The third operand, a constant, is added on: "a - b + c".
    const std::int64_t extra = ((record.kind >> 4) & 3) == 0 ? static_cast<Elf32_Sword>(record.ops[2]) : 0;
    switch (record.kind >> 6) {
    case OP_ADD: value = operands[0] + operands[1]; break;
    case OP_MAX: value = std::max(operands[0], operands[1]); break;
    case OP_MULTIPLY: value = operands[0] * operands[1]; break;
    case OP_SUBTRACT: value = operands[0] - operands[1]; break;
    default: return false;
    }
    value += extra;
    return true;
}

bool RelocationResolver::symbolValue(Elf32_Word symbol, std::int64_t& value, unsigned depth) const
{
    if (depth > MAX_DEPTH || symbol == 0 || symbol >= m_elf.numSymbols())
        return false;
    auto record = m_records.find(symbol);
    if (record != m_records.end())
        return recordValue(record->second, value, depth);
    if (m_elf.getSymbolSectionIndex(symbol) == 0) // undefined
        return false;
    value = m_elf.getSymbolValue(symbol);
    return true;
}

unsigned RelocationResolver::resolve()
{
    unsigned unapplied = 0;
    const auto& headers = m_elf.getSectionHeaders();
    for (const ElfSectionHeader* header : headers) {
        const bool hasAddend = header->sh_type == ElfHandler::SHT_RELA;
        if (!hasAddend && header->sh_type != ElfHandler::SHT_REL)
            continue;
        if (header->sh_info >= headers.size())
            continue;
        const ElfSectionHeader* target = headers[header->sh_info];
        const unsigned entryBytes = hasAddend ? 12 : 8;
        const std::uint64_t end = std::uint64_t(header->sh_offset) + header->sh_size;
        if (end > m_bytes.size())
            continue;
        for (std::uint64_t at = header->sh_offset; at + entryBytes <= end; at += entryBytes) {
            const ElfRelocation relocation(hasAddend, m_bytes.data() + at);
            const unsigned size = patchedBytes(relocation.getType());
            std::int64_t value = 0;
            const std::uint64_t place = std::uint64_t(target->sh_offset) + relocation.getOffset();
            if (size == 0 || relocation.getOffset() + size > target->sh_size || place + size > m_bytes.size() ||
                !symbolValue(relocation.getSymbol(), value, 0)) {
                ++unapplied;
                continue;
            }
            value += relocation.getAddend();
            for (unsigned i = 0; i < size; ++i)
                m_bytes[place + i] = static_cast<unsigned char>(static_cast<std::uint64_t>(value) >> (8 * i));
        }
    }
    return unapplied;
}

} // namespace vorp
