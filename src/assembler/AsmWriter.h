#pragma once

#include "assembler/AssemblerRun.h"
#include "frontend/ParserActions.h"
#include "model/VormAssembler.h"

#include <deque>
#include <vector>

namespace vorp {

class VormSection;
class VorpErrorHandler;
class VorpTokeniser;

// The parser's working object: gives each statement its meaning on the assembler, with the
// current section, the .pushsection stack and the .scheduling and .syntax modes.
class AsmWriter : public ParserActions {
public:
    AsmWriter(AssemblerRun& run, VorpErrorHandler& errorHandler, bool schedule);

    VormSection* getSection() const { return m_section; }
    void setCurrentSection(VormSection* section) { m_section = section; }
    bool getSchedule() const { return m_schedule; }
    VormAssembler::Syntax getSyntax() const { return m_syntax; }

    // Selects (and on first use makes) the section a .section line names; the line holds the
    // directive token, the name, and flags, type, entry size, group and linkage with their commas.
    void setSection(const TokenLine& line);

    void makeLabelLine(const Token& name) override;
    void makeAssemblyLine(TokenLinePtr line) override;
    void makeDirectiveLine(TokenLinePtr line) override;
    void dataDirective(const Token& directive, OperandList values) override;
    void asciiDirective(const Token& directive, TokenLinePtr strings) override;
    void identDirective(const Token& directive, const Token& text) override;
    void coreDirective(const Token& directive, const Token& text) override;
    void coreRevDirective(const Token& directive, const Token& text) override;
    void setDirective(const Token& directive, const Token& symbol, OperandPtr value) override;
    void setDirective2(const Token& symbol, OperandPtr value) override;
    void linksetDirective(const Token& directive, const Token& symbol, OperandPtr value) override;
    void sizeDirective(const Token& directive, const Token& symbol, OperandPtr size) override;
    void inlinedDirective(const Token& directive, const Token& symbol) override;
    void callDirective(const Token& directive, const Token& caller, const Token& callee) override;
    void parDirective(const Token& directive, const Token& first, const Token& second, const Token& text) override;
    void globPassesRefDirective(const Token& directive, const Token& first, const Token& second,
                                const Token& text) override;
    void readWriteDirective(const Token& directive, const Token& first, const Token& second, OperandPtr offset,
                            OperandPtr size, const Token& text) override;
    void alignDirective(const Token& directive, OperandPtr value, OperandPtr fill) override;
    void fileDirective(const Token& directive, const Token& name) override;
    void dwarfFileDirective(const Token& directive, const Token& index, const Token& name) override;
    void visibilityDirective(const Token& directive, const Token& symbol, const Token* text) override;
    void weakDirective(const Token& directive, const Token& symbol) override;
    void locDirective(const Token& directive, TokenLinePtr line) override;
    void sectionDirective(TokenLinePtr line) override;
    void popSection(const char* file, int line) override;
    void setTextSection(const char* file, int line) override;
    void typeDirective(const Token& directive, const Token& symbol, const Token& type) override;
    void typeStringDirective(const Token& directive, const Token& symbol, const Token& text) override;
    void ccTopDirective(TokenLinePtr line) override;
    void ccBottomDirective(TokenLinePtr line) override;
    void schedulingDirective(const Token& directive, const Token& word) override;
    void syntaxDirective(const Token& directive, const Token& word) override;

    // Timing analysis: each directive leaves a named label here and a record in ZebInfo.
    void zebBranchDirective(const Token& directive, OperandList values) override;
    void zebRecordDirective(const Token& directive, const Token& first, const Token& second, const Token& third,
                            const Token& number) override;
    void zebThreadStartDirective(const Token& directive) override;
    void zebThreadStopDirective(const Token& directive) override;
    void zebLoopDirective(const Token& directive, const Token& count) override;

    // Call frames: records of the section's open procedure.
    void cfiSectionsDirective(const Token& directive, TokenLinePtr symbols) override;
    void cfiStartprocDirective(const Token& directive, const Token* word) override;
    void cfiEndprocDirective(const Token& directive) override;
    void cfiPersonalityDirective(const Token& directive, OperandPtr encoding, const Token* symbol) override;
    void cfiLsdaDirective(const Token& directive, OperandPtr encoding, const Token* symbol) override;
    void cfiTwoOperandDirective(const Token& directive, OperandPtr first, OperandPtr second) override;
    void cfiOneOperandDirective(const Token& directive, OperandPtr operand) override;
    void cfiRememberState(const Token& directive) override;
    void cfiRestoreState(const Token& directive) override;

private:
    // `.set`, `NAME =` and `.linkset`: a constant, an alias, or a value the linker works out.
    void setDirectiveCommon(const LineLocation& location, const Token& name, OperandPtr expression);
    // A linker fact of `kind` about the symbol `first`, with `second` as its first operand.
    VormLinkerExps::Expression& addSymbolFact(std::int32_t kind, const Token& first, const Token& second);
    // A label for "." at the present place, when the expression needs one.
    VormLabel* currentLocationLabel(const Operand* expression, const LineLocation& location);
    // The open frame procedure of the current section; without one, error 61 and null.
    DebugFrameProc* openProcedure(const Token& directive);
    // A named label at the present place, for a frame or timing record.
    VormLabel* addRecordLabel(const Token& directive);
    // A frame instruction of `opcode` from constant arguments; `names` spell them in messages.
    void cfiDirectiveCommon(const Token& directive, OperandPtr operand, const char* name, unsigned opcode);
    void cfiDirectiveCommon(const Token& directive, OperandPtr first, OperandPtr second, const char* firstName,
                            const char* secondName, unsigned opcode);
    // .cfi_personality and .cfi_lsda: an encoding and an optional symbol.
    void cfiEncodingDirective(const Token& directive, OperandPtr encoding, const Token* symbol, bool personality);
    // .zebendpoint, .zeblabel, .zebcall: a label here and a marker record in `list`.
    void zebMarkerDirective(const Token& directive, const Token& first, const Token& second, const Token& third,
                            const Token& value, std::vector<ZebMarker*>& list);
    // .zebthreadstart, .zebthreadstop: a label here and a delimiter record in `list`.
    void zebThreadStopStartDirective(const Token& directive, std::vector<ZebThreadDelimiter*>& list);

    AssemblerRun& m_run;
    VormAssembler& m_assembler;
    VorpErrorHandler& m_errorHandler;
    bool m_defaultSchedule;
    bool m_schedule;
    VormAssembler::Syntax m_syntax = VormAssembler::SYNTAX_DEFAULT;
    VormSection* m_section = nullptr;
    std::deque<VormSection*> m_sectionStack;
};

// Parses what the tokeniser was given into the run's assembly, starting in ".text".
void parseSource(AssemblerRun& run, VorpTokeniser& tokeniser);

} // namespace vorp
