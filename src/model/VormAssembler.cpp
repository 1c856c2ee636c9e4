#include "model/VormAssembler.h"

#include "diag/ErrorHandler.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "model/VormAlignDirectiveLine.h"
#include "model/VormAsciiLine.h"
#include "model/VormCCDirectiveLine.h"
#include "model/VormLabelLine.h"
#include "model/VormLine.h"
#include "model/VormLocDirectiveLine.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace vorp {

VormAssembler::VormAssembler(AssemblerOptions options, TelkUtils* utils, VorpErrorHandler* errorHandler)
    : m_labels(errorHandler), m_errorHandler(errorHandler), m_linkerExps(errorHandler, m_idStrings),
      m_arch(options.arch), m_utils(utils), m_options(std::move(options))
{
    switch (m_arch) {
    case TL3B:
        m_instructionSet = &Tl3bInstructionSet::get();
        break;
    default:
        assert(0 && "Unknown arch");
    }
}

VormAssembler::~VormAssembler() = default;

VormSection* VormAssembler::addSection(const Location& location, const std::string& name, const std::string& flags,
                                       const std::string& type, std::uint32_t entrySize,
                                       const std::string& groupName, bool comdat)
{
    if (VormSection* existing = findSection(name))
        return existing;
    bool isGroup = false;
    const std::uint32_t flagWord = parseSectionFlags(flags, location, isGroup);
    const std::uint32_t typeWord = parseSectionType(type, location);
    m_sections.push_back(std::make_unique<VormSection>(name, flagWord, typeWord, entrySize, groupName, comdat));
    m_sectionsByName.emplace(m_sections.back()->getName(), m_sections.back().get());
    if (isGroup)
        m_sectionGroups[groupName].push_back(name);
    return m_sections.back().get();
}

VormSection* VormAssembler::addSection(const std::string& name, const std::string& flags, const std::string& type,
                                       std::uint32_t entrySize, const std::string& groupName, bool comdat)
{
    return addSection(NoLocation(), name, flags, type, entrySize, groupName, comdat);
}

VormSection* VormAssembler::findSection(const std::string& name) const
{
    const auto found = m_sectionsByName.find(name);
    return found == m_sectionsByName.end() ? nullptr : found->second;
}

bool VormAssembler::sectionIsEmpty(const std::string& name) const
{
    const VormSection* section = findSection(name);
    if (!section)
        return true;
    for (const VormLine* line : section->getLines()) {
        std::uint32_t minBytes = 0;
        std::uint32_t maxBytes = 0;
        line->getByteRange(minBytes, maxBytes);
        if (maxBytes != 0)
            return false;
    }
    return true;
}

std::uint32_t VormAssembler::parseSectionFlags(const std::string& flags, const Location& location, bool& isGroup)
{
    isGroup = false;
    std::uint32_t word = 0;
    for (char letter : flags) {
        switch (letter) {
        case 'w': word |= SHF_WRITE; break;
        case 'a': word |= SHF_ALLOC; break;
        case 'x': word |= SHF_EXECINSTR; break;
        case 'M': word |= SHF_MERGE; break;
        case 'S': word |= SHF_STRINGS; break;
        case 'd': word |= ElfHandler::SHF_DP_SECTION; break;
        case 'c': word |= ElfHandler::SHF_CP_SECTION; break;
        case 'G': isGroup = true; break;
        default:
            m_errorHandler->vorpError(location, AssErrorCodes::SECTION_FLAG,
                                      "Unrecognised flag to section directive: %c\n", letter);
            break;
        }
    }
    return word;
}

std::uint32_t VormAssembler::parseSectionType(const std::string& type, const Location& location)
{
    if (type.empty() || type == "progbits")
        return VormSection::PROGBITS;
    if (type == "nobits")
        return VormSection::NOBITS;
    if (type == "netinfo")
        return VormSection::NETINFO;
    m_errorHandler->vorpError(location, AssErrorCodes::SECTION_TYPE, "Unrecognised type to section directive: %s\n",
                              type.c_str());
    return VormSection::PROGBITS;
}

std::uint32_t VormAssembler::getDefaultAlignment(const VormSection* section, bool hasScheduledLines) const
{
    return hasScheduledLines && (section->getFlags() & SHF_EXECINSTR) ? 4 : 1;
}

void VormAssembler::setFilename(const std::string& name, const Location& location)
{
    if (!m_filename.empty() && m_filename != name)
        m_errorHandler->vorpError(location, AssErrorCodes::SOURCE_FILENAME, "Source filename redefined.\n");
    m_filename = name;
}

void VormAssembler::addLine(VormSection* section, VormLine* line)
{
    addLine(section, section->getLines().end(), line);
}

void VormAssembler::addLine(VormSection* section, LinePosition position, VormLine* line)
{
    line->setId(m_nameCounters.lines++);
    line->setSection(section);
    section->getLines().insert(position, line);
}

VormLocDirectiveLine* VormAssembler::addLocDirective(VormSection* section, const LineLocation& location,
                                                     bool schedule)
{
    auto* line = new VormLocDirectiveLine(location, schedule);
    addLine(section, line);
    return line;
}

VormAlignDirectiveLine* VormAssembler::addAlign(VormSection* section, std::uint32_t alignment,
                                                const LineLocation& location, bool schedule)
{
    return addAlign(section, section->getLines().end(), alignment, location, schedule);
}

VormAlignDirectiveLine* VormAssembler::addAlign(VormSection* section, LinePosition position, std::uint32_t alignment,
                                                const LineLocation& location, bool schedule)
{
    auto* line = new VormAlignDirectiveLine(alignment, location, schedule);
    addLine(section, position, line);
    line->initialise(*this, *m_errorHandler);
    return line;
}

VormAlignDirectiveLine* VormAssembler::addAlign(VormSection* section, std::uint32_t alignment, std::uint32_t fill,
                                                const LineLocation& location, bool schedule)
{
    auto* line = new VormAlignDirectiveLine(alignment, fill, location, schedule);
    addLine(section, line);
    line->initialise(*this, *m_errorHandler);
    return line;
}

VormCCDirectiveLine* VormAssembler::addCCTop(VormSection* section, std::unique_ptr<TokenLine> tokens)
{
    auto* line = new VormCCDirectiveLine(CC_TOP_LINE, std::move(tokens), nullptr);
    addLine(section, line);
    line->defineLabels(*this);
    if (section->getOpenCCTop())
        m_errorHandler->vorpError(line->getLocation(), AssErrorCodes::NESTED_CC_TOP, "Nested cc_top directive.\n");
    section->setOpenCCTop(line);
    return line;
}

VormCCDirectiveLine* VormAssembler::addCCBottom(VormSection* section, std::unique_ptr<TokenLine> tokens)
{
    VormCCDirectiveLine* top = section->getOpenCCTop();
    auto* line = new VormCCDirectiveLine(CC_BOTTOM_LINE, std::move(tokens), top);
    addLine(section, line);
    if (top)
        line->defineLabels(*this);
    const Token& keyword = line->getToken(0);
    const LineLocation location(keyword.file, static_cast<unsigned>(keyword.line));
    if (!top)
        m_errorHandler->vorpError(location, AssErrorCodes::CC_BOTTOM,
                                  "cc_bottom directive outside an elimination block.\n");
    else if (std::strcmp(top->getName(), line->getName()) != 0)
        m_errorHandler->vorpError(location, AssErrorCodes::CC_BOTTOM,
                                  "cc_bottom directive name does not match previous cc_top.\n");
    section->setOpenCCTop(nullptr);
    return line;
}

VormCCDirectiveLine* VormAssembler::addCCTop(VormSection* section, LinePosition position,
                                             std::unique_ptr<TokenLine> tokens)
{
    auto* line = new VormCCDirectiveLine(CC_TOP_LINE, std::move(tokens), nullptr);
    addLine(section, position, line);
    line->defineLabels(*this);
    return line;
}

VormCCDirectiveLine* VormAssembler::addCCBottom(VormSection* section, LinePosition position,
                                                std::unique_ptr<TokenLine> tokens, VormCCDirectiveLine* top)
{
    auto* line = new VormCCDirectiveLine(CC_BOTTOM_LINE, std::move(tokens), top);
    addLine(section, position, line);
    line->defineLabels(*this);
    return line;
}

VormAsciiLine* VormAssembler::addAscii(VormSection* section, const LineLocation& location, bool zeroTerminate,
                                       std::vector<Token> strings)
{
    auto* line = new VormAsciiLine(location, zeroTerminate, std::move(strings));
    addLine(section, line);
    return line;
}

VormDataLine* VormAssembler::addData(VormSection* section, const LineLocation& location, VormDataLine::Type type,
                                     std::vector<Operand*> operands)
{
    auto* line = new VormDataLine(location, type, std::move(operands));
    addLine(section, line);
    line->init(*this);
    return line;
}

VormLabelLine* VormAssembler::addLabelLine(VormLabel* label, VormSection* section, LinePosition position,
                                           const LineLocation& location, bool schedule)
{
    auto* line = new VormLabelLine(label, location, schedule);
    addLine(section, position, line);
    m_labels.defineLabel(label, line);
    return line;
}

VormLabelLine* VormAssembler::addLabel(VormSection* section, const Token& name, bool schedule)
{
    return addLabel(section, section->getLines().end(), name, schedule);
}

VormLabelLine* VormAssembler::addLabel(VormSection* section, LinePosition position, const Token& name, bool schedule)
{
    VormLabel* label = m_labels.getOrTentativelyAddLabel(name.text, false);
    return addLabelLine(label, section, position, LineLocation(name.file, static_cast<unsigned>(name.line)),
                        schedule);
}

VormLabelLine* VormAssembler::addUniqueLabel(VormSection* section, const LineLocation& location, bool schedule)
{
    return addUniqueLabel(section, section->getLines().end(), location, schedule);
}

VormLabelLine* VormAssembler::addUniqueLabel(VormSection* section, LinePosition position,
                                             const LineLocation& location, bool schedule)
{
    return addLabelLine(m_labels.addUniqueUndefinedLabel(), section, position, location, schedule);
}

const Encoder* VormAssembler::findEncoder(const char* name, Syntax syntax) const
{
    const EncoderMap* table = nullptr;
    switch (syntax) {
    case SYNTAX_DEFAULT:
        table = &m_instructionSet->defaultEncoders();
        break;
    case SYNTAX_ARCHITECTURAL:
        table = &m_instructionSet->architecturalEncoders();
        break;
    default:
        assert(0 && "Unexpected syntax");
    }
    const auto found = table->find(name);
    return found == table->end() ? nullptr : found->second.get();
}

void VormAssembler::dump() const
{
    for (const auto& section : m_sections)
        section->dump();
}

} // namespace vorp
