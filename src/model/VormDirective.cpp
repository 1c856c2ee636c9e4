#include "model/VormDirective.h"

#include "model/VormAssembler.h"

#include <cstring>
#include <string>

namespace vorp {

void VormDirective::makeReference(VormLabel* label, const char* suffix, std::int32_t opcode,
                                  VormAssembler& assembler, VorpErrorHandler&)
{
    const std::string name = label->getName();
    const std::size_t length = std::strlen(suffix);
    if (name.size() <= length || name.compare(name.size() - length, length, suffix) != 0)
        return;
    VormLabel* base = assembler.getLabels().getOrAddRequiredLabel(name.substr(0, name.size() - length).c_str(), false);
    assembler.getLinkerExps().addExp(opcode, base).addSymOp(label);
}

} // namespace vorp
