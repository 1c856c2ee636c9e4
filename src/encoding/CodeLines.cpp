#include "encoding/CodeLines.h"

#include "diag/FatalError.h"
#include "diag/VorpErrorHandler.h"
#include "encoding/VormCodeLine.h"
#include "encoding/VormDirectives.h"
#include "encoding/VormJTTrampoline.h"
#include "isa/Encoder.h"
#include "isa/EncodingFailInfo.h"
#include "model/VormDirectiveLine.h"

#include <cassert>
#include <cstdio>
#include <string>

namespace vorp {

VormCodeLine* addCode(VormAssembler& assembler, VormSection* section, std::unique_ptr<TokenLine> tokens,
                      bool schedule, VormAssembler::Syntax syntax)
{
    using Syntax = VormAssembler::Syntax;
    VorpErrorHandler& errors = assembler.getErrorHandler();
    const Token mnemonic = tokens->front();
    if (const Encoder* encoder = assembler.findEncoder(mnemonic.text, syntax)) {
        auto* line = new VormCodeLine(std::move(tokens), encoder, schedule);
        assembler.addLine(section, line);
        return line;
    }
    const LineLocation location(mnemonic.file, static_cast<unsigned>(mnemonic.line));
    const Syntax other =
        syntax == VormAssembler::SYNTAX_DEFAULT ? VormAssembler::SYNTAX_ARCHITECTURAL : VormAssembler::SYNTAX_DEFAULT;
    if (assembler.findEncoder(mnemonic.text, other)) {
        errors.vorpError(location, AssErrorCodes::SUGGESTION, "Use of \"%s\" outside of %s syntax mode.\n",
                         mnemonic.text, other == VormAssembler::SYNTAX_DEFAULT ? "default" : "architectural");
        return nullptr;
    }
    errors.vorpError(location, AssErrorCodes::UNKNOWN_OPCODE, "Unknown opcode '%s'\n", mnemonic.text);
    const std::string name = mnemonic.text;
    const std::size_t underscore = name.find('_');
    if (underscore != std::string::npos) {
        const std::string suggestion = name.substr(0, underscore) + "I" + name.substr(underscore);
        if (assembler.findEncoder(suggestion.c_str(), syntax))
            errors.vorpError(location, AssErrorCodes::SUGGESTION, "Did you mean '%s'?\n", suggestion.c_str());
    }
    return nullptr;
}

std::unique_ptr<TokenLine> newBranchTokenLine(VormAssembler& assembler, const char* target, int line, const char* file)
{
    auto tokens = std::make_unique<TokenLine>();
    tokens->push_back(newToken(assembler.getIdStrings(), S_NAME, "bu", line, file));
    tokens->push_back(newToken(assembler.getIdStrings(), S_NAME, target, line, file));
    return tokens;
}

VormCodeLine* addBranch(VormAssembler& assembler, VormSection* section, const char* target, int line,
                        const char* file)
{
    VormCodeLine* branch =
        addCode(assembler, section, newBranchTokenLine(assembler, target, line, file), false, VormAssembler::SYNTAX_DEFAULT);
    assert(branch);
    return branch;
}

VormJTTrampoline* addJTTrampoline(VormAssembler& assembler, VormSection* section, std::unique_ptr<TokenLine> tokens)
{
    const Encoder* encoder = assembler.findEncoder(tokens->front().text, VormAssembler::SYNTAX_DEFAULT);
    assert(encoder);
    auto* line = new VormJTTrampoline(std::move(tokens), encoder, false);
    assembler.addLine(section, line);
    return line;
}

VormDirectiveLine* addDirective(VormAssembler& assembler, VormDirectives& directives, VormSection* section,
                                std::unique_ptr<TokenLine> tokens, bool schedule)
{
    VormDirectiveLine* line = directives.getDirectiveLine(std::move(tokens), schedule);
    assembler.addLine(section, line);
    line->initialise(assembler, assembler.getErrorHandler());
    return line;
}

void noMatchingFormatError(VormAssembler& assembler, EncodingFailInfo& failInfo)
{
    VorpErrorHandler& errors = assembler.getErrorHandler();
    if (!failInfo.m_outOfRange) {
        errors.vorpError(failInfo.m_location, AssErrorCodes::NO_MATCHING_FORMAT,
                         "no format matching for instruction: '%s'\n", failInfo.m_instruction.c_str());
    } else {
        std::string list;
        for (const auto& [lo, hi] : failInfo.m_ranges)
            list += (list.empty() ? "" : ", ") + std::to_string(lo) + ".." + std::to_string(hi);
        errors.vorpError(failInfo.m_location, AssErrorCodes::IMMEDIATE_OUT_OF_RANGE,
                         "Immediate out of range for instruction: '%s'.  Value is %d. Allowed range%s: %s.\n",
                         failInfo.m_instruction.c_str(), failInfo.m_value, failInfo.m_ranges.size() == 1 ? " is" : "s are",
                         list.c_str());
    }
    if (assembler.getOptions().verbose) {
        fprintf(errors.output(), "       Known formats for '%s':\n", failInfo.m_instruction.c_str());
        const Encoder* encoder = assembler.findEncoder(failInfo.m_instruction.c_str(), VormAssembler::SYNTAX_DEFAULT);
        assert(encoder);
        encoder->printFormats(errors.output());
    }
    throw FatalError(1);
}

} // namespace vorp
