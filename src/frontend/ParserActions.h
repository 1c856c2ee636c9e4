#pragma once

#include "frontend/Operand.h"
#include "frontend/Token.h"

#include <memory>
#include <vector>

namespace vorp {

using OperandPtr = std::unique_ptr<Operand>;
using OperandList = std::vector<OperandPtr>;
using TokenLinePtr = std::unique_ptr<TokenLine>;

// What the parser does with each statement it recognises. Each operation is one action of the
// grammar and receives the tokens and expression trees of its statement; `directive` is the
// directive token itself. The parser calls an action at the moment an LR parser would reduce its
// rule, so its effects stand even when the rest of the line turns out to be wrong.
//
// Every action here ignores its statement; the assembler's writer gives them meaning. Used as it
// is, the class makes the parser a syntax check.
class ParserActions {
public:
    virtual ~ParserActions() = default;

    // Lines
    virtual void makeLabelLine(const Token& /*name*/) {}
    virtual void makeAssemblyLine(TokenLinePtr /*line*/) {}
    // .assert, .sameresource, .skip, .space, .jmptable, .jmptable32: all tokens of the statement.
    virtual void makeDirectiveLine(TokenLinePtr /*line*/) {}

    // Data, sections and symbols
    virtual void alignDirective(const Token& /*directive*/, OperandPtr /*value*/, OperandPtr /*fill*/) {}
    virtual void asciiDirective(const Token& /*directive*/, TokenLinePtr /*strings*/) {}
    virtual void dataDirective(const Token& /*directive*/, OperandList /*values*/) {}
    virtual void fileDirective(const Token& /*directive*/, const Token& /*name*/) {}
    virtual void dwarfFileDirective(const Token& /*directive*/, const Token& /*index*/, const Token& /*name*/) {}
    virtual void visibilityDirective(const Token& /*directive*/, const Token& /*symbol*/, const Token* /*text*/) {}
    virtual void weakDirective(const Token& /*directive*/, const Token& /*symbol*/) {}
    // The constants and options of a .loc, without the directive token.
    virtual void locDirective(const Token& /*directive*/, TokenLinePtr /*line*/) {}
    virtual void identDirective(const Token& /*directive*/, const Token& /*text*/) {}
    virtual void coreDirective(const Token& /*directive*/, const Token& /*text*/) {}
    virtual void coreRevDirective(const Token& /*directive*/, const Token& /*text*/) {}
    // .section and .pushsection: the directive token, then the section's tokens with commas.
    virtual void sectionDirective(TokenLinePtr /*line*/) {}
    virtual void popSection(const char* /*file*/, int /*line*/) {}
    virtual void setTextSection(const char* /*file*/, int /*line*/) {}
    virtual void setDirective(const Token& /*directive*/, const Token& /*symbol*/, OperandPtr /*value*/) {}
    // NAME = EXPRESSION
    virtual void setDirective2(const Token& /*symbol*/, OperandPtr /*value*/) {}
    virtual void linksetDirective(const Token& /*directive*/, const Token& /*symbol*/, OperandPtr /*value*/) {}
    virtual void callDirective(const Token& /*directive*/, const Token& /*caller*/, const Token& /*callee*/) {}
    virtual void parDirective(const Token& /*directive*/, const Token& /*first*/, const Token& /*second*/,
                              const Token& /*text*/)
    {
    }
    // Both expressions are null in the short form.
    virtual void readWriteDirective(const Token& /*directive*/, const Token& /*first*/, const Token& /*second*/,
                                    OperandPtr /*offset*/, OperandPtr /*size*/, const Token& /*text*/)
    {
    }
    virtual void globPassesRefDirective(const Token& /*directive*/, const Token& /*first*/, const Token& /*second*/,
                                        const Token& /*text*/)
    {
    }
    virtual void typeDirective(const Token& /*directive*/, const Token& /*symbol*/, const Token& /*type*/) {}
    virtual void typeStringDirective(const Token& /*directive*/, const Token& /*symbol*/, const Token& /*text*/) {}
    virtual void sizeDirective(const Token& /*directive*/, const Token& /*symbol*/, OperandPtr /*size*/) {}
    // .cc_top NAME[, NAME] and .cc_bottom NAME: the directive token, the names and the comma.
    virtual void ccTopDirective(TokenLinePtr /*line*/) {}
    virtual void ccBottomDirective(TokenLinePtr /*line*/) {}
    virtual void schedulingDirective(const Token& /*directive*/, const Token& /*word*/) {}
    virtual void syntaxDirective(const Token& /*directive*/, const Token& /*word*/) {}
    virtual void inlinedDirective(const Token& /*directive*/, const Token& /*symbol*/) {}

    // Timing analysis
    virtual void zebBranchDirective(const Token& /*directive*/, OperandList /*values*/) {}
    // .zebendpoint, .zeblabel, .zebcall, .zebcommand, .zebsystem: three strings and a constant.
    virtual void zebRecordDirective(const Token& /*directive*/, const Token& /*first*/, const Token& /*second*/,
                                    const Token& /*third*/, const Token& /*number*/)
    {
    }
    virtual void zebThreadStartDirective(const Token& /*directive*/) {}
    virtual void zebThreadStopDirective(const Token& /*directive*/) {}
    virtual void zebLoopDirective(const Token& /*directive*/, const Token& /*count*/) {}

    // Call frames. Symbols are null where the short form was used.
    virtual void cfiSectionsDirective(const Token& /*directive*/, TokenLinePtr /*symbols*/) {}
    virtual void cfiStartprocDirective(const Token& /*directive*/, const Token* /*word*/) {}
    virtual void cfiEndprocDirective(const Token& /*directive*/) {}
    virtual void cfiPersonalityDirective(const Token& /*directive*/, OperandPtr /*encoding*/, const Token* /*symbol*/) {}
    virtual void cfiLsdaDirective(const Token& /*directive*/, OperandPtr /*encoding*/, const Token* /*symbol*/) {}
    // .cfi_def_cfa, .cfi_offset, .cfi_rel_offset, .cfi_register: two expressions.
    virtual void cfiTwoOperandDirective(const Token& /*directive*/, OperandPtr /*first*/, OperandPtr /*second*/) {}
    // .cfi_def_cfa_register, .cfi_def_cfa_offset, .cfi_adjust_cfa_offset, .cfi_restore,
    // .cfi_undefined, .cfi_same_value: one expression.
    virtual void cfiOneOperandDirective(const Token& /*directive*/, OperandPtr /*operand*/) {}
    virtual void cfiRememberState(const Token& /*directive*/) {}
    virtual void cfiRestoreState(const Token& /*directive*/) {}
};

} // namespace vorp
