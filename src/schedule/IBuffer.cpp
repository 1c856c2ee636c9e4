#include "schedule/IBuffer.h"

#include <cassert>

namespace vorp {

void IBuffer::fetch()
{
    if (m_iBuffBytes > 4) {
        // No room for a word: the slot is lost.
        m_score -= 2;
    } else if (isWordAligned(m_iBuffBytes + m_address)) {
        m_iBuffBytes += 4;
    } else {
        // Only the rest of the word.
        m_iBuffBytes += 2;
        m_score -= 1;
    }
}

void IBuffer::modelCycle(std::uint32_t instBytes, bool isMemory, bool isBranch, std::uint32_t iBuffBytes,
                         std::uint32_t address)
{
    assert(instBytes == 2 || instBytes == 4);
    assert(iBuffBytes < 8 && (iBuffBytes & 1) == 0);
    m_fnops = 0;
    m_score = 0;
    m_iBuffBytes = iBuffBytes;
    m_address = address;
    while (!canIssue(instBytes)) {
        m_score -= 2;
        ++m_fnops;
        fetch();
    }
    // A memory instruction takes the issue cycle's fetch slot for itself.
    if (!isMemory)
        fetch();
    m_iBuffBytes -= instBytes;
    m_address = (m_address + instBytes) & 3;
    // An empty buffer costs a cycle; after a branch what follows is fetched afresh anyway.
    if (!isBranch && m_iBuffBytes == 0) {
        m_score -= 2;
        ++m_fnops;
        fetch();
    }
}

} // namespace vorp
