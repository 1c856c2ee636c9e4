#pragma once

#include "frontend/Token.h"
#include "model/VormLine.h"

#include <vector>

namespace vorp {

// Strings: `.ascii` and `.asciiz`, each string with or without its terminating zero.
class VormAsciiLine : public VormLine {
public:
    VormAsciiLine(const LineLocation& location, bool zeroTerminate, std::vector<Token> strings);

    void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    LineLocation getLocation() const override { return m_location; }
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    // Control bytes 7 to 13 are written as a backslash and the byte itself.
    void dump(std::ostream& out) const override;
    void printListing(FILE* file) override;

    const char* getDirectiveName() const { return m_zeroTerminate ? "asciiz" : "ascii"; }
    bool isZeroTerminated() const { return m_zeroTerminate; }
    const std::vector<Token>& getStrings() const { return m_strings; }

private:
    LineLocation m_location;
    bool m_zeroTerminate;
    std::vector<Token> m_strings;
};

} // namespace vorp
