#include "model/VormDotAssertDirective.h"

#include "model/VormAssembler.h"
#include "model/VormDirectiveLine.h"

#include <string>

namespace vorp {

void VormDotAssertDirective::encode(Relocations&, VormDirectiveLine* line, VormAssembler& assembler,
                                    VorpErrorHandler&)
{
    const std::string symbol = line->getToken(3).text;
    const char* message = line->getToken(5).text;
    const std::int32_t value = static_cast<std::int32_t>(line->getToken(1).constantValue);
    VormLabels& labels = assembler.getLabels();
    VormLabel* result = labels.getOrAddRequiredLabel(symbol.c_str(), false);

    // The base name ends at the last dot, which may not be the first character.
    const std::size_t dot = symbol.rfind('.');
    if (dot != std::string::npos && dot >= 1) {
        VormLabel* base = labels.getOrAddRequiredLabel(symbol.substr(0, dot).c_str(), false);
        assembler.getLinkerExps().addExp(326, result).addStrOp(message).addSymOp(base).addConstOp(value);
    } else {
        assembler.getLinkerExps().addExp(322, result).addStrOp(message).addConstOp(value);
    }
}

} // namespace vorp
