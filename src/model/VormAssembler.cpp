#include "model/VormAssembler.h"

#include "debug/DebugInfoRewriter.h"
#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "isa/EncodingFailInfo.h"
#include "encoding/InstructionGroupingSingle.h"
#include "emit/ObjectEmitter.h"
#include "emit/OutputFile.h"
#include "encoding/VormCodeLine.h"
#include "encoding/VormJTTrampoline.h"
#include "layout/SizeIteration.h"
#include "model/VormAlignDirectiveLine.h"
#include "model/VormAsciiLine.h"
#include "model/VormCCDirectiveLine.h"
#include "model/VormDirectiveLine.h"
#include "model/VormLabelLine.h"
#include "model/VormLine.h"
#include "model/VormLocDirectiveLine.h"
#include "schedule/InstructionGroupingScheduled.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace vorp {

VormAssembler::VormAssembler(AssemblerOptions options, TelkUtils* utils, VorpErrorHandler* errorHandler)
    : m_labels(errorHandler), m_errorHandler(errorHandler), m_linkerExps(errorHandler, m_idStrings), m_debugLine(errorHandler),
      m_arch(options.arch), m_utils(utils), m_options(std::move(options))
{
    switch (m_arch) {
    case TL3B:
        m_instructionTable.build(m_encoders, m_archEncoders);
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

VormDirectiveLine* VormAssembler::addDirective(VormSection* section, std::unique_ptr<TokenLine> tokens, bool schedule)
{
    VormDirectiveLine* line = m_directives.getDirectiveLine(std::move(tokens), schedule);
    addLine(section, line);
    line->initialise(*this, *m_errorHandler);
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
        table = &m_encoders;
        break;
    case SYNTAX_ARCHITECTURAL:
        table = &m_archEncoders;
        break;
    default:
        assert(0 && "Unexpected syntax");
    }
    const auto found = table->find(name);
    return found == table->end() ? nullptr : found->second.get();
}

VormCodeLine* VormAssembler::addCode(VormSection* section, std::unique_ptr<TokenLine> tokens, bool schedule,
                                     Syntax syntax)
{
    const Token mnemonic = tokens->front();
    if (const Encoder* encoder = findEncoder(mnemonic.text, syntax)) {
        auto* line = new VormCodeLine(std::move(tokens), encoder, schedule);
        addLine(section, line);
        return line;
    }
    const LineLocation location(mnemonic.file, static_cast<unsigned>(mnemonic.line));
    const Syntax other = syntax == SYNTAX_DEFAULT ? SYNTAX_ARCHITECTURAL : SYNTAX_DEFAULT;
    if (findEncoder(mnemonic.text, other)) {
        m_errorHandler->vorpError(location, AssErrorCodes::SUGGESTION, "Use of \"%s\" outside of %s syntax mode.\n",
                                  mnemonic.text, other == SYNTAX_DEFAULT ? "default" : "architectural");
        return nullptr;
    }
    m_errorHandler->vorpError(location, AssErrorCodes::UNKNOWN_OPCODE, "Unknown opcode '%s'\n", mnemonic.text);
    const std::string name = mnemonic.text;
    const std::size_t underscore = name.find('_');
    if (underscore != std::string::npos) {
        const std::string suggestion = name.substr(0, underscore) + "I" + name.substr(underscore);
        if (findEncoder(suggestion.c_str(), syntax))
            m_errorHandler->vorpError(location, AssErrorCodes::SUGGESTION, "Did you mean '%s'?\n", suggestion.c_str());
    }
    return nullptr;
}

std::unique_ptr<TokenLine> VormAssembler::newBranchTokenLine(const char* target, int line, const char* file)
{
    auto tokens = std::make_unique<TokenLine>();
    tokens->push_back(newToken(m_idStrings, S_NAME, "bu", line, file));
    tokens->push_back(newToken(m_idStrings, S_NAME, target, line, file));
    return tokens;
}

VormCodeLine* VormAssembler::addBranch(VormSection* section, const char* target, int line, const char* file)
{
    VormCodeLine* branch = addCode(section, newBranchTokenLine(target, line, file), false, SYNTAX_DEFAULT);
    assert(branch);
    return branch;
}

VormJTTrampoline* VormAssembler::addJTTrampoline(VormSection* section, std::unique_ptr<TokenLine> tokens)
{
    const Encoder* encoder = findEncoder(tokens->front().text, SYNTAX_DEFAULT);
    assert(encoder);
    auto* line = new VormJTTrampoline(std::move(tokens), encoder, false);
    addLine(section, line);
    return line;
}

void VormAssembler::noMatchingFormatError(EncodingFailInfo& failInfo)
{
    if (!failInfo.m_outOfRange) {
        m_errorHandler->vorpError(failInfo.m_location, AssErrorCodes::NO_MATCHING_FORMAT,
                                  "no format matching for instruction: '%s'\n", failInfo.m_instruction.c_str());
    } else {
        std::string list;
        for (const auto& [lo, hi] : failInfo.m_ranges)
            list += (list.empty() ? "" : ", ") + std::to_string(lo) + ".." + std::to_string(hi);
        m_errorHandler->vorpError(failInfo.m_location, AssErrorCodes::IMMEDIATE_OUT_OF_RANGE,
                                  "Immediate out of range for instruction: '%s'.  Value is %d. Allowed range%s: %s.\n",
                                  failInfo.m_instruction.c_str(), failInfo.m_value,
                                  failInfo.m_ranges.size() == 1 ? " is" : "s are", list.c_str());
    }
    if (m_options.verbose) {
        fprintf(stderr, "       Known formats for '%s':\n", failInfo.m_instruction.c_str());
        const Encoder* encoder = findEncoder(failInfo.m_instruction.c_str(), SYNTAX_DEFAULT);
        assert(encoder);
        encoder->printFormats(stderr);
    }
    throw FatalError(1);
}

bool VormAssembler::runPasses()
{
    auto ok = [this] { return m_errorHandler->getMakeBinary(); };
    checkForUnterminatedCCTop();
    if (ok() && m_options.rewriteDebug)
        rewriteDwarf();
    if (ok())
        expandDirectives();
    if (ok())
        chooseInstructionFormats();
    if (ok())
        expandLateDirectives();
    if (ok())
        m_labels.finaliseLabels();
    if (ok())
        addDefaultNotes();
    return ok();
}

int VormAssembler::postParse(const char* fileSymbolName)
{
    OutputFile object;
    OutputFile listing;
    bool written = runPasses() && ObjectEmitter(*this).dumpBinary(fileSymbolName, object);
    // Both files are complete before either is put in place.
    if (written && m_options.listing && m_errorHandler->getMakeBinary())
        written = printListing(listing);
    if (written && m_errorHandler->getMakeBinary()) {
        written = object.commit() && listing.commit();
        if (!written)
            (object.failed() ? object : listing).reportFailure(*m_utils->errorHandler);
    }
    // After any error the object must not survive, not even a stale one from an earlier run. A
    // device or pipe that refused the bytes is no object, though: it stays.
    if (!written || !m_errorHandler->getMakeBinary()) {
        const bool keepOutput = object.isDevice() && (object.failed() || listing.failed());
        object.discard();
        listing.discard();
        if (!keepOutput)
            std::remove(getOutputFile());
        return 1;
    }
    return 0;
}

void VormAssembler::checkForUnterminatedCCTop()
{
    for (const auto& section : m_sections) {
        if (const VormCCDirectiveLine* top = section->getOpenCCTop())
            m_errorHandler->vorpError(top->getLocation(), AssErrorCodes::UNTERMINATED_CC_TOP,
                                      "Unterminated cc_top directive.\n");
    }
}

void VormAssembler::rewriteDwarf()
{
    DebugInfoRewriter(*this, m_options.warnRewriteDebug).rewriteDwarf();
}

void VormAssembler::expandDirectives()
{
    // Sections made by this pass are not visited by it.
    const std::size_t count = m_sections.size();
    for (std::size_t i = 0; i < count; ++i)
        expandDirectives(m_sections[i].get());
    const bool fromLines = shouldGenDwarfFromLines();
    const bool generate = shouldGenDwarf();
    if (fromLines)
        emitDefaultDwarfSections();
    if (generate)
        m_debugLine.encode(*this, fromLines);
    m_zebInfo.encode(*this);
}

void VormAssembler::emitDefaultDwarfSections()
{
    m_debugInfo.setName(m_options.sourcePath);
    m_debugInfo.setCompDir(m_options.workingDir);
    m_debugInfo.setProducer("vorp");
    m_debugInfo.encode(*this);
}

void VormAssembler::expandLateDirectives()
{
    std::vector<VormSection*> sections;
    m_debugFrame.encode(*this, sections);
    for (VormSection* section : sections) {
        expandDirectives(section);
        chooseInstructionFormats(section);
    }
}

bool VormAssembler::shouldGenDwarfFromLoc() const
{
    return isSection(".debug_info") && sectionIsEmpty(".debug_line");
}

bool VormAssembler::shouldGenDwarfFromLines() const
{
    // "debug_line" without its dot, as it always was: a ".debug_line" of the input doesn't stop it.
    return m_options.debug && !isSection(".debug_info") && !isSection("debug_line");
}

bool VormAssembler::addToDebugLine(VormSection* section, LinePosition position, bool inCC)
{
    VormLine* line = *position;
    if (line->getType() != CODE_LINE)
        return false;
    const LineLocation location = line->getLocation();
    VormLabel* label = addUniqueLabel(section, position, location, line->getSchedule())->getLabel();
    const std::string file = location.getFile();
    auto found = m_fileNumbers.find(file);
    if (found == m_fileNumbers.end()) {
        found = m_fileNumbers.emplace(file, static_cast<std::uint32_t>(m_fileNumbers.size() + 1)).first;
        m_debugLine.addFile(found->second, file, NoLocation());
    }
    m_labels.ensureLabelName(label);
    m_debugLine.addEntry(label->getName(), found->second, location.getLine(), 0, true, false, false, false, false, 0,
                         inCC ? label->getName() : "");
    return true;
}

void VormAssembler::expandDirectives(VormSection* section)
{
    LineList& lines = section->getLines();
    if (lines.empty())
        return;
    const bool fromLoc = shouldGenDwarfFromLoc();
    const bool fromLines = section->getName() == ".text" && shouldGenDwarfFromLines();
    const VormCCDirectiveLine* openTop = nullptr;
    std::uint32_t blockAlignment = 1;
    bool blockHasScheduled = false;
    LinePosition blockStart = lines.end();
    bool sequenceOpen = false;
    bool sawCode = false;

    auto newNamedLabel = [this, section](LinePosition position, const LineLocation& location, bool schedule) {
        VormLabel* label = addUniqueLabel(section, position, location, schedule)->getLabel();
        m_labels.ensureLabelName(label);
        return label;
    };

    for (auto position = lines.begin(); position != lines.end(); ++position) {
        VormLine* line = *position;
        if (line->getSchedule())
            blockHasScheduled = true;
        switch (line->getType()) {
        case CODE_LINE:
            if (fromLines && addToDebugLine(section, position, openTop != nullptr))
                sawCode = sequenceOpen = true;
            break;
        case ALIGN_LINE:
            if (openTop)
                blockAlignment = std::max(blockAlignment, static_cast<VormAlignDirectiveLine*>(line)->getAlignment());
            break;
        case LOC_LINE:
            if (fromLoc) {
                auto* loc = static_cast<VormLocDirectiveLine*>(line);
                VormLabel* label = newNamedLabel(position, loc->getLocation(), loc->getSchedule());
                m_debugLine.addEntry(label->getName(), loc->getFile(), loc->getLine(), loc->getColumn(),
                                     loc->getIsStmt(), loc->getBasicBlock(), loc->getEndSequence(),
                                     loc->getPrologueEnd(), loc->getEpilogueBegin(), loc->getIsa(),
                                     openTop ? label->getName() : "");
                sequenceOpen = !loc->getEndSequence();
            }
            break;
        case CC_TOP_LINE:
            openTop = static_cast<VormCCDirectiveLine*>(line);
            blockAlignment = 1;
            blockHasScheduled = false;
            blockStart = std::next(position);
            break;
        case CC_BOTTOM_LINE:
            // The block must start aligned wherever the linker puts it.
            blockAlignment = std::max(blockAlignment, getDefaultAlignment(section, blockHasScheduled));
            if (blockAlignment > 1)
                addAlign(section, blockStart, blockAlignment, LineLocation(m_idStrings.generatedFile(), 0), false);
            if (sequenceOpen) {
                // Every line sequence ends with its block. The block stays open for the walk until
                // the next cc_top: what follows still counts as inside.
                VormLabel* label = newNamedLabel(position, LineLocation(m_idStrings.generatedFile(), 0), line->getSchedule());
                m_debugLine.endSequence(label->getName());
                sequenceOpen = false;
            } else {
                openTop = nullptr;
            }
            break;
        default:
            break;
        }
    }

    if (sequenceOpen) {
        VormLabel* label = newNamedLabel(lines.end(), LineLocation(m_idStrings.generatedFile(), 0), false);
        m_debugLine.endSequence(label->getName());
    }
    if (sawCode) {
        const std::string low = ".L" + section->getName() + ".low_pc";
        const std::string high = ".L" + section->getName() + ".high_pc";
        addLabel(section, lines.begin(), newGeneratedToken(m_idStrings, S_NAME, low.c_str()), false);
        addLabel(section, lines.end(), newGeneratedToken(m_idStrings, S_NAME, high.c_str()), false);
        m_debugInfo.addRange(low, high);
    }
}

void VormAssembler::chooseInstructionFormats()
{
    for (const auto& section : m_sections)
        chooseInstructionFormats(section.get());
}

void VormAssembler::getInstructionGroupings(VormSection* section, InstructionGroupings& groupings,
                                            bool& hasScheduling)
{
    hasScheduling = false;
    for (const VormLine* line : section->getLines())
        hasScheduling = hasScheduling || line->getSchedule();
    if (!hasScheduling) {
        for (VormLine* line : section->getLines())
            groupings.push_back(std::make_unique<InstructionGroupingSingle>(line));
        return;
    }

    // Addresses are still at their widest: this pass removes only what no address can save, and
    // leaves many lines done, which is what lets them into a scheduled block.
    for (VormLine* line : section->getLines()) {
        EncodingFailInfo failInfo;
        bool changed = false;
        if (!line->chooseEncoder(false, m_labels, nullptr, changed, failInfo, false))
            noMatchingFormatError(failInfo);
    }

    auto addSingles = [&groupings](LinePosition first, LinePosition last) {
        for (auto position = first; position != last; ++position)
            groupings.push_back(std::make_unique<InstructionGroupingSingle>(*position));
    };
    std::vector<VormBasicBlock> blocks;
    getBlocks(section, blocks);
    for (VormBasicBlock& block : blocks) {
        LinePosition firstCode = block.begin();
        while (firstCode != block.end() && (*firstCode)->getType() != CODE_LINE)
            ++firstCode;
        if (firstCode == block.end())
            firstCode = block.begin();
        const VormBasicBlock head = block.split(firstCode);
        addSingles(head.begin(), head.end());

        // Only settled lines of no size but instructions may be reordered: anything else cuts the
        // block and stays where it is.
        for (LinePosition position = block.begin(); position != block.end();) {
            VormLine* line = *position;
            std::uint32_t minBytes = 0;
            std::uint32_t maxBytes = 0;
            line->getByteRange(minBytes, maxBytes);
            if (line->getSchedule() && line->isDone() && (line->getType() == CODE_LINE || maxBytes == 0)) {
                ++position;
                continue;
            }
            const VormBasicBlock before = block.split(position);
            // Lines without an instruction have nothing to reorder, and a scheduled grouping
            // would keep their addresses open through the whole iteration: a branch to a label
            // among them could then never be sized.
            if (std::any_of(before.begin(), before.end(),
                            [](const VormLine* line) { return line->getType() == CODE_LINE; }))
                groupings.push_back(std::make_unique<InstructionGroupingScheduled>(before, m_options.debugScheduling));
            else
                addSingles(before.begin(), before.end());
            groupings.push_back(std::make_unique<InstructionGroupingSingle>(line));
            ++position;
            block.split(position);
        }

        if (!block.empty()) {
            LinePosition afterLastCode = block.begin();
            for (auto position = block.begin(); position != block.end(); ++position)
                if ((*position)->getType() == CODE_LINE)
                    afterLastCode = std::next(position);
            groupings.push_back(std::make_unique<InstructionGroupingScheduled>(block.split(afterLastCode),
                                                                            m_options.debugScheduling));
            addSingles(block.begin(), block.end());
        }
    }
}

void VormAssembler::chooseInstructionFormats(VormSection* section)
{
    InstructionGroupings groupings;
    bool hasScheduling = false;
    getInstructionGroupings(section, groupings, hasScheduling);

    SizeIterationSettings settings;
    settings.maxPasses = m_options.maxEncodingPasses;
    settings.incremental = !m_options.referenceSizeIteration;
    settings.observer = m_options.sizeIterationObserver;
    SizeIterationHooks hooks;
    hooks.noMatchingFormat = [this](EncodingFailInfo& failInfo) { noMatchingFormatError(failInfo); };
    hooks.passLimitReached = [this, section] {
        m_statistics.formatPasses.push_back({section->getName(), m_options.maxEncodingPasses + 1});
        m_utils->errorHandler->fatalError(true, "vorp: Error: unable to resolve encoder choice after %d loops\n",
                                          static_cast<int>(m_options.maxEncodingPasses));
    };
    const SizeIterationResult result = iterateSizes(groupings, m_labels, settings, hooks);
    const bool force = result.force;
    m_statistics.formatPasses.push_back({section->getName(), result.passes});
    m_statistics.groupingsEvaluated += result.evaluations;
    if (hasScheduling) {
        for (const auto& grouping : groupings)
            grouping->commit();
    }

    LineList& lines = section->getLines();
    if (lines.empty()) {
        section->setSize(0);
        return;
    }
    assert(lines.front()->getAddress().min == 0);
    VormAddress address{0, 0};
    for (VormLine* line : lines) {
        line->setAddress(address);
        if (line->getType() == CODE_LINE && (address.min & 1))
            m_errorHandler->vorpError(line->getLocation(), AssErrorCodes::MISALIGNED_CODE, "Misaligned code detected!\n");
        EncodingFailInfo failInfo;
        bool changed = false;
        if (!line->chooseEncoder(force, m_labels, nullptr, changed, failInfo, true))
            noMatchingFormatError(failInfo);
        assert(line->isDone());
        address = line->getNextAddress();
    }
    assert(address.min == address.max);
    section->setSize(address.min);
}

void VormAssembler::addDefaultNotes()
{
    bool haveCore = false;
    bool haveRevision = false;
    for (const NoteMemo& note : m_notes) {
        haveCore = haveCore || note.getKind() == NoteMemo::CORE;
        haveRevision = haveRevision || note.getKind() == NoteMemo::CORE_REVISION;
    }
    if (!haveCore)
        m_notes.emplace_back(NoteMemo::CORE, "TL3");
    if (!haveRevision) {
        std::string revision;
        switch (m_arch) {
        case TL3B:
            revision = "REVB";
            break;
        default:
            assert(0 && "Unknown arch");
        }
        if (!revision.empty())
            m_notes.emplace_back(NoteMemo::CORE_REVISION, revision);
    }
}

bool VormAssembler::printListing(OutputFile& listing)
{
    const std::string path = m_options.outputFile + ".txt";
    if (!listing.open(path.c_str())) {
        // The run ends here, and the object written for it goes too.
        OutputFile::removeTemporaries();
        m_utils->errorHandler->fatalError(true, "vorp: Error: unable to open listing file '%s' for write\n",
                                          path.c_str());
        return false;
    }
    for (const auto& section : m_sections) {
        if (!printListing(listing.stream(), section->getLines())) {
            listing.writeFailed();
            break;
        }
    }
    if (!listing.close()) {
        listing.reportFailure(*m_utils->errorHandler);
        return false;
    }
    return true;
}

bool VormAssembler::printListing(FILE* file, LineList& lines)
{
    for (VormLine* line : lines) {
        line->printListing(file);
        if (std::fflush(file) != 0)
            return false;
    }
    return true;
}

void VormAssembler::dump() const
{
    for (const auto& section : m_sections)
        section->dump();
}

} // namespace vorp
