#include "encoding/InstructionGroupingSingle.h"

#include "model/VormLine.h"

namespace vorp {

void InstructionGroupingSingle::setAddress(const VormAddress& address)
{
    m_line->setAddress(address);
}

VormAddress InstructionGroupingSingle::getAddress() const
{
    return m_line->getAddress();
}

VormAddress InstructionGroupingSingle::getNextAddress() const
{
    return m_line->getNextAddress();
}

bool InstructionGroupingSingle::isDone() const
{
    return m_line->isDone();
}

bool InstructionGroupingSingle::chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                                              EncodingFailInfo& failInfo)
{
    return m_line->chooseEncoder(force, labels, addresses, changed, failInfo, false);
}

} // namespace vorp
