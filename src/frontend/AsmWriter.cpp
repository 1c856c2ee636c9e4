#include "frontend/AsmWriter.h"

#include "diag/VorpErrorHandler.h"
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

AsmWriter::AsmWriter(VormAssembler& assembler, VorpErrorHandler& errorHandler, bool schedule)
    : m_assembler(assembler), m_errorHandler(errorHandler), m_defaultSchedule(schedule), m_schedule(schedule)
{
}

void AsmWriter::makeLabelLine(const Token& name)
{
    m_assembler.addLabel(m_section, name, m_schedule);
}

void AsmWriter::makeAssemblyLine(TokenLinePtr line)
{
    m_assembler.addCode(m_section, std::move(line), m_schedule, m_syntax);
}

void AsmWriter::makeDirectiveLine(TokenLinePtr line)
{
    m_assembler.addDirective(m_section, std::move(line), m_schedule);
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
        Operand* operand = ExprEval::optimise(value.release());
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
    m_assembler.getNotes().emplace_back(NoteMemo::IDENT, text.text);
}

void AsmWriter::coreDirective(const Token& directive, const Token& text)
{
    if (std::strcmp(text.text, "TL3") != 0) {
        m_errorHandler.vorpError(locationOf(directive), AssErrorCodes::UNSUPPORTED_CORE, "Unsupported core \"%s\".\n",
                                 text.text);
        return;
    }
    m_assembler.getNotes().emplace_back(NoteMemo::CORE, text.text);
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
    m_assembler.getNotes().emplace_back(NoteMemo::CORE_REVISION, text.text);
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
    OperandPtr tree(ExprEval::optimise(expression.release()));
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
    OperandPtr tree(ExprEval::optimise(size.release()));
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
    m_assembler.getDebugLine().addFile(index.constantValue, name.text, locationOf(directive));
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

int vorpparse(VormAssembler& assembler, const std::vector<const char*>& files, bool schedule)
{
    VorpErrorHandler& errorHandler = assembler.getErrorHandler();
    VorpTokeniser tokeniser;
    if (!tokeniser.lexInit(files, &errorHandler))
        return 1;
    AsmWriter writer(assembler, errorHandler, schedule);
    writer.setCurrentSection(assembler.addSection(".text", "ax", "progbits", 0, "", false));
    VorpParser(tokeniser, errorHandler, writer).parse();
    return 0;
}

} // namespace vorp
