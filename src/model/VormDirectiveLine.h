#pragma once

#include "model/VormTokenLine.h"

#include <memory>

namespace vorp {

class VormDirective;

// A directive kept as its tokens and given meaning by a shared directive object; the line holds
// the bytes the directive leaves.
class VormDirectiveLine : public VormTokenLine {
public:
    VormDirectiveLine(LineType type, bool schedule, std::unique_ptr<TokenLine> tokens, VormDirective* directive);

    void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    void printListing(FILE* file) override;
    virtual void initialise(VormAssembler& assembler, VorpErrorHandler& errorHandler);

    VormDirective* getDirective() const { return m_directive; }
    void setNumBytes(std::uint32_t numBytes) { m_numBytes = numBytes; }
    // Fresh bytes, all of `value`. Kept as the one value: a skip can be as large as the address
    // space, and the object's own buffer is the only copy it needs.
    void setAllBytes(std::uint8_t value);
    // Fresh bytes, copied from `source`.
    void setBytes(const std::uint8_t* source);
    void getBytes(std::uint8_t* buffer) const;
    int getLineNum() const { return getToken(0).line; }
    const char* getFileName() const { return getToken(0).file; }

private:
    VormDirective* m_directive;
    std::uint32_t m_numBytes = 0;
    std::unique_ptr<std::uint8_t[]> m_bytes;
    bool m_allSame = false;
    std::uint8_t m_fill = 0;
};

} // namespace vorp
