#include "model/VormDotSkipDirective.h"

#include "diag/VorpErrorHandler.h"
#include "frontend/VormExprEval.h"
#include "model/VormDirectiveLine.h"

namespace vorp {

void VormDotSkipDirective::initialise(VormDirectiveLine* line, VormAssembler&, VorpErrorHandler& errorHandler)
{
    const VormExprEval evaluator(&errorHandler);
    const LexTokenVector* tokens = &line->getTokens();
    const char* word = m_name.c_str();
    unsigned position = 1;
    int size = 0;
    if (evaluator.tryEvaluateExpression(tokens, position, size)) {
        line->setNumBytes(static_cast<std::uint32_t>(size));
        if (size < 0) {
            errorHandler.vorpError(line->getLocation(), AssErrorCodes::ILLEGAL_DIRECTIVE_VALUE,
                                   "%s directive of value '%d' is illegal\n", word, size);
            return;
        }
        if (position >= line->numTokens())
            return;
        const int separator = line->getToken(position++).symbol;
        int fill = 0;
        if (position < line->numTokens() && evaluator.tryEvaluateExpression(tokens, position, fill) &&
            separator == S_COMMA)
            return;
    } else {
        errorHandler.vorpError(line->getLocation(), AssErrorCodes::DIRECTIVE_NOT_INTEGER,
                               "%s 'numBytes' not an integer value'\n", word);
    }
    errorHandler.vorpError(line->getLocation(), AssErrorCodes::DIRECTIVE_FORM,
                           "%s directive should be of the form 'numBytes, value'\n", word);
}

void VormDotSkipDirective::encode(Relocations&, VormDirectiveLine* line, VormAssembler&,
                                  VorpErrorHandler& errorHandler)
{
    const VormExprEval evaluator(&errorHandler);
    const LexTokenVector* tokens = &line->getTokens();
    unsigned position = 1;
    evaluator.evaluateExpression(tokens, position, line->getLocation());
    int fill = 0;
    if (position < line->numTokens()) {
        ++position;
        fill = evaluator.evaluateExpression(tokens, position, line->getLocation());
    }
    line->setAllBytes(static_cast<std::uint8_t>(fill & 0xFF));
}

void VormDotSkipDirective::printListing(VormDirectiveLine* line, FILE* file)
{
    fprintf(file, "%4d ", line->getLineNum());
    fprintf(file, "%08x : %s %d bytes\n", line->getAddress().min, m_name.c_str(),
            static_cast<int>(line->getNumBytes()));
}

} // namespace vorp
