#pragma once

#include "frontend/Token.h"
#include "model/VormAssembler.h"

#include <memory>

namespace vorp {

class VormCodeLine;
class VormDirectiveLine;
class VormDirectives;
class VormJTTrampoline;
class VormSection;
struct EncodingFailInfo;

// Instruction lines enter a section through these, as every other line does through the model's
// adding operations.

// An instruction line; an unknown mnemonic is reported (error 4, or 0 when the other syntax knows
// it) and gives null.
VormCodeLine* addCode(VormAssembler& assembler, VormSection* section, std::unique_ptr<TokenLine> tokens,
                      bool schedule, VormAssembler::Syntax syntax);
// A `bu TARGET` line added at the end of the section, in the default syntax and unscheduled.
VormCodeLine* addBranch(VormAssembler& assembler, VormSection* section, const char* target, int line,
                        const char* file);
std::unique_ptr<TokenLine> newBranchTokenLine(VormAssembler& assembler, const char* target, int line, const char* file);
VormJTTrampoline* addJTTrampoline(VormAssembler& assembler, VormSection* section, std::unique_ptr<TokenLine> tokens);
// A directive kept as tokens (.skip, .space, .assert, .sameresource, .jmptable, .jmptable32),
// initialised at once.
VormDirectiveLine* addDirective(VormAssembler& assembler, VormDirectives& directives, VormSection* section,
                                std::unique_ptr<TokenLine> tokens, bool schedule);

// Reports an instruction that no format fits (errors 48, 49) and ends the run.
[[noreturn]] void noMatchingFormatError(VormAssembler& assembler, EncodingFailInfo& failInfo);

} // namespace vorp
