#include "ObjectDumper.h"

#include "Appendf.h"
#include "LittleEndian.h"
#include "SectionBytes.h"

#include "elf/ElfBlock.h"
#include "elf/ElfHandler.h"
#include "elf/ElfHeader.h"
#include "elf/ElfRelocation.h"
#include "elf/ElfSectionHeader.h"
#include "elf/ElfStrings.h"

#include <cstdarg>
#include <cstdio>

namespace vorp {

namespace {

// Bytes of one record of ".expr": kind, label, three operands.
constexpr unsigned EXPR_RECORD_BYTES = 20;
constexpr unsigned HEX_BYTES_PER_LINE = 16;

// "#" and the number: how a section or symbol without a name is shown. Built by appending, since
// GCC 12 at -O3 warns falsely (-Wrestrict) about a literal plus a temporary string.
std::string numberText(unsigned long number)
{
    std::string text = "#";
    text += std::to_string(number);
    return text;
}

std::string bindingName(unsigned binding)
{
    switch (binding) {
    case ElfHandler::STB_LOCAL:
        return "LOCAL";
    case ElfHandler::STB_GLOBAL:
        return "GLOBAL";
    case ElfHandler::STB_WEAK:
        return "WEAK";
    default:
        return std::to_string(binding);
    }
}

std::string symbolTypeName(unsigned type)
{
    switch (type) {
    case ElfHandler::STT_NOTYPE:
        return "NOTYPE";
    case ElfHandler::STT_OBJECT:
        return "OBJECT";
    case ElfHandler::STT_FUNC:
        return "FUNC";
    case ElfHandler::STT_SECTION:
        return "SECTION";
    case ElfHandler::STT_FILE:
        return "FILE";
    default:
        return std::to_string(type);
    }
}

std::string fileTypeName(unsigned type)
{
    switch (type) {
    case ElfHandler::ET_REL:
        return "REL";
    case ElfHandler::ET_EXEC:
        return "EXEC";
    default:
        return std::to_string(type);
    }
}

} // namespace

ObjectDumper::ObjectDumper(const ElfHandler& elf)
    : m_elf(elf)
{
}

std::string ObjectDumper::dump() const
{
    std::string out;
    dumpHeader(out);
    dumpSections(out);
    dumpContents(out);
    dumpSymbols(out);
    dumpRelocations(out);
    dumpExpressions(out);
    dumpNotes(out);
    dumpGroups(out);
    return out;
}

// ---- text helpers ---------------------------------------------------------------------------

std::string ObjectDumper::quoted(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte == '"' || byte == '\\') {
            out += '\\';
            out += c;
        } else if (byte == '\n') {
            out += "\\n";
        } else if (byte == '\t') {
            out += "\\t";
        } else if (byte < 0x20 || byte >= 0x7F) {
            appendf(out, "\\x%02x", byte);
        } else {
            out += c;
        }
    }
    out += '"';
    return out;
}

std::string ObjectDumper::nameText(const std::string& name)
{
    bool plain = !name.empty();
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte >= 0x7F || byte == '"' || byte == '\\' || byte == ',')
            plain = false;
    }
    return plain ? name : quoted(name);
}

std::string ObjectDumper::sectionTypeName(Elf32_Word type)
{
    switch (type) {
    case ElfHandler::SHT_NULL:
        return "NULL";
    case ElfHandler::SHT_PROGBITS:
        return "PROGBITS";
    case ElfHandler::SHT_SYMTAB:
        return "SYMTAB";
    case ElfHandler::SHT_STRTAB:
        return "STRTAB";
    case ElfHandler::SHT_RELA:
        return "RELA";
    case ElfHandler::SHT_NOTE:
        return "NOTE";
    case ElfHandler::SHT_NOBITS:
        return "NOBITS";
    case ElfHandler::SHT_REL:
        return "REL";
    case ElfHandler::SHT_GROUP:
        return "GROUP";
    case ElfHandler::SHT_INFO:
        return "INFO";
    case ElfHandler::SHT_EXPR:
        return "EXPR";
    case ElfHandler::SHT_NETINFO:
        return "NETINFO";
    default:
        return std::to_string(type);
    }
}

std::string ObjectDumper::sectionFlagLetters(Elf32_Word flags)
{
    static const struct {
        Elf32_Word bit;
        char letter;
    } letters[] = {
        {ElfHandler::SHF_WRITE, 'w'},     {ElfHandler::SHF_ALLOC, 'a'},      {ElfHandler::SHF_EXECINSTR, 'x'},
        {ElfHandler::SHF_MERGE, 'M'},     {ElfHandler::SHF_STRINGS, 'S'},    {ElfHandler::SHF_DP_SECTION, 'd'},
        {ElfHandler::SHF_CP_SECTION, 'c'},
    };
    std::string out;
    for (const auto& entry : letters) {
        if (flags & entry.bit) {
            out += entry.letter;
            flags &= ~entry.bit;
        }
    }
    // Bits without a letter stay visible rather than silently dropped.
    if (flags != 0)
        appendf(out, "%s0x%x", out.empty() ? "" : "+", flags);
    return out.empty() ? "-" : out;
}

// ---- look-ups -------------------------------------------------------------------------------

unsigned ObjectDumper::numSections() const
{
    return static_cast<unsigned>(m_elf.getSectionHeaders().size());
}

std::string ObjectDumper::sectionName(unsigned sectionNo) const
{
    const ElfSectionHeader* header = m_elf.getSectionHeader(sectionNo);
    if (!header)
        return numberText(sectionNo);
    return nameText(header->getName(m_elf.getStrings()));
}

const unsigned char* ObjectDumper::sectionBytes(const ElfSectionHeader* header) const
{
    return vorp::sectionBytes(m_elf, header);
}

std::string ObjectDumper::symbolName(Elf32_Word symbolNo) const
{
    if (symbolNo < m_elf.numSymbols()) {
        const std::string name = m_elf.getSymbolName(symbolNo);
        if (!name.empty())
            return nameText(name);
    }
    return numberText(symbolNo);
}

std::string ObjectDumper::symbolSection(Elf32_Half sectionIndex) const
{
    if (sectionIndex == ElfHandler::SHN_UNDEF)
        return "UND";
    if (sectionIndex == ElfHandler::SHN_ABS)
        return "ABS";
    if (sectionIndex == ElfHandler::SHN_COMMON)
        return "COM";
    if (sectionIndex < numSections())
        return sectionName(sectionIndex);
    return numberText(sectionIndex);
}

std::string ObjectDumper::stringAt(Elf32_Word offset) const
{
    const ElfStrings* strings = m_elf.getStrings();
    if (!strings || offset >= strings->numBytes())
        return "<bad string offset " + std::to_string(offset) + ">";
    return quoted(strings->getString(offset));
}

// ---- the parts of the dump --------------------------------------------------------------------

void ObjectDumper::dumpHeader(std::string& out) const
{
    const ElfHeader* header = m_elf.getHeader();
    appendf(out, "Object: type %s machine 0x%04x sections %u\n", fileTypeName(header->e_type).c_str(),
            header->e_machine, numSections());
}

void ObjectDumper::dumpSections(std::string& out) const
{
    out += "Sections:\n";
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        appendf(out, "  %u: %s %s %s offset %u size %u link %u info %u align %u entsize %u\n", header->getNum(),
                nameText(header->getName(m_elf.getStrings())).c_str(), sectionTypeName(header->sh_type).c_str(),
                sectionFlagLetters(header->sh_flags).c_str(), header->sh_offset, header->sh_size, header->sh_link,
                header->sh_info, header->sh_addralign, header->sh_entsize);
    }
}

void ObjectDumper::dumpContents(std::string& out) const
{
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        const Elf32_Word type = header->sh_type;
        if (type != ElfHandler::SHT_PROGBITS && type != ElfHandler::SHT_NETINFO && type != ElfHandler::SHT_INFO)
            continue;
        if (header->sh_size == 0)
            continue;
        appendf(out, "Contents of section %s:\n", nameText(header->getName(m_elf.getStrings())).c_str());
        const unsigned char* bytes = sectionBytes(header);
        if (!bytes) {
            out += "  (not in the file)\n";
            continue;
        }
        for (unsigned line = 0; line < header->sh_size; line += HEX_BYTES_PER_LINE) {
            appendf(out, "  %04x:", line);
            for (unsigned i = line; i < header->sh_size && i < line + HEX_BYTES_PER_LINE; ++i)
                appendf(out, " %02x", bytes[i]);
            out += '\n';
        }
    }
}

void ObjectDumper::dumpSymbols(std::string& out) const
{
    out += "Symbols:\n";
    for (unsigned i = 1; i < m_elf.numSymbols(); ++i) {
        const unsigned char info = m_elf.getSymbolInfo(i);
        const std::string name = m_elf.getSymbolName(i);
        appendf(out, "  %u: 0x%08x size %u %s %s %s %s\n", i, m_elf.getSymbolValue(i), m_elf.getSymbolSize(i),
                bindingName(info >> 4).c_str(), symbolTypeName(info & 0xF).c_str(),
                symbolSection(m_elf.getSymbolSectionIndex(i)).c_str(), nameText(name).c_str());
    }
}

void ObjectDumper::dumpRelocations(std::string& out) const
{
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        const bool hasAddend = header->sh_type == ElfHandler::SHT_RELA;
        if (!hasAddend && header->sh_type != ElfHandler::SHT_REL)
            continue;
        appendf(out, "Relocations for %s:\n", sectionName(header->sh_info).c_str());
        const unsigned entryBytes = hasAddend ? ELF32_RELA_BYTES : ELF32_REL_BYTES;
        const unsigned char* bytes = sectionBytes(header);
        if (!bytes) {
            out += "  (not in the file)\n";
            continue;
        }
        unsigned at = 0;
        for (; at + entryBytes <= header->sh_size; at += entryBytes) {
            const ElfRelocation relocation(hasAddend, bytes + at);
            appendf(out, "  0x%08x type %u %s %+d\n", relocation.getOffset(), relocation.getType(),
                    symbolName(relocation.getSymbol()).c_str(), relocation.getAddend());
        }
        if (at != header->sh_size)
            appendf(out, "  (%u trailing bytes)\n", header->sh_size - at);
    }
}

void ObjectDumper::dumpExpressions(std::string& out) const
{
    static const char typeLetters[] = {'c', 'S', 's', '?'};
    out += "Linker expressions:\n";
    unsigned index = 0;
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        if (header->sh_type != ElfHandler::SHT_EXPR)
            continue;
        const unsigned char* bytes = sectionBytes(header);
        if (!bytes) {
            if (header->sh_size != 0)
                out += "  (not in the file)\n";
            continue;
        }
        unsigned at = 0;
        for (; at + EXPR_RECORD_BYTES <= header->sh_size; at += EXPR_RECORD_BYTES, ++index) {
            const Elf32_Word kind = littleWord(bytes + at);
            std::string types;
            for (unsigned op = 0; op < 3; ++op)
                types += typeLetters[(kind >> (2 * op)) & 3];
            appendf(out, "  %u: kind %u (op %u %s) label %s:", index, kind, kind >> 6, types.c_str(),
                    symbolName(littleWord(bytes + at + 4)).c_str());
            for (unsigned op = 0; op < 3; ++op) {
                const Elf32_Word value = littleWord(bytes + at + 8 + 4 * op);
                out += op == 0 ? " " : ", ";
                switch ((kind >> (2 * op)) & 3) {
                case 0:
                    appendf(out, "%d", static_cast<Elf32_Sword>(value));
                    break;
                case 1:
                    out += symbolName(value);
                    break;
                case 2:
                    out += stringAt(value);
                    break;
                default:
                    appendf(out, "?0x%x", value);
                    break;
                }
            }
            out += '\n';
        }
        if (at != header->sh_size)
            appendf(out, "  (%u trailing bytes)\n", header->sh_size - at);
    }
}

void ObjectDumper::dumpNotes(std::string& out) const
{
    out += "Notes:\n";
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        if (header->sh_type != ElfHandler::SHT_NOTE)
            continue;
        const unsigned char* bytes = sectionBytes(header);
        if (!bytes) {
            appendf(out, "  %u: (not in the file)\n", header->getNum());
            continue;
        }
        // A section normally holds one record; any further ones get lines of their own.
        const std::uint64_t size = header->sh_size;
        std::uint64_t at = 0;
        while (at < size) {
            if (at + 12 > size) {
                appendf(out, "  %u: (malformed note)\n", header->getNum());
                break;
            }
            const Elf32_Word nameBytes = littleWord(bytes + at);
            const Elf32_Word descBytes = littleWord(bytes + at + 4);
            const Elf32_Word type = littleWord(bytes + at + 8);
            const std::uint64_t nameAt = at + 12;
            const std::uint64_t descAt = nameAt + ((std::uint64_t(nameBytes) + 3) & ~std::uint64_t(3));
            const std::uint64_t end = descAt + ((std::uint64_t(descBytes) + 3) & ~std::uint64_t(3));
            if (descAt + descBytes > size) {
                appendf(out, "  %u: (malformed note)\n", header->getNum());
                break;
            }
            std::string vendor(reinterpret_cast<const char*>(bytes + nameAt), nameBytes);
            // The vendor may or may not be stored with a terminating zero.
            while (!vendor.empty() && vendor.back() == '\0')
                vendor.pop_back();
            const std::string desc(reinterpret_cast<const char*>(bytes + descAt), descBytes);
            appendf(out, "  %u: type %u %s %s\n", header->getNum(), type, nameText(vendor).c_str(),
                    quoted(desc).c_str());
            at = end;
        }
    }
}

void ObjectDumper::dumpGroups(std::string& out) const
{
    out += "Groups:\n";
    for (const ElfSectionHeader* header : m_elf.getSectionHeaders()) {
        if (header->sh_type != ElfHandler::SHT_GROUP)
            continue;
        const unsigned char* bytes = sectionBytes(header);
        if (!bytes || header->sh_size < 4) {
            appendf(out, "  %u: signature %s (no flags word)\n", header->getNum(),
                    symbolName(header->sh_info).c_str());
            continue;
        }
        appendf(out, "  %u: signature %s flags %u members", header->getNum(), symbolName(header->sh_info).c_str(),
                littleWord(bytes));
        const unsigned words = header->sh_size / 4;
        for (unsigned i = 1; i < words; ++i) {
            const Elf32_Word member = littleWord(bytes + 4 * i);
            if (member != 0 && member < numSections())
                appendf(out, " %s", sectionName(member).c_str());
            else
                appendf(out, " 0x%x", member);
        }
        if (header->sh_size % 4 != 0)
            appendf(out, " (%u trailing bytes)", header->sh_size % 4);
        out += '\n';
    }
}

} // namespace vorp
