#pragma once

#include "diag/IdStrings.h"
#include "diag/Location.h"
#include "elf/ElfHandler.h"
#include "isa/Tl3bInstructionTable.h"
#include "frontend/Token.h"
#include "vorp/AssemblerOptions.h"
#include "model/VormDataLine.h"
#include "model/VormLabels.h"
#include "vorp/RunStatistics.h"
#include "model/VormLinkerExps.h"
#include "model/NameCounters.h"
#include "model/VormSection.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vorp {

class VormAlignDirectiveLine;
class VormAsciiLine;
class VormCCDirectiveLine;
class VormLabelLine;
class VormLine;
class VormLocDirectiveLine;
class VorpErrorHandler;
struct TelkUtils;

// The assembly a source defines: every section and line, the label table and the linker records,
// with the instruction tables its lines refer to. It holds them; the steps of a run act on them.
class VormAssembler {
public:
    using Arch = AssemblerOptions::Arch;
    static constexpr Arch TL3B = AssemblerOptions::TL3B;
    enum Syntax { SYNTAX_DEFAULT = 0, SYNTAX_ARCHITECTURAL = 1 };

    static constexpr std::uint32_t SHF_WRITE = ElfHandler::SHF_WRITE;
    static constexpr std::uint32_t SHF_ALLOC = ElfHandler::SHF_ALLOC;
    static constexpr std::uint32_t SHF_EXECINSTR = ElfHandler::SHF_EXECINSTR;
    static constexpr std::uint32_t SHF_MERGE = ElfHandler::SHF_MERGE;
    static constexpr std::uint32_t SHF_STRINGS = ElfHandler::SHF_STRINGS;

    VormAssembler(AssemblerOptions options, TelkUtils* utils, VorpErrorHandler* errorHandler);
    VormAssembler(const VormAssembler&) = delete;
    VormAssembler& operator=(const VormAssembler&) = delete;
    virtual ~VormAssembler();

    IdStrings& getIdStrings() { return m_idStrings; }
    // Where lines and labels that the assembler makes itself stand: line 0 of "<unknown>".
    LineLocation generatedLocation() { return LineLocation(m_idStrings.generatedFile(), 0); }
    VormLabels& getLabels() { return m_labels; }
    VormLinkerExps& getLinkerExps() { return m_linkerExps; }
    Arch getArch() const { return m_arch; }
    VorpErrorHandler& getErrorHandler() { return *m_errorHandler; }
    const AssemblerOptions& getOptions() const { return m_options; }
    TelkUtils* getUtils() const { return m_utils; }
    const char* getOutputFile() const { return m_options.outputFile.c_str(); }

    // Sections. A name seen before gives the existing section; what the new request says is then
    // ignored, unchecked. Otherwise flags and type are judged (errors 6, 47) and the section is made.
    VormSection* addSection(const Location& location, const std::string& name, const std::string& flags,
                            const std::string& type, std::uint32_t entrySize, const std::string& groupName,
                            bool comdat);
    VormSection* addSection(const std::string& name, const std::string& flags, const std::string& type,
                            std::uint32_t entrySize, const std::string& groupName, bool comdat);
    VormSection* findSection(const std::string& name) const;
    bool isSection(const std::string& name) const { return findSection(name) != nullptr; }
    // True when the section doesn't exist or none of its lines can take a byte.
    bool sectionIsEmpty(const std::string& name) const;
    std::uint32_t getSectionSize(std::size_t index) const { return m_sections[index]->getSize(); }
    const std::vector<std::unique_ptr<VormSection>>& getSections() const { return m_sections; }
    const std::map<std::string, std::vector<std::string>>& getSectionGroups() const { return m_sectionGroups; }

    std::uint32_t parseSectionFlags(const std::string& flags, const Location& location, bool& isGroup);
    std::uint32_t parseSectionType(const std::string& type, const Location& location);
    // 4 for code sections with scheduled lines, else 1.
    std::uint32_t getDefaultAlignment(const VormSection* section, bool hasScheduledLines) const;

    // `.file "NAME"`: the last one wins; a different second name is error 21.
    void setFilename(const std::string& name, const Location& location);
    const std::string& getFilename() const { return m_filename; }

    // Adding lines: the only way lines enter a section (instruction and directive lines come through
    // encoding/CodeLines.h, which ends here too). The forms with a position insert before it.
    void addLine(VormSection* section, VormLine* line);
    void addLine(VormSection* section, LinePosition position, VormLine* line);
    VormLocDirectiveLine* addLocDirective(VormSection* section, const LineLocation& location, bool schedule);
    VormAlignDirectiveLine* addAlign(VormSection* section, std::uint32_t alignment, const LineLocation& location,
                                     bool schedule);
    VormAlignDirectiveLine* addAlign(VormSection* section, LinePosition position, std::uint32_t alignment,
                                     const LineLocation& location, bool schedule);
    VormAlignDirectiveLine* addAlign(VormSection* section, std::uint32_t alignment, std::uint32_t fill,
                                     const LineLocation& location, bool schedule);
    // Errors 44 and 34 for blocks that don't pair up.
    VormCCDirectiveLine* addCCTop(VormSection* section, std::unique_ptr<TokenLine> tokens);
    VormCCDirectiveLine* addCCBottom(VormSection* section, std::unique_ptr<TokenLine> tokens);
    // Blocks made by passes: inserted as they are, without the pairing checks.
    VormCCDirectiveLine* addCCTop(VormSection* section, LinePosition position, std::unique_ptr<TokenLine> tokens);
    VormCCDirectiveLine* addCCBottom(VormSection* section, LinePosition position, std::unique_ptr<TokenLine> tokens,
                                     VormCCDirectiveLine* top);
    VormAsciiLine* addAscii(VormSection* section, const LineLocation& location, bool zeroTerminate,
                            std::vector<Token> strings);
    VormDataLine* addData(VormSection* section, const LineLocation& location, VormDataLine::Type type,
                          std::vector<Operand*> operands);
    VormLabelLine* addLabelLine(VormLabel* label, VormSection* section, LinePosition position,
                                const LineLocation& location, bool schedule);
    VormLabelLine* addLabel(VormSection* section, const Token& name, bool schedule);
    VormLabelLine* addLabel(VormSection* section, LinePosition position, const Token& name, bool schedule);
    VormLabelLine* addUniqueLabel(VormSection* section, const LineLocation& location, bool schedule);
    VormLabelLine* addUniqueLabel(VormSection* section, LinePosition position, const LineLocation& location,
                                  bool schedule);

    // Every name of a syntax's instruction table.
    const EncoderMap& getEncoders(Syntax syntax) const
    {
        return syntax == SYNTAX_ARCHITECTURAL ? m_instructionSet->architecturalEncoders()
                                              : m_instructionSet->defaultEncoders();
    }
    // The encoder of a mnemonic in a syntax, or null.
    const Encoder* findEncoder(const char* name, Syntax syntax) const;
    RunStatistics& statistics() { return m_statistics; }
    const RunStatistics& statistics() const { return m_statistics; }
    NameCounters& nameCounters() { return m_nameCounters; }

    // Every section as text, on standard error.
    void dump() const;

private:
    // The texts of every token and record: first, so that it outlives all that points into it.
    IdStrings m_idStrings;
    // Shared by every run, and never changed: lines point into its encoders.
    const Tl3bInstructionSet* m_instructionSet = nullptr;
    VormLabels m_labels;
    VorpErrorHandler* m_errorHandler;
    VormLinkerExps m_linkerExps;
    Arch m_arch;
    TelkUtils* m_utils;
    std::string m_filename;
    std::vector<std::unique_ptr<VormSection>> m_sections;
    // The same sections by name: a generated file may hold tens of thousands of them.
    std::unordered_map<std::string_view, VormSection*> m_sectionsByName;
    std::map<std::string, std::vector<std::string>> m_sectionGroups;
    AssemblerOptions m_options;
    RunStatistics m_statistics;
    NameCounters m_nameCounters;
};

} // namespace vorp
