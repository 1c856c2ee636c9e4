#include "model/VormCCDirectiveLine.h"

#include "model/VormAssembler.h"

namespace vorp {

VormCCDirectiveLine::VormCCDirectiveLine(LineType type, std::unique_ptr<TokenLine> tokens, VormCCDirectiveLine* top)
    : VormTokenLine(type, false, std::move(tokens)), m_top(top)
{
}

void VormCCDirectiveLine::defineLabels(VormAssembler& assembler)
{
    m_label = assembler.getLabels().addUniqueDefinedLabel(this);
}

const char* VormCCDirectiveLine::getName() const
{
    return getToken(1).text;
}

const char* VormCCDirectiveLine::getPredicate() const
{
    return getType() == CC_TOP_LINE && numTokens() > 3 ? getToken(3).text : "";
}

} // namespace vorp
