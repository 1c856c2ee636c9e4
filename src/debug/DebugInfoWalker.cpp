#include "debug/DebugInfoWalker.h"

#include "model/VormDataLine.h"

namespace vorp {

bool DebugInfoWalker::accept(DebugInfoVisitor& visitor)
{
    DataReader reader(m_assembler, m_section);
    const std::uint32_t length = reader.readU32();
    if (reader.hasError() || length >= 0xFFFFFF00)
        return false;
    const std::uint16_t version = reader.readU16();
    if (reader.hasError() || (version != 2 && version != 3))
        return false;
    reader.skipBytes(4); // the abbreviation offset, normally relocated
    const std::uint8_t addressSize = reader.readU8();
    if (reader.hasError() || addressSize != 4)
        return false;
    const std::uint32_t offset = reader.getOffset();
    const Optional<LinePosition> position = reader.getPosition();
    const std::uint32_t code = reader.readULEB128();
    if (reader.hasError() || !walkEntry(visitor, reader, code, position, offset))
        return false;
    if (reader.getOffset() != length + 4)
        return false;
    visitor.debugEnd(reader.getPosition());
    return true;
}

bool DebugInfoWalker::walkEntry(DebugInfoVisitor& visitor, DataReader& reader, std::uint32_t code,
                                Optional<LinePosition> position, std::uint32_t)
{
    const DwarfAbbrevEntry* entry = m_abbrevs->find(code);
    if (!entry)
        return false;
    void* userData = nullptr;
    visitor.debugEntryBegin(position, *entry, userData);
    for (const DwarfAbbrevAttribute& attribute : entry->attributes) {
        visitor.debugEntryAttribute(reader, *entry, attribute, userData);
        switch (attribute.form) {
        case DW_FORM_block2:
        case DW_FORM_block4:
        case DW_FORM_block:
        case DW_FORM_block1: {
            std::uint32_t length = 0;
            if (!readBlockLength(reader, attribute.form, length))
                return false;
            reader.skipBytes(length);
            break;
        }
        case DW_FORM_string:
            reader.readString();
            break;
        case DW_FORM_sdata:
            reader.readSLEB128();
            break;
        case DW_FORM_udata:
            reader.readULEB128();
            break;
        default: {
            unsigned size = 0;
            if (!getDwarfFormSize(attribute.form, size))
                return false;
            reader.skipBytes(size);
            break;
        }
        }
        if (reader.hasError())
            return false;
    }
    if (entry->hasChildren) {
        for (;;) {
            const Optional<LinePosition> childPosition = reader.getPosition();
            const std::uint32_t childOffset = reader.getOffset();
            const std::uint32_t childCode = reader.readULEB128();
            if (reader.hasError())
                return false;
            if (childCode == 0)
                break;
            if (!walkEntry(visitor, reader, childCode, childPosition, childOffset))
                return false;
        }
    }
    visitor.debugEntryEnd(reader.getPosition(), *entry, userData);
    return true;
}

bool DebugInfoWalker::readBlockLength(DataReader& reader, unsigned form, std::uint32_t& length)
{
    switch (form) {
    case DW_FORM_block2: length = reader.readU16(); break;
    case DW_FORM_block4: length = reader.readU32(); break;
    case DW_FORM_block: length = reader.readULEB128(); break;
    case DW_FORM_block1: length = reader.readU8(); break;
    default: return false;
    }
    return !reader.hasError();
}

bool DebugInfoWalker::readReferenceAttribute(const DataReader& reader, const DwarfAbbrevAttribute& attribute,
                                             std::uint64_t& value)
{
    DataReader copy = reader;
    switch (attribute.form) {
    case DW_FORM_ref1: value = copy.readU8(); break;
    case DW_FORM_ref2: value = copy.readU16(); break;
    case DW_FORM_ref4: value = copy.readU32(); break;
    case DW_FORM_ref8: value = copy.readU64(); break;
    case DW_FORM_ref_udata: value = copy.readULEB128(); break;
    default: return false;
    }
    return !copy.hasError();
}

VormLabel* DebugInfoWalker::readAddressAttribute(const DataReader& reader, const DwarfAbbrevAttribute& attribute)
{
    unsigned size = 0;
    if (!getDwarfFormSize(attribute.form, size) || size != 4)
        return nullptr;
    return reader.readDataReference(VormDataLine::WORD);
}

VormLabel* DebugInfoWalker::readLocationAttribute(const DataReader& reader, const DwarfAbbrevAttribute& attribute)
{
    DataReader copy = reader;
    std::uint32_t length = 0;
    if (!readBlockLength(copy, attribute.form, length) || length != 5)
        return nullptr;
    if (copy.readU8() != DW_OP_addr || copy.hasError())
        return nullptr;
    return copy.readDataReference(VormDataLine::WORD);
}

} // namespace vorp
