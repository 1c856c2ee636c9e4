#include "encoding/VormJTTrampoline.h"

#include <cassert>

namespace vorp {

VormJTTrampoline::VormJTTrampoline(std::unique_ptr<TokenLine> tokens, const Encoder* encoder, bool schedule)
    : VormCodeLine(std::move(tokens), encoder, schedule)
{
}

void VormJTTrampoline::addTrampolineUse(VormCodeLine* entry)
{
    m_entries.push_back(entry);
    m_use = TRAMPOLINE_UNDECIDED;
}

VormCodeLine::TrampolineUse VormJTTrampoline::calculateTrampolineUse(VormLabels& labels, AddressReader* addresses)
{
    TrampolineUse result = TRAMPOLINE_UNUSED;
    for (VormCodeLine* entry : m_entries) {
        if (entry->getJumpTableState() == TRAMPOLINE_UNDECIDED) {
            EncodingFailInfo scratch;
            entry->chooseEncoderImpl(false, labels, addresses, scratch, false);
            if (entry->getJumpTableState() == TRAMPOLINE_UNDECIDED)
                result = TRAMPOLINE_UNDECIDED;
        }
        switch (entry->getJumpTableState()) {
        case TRAMPOLINE_USED:
            return TRAMPOLINE_USED;
        case TRAMPOLINE_UNDECIDED:
        case TRAMPOLINE_UNUSED:
            break;
        default:
            assert(0 && "Unexpected trampoline usage");
        }
    }
    return result;
}

bool VormJTTrampoline::chooseEncoderImpl(bool force, VormLabels& labels, AddressReader* addresses,
                                         EncodingFailInfo& failInfo, bool final)
{
    if (m_use == TRAMPOLINE_UNDECIDED) {
        m_use = calculateTrampolineUse(labels, final ? nullptr : addresses);
        if (m_use == TRAMPOLINE_UNDECIDED && force)
            m_use = TRAMPOLINE_USED;
        if (m_use == TRAMPOLINE_UNUSED)
            return true;
    } else if (m_use == TRAMPOLINE_UNUSED) {
        return true;
    }
    const bool result = VormCodeLine::chooseEncoderImpl(force, labels, addresses, failInfo, final);
    return m_use == TRAMPOLINE_UNDECIDED ? true : result;
}

void VormJTTrampoline::getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const
{
    if (m_use == TRAMPOLINE_UNUSED) {
        minBytes = maxBytes = 0;
        return;
    }
    VormCodeLine::getByteRange(minBytes, maxBytes);
    if (m_use == TRAMPOLINE_UNDECIDED)
        minBytes = 0;
}

bool VormJTTrampoline::isDone() const
{
    std::uint32_t minBytes = 0;
    std::uint32_t maxBytes = 0;
    getByteRange(minBytes, maxBytes);
    return minBytes == maxBytes;
}

void VormJTTrampoline::encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                              VorpErrorHandler& errorHandler)
{
    assert(isDone());
    if (m_use != TRAMPOLINE_UNUSED)
        VormCodeLine::encode(buffer, relocations, assembler, errorHandler);
}

} // namespace vorp
