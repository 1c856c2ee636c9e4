#pragma once

#include <cstdint>

namespace vorp {

// The target's instruction buffer across the issue of one instruction: 8 bytes, filled by word
// fetches in the slots that memory instructions leave free. A cycle without issue is an fnop; the
// score (never above 0) also marks fetch slots that were lost, so that states with equal fnops can
// be told apart.
class IBuffer {
public:
    virtual ~IBuffer() = default;

    // Issues one instruction with `iBuffBytes` buffered at an issue address whose low bits are
    // `address`; the results are read from the getters.
    void modelCycle(std::uint32_t instBytes, bool isMemory, bool isBranch, std::uint32_t iBuffBytes,
                    std::uint32_t address);
    bool canIssue(std::uint32_t bytes) const { return m_iBuffBytes >= bytes; }
    // One fetch slot.
    void fetch();
    static bool isWordAligned(std::uint32_t value) { return (value & 3) == 0; }

    std::uint32_t getAddress() const { return m_address; }
    std::int32_t getScore() const { return m_score; }
    std::uint32_t getFnops() const { return m_fnops; }
    std::uint32_t getIBuffBytes() const { return m_iBuffBytes; }

private:
    std::uint32_t m_address = 0;
    std::int32_t m_score = 0;
    std::uint32_t m_fnops = 0;
    std::uint32_t m_iBuffBytes = 0;
};

} // namespace vorp
