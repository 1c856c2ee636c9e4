#include "model/VormAsciiLine.h"

#include <cassert>
#include <cstring>

namespace vorp {

VormAsciiLine::VormAsciiLine(const LineLocation& location, bool zeroTerminate, std::vector<Token> strings)
    : VormLine(ASCII_LINE, false), m_location(location), m_zeroTerminate(zeroTerminate), m_strings(std::move(strings))
{
}

void VormAsciiLine::getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const
{
    std::uint32_t size = 0;
    for (const Token& token : m_strings) {
        assert(token.symbol == 262);
        size += m_zeroTerminate ? token.stringLength : token.stringLength - 1;
    }
    minBytes = maxBytes = size;
}

void VormAsciiLine::encode(std::uint8_t* buffer, Relocations&, VormAssembler&, VorpErrorHandler&)
{
    for (const Token& token : m_strings) {
        assert(token.symbol == 262);
        const std::uint32_t length = m_zeroTerminate ? token.stringLength : token.stringLength - 1;
        std::memcpy(buffer, token.stringData, length);
        buffer += length;
    }
}

void VormAsciiLine::dump(std::ostream& out) const
{
    out << getDirectiveName();
    for (std::size_t i = 0; i < m_strings.size(); ++i) {
        if (i)
            out << ',';
        out << " \"";
        const Token& token = m_strings[i];
        for (unsigned b = 0; b + 1 < token.stringLength; ++b) {
            const unsigned char c = static_cast<unsigned char>(token.stringData[b]);
            if (c >= 7 && c <= 13) {
                out << '\\' << static_cast<char>(c);
            } else if (c == '"' || c == '\'' || c == '?' || c == '\\') {
                out << '\\' << static_cast<char>(c);
            } else if (c >= 32 && c <= 126) {
                out << static_cast<char>(c);
            } else {
                const char octal[] = {'\\', static_cast<char>('0' + (c >> 6)), static_cast<char>('0' + ((c >> 3) & 7)),
                                      static_cast<char>('0' + (c & 7)), '\0'};
                out << octal;
            }
        }
        out << '"';
    }
}

void VormAsciiLine::printListing(FILE* file)
{
    printDump(file);
}

} // namespace vorp
