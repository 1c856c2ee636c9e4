#include "model/VormDotSameResourceDirective.h"

#include "frontend/VormExprEval.h"
#include "model/VormAssembler.h"
#include "model/VormDirectiveLine.h"

#include <cassert>
#include <string>

namespace vorp {

void VormDotSameResourceDirective::initialise(VormDirectiveLine* line, VormAssembler& assembler,
                                              VorpErrorHandler& errorHandler)
{
    unsigned position = 5;
    const int value = VormExprEval(&errorHandler).evaluateExpression(&line->getTokens(), position, line->getLocation());
    VormLabels& labels = assembler.getLabels();
    VormLabel* first = labels.getOrAddRequiredLabel(line->getToken(1).text, false);
    assembler.getLinkerExps()
        .addExp(2625, first)
        .addSymOp(labels.getOrAddRequiredLabel(line->getToken(3).text, false))
        .addConstOp(value);
}

void VormDotSameResourceDirective::encode(Relocations&, VormDirectiveLine* line, VormAssembler& assembler,
                                          VorpErrorHandler&)
{
    VormLabels& labels = assembler.getLabels();
    const std::string name = line->getToken(1).text;
    VormLabel* info = labels.findLabel((name + ".info").c_str());
    if (!info)
        return;
    VormLabel* anonSym = labels.findLabel(name.c_str());
    assert(anonSym);
    assembler.getLinkerExps().addExp(2689, anonSym).addSymOp(info);
}

} // namespace vorp
