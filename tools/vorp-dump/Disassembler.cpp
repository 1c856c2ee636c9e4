#include "Disassembler.h"

#include "Appendf.h"
#include "LittleEndian.h"
#include "SectionBytes.h"

#include "elf/ElfHandler.h"
#include "elf/ElfRelocation.h"
#include "elf/ElfSectionHeader.h"

#include <algorithm>
#include <map>
#include <set>

namespace vorp {

namespace {

// Relocation types of data entries, as the assembler writes them for `.word`, `.short`, `.byte`.
constexpr std::uint32_t RELOCATION_WORD = 1;
constexpr std::uint32_t RELOCATION_BYTE = 14;
constexpr std::uint32_t RELOCATION_SHORT = 15;

constexpr const char* JUMP_TABLE_MARK = "_jmptable_0x";
constexpr std::uint32_t MAX_JUMP_TABLE_ENTRIES = 32;

// A name the source can write as a label: a word that is not a register.
bool isPlainName(const std::string& name)
{
    if (name.empty() || (name[0] >= '0' && name[0] <= '9'))
        return false;
    for (const char c : name) {
        const bool word = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                          c == '_';
        if (!word)
            return false;
    }
    return Tl3bInstructionTable::registerIndex(name) < 0;
}

std::string withAddend(const std::string& symbol, std::int64_t addend)
{
    std::string text = symbol;
    if (addend > 0)
        appendf(text, "+%lld", static_cast<long long>(addend));
    else if (addend < 0)
        appendf(text, "-%lld", -static_cast<long long>(addend));
    return text;
}

bool isPcRelative(const DecodedInstruction& instruction, unsigned operand)
{
    const OperandDescriptor* desc = instruction.format->getDescriptor(operand);
    return desc->isImm() &&
           static_cast<const OperandDescriptorImm*>(desc)->getMode() == OperandDescriptorImm::MODE_PC_RELATIVE;
}

// Items by offset.
const Disassembler::Item* itemAt(const std::vector<Disassembler::Item>& items, std::uint32_t offset)
{
    const auto found = std::lower_bound(items.begin(), items.end(), offset,
                                        [](const Disassembler::Item& item, std::uint32_t o) { return item.offset < o; });
    return found != items.end() && found->offset == offset ? &*found : nullptr;
}

} // namespace

Disassembler::Disassembler(const ElfHandler& elf, const Tl3bDecoder& decoder)
    : m_elf(elf), m_decoder(decoder)
{
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        if (header->sh_type == ElfHandler::SHT_PROGBITS && (header->sh_flags & ElfHandler::SHF_EXECINSTR))
            readSection(header);
    }
}

void Disassembler::readSection(const ElfSectionHeader* header)
{
    Section section;
    section.index = header->getNum();
    section.name = header->getName(m_elf.getStrings());
    section.bytes = sectionBytes(m_elf, header);
    section.size = section.bytes ? header->sh_size : 0;

    for (unsigned i = 1; i < m_elf.numSymbols(); ++i) {
        const unsigned type = m_elf.getSymbolInfo(i) & 0xF;
        if (m_elf.getSymbolSectionIndex(i) != section.index || type == ElfHandler::STT_SECTION ||
            type == ElfHandler::STT_FILE)
            continue;
        const std::string name = m_elf.getSymbolName(i);
        if (!name.empty() && m_elf.getSymbolValue(i) <= section.size)
            section.labels.push_back({m_elf.getSymbolValue(i), name});
    }
    std::stable_sort(section.labels.begin(), section.labels.end(),
                     [](const Label& a, const Label& b) { return a.offset < b.offset; });

    for (const ElfSectionHeader* table : m_elf.getSectionHeaders()) {
        const bool hasAddend = table->sh_type == ElfHandler::SHT_RELA;
        if ((!hasAddend && table->sh_type != ElfHandler::SHT_REL) || table->sh_info != section.index)
            continue;
        const unsigned char* bytes = sectionBytes(m_elf, table);
        const unsigned entryBytes = hasAddend ? ELF32_RELA_BYTES : ELF32_REL_BYTES;
        for (unsigned at = 0; bytes && at + entryBytes <= table->sh_size; at += entryBytes) {
            const ElfRelocation entry(hasAddend, bytes + at);
            Relocation relocation;
            relocation.symbol = entry.getSymbol() < m_elf.numSymbols() ? m_elf.getSymbolName(entry.getSymbol()) : "";
            relocation.type = entry.getType();
            relocation.addend = entry.getAddend();
            relocation.sameSection = entry.getSymbol() < m_elf.numSymbols() &&
                                     m_elf.getSymbolSectionIndex(entry.getSymbol()) == section.index;
            section.relocations.emplace_back(entry.getOffset(), relocation);
        }
    }
    std::stable_sort(section.relocations.begin(), section.relocations.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });

    m_sections.push_back(std::move(section));
    readItems(m_sections.back());
    findJumpTables(m_sections.back());
}

const Disassembler::Relocation* Disassembler::relocationAt(const Section& section, std::uint32_t offset) const
{
    const auto found = std::lower_bound(section.relocations.begin(), section.relocations.end(), offset,
                                        [](const auto& entry, std::uint32_t o) { return entry.first < o; });
    return found != section.relocations.end() && found->first == offset ? &found->second : nullptr;
}

void Disassembler::readItems(Section& section) const
{
    auto relocation = section.relocations.begin();
    auto label = section.labels.begin();
    std::uint32_t offset = 0;
    while (offset < section.size) {
        // An item ends before the next label or relocation, so that both stay at an item's start.
        while (relocation != section.relocations.end() && relocation->first <= offset)
            ++relocation;
        while (label != section.labels.end() && label->offset <= offset)
            ++label;
        std::uint32_t limit = section.size;
        if (relocation != section.relocations.end())
            limit = std::min(limit, relocation->first);
        if (label != section.labels.end())
            limit = std::min(limit, label->offset);
        const std::uint32_t remaining = limit - offset;
        Item item{offset, 2, ITEM_SHORT, {}, relocationAt(section, offset)};
        const std::uint32_t dataType = item.relocation ? item.relocation->type : 0;
        if (dataType == RELOCATION_WORD && remaining >= 4) {
            item.kind = ITEM_WORD;
            item.size = 4;
        } else if (dataType == RELOCATION_BYTE || remaining == 1) {
            item.kind = ITEM_BYTE;
            item.size = 1;
        } else if (dataType != RELOCATION_SHORT &&
                   m_decoder.decode(section.bytes + offset, remaining, item.instruction)) {
            item.kind = ITEM_INSTRUCTION;
            item.size = item.instruction.numBytes;
        }
        section.items.push_back(item);
        offset += item.size;
    }
}

// The trampolines of table N are labelled "<target>_jmptable_0xN" and stand right behind its
// entries; each entry is a 2-byte `bu` with a relocation against its target or its trampoline.
void Disassembler::findJumpTables(Section& section) const
{
    struct Group {
        std::uint32_t trampolines = UINT32_MAX;
        std::set<std::string> names; // trampolines and their targets
    };
    std::map<std::string, Group> groups;
    for (const Label& label : section.labels) {
        const std::size_t mark = label.name.rfind(JUMP_TABLE_MARK);
        if (mark == std::string::npos || mark == 0)
            continue;
        const std::string counter = label.name.substr(mark + std::char_traits<char>::length(JUMP_TABLE_MARK));
        if (counter.empty() || counter.find_first_not_of("0123456789abcdef") != std::string::npos)
            continue;
        Group& group = groups["0x" + counter];
        group.trampolines = std::min(group.trampolines, label.offset);
        group.names.insert(label.name);
        group.names.insert(label.name.substr(0, mark));
    }
    for (const auto& [counter, group] : groups) {
        std::uint32_t start = group.trampolines;
        std::uint32_t entries = 0;
        while (start >= 2 && entries < MAX_JUMP_TABLE_ENTRIES) {
            const Item* item = itemAt(section.items, start - 2);
            if (!item || item->kind != ITEM_INSTRUCTION || item->size != 2 || !item->relocation ||
                m_decoder.displayName(item->instruction.format) != "bu" ||
                !group.names.count(item->relocation->symbol))
                break;
            start -= 2;
            ++entries;
        }
        if (entries)
            section.jumpTables.push_back({start, entries, group.trampolines, counter});
    }
}

int Disassembler::relocatedOperand(const DecodedInstruction& instruction)
{
    for (unsigned i = 0; i < instruction.numOperands; ++i) {
        const OperandDescriptor* desc = instruction.format->getDescriptor(i);
        if (desc->isImm() && static_cast<const OperandDescriptorImm*>(desc)->isLabelAllowed())
            return static_cast<int>(i);
    }
    return -1;
}

std::string Disassembler::itemBytes(const Section& section, const Item& item) const
{
    std::string text;
    for (unsigned i = 0; i < item.size; ++i)
        appendf(text, i ? " %02x" : "%02x", section.bytes[item.offset + i]);
    return text;
}

std::string Disassembler::dataText(const Section& section, const Item& item) const
{
    const unsigned char* at = section.bytes + item.offset;
    std::string text;
    switch (item.kind) {
    case ITEM_BYTE:
        appendf(text, ".byte 0x%02x", at[0]);
        break;
    case ITEM_SHORT:
        appendf(text, ".short 0x%04x", at[0] | at[1] << 8);
        break;
    default:
        appendf(text, ".word 0x%08x", littleWord(at));
        break;
    }
    return text;
}

// An address of the section with the label at or before it: "0x1a <loop+0x4>".
std::string Disassembler::targetText(const Section& section, std::int64_t target) const
{
    std::string text;
    appendf(text, "0x%llx", static_cast<unsigned long long>(target & 0xFFFFFFFF));
    if (target < 0 || target > section.size)
        return text;
    const auto behind = std::upper_bound(section.labels.begin(), section.labels.end(), target,
                                         [](std::int64_t t, const Label& label) { return t < label.offset; });
    if (behind == section.labels.begin())
        return text;
    const std::uint32_t at = std::prev(behind)->offset;
    // Of the labels there, the first one that is not an assembler's local one.
    auto chosen = std::prev(behind);
    for (auto it = std::lower_bound(section.labels.begin(), behind, Label{at, ""},
                                    [](const Label& a, const Label& b) { return a.offset < b.offset; });
         it != behind; ++it) {
        if (it->name.compare(0, 2, ".L") != 0) {
            chosen = it;
            break;
        }
    }
    text += " <" + chosen->name;
    if (target != at)
        appendf(text, "+0x%llx", static_cast<unsigned long long>(target - at));
    return text + ">";
}

std::string Disassembler::listing() const
{
    std::string out;
    for (const Section& section : m_sections) {
        appendf(out, "Disassembly of section %s:\n", section.name.c_str());
        if (!section.bytes) {
            out += "  (not in the file)\n";
            continue;
        }
        auto label = section.labels.begin();
        auto emitMarks = [&](std::uint32_t offset) {
            for (const JumpTable& t : section.jumpTables) {
                if (t.start == offset)
                    appendf(out, "  # jump table %s: %u entries\n", t.counter.c_str(), t.entries);
                if (t.trampolines == offset)
                    appendf(out, "  # trampolines of jump table %s\n", t.counter.c_str());
            }
            for (; label != section.labels.end() && label->offset <= offset; ++label)
                appendf(out, "%s:\n", label->name.c_str());
        };
        for (const Item& item : section.items) {
            emitMarks(item.offset);
            std::string text;
            std::string comment;
            if (item.kind == ITEM_INSTRUCTION) {
                const DecodedInstruction& instruction = item.instruction;
                const int relocated = item.relocation ? relocatedOperand(instruction) : -1;
                text = Tl3bDecoder::render(instruction, m_decoder.displayName(instruction.format),
                                           [&](unsigned operand) {
                                               const bool pcRelative = isPcRelative(instruction, operand);
                                               if (static_cast<int>(operand) != relocated && pcRelative)
                                                   return targetText(section, Tl3bDecoder::pcTarget(
                                                                                  instruction, operand, item.offset));
                                               if (static_cast<int>(operand) != relocated)
                                                   return std::to_string(instruction.operands[operand]);
                                               const std::string symbol =
                                                   withAddend(item.relocation->symbol, item.relocation->addend);
                                               // Within the section the bits hold the distance too.
                                               if (!pcRelative || !item.relocation->sameSection)
                                                   return symbol;
                                               std::string text;
                                               appendf(text, "0x%llx <%s>",
                                                       static_cast<unsigned long long>(
                                                           Tl3bDecoder::pcTarget(instruction, operand, item.offset) &
                                                           0xFFFFFFFF),
                                                       symbol.c_str());
                                               return text;
                                           });
            } else if (item.relocation) {
                text = dataText(section, item);
                text = text.substr(0, text.find(' ')) + " " +
                       withAddend(item.relocation->symbol, item.relocation->addend);
            } else {
                text = dataText(section, item);
            }
            if (item.relocation)
                comment = "  # reloc " + std::to_string(item.relocation->type) + " " +
                          withAddend(item.relocation->symbol, item.relocation->addend);
            appendf(out, "  %08x: %-11s  %s%s\n", item.offset, itemBytes(section, item).c_str(), text.c_str(),
                    comment.c_str());
        }
        emitMarks(section.size);
    }
    return out;
}

std::string Disassembler::reassembly() const
{
    std::string out = "# The code sections of the object, as source that assembles to the same bytes.\n";
    // A name defines one label, in the first section that has it.
    std::set<std::string> defined;
    for (const Section& section : m_sections) {
        if (!section.bytes)
            continue;
        appendf(out, "\t.section %s, \"ax\", @progbits\n", section.name.c_str());

        // Where branches without a relocation go: a label there, when the target is the start of
        // an item or of the second halfword of an instruction (which is then written as data).
        std::map<std::uint32_t, std::string> targets;
        std::set<std::uint32_t> splits;
        for (const Item& item : section.items) {
            if (item.kind != ITEM_INSTRUCTION || item.relocation)
                continue;
            for (unsigned i = 0; i < item.instruction.numOperands; ++i) {
                if (!isPcRelative(item.instruction, i))
                    continue;
                const std::int64_t target = Tl3bDecoder::pcTarget(item.instruction, i, item.offset);
                if (target < 0 || target > section.size)
                    continue;
                const auto at = static_cast<std::uint32_t>(target);
                const Item* inside = target >= 2 ? itemAt(section.items, at - 2) : nullptr;
                if (inside && inside->size == 4)
                    splits.insert(at - 2);
                else if (at != section.size && !itemAt(section.items, at))
                    continue;
                targets[at];
            }
        }
        for (const Label& label : section.labels) {
            if (isPlainName(label.name) && targets.count(label.offset) && targets[label.offset].empty())
                targets[label.offset] = label.name;
        }
        for (auto& [offset, name] : targets) {
            if (name.empty())
                name = ".Ldis_" + std::to_string(section.index) + "_" + std::to_string(offset);
        }

        auto label = section.labels.begin();
        auto emitLabels = [&](std::uint32_t offset) {
            for (; label != section.labels.end() && label->offset <= offset; ++label) {
                if (label->offset == offset && isPlainName(label->name) && defined.insert(label->name).second)
                    appendf(out, "%s:\n", label->name.c_str());
            }
            const auto target = targets.find(offset);
            if (target != targets.end() && defined.insert(target->second).second)
                appendf(out, "%s:\n", target->second.c_str());
            for (const JumpTable& t : section.jumpTables) {
                if (t.start == offset)
                    appendf(out, "\t# jump table %s: %u entries\n", t.counter.c_str(), t.entries);
            }
        };
        for (const Item& item : section.items) {
            emitLabels(item.offset);
            const DecodedInstruction& instruction = item.instruction;
            const int relocated = item.relocation && item.kind == ITEM_INSTRUCTION ? relocatedOperand(instruction) : -1;
            const bool nameable = !item.relocation || (relocated >= 0 && isPlainName(item.relocation->symbol));
            if (item.kind != ITEM_INSTRUCTION || !nameable || splits.count(item.offset) || (item.offset & 1)) {
                // Data, an instruction whose operands can't be written back, or one at an odd
                // address, where the assembler takes no code: its halfwords, so that a label may
                // stand between them.
                Item part = item;
                for (std::uint32_t at = item.offset; at < item.offset + item.size; at += part.size) {
                    part.offset = at;
                    part.kind = item.kind == ITEM_BYTE ? ITEM_BYTE : ITEM_SHORT;
                    part.size = part.kind == ITEM_SHORT ? 2 : 1;
                    if (at != item.offset)
                        emitLabels(at);
                    appendf(out, "\t%s\n", dataText(section, part).c_str());
                }
                continue;
            }
            const std::string text =
                Tl3bDecoder::render(instruction, m_decoder.exactName(instruction.format), [&](unsigned operand) {
                    if (static_cast<int>(operand) == relocated)
                        return withAddend(item.relocation->symbol, item.relocation->addend);
                    if (isPcRelative(instruction, operand)) {
                        const std::int64_t target = Tl3bDecoder::pcTarget(instruction, operand, item.offset);
                        const auto found = target >= 0 ? targets.find(static_cast<std::uint32_t>(target))
                                                       : targets.end();
                        if (found != targets.end())
                            return found->second;
                    }
                    return std::to_string(instruction.operands[operand]);
                });
            appendf(out, "\t%s\n", text.c_str());
        }
        emitLabels(section.size);
    }
    return out;
}

} // namespace vorp
