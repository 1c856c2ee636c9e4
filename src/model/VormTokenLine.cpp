#include "model/VormTokenLine.h"

#include <cassert>

namespace vorp {

namespace {

LineLocation firstTokenLocation(const TokenLine& tokens)
{
    assert(!tokens.empty());
    return LineLocation(tokens.front().file, static_cast<unsigned>(tokens.front().line));
}

} // namespace

VormTokenLine::VormTokenLine(LineType type, bool schedule, std::unique_ptr<TokenLine> tokens)
    : VormLine(type, schedule), m_tokenLine(std::move(tokens)), m_location(firstTokenLocation(*m_tokenLine))
{
    // The line keeps its tokens to the end of the run: no spare capacity from the parser's growth.
    m_tokenLine->shrink_to_fit();
    m_tokenPointers.reserve(m_tokenLine->size());
    for (Token& token : *m_tokenLine)
        m_tokenPointers.push_back(&token);
}

const Token& VormTokenLine::getToken(unsigned tokenNum) const
{
    assert(tokenNum < numTokens());
    return *m_tokenPointers[tokenNum];
}

void VormTokenLine::setToken(unsigned tokenNum, const Token& token)
{
    assert(tokenNum < numTokens());
    *m_tokenPointers[tokenNum] = token;
}

void VormTokenLine::dump(std::ostream& out) const
{
    for (unsigned i = 0; i < numTokens(); ++i) {
        if (i > 0 && m_tokenPointers[i]->symbol != S_COMMA)
            out << ' ';
        out << tokenCharStar(m_tokenPointers[i]);
    }
}

} // namespace vorp
