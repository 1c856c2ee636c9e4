#include "assembler/AsmWriter.h"

#include "diag/VorpErrorHandler.h"
#include "encoding/CodeLines.h"
#include "frontend/ExprEval.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormLabelLine.h"
#include "model/VormLocDirectiveLine.h"
#include "model/VormPostponedExp.h"

#include <cstring>
#include <string>

namespace vorp {

namespace {

LineLocation locationOf(const Token& token)
{
    return LineLocation(token.file, static_cast<unsigned>(token.line));
}

bool isConstantToken(const Token& token)
{
    return token.symbol == S_INTVAL || token.symbol == S_CHVAL;
}

} // namespace

AsmWriter::AsmWriter(AssemblerRun& run, VorpErrorHandler& errorHandler, bool schedule)
    : m_run(run), m_assembler(run.getAssembler()), m_errorHandler(errorHandler), m_defaultSchedule(schedule), m_schedule(schedule)
{
}

void AsmWriter::makeLabelLine(const Token& name)
{
    m_assembler.addLabel(m_section, name, m_schedule);
}

void AsmWriter::makeAssemblyLine(TokenLinePtr line)
{
    addCode(m_assembler, m_section, std::move(line), m_schedule, m_syntax);
}

void AsmWriter::makeDirectiveLine(TokenLinePtr line)
{
    addDirective(m_assembler, m_run.getDirectives(), m_section, std::move(line), m_schedule);
}

void AsmWriter::dataDirective(const Token& directive, OperandList values)
{
    VormDataLine::Type type = VormDataLine::WORD;
    switch (directive.symbol) {
    case S_D_BYTE: type = VormDataLine::BYTE; break;
    case S_D_SHORT: type = VormDataLine::SHORT; break;
    case S_D_ULEB128: type = VormDataLine::ULEB128; break;
    case S_D_SLEB128: type = VormDataLine::SLEB128; break;
    default: break;
    }
    const LineLocation location = locationOf(directive);
    std::vector<Operand*> operands;
    for (OperandPtr& value : values) {
        Operand* operand = ExprEval::optimise(m_assembler.getIdStrings(), value.release());
        int constant = 0;
        if (operand->getOpcode() == Operand::INTEGER && ExprEval::evaluate(operand, constant) &&
            !VormDataLine::valueFits(type, constant))
            m_errorHandler.vorpError(location, AssErrorCodes::VALUE_OUT_OF_RANGE, "value %d out of range for %s directive\n",
                                     constant, directive.text);
        operands.push_back(operand);
    }
    m_assembler.addData(m_section, location, type, std::move(operands));
}

void AsmWriter::asciiDirective(const Token& directive, TokenLinePtr strings)
{
    if (!strings)
        return;
    std::vector<Token> texts;
    for (const Token& token : *strings) {
        if (token.symbol == S_STVAL)
            texts.push_back(token);
    }
    m_assembler.addAscii(m_section, locationOf(directive), directive.symbol == S_D_ASCIIZ, std::move(texts));
}

void AsmWriter::identDirective(const Token&, const Token& text)
{
    m_run.getNotes().emplace_back(NoteMemo::IDENT, text.text);
}

void AsmWriter::coreDirective(const Token& directive, const Token& text)
{
    if (std::strcmp(text.text, "TL3") != 0) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::UNSUPPORTED_CORE, "Unsupported core \"%s\".\n",
                                 text.text);
        return;
    }
    m_run.getNotes().emplace_back(NoteMemo::CORE, text.text);
}

void AsmWriter::coreRevDirective(const Token& directive, const Token& text)
{
    const LineLocation location = locationOf(directive);
    if (std::strcmp(text.text, "REVB") != 0 && std::strcmp(text.text, "REVC") != 0)
        m_errorHandler.vorpError(location, AssErrorCodes::UNSUPPORTED_CORE_REVISION,
                                 "Unsupported core revision \"%s\".\n", text.text);
    if (m_assembler.getArch() != VormAssembler::TL3B)
        m_errorHandler.vorpError(location, AssErrorCodes::CORE_REVISION_MISMATCH,
                                 "Core revision \"%s\" does not match command line options.\n", text.text);
    m_run.getNotes().emplace_back(NoteMemo::CORE_REVISION, text.text);
}

void AsmWriter::setDirective(const Token& directive, const Token& symbol, OperandPtr value)
{
    setDirectiveCommon(locationOf(directive), symbol, std::move(value));
}

void AsmWriter::setDirective2(const Token& symbol, OperandPtr value)
{
    setDirectiveCommon(locationOf(symbol), symbol, std::move(value));
}

void AsmWriter::linksetDirective(const Token& directive, const Token& symbol, OperandPtr value)
{
    setDirectiveCommon(locationOf(directive), symbol, std::move(value));
}

VormLabel* AsmWriter::currentLocationLabel(const Operand* expression, const LineLocation& location)
{
    if (!ExprEval::usesCurrentLocation(expression))
        return nullptr;
    return m_assembler.addUniqueLabel(m_section, location, m_schedule)->getLabel();
}

void AsmWriter::setDirectiveCommon(const LineLocation& location, const Token& name, OperandPtr expression)
{
    static const struct {
        const char* suffix;
        std::int32_t operation;
    } suffixes[] = {
        {".nstackwords", VormLinkerExps::LINKOP_STACKSIZE_S},
        {".nstackwords.pragma", VormLinkerExps::LINKOP_PRAGMA_S},
        {".calldepth", VormLinkerExps::LINKOP_CALLDEPTH_S},
        {".maxthreads", VormLinkerExps::LINKOP_MAXTHREADS_S},
        {".maxtimers", VormLinkerExps::LINKOP_MAXTIMERS_S},
        {".maxchanends", VormLinkerExps::LINKOP_MAXCHANENDS_S},
        {".maxsync", VormLinkerExps::LINKOP_MAXSYNC_S},
        {".actnoside", VormLinkerExps::LINKOP_ACTNOSIDE_S},
        {".locnoside", VormLinkerExps::LINKOP_LOCNOSIDE_S},
        {".actnochandec", VormLinkerExps::LINKOP_ACTNOCHANDEC_S},
        {".locnochandec", VormLinkerExps::LINKOP_LOCNOCHANDEC_S},
    };

    VormLabels& labels = m_assembler.getLabels();
    OperandPtr tree(ExprEval::optimise(m_assembler.getIdStrings(), expression.release()));
    VormLabel* label = nullptr;
    if (tree->getOpcode() == Operand::INTEGER) {
        label = labels.addAbsoluteLabel(location, name.text, tree->getToken(0).constantValue);
    } else if (tree->getOpcode() == Operand::SYMBOL && std::strcmp(tree->getToken(0).text, ".") == 0) {
        // "." is the present place: a label line stands there and the name becomes another name for it.
        VormLabel* here = currentLocationLabel(tree.get(), location);
        label = labels.addDefinedLabel(location, name.text, here, nullptr, 0, SYMBOL_ALIAS);
    } else if (tree->getOpcode() == Operand::SYMBOL) {
        label = labels.addAliasLabel(location, name.text, tree->getToken(0).text);
    } else {
        VormLabel* here = currentLocationLabel(tree.get(), location);
        label = labels.addLinksetLabel(location, name.text);
        VormPostponedExp::compile(m_assembler, tree.get(), location, here, true, label);
    }

    // A compiler's resource symbols ("f.nstackwords") tell the linker facts about the function f.
    const std::string fullName = label->getName();
    for (const auto& row : suffixes) {
        const std::size_t length = std::strlen(row.suffix);
        if (fullName.size() > length && fullName.compare(fullName.size() - length, length, row.suffix) == 0) {
            VormLabel* function = labels.getOrAddRequiredLabel(fullName.substr(0, fullName.size() - length).c_str(), false);
            m_assembler.getLinkerExps().addExp(row.operation, function).addSymOp(label);
        }
    }
}

void AsmWriter::sizeDirective(const Token& directive, const Token& symbol, OperandPtr size)
{
    const LineLocation location = locationOf(directive);
    VormLabel* label = m_assembler.getLabels().getOrTentativelyAddLabel(symbol.text, false);
    OperandPtr tree(ExprEval::optimise(m_assembler.getIdStrings(), size.release()));
    if (tree->getOpcode() == Operand::INTEGER) {
        label->setSize(tree->getToken(0).constantValue);
        return;
    }
    VormLabel* here = currentLocationLabel(tree.get(), location);
    if (VormLabel* value = VormPostponedExp::compile(m_assembler, tree.get(), location, here, false, nullptr))
        m_assembler.getLinkerExps().addExp(VormLinkerExps::LINKOP_SIZE_cS, value).addConstOp(0).addSymOp(label);
}

void AsmWriter::inlinedDirective(const Token& directive, const Token& symbol)
{
    VormLabels& labels = m_assembler.getLabels();
    VormLabel* inlined = labels.findLabel(".L.inlined");
    if (!inlined)
        inlined = labels.addAbsoluteLabel(locationOf(directive), ".L.inlined", 0);
    m_assembler.getLinkerExps().addExp(VormLinkerExps::LINKOP_INLINED_s, inlined).addStrOp(symbol.text);
}

VormLinkerExps::Expression& AsmWriter::addSymbolFact(std::int32_t kind, const Token& first, const Token& second)
{
    VormLabels& labels = m_assembler.getLabels();
    VormLabel* subject = labels.getOrAddRequiredLabel(first.text, false);
    return m_assembler.getLinkerExps().addExp(kind, subject).addSymOp(labels.getOrAddRequiredLabel(second.text, false));
}

void AsmWriter::callDirective(const Token&, const Token& caller, const Token& callee)
{
    addSymbolFact(VormLinkerExps::LINKOP_CALLS_S, caller, callee);
}

void AsmWriter::parDirective(const Token&, const Token& first, const Token& second, const Token& text)
{
    addSymbolFact(VormLinkerExps::LINKOP_PAR_Ss, first, second).addStrOp(text.text);
}

void AsmWriter::globPassesRefDirective(const Token&, const Token& first, const Token& second, const Token& text)
{
    addSymbolFact(VormLinkerExps::LINKOP_GLOBPASSESREF_Ss, first, second).addStrOp(text.text);
}

void AsmWriter::readWriteDirective(const Token& directive, const Token& first, const Token& second,
                                   OperandPtr offset, OperandPtr size, const Token& text)
{
    const LineLocation location = locationOf(directive);
    std::int32_t operation = VormLinkerExps::LINKOP_PARWRITE_Ssc;
    if (directive.symbol == S_D_GLOBREAD)
        operation = VormLinkerExps::LINKOP_GLOBREAD_Ssc;
    else if (directive.symbol == S_D_GLOBWRITE)
        operation = VormLinkerExps::LINKOP_GLOBWRITE_Ssc;

    int offsetValue = 0;
    int sizeValue = 0;
    if (offset) {
        const bool offsetConstant = ExprEval::evaluate(offset.get(), offsetValue);
        const bool sizeConstant = ExprEval::evaluate(size.get(), sizeValue);
        bool failed = false;
        auto report = [&](AssErrorCodes::ErrorCode code, const char* format) {
            m_errorHandler.vorpError(location, code, format, directive.text, 65535);
            failed = true;
        };
        // The spelling keeps its dot, so these messages show two: callers match on that.
        if (!offsetConstant)
            report(AssErrorCodes::NOT_CONSTANT, "Offset argument of .%s directive is not a constant expression.\n");
        if (!sizeConstant)
            report(AssErrorCodes::NOT_CONSTANT, "Size argument of .%s directive is not a constant expression.\n");
        if (offsetConstant && offsetValue > 65535)
            report(AssErrorCodes::OFFSET_OR_SIZE_TOO_LARGE, "Offset argument of .%s directive is greater than %d.\n");
        if (sizeConstant && sizeValue > 65535)
            report(AssErrorCodes::OFFSET_OR_SIZE_TOO_LARGE, "Size argument of .%s directive is greater than %d.\n");
        if (failed)
            return;
    }
    VormLinkerExps::Expression& expression = addSymbolFact(operation, first, second).addStrOp(text.text);
    if (offset)
        expression.addConstOp(static_cast<std::int32_t>((static_cast<std::uint32_t>(offsetValue) << 16) |
                                                        static_cast<std::uint32_t>(sizeValue)));
}

void AsmWriter::alignDirective(const Token& directive, OperandPtr value, OperandPtr fill)
{
    const LineLocation location = locationOf(directive);
    int alignment = 0;
    int fillValue = 0;
    const bool alignmentConstant = ExprEval::evaluate(value.get(), alignment);
    const bool fillConstant = !fill || ExprEval::evaluate(fill.get(), fillValue);
    if (!alignmentConstant)
        m_errorHandler.vorpError(location, AssErrorCodes::NOT_CONSTANT,
                                 "Align argument of .align directive is not a constant expression.\n");
    if (!fillConstant)
        m_errorHandler.vorpError(location, AssErrorCodes::NOT_CONSTANT,
                                 "Fill argument of .align directive is not a constant expression.\n");
    if (!alignmentConstant || !fillConstant)
        return;
    if (fill)
        m_assembler.addAlign(m_section, static_cast<std::uint32_t>(alignment), static_cast<std::uint32_t>(fillValue),
                             location, m_schedule);
    else
        m_assembler.addAlign(m_section, static_cast<std::uint32_t>(alignment), location, m_schedule);
}

void AsmWriter::fileDirective(const Token& directive, const Token& name)
{
    m_assembler.setFilename(name.text, locationOf(directive));
}

void AsmWriter::dwarfFileDirective(const Token& directive, const Token& index, const Token& name)
{
    m_run.getDebugLine().addFile(index.constantValue, name.text, locationOf(directive));
}

void AsmWriter::visibilityDirective(const Token& directive, const Token& symbol, const Token* text)
{
    const char* typeString = text ? text->text : nullptr;
    VormLabels& labels = m_assembler.getLabels();
    switch (directive.symbol) {
    case S_D_GLOBAL:
    case S_D_GLOBL:
        labels.addGlobalLabel(symbol.text, typeString);
        break;
    case S_D_LOCAL:
    case S_D_LOCL:
        labels.addLocalLabel(symbol.text, typeString);
        break;
    default:
        labels.addExternLabel(symbol.text, typeString);
        break;
    }
}

void AsmWriter::weakDirective(const Token&, const Token& symbol)
{
    m_assembler.getLabels().addWeakLabel(symbol.text);
}

void AsmWriter::typeDirective(const Token& directive, const Token& symbol, const Token& type)
{
    static const struct {
        const char* word;
        std::uint8_t elfType;
    } elfTypes[] = {{"function", 2}, {"object", 1}, {"notype", 0}};
    for (const auto& entry : elfTypes) {
        if (std::strcmp(entry.word, type.text) == 0) {
            m_assembler.getLabels().getOrTentativelyAddLabel(symbol.text, false)->setElfType(entry.elfType);
            return;
        }
    }
    m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::UNSUPPORTED_TYPE,
                             "Unsupported type in .type directive.\n");
}

void AsmWriter::typeStringDirective(const Token&, const Token& symbol, const Token& text)
{
    m_assembler.getLabels().getOrTentativelyAddLabel(symbol.text, false)->setTypeString(text.text);
}

void AsmWriter::locDirective(const Token& directive, TokenLinePtr line)
{
    const TokenLine& t = *line;
    const LineLocation location = locationOf(directive);
    auto report = [&](const char* format, const char* word = nullptr) {
        m_errorHandler.vorpError(location, AssErrorCodes::LOC_DIRECTIVE, format, word);
    };
    const std::uint32_t file = t[0].constantValue;
    const std::uint32_t lineNumber = t[1].constantValue;
    const std::uint32_t column = t.size() > 2 ? t[2].constantValue : 0;
    bool isStmt = true;
    bool basicBlock = false;
    bool prologueEnd = false;
    bool epilogueBegin = false;
    for (std::size_t i = 3; i < t.size(); ++i) {
        if (isConstantToken(t[i])) {
            report("Unexpected constant in .loc directive\n");
            continue;
        }
        const std::string option = t[i].text;
        if (option == "basic_block") {
            basicBlock = true;
        } else if (option == "prologue_end") {
            prologueEnd = true;
        } else if (option == "epilogue_begin") {
            epilogueBegin = true;
        } else if (option == "is_stmt") {
            if (i + 1 >= t.size() || !isConstantToken(t[i + 1])) {
                report("Value missing for is_stmt in .loc directive\n");
            } else {
                const std::uint32_t value = t[++i].constantValue;
                if (value > 1)
                    report("Invalid value for is_stmt in .loc directive\n");
                else
                    isStmt = value == 1;
            }
        } else if (option == "isa") {
            if (i + 1 >= t.size() || !isConstantToken(t[i + 1]))
                report("Value missing for isa in .loc directive\n");
            else
                ++i;
        } else {
            report("Invalid option for .loc directive: `%s'\n", t[i].text);
        }
    }
    VormLocDirectiveLine* loc = m_assembler.addLocDirective(m_section, location, m_schedule);
    loc->setFile(file);
    loc->setLine(lineNumber);
    loc->setColumn(column);
    loc->setIsStmt(isStmt);
    loc->setBasicBlock(basicBlock);
    loc->setEndSequence(false);
    loc->setPrologueEnd(prologueEnd);
    loc->setEpilogueBegin(epilogueBegin);
    loc->setIsa(file); // the isa field repeats the file index: readers of our line tables expect it
}

void AsmWriter::sectionDirective(TokenLinePtr line)
{
    if (line->front().symbol == S_D_PUSHSECTION)
        m_sectionStack.push_back(m_section);
    setSection(*line);
}

void AsmWriter::setSection(const TokenLine& t)
{
    const std::size_t n = t.size();
    const LineLocation location = locationOf(t[0]);
    const std::string name = t[1].text;
    const std::string flags = n > 3 ? t[3].text : "";
    const std::string type = n > 5 ? t[5].text : "";
    const bool group = n > 5 && flags.find('G') != std::string::npos;
    const bool merge = flags.find('M') != std::string::npos;

    std::uint32_t entrySize = 0;
    std::size_t groupPosition = 7;
    std::size_t modePosition = 9;
    if (n > 7 && (merge || !group)) {
        entrySize = t[7].constantValue;
        groupPosition = 9;
        modePosition = 11;
    }

    std::string groupName;
    bool comdat = false;
    if (group) {
        if (n <= groupPosition) {
            m_errorHandler.vorpError(location, AssErrorCodes::GROUP_NAME_MISSING, "Group name is missing.\n");
        } else {
            groupName = t[groupPosition].text;
            if (n > modePosition) {
                const std::string mode = t[modePosition].text;
                if (mode == "comdat" || mode == ".gnu.linkonce")
                    comdat = true;
                else
                    m_errorHandler.vorpError(location, AssErrorCodes::GROUP_LINKAGE,
                                             "Unknown group linkage mode \"%s\".\n", mode.c_str());
            }
        }
    }
    if (entrySize == 0 && merge && flags.find('S') == std::string::npos) {
        if (n < 8)
            m_errorHandler.vorpError(location, AssErrorCodes::MERGE_NO_ENTSIZE,
                                     "Mergeable section has unspecified entry size.\n");
        else
            m_errorHandler.vorpError(location, AssErrorCodes::MERGE_ZERO_ENTSIZE,
                                     "Mergeable section has zero entry size.\n");
    }
    m_section = m_assembler.addSection(location, name, flags, type, entrySize, groupName, comdat);
}

void AsmWriter::popSection(const char* file, int line)
{
    if (m_sectionStack.empty()) {
        m_errorHandler.vorpError(LineLocation(file, static_cast<unsigned>(line)), AssErrorCodes::POPSECTION,
                                 ".popsection without corresponding .pushsection\n");
        return;
    }
    m_section = m_sectionStack.back();
    m_sectionStack.pop_back();
}

void AsmWriter::setTextSection(const char* file, int line)
{
    m_section = m_assembler.addSection(LineLocation(file, static_cast<unsigned>(line)), ".text", "ax", "progbits", 0,
                                       "", false);
}

void AsmWriter::ccTopDirective(TokenLinePtr line)
{
    m_assembler.addCCTop(m_section, std::move(line));
}

void AsmWriter::ccBottomDirective(TokenLinePtr line)
{
    m_assembler.addCCBottom(m_section, std::move(line));
}

void AsmWriter::schedulingDirective(const Token& directive, const Token& word)
{
    const std::string mode = word.text;
    if (mode == "on")
        m_schedule = true;
    else if (mode == "off")
        m_schedule = false;
    else if (mode == "default")
        m_schedule = m_defaultSchedule;
    else
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::NOT_CONSTANT,
                                 "Invalid argument to .scheduling directive.\n");
}

void AsmWriter::syntaxDirective(const Token& directive, const Token& word)
{
    const std::string mode = word.text;
    if (mode == "default")
        m_syntax = VormAssembler::SYNTAX_DEFAULT;
    else if (mode == "architectural")
        m_syntax = VormAssembler::SYNTAX_ARCHITECTURAL;
    else
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::NOT_CONSTANT,
                                 "Invalid argument to .syntax directive.\n");
}

// ---- Timing directives ----

namespace {

// Inside an elimination block a timing record is guarded by its own location, so that it goes
// when the block's code goes.
VormLabel* timingGuard(const VormSection* section, VormLabel* location)
{
    return section->getOpenCCTop() ? location : nullptr;
}

// A branch target must be SYMBOL, SYMBOL + INTEGER or SYMBOL - INTEGER, and not ".".
bool branchTarget(const Operand* tree, const char*& symbol, int& offset)
{
    if (ExprEval::usesCurrentLocation(tree))
        return false;
    if (tree->getOpcode() == Operand::SYMBOL) {
        symbol = tree->getToken(0).text;
        offset = 0;
        return true;
    }
    if (tree->getOpcode() != Operand::ADD && tree->getOpcode() != Operand::SUBTRACT)
        return false;
    const Operand* left = tree->getOperand(0);
    const Operand* right = tree->getOperand(1);
    if (left->getOpcode() != Operand::SYMBOL || right->getOpcode() != Operand::INTEGER)
        return false;
    const unsigned value = right->getToken(0).constantValue;
    symbol = left->getToken(0).text;
    offset = static_cast<int>(tree->getOpcode() == Operand::ADD ? value : 0u - value);
    return true;
}

} // namespace

void AsmWriter::zebBranchDirective(const Token& directive, OperandList values)
{
    // One label is the location of all entries. It is made with the first good entry, so that a
    // directive rejected at its first expression leaves nothing behind; entries before a bad
    // expression stay.
    VormLabel* location = nullptr;
    VormLabel* guard = nullptr;
    std::vector<ZebBranch*>& branches = m_run.getZebInfo().branches;
    for (OperandPtr& value : values) {
        const OperandPtr tree(ExprEval::optimise(m_assembler.getIdStrings(), value.release()));
        const char* symbol = nullptr;
        int offset = 0;
        if (!branchTarget(tree.get(), symbol, offset)) {
            m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::NOT_CONSTANT,
                                     ".zebbranch invalid syntax for directive\n");
            return;
        }
        if (!location) {
            location = addRecordLabel(directive);
            guard = timingGuard(m_section, location);
        }
        VormLabel* target = m_assembler.getLabels().getOrAddRequiredLabel(symbol, false);
        branches.push_back(new ZebBranch{location, target, offset, guard});
    }
}

void AsmWriter::zebRecordDirective(const Token& directive, const Token& first, const Token& second,
                                   const Token& third, const Token& number)
{
    ZebInfo& info = m_run.getZebInfo();
    switch (directive.symbol) {
    case S_D_ZEBENDPOINT:
        zebMarkerDirective(directive, first, second, third, number, info.endpoints);
        break;
    case S_D_ZEBLABEL:
        zebMarkerDirective(directive, first, second, third, number, info.labels);
        break;
    case S_D_ZEBCALL:
        zebMarkerDirective(directive, first, second, third, number, info.calls);
        break;
    case S_D_ZEBCOMMAND:
        info.commands.push_back(new ZebCommand{first.text, second.text, third.text, number.constantValue});
        break;
    case S_D_ZEBSYSTEM:
        info.systems.push_back(new ZebSystem{first.text, second.text, third.text, number.constantValue});
        break;
    default:
        break;
    }
}

void AsmWriter::zebMarkerDirective(const Token& directive, const Token& first, const Token& second,
                                   const Token& third, const Token& value, std::vector<ZebMarker*>& list)
{
    VormLabel* location = addRecordLabel(directive);
    list.push_back(new ZebMarker{location, first.text, second.text, third.text, value.constantValue,
                                 timingGuard(m_section, location)});
}

void AsmWriter::zebThreadStartDirective(const Token& directive)
{
    zebThreadStopStartDirective(directive, m_run.getZebInfo().threadStarts);
}

void AsmWriter::zebThreadStopDirective(const Token& directive)
{
    zebThreadStopStartDirective(directive, m_run.getZebInfo().threadStops);
}

void AsmWriter::zebThreadStopStartDirective(const Token& directive, std::vector<ZebThreadDelimiter*>& list)
{
    VormLabel* location = addRecordLabel(directive);
    list.push_back(new ZebThreadDelimiter{location, timingGuard(m_section, location)});
}

void AsmWriter::zebLoopDirective(const Token& directive, const Token& count)
{
    VormLabel* location = addRecordLabel(directive);
    m_run.getZebInfo().loops.push_back(
        new ZebLoop{location, count.constantValue, timingGuard(m_section, location)});
}

// ---- Frame directives ----

DebugFrameProc* AsmWriter::openProcedure(const Token& directive)
{
    DebugFrameProc* proc = m_section->getCurrentProc();
    if (!proc)
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_UNOPENED,
                                 "%s directive without previous .cfi_startproc\n", directive.text);
    return proc;
}

VormLabel* AsmWriter::addRecordLabel(const Token& directive)
{
    VormLabel* label = m_assembler.addUniqueLabel(m_section, locationOf(directive), m_schedule)->getLabel();
    m_assembler.getLabels().ensureLabelName(label);
    return label;
}

void AsmWriter::cfiSectionsDirective(const Token& directive, TokenLinePtr symbols)
{
    bool debugFrame = false;
    bool ehFrame = false;
    for (const Token& symbol : *symbols) {
        if (symbol.symbol != S_NAME)
            continue;
        if (std::strcmp(symbol.text, ".debug_frame") == 0)
            debugFrame = true;
        else if (std::strcmp(symbol.text, ".eh_frame") == 0)
            ehFrame = true;
        else
            m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_SECTION, "unknown CFI section \"%s\"\n",
                                     symbol.text);
    }
    m_run.getDebugFrame().setSections(debugFrame, ehFrame);
}

void AsmWriter::cfiStartprocDirective(const Token& directive, const Token* word)
{
    if (word && std::strcmp(word->text, "simple") != 0)
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_STARTPROC_ARGUMENT,
                                 "invalid argument to .cfi_startproc directive\n");
    if (m_section->getCurrentProc()) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_NOT_CLOSED,
                                 "previous .cfi_startproc directive not closed with .cfi_endproc\n");
        return;
    }
    DebugFrameProc* proc = m_run.getDebugFrame().addProc();
    proc->startLabel = addRecordLabel(directive);
    proc->simple = word != nullptr;
    m_section->setCurrentProc(proc);
}

void AsmWriter::cfiEndprocDirective(const Token& directive)
{
    DebugFrameProc* proc = m_section->getCurrentProc();
    if (!proc) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_ENDPROC_UNOPENED,
                                 ".cfi_endproc directive without previous .cfi_startproc\n");
        return;
    }
    proc->endLabel = addRecordLabel(directive);
    m_section->setCurrentProc(nullptr);
}

void AsmWriter::cfiEncodingDirective(const Token& directive, OperandPtr encoding, const Token* symbol, bool personality)
{
    DebugFrameProc* proc = openProcedure(directive);
    if (!proc)
        return;
    const char* name = personality ? ".cfi_personality" : ".cfi_lsda";
    int value = 0;
    if (!ExprEval::evaluate(encoding.get(), value)) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_ENCODING,
                                 "encoding argument of %s is not a constant expression\n", name);
        return;
    }
    if (value < -128 || value > 255) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::CFI_ENCODING,
                                 "encoding argument for %s is out of range\n", name);
        return;
    }
    VormLabel* label = symbol ? m_assembler.getLabels().getOrAddRequiredLabel(symbol->text, false) : nullptr;
    if (personality) {
        proc->personalityEncoding = static_cast<unsigned>(value);
        proc->personality = label;
    } else {
        proc->lsdaEncoding = static_cast<unsigned>(value);
        proc->lsda = label;
    }
}

void AsmWriter::cfiPersonalityDirective(const Token& directive, OperandPtr encoding, const Token* symbol)
{
    cfiEncodingDirective(directive, std::move(encoding), symbol, true);
}

void AsmWriter::cfiLsdaDirective(const Token& directive, OperandPtr encoding, const Token* symbol)
{
    cfiEncodingDirective(directive, std::move(encoding), symbol, false);
}

void AsmWriter::cfiDirectiveCommon(const Token& directive, OperandPtr operand, const char* name, unsigned opcode)
{
    DebugFrameProc* proc = openProcedure(directive);
    if (!proc)
        return;
    DebugFrameInstruction instruction;
    if (!ExprEval::evaluate(operand.get(), instruction.args[0])) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::NOT_CONSTANT,
                                 "%s for %s directive is not a constant expression\n", name, directive.text);
        return;
    }
    instruction.opcode = opcode;
    instruction.numArgs = 1;
    instruction.label = addRecordLabel(directive);
    proc->instructions.push_back(instruction);
}

void AsmWriter::cfiDirectiveCommon(const Token& directive, OperandPtr first, OperandPtr second,
                                   const char* firstName, const char* secondName, unsigned opcode)
{
    DebugFrameProc* proc = openProcedure(directive);
    if (!proc)
        return;
    DebugFrameInstruction instruction;
    const char* failed = nullptr;
    if (!ExprEval::evaluate(first.get(), instruction.args[0]))
        failed = firstName;
    else if (!ExprEval::evaluate(second.get(), instruction.args[1]))
        failed = secondName;
    if (failed) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::NOT_CONSTANT,
                                 "%s for %s directive is not a constant expression\n", failed, directive.text);
        return;
    }
    instruction.opcode = opcode;
    instruction.numArgs = 2;
    instruction.label = addRecordLabel(directive);
    proc->instructions.push_back(instruction);
}

void AsmWriter::cfiTwoOperandDirective(const Token& directive, OperandPtr first, OperandPtr second)
{
    switch (directive.symbol) {
    case S_D_CFI_DEF_CFA:
        cfiDirectiveCommon(directive, std::move(first), std::move(second), "register", "offset", DW_CFA_def_cfa);
        break;
    case S_D_CFI_OFFSET:
        cfiDirectiveCommon(directive, std::move(first), std::move(second), "register", "offset", DW_CFA_offset);
        break;
    case S_D_CFI_REGISTER:
        cfiDirectiveCommon(directive, std::move(first), std::move(second), "register", "register", DW_CFA_register);
        break;
    default:
        // .cfi_rel_offset holds a place only: its arguments are not even evaluated.
        openProcedure(directive);
        break;
    }
}

void AsmWriter::cfiOneOperandDirective(const Token& directive, OperandPtr operand)
{
    switch (directive.symbol) {
    case S_D_CFI_DEF_CFA_REGISTER:
        cfiDirectiveCommon(directive, std::move(operand), "register", DW_CFA_def_cfa_register);
        break;
    case S_D_CFI_DEF_CFA_OFFSET:
        cfiDirectiveCommon(directive, std::move(operand), "offset", DW_CFA_def_cfa_offset);
        break;
    case S_D_CFI_RESTORE:
        cfiDirectiveCommon(directive, std::move(operand), "register", DW_CFA_restore);
        break;
    case S_D_CFI_UNDEFINED:
        cfiDirectiveCommon(directive, std::move(operand), "register", DW_CFA_undefined);
        break;
    case S_D_CFI_SAME_VALUE:
        cfiDirectiveCommon(directive, std::move(operand), "register", DW_CFA_same_value);
        break;
    default:
        // .cfi_adjust_cfa_offset holds a place only.
        openProcedure(directive);
        break;
    }
}

void AsmWriter::cfiRememberState(const Token& directive)
{
    if (DebugFrameProc* proc = openProcedure(directive))
        proc->instructions.push_back(DebugFrameInstruction{DW_CFA_remember_state, {0, 0}, 0, addRecordLabel(directive)});
}

void AsmWriter::cfiRestoreState(const Token& directive)
{
    if (DebugFrameProc* proc = openProcedure(directive))
        proc->instructions.push_back(DebugFrameInstruction{DW_CFA_restore_state, {0, 0}, 0, addRecordLabel(directive)});
}

// ---- End of frame directives ----

void parseSource(AssemblerRun& run, VorpTokeniser& tokeniser)
{
    VormAssembler& assembler = run.getAssembler();
    VorpErrorHandler& errorHandler = assembler.getErrorHandler();
    AsmWriter writer(run, errorHandler, run.getOptions().schedule);
    writer.setCurrentSection(assembler.addSection(".text", "ax", "progbits", 0, "", false));
    VorpParser(tokeniser, errorHandler, writer).parse();
    assembler.statistics().tokens = tokeniser.tokensScanned();
    assembler.statistics().lines = tokeniser.linesScanned();
}

} // namespace vorp
