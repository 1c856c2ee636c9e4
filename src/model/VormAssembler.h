#pragma once

#include "debug/DebugFrame.h"
#include "debug/DebugInfo.h"
#include "debug/DebugLine.h"
#include "diag/IdStrings.h"
#include "diag/Location.h"
#include "elf/ElfHandler.h"
#include "encoding/InstructionGrouping.h"
#include "isa/Tl3bInstructionTable.h"
#include "frontend/Token.h"
#include "metadata/NoteMemo.h"
#include "metadata/ZebInfo.h"
#include "model/AssemblerOptions.h"
#include "model/VormDataLine.h"
#include "encoding/VormDirectives.h"
#include "model/VormLabels.h"
#include "model/RunStatistics.h"
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

class OutputFile;
class VormAlignDirectiveLine;
class VormCodeLine;
class VormJTTrampoline;
class VormAsciiLine;
class VormCCDirectiveLine;
class VormLabelLine;
class VormLine;
class VormLocDirectiveLine;
class VorpErrorHandler;
struct TelkUtils;
class SizeIterationObserver;

// The one central object of a run: it owns every section and line, the label table and everything
// else the source defines, and turns them into an object file by a fixed sequence of passes.
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
    VormLabels& getLabels() { return m_labels; }
    VormLinkerExps& getLinkerExps() { return m_linkerExps; }
    std::vector<NoteMemo>& getNotes() { return m_notes; }
    Arch getArch() const { return m_arch; }
    DebugLine& getDebugLine() { return m_debugLine; }
    DebugFrame& getDebugFrame() { return m_debugFrame; }
    DebugInfo& getDebugInfo() { return m_debugInfo; }
    ZebInfo& getZebInfo() { return m_zebInfo; }

    // Line rows come from .loc when the compiler wrote its own ".debug_info" and no line table;
    // from every instruction of ".text" with -g on plain assembly.
    bool shouldGenDwarfFromLoc() const;
    bool shouldGenDwarfFromLines() const;
    bool shouldGenDwarf() const { return shouldGenDwarfFromLoc() || shouldGenDwarfFromLines(); }
    // The compilation unit for -g on plain assembly.
    void emitDefaultDwarfSections();
    // A row for the code line at `position`, with a label in front of it; false for lines that
    // get none.
    bool addToDebugLine(VormSection* section, LinePosition position, bool inCC);
    VorpErrorHandler& getErrorHandler() { return *m_errorHandler; }
    bool getDebug() const { return m_options.debug; }
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

    // Adding lines: the only way lines enter a section. The forms with a position insert before it.
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
    // A directive kept as tokens (.skip, .space, .assert, .sameresource), initialised at once.
    VormDirectiveLine* addDirective(VormSection* section, std::unique_ptr<TokenLine> tokens, bool schedule);
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
        return syntax == SYNTAX_ARCHITECTURAL ? m_archEncoders : m_encoders;
    }
    // The encoder of a mnemonic in a syntax, or null.
    const Encoder* findEncoder(const char* name, Syntax syntax) const;
    // An instruction line; an unknown mnemonic is reported (error 4, or 0 when the other syntax
    // knows it) and gives null.
    VormCodeLine* addCode(VormSection* section, std::unique_ptr<TokenLine> tokens, bool schedule, Syntax syntax);
    // A `bu TARGET` line added at the end of the section, in the default syntax and unscheduled.
    VormCodeLine* addBranch(VormSection* section, const char* target, int line, const char* file);
    std::unique_ptr<TokenLine> newBranchTokenLine(const char* target, int line, const char* file);
    VormJTTrampoline* addJTTrampoline(VormSection* section, std::unique_ptr<TokenLine> tokens);
    // Reports an instruction that no format fits (errors 48, 49) and ends the run.
    [[noreturn]] void noMatchingFormatError(EncodingFailInfo& failInfo);


    // The units the format iteration walks for a section; `hasScheduling` says whether any of them
    // is a scheduled block.
    void getInstructionGroupings(VormSection* section, InstructionGroupings& groupings, bool& hasScheduling);

    // Runs the passes that precede object emission, each only while no error has been reported;
    // true when none has.
    bool runPasses();
    // Runs the passes; 0 on success, 1 after any error, when the output file is also removed.
    int postParse(const char* fileSymbolName);

    // Makes sure the object names its architecture and core revision.
    void addDefaultNotes();

    // The listing: labels, data and reserved space of every section in final order, into
    // `listing`, opened on the listing's name and closed, but not yet committed. False, with the
    // reason reported, when it can't be written.
    bool printListing(OutputFile& listing);
    // False when a line can't be written.
    bool printListing(FILE* file, LineList& lines);

    RunStatistics& statistics() { return m_statistics; }
    const RunStatistics& statistics() const { return m_statistics; }
    NameCounters& nameCounters() { return m_nameCounters; }

    // Every section as text, on standard error.
    void dump() const;

private:
    void checkForUnterminatedCCTop();
    // Prepares a compiler's ".debug_info" for elimination by the linker.
    void rewriteDwarf();
    void expandDirectives();
    void expandDirectives(VormSection* section);
    void chooseInstructionFormats();
    void chooseInstructionFormats(VormSection* section);
    // The call frame sections, written once every address is exact.
    void expandLateDirectives();

    // The texts of every token and record: first, so that it outlives all that points into it.
    IdStrings m_idStrings;
    // Lines point into the encoders, so these outlive the sections.
    Tl3bInstructionTable m_instructionTable;
    EncoderMap m_encoders;
    EncoderMap m_archEncoders;
    VormLabels m_labels;
    VorpErrorHandler* m_errorHandler;
    VormLinkerExps m_linkerExps;
    std::vector<NoteMemo> m_notes;
    DebugLine m_debugLine;
    DebugFrame m_debugFrame;
    DebugInfo m_debugInfo;
    ZebInfo m_zebInfo;
    std::map<std::string, std::uint32_t> m_fileNumbers;
    VormDirectives m_directives;
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
