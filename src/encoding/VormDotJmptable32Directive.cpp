#include "encoding/VormDotJmptable32Directive.h"

#include "encoding/CodeLines.h"
#include "encoding/VormCodeLine.h"
#include "model/VormAssembler.h"
#include "model/VormDirectiveLine.h"

namespace vorp {

void VormDotJmptable32Directive::initialise(VormDirectiveLine* line, VormAssembler& assembler, VorpErrorHandler&)
{
    for (unsigned i = 1; i < line->numTokens(); i += 2)
        addBranch(assembler, line->getSection(), line->getToken(i).text, line->getLineNum(), line->getFileName())
            ->forceSize(4);
}

} // namespace vorp
