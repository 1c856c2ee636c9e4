#include "frontend/AsmWriter.h"

#include "diag/VorpErrorHandler.h"
#include "frontend/ExprEval.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormLocDirectiveLine.h"

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
