#include "encoding/VormDirectives.h"

#include "model/VormDirectiveLine.h"

#include <cassert>

namespace vorp {

VormDirectives::VormDirectives() : m_skip(".skip"), m_space(".space") {}

VormDirectiveLine* VormDirectives::getDirectiveLine(std::unique_ptr<TokenLine> tokens, bool schedule)
{
    assert(tokens && "line");
    switch (tokens->front().symbol) {
    case S_D_ASSERT:
        return new VormDirectiveLine(DIRECTIVE_LINE, schedule, std::move(tokens), &m_assert);
    case S_D_SAMERESOURCE:
        return new VormDirectiveLine(DIRECTIVE_LINE, schedule, std::move(tokens), &m_sameResource);
    case S_D_SKIP:
        return new VormDirectiveLine(SKIP_LINE, schedule, std::move(tokens), &m_skip);
    case S_D_SPACE:
        return new VormDirectiveLine(SKIP_LINE, schedule, std::move(tokens), &m_space);
    case S_D_JMPTABLE:
        return new VormDirectiveLine(DIRECTIVE_LINE, schedule, std::move(tokens), &m_jmptable);
    case S_D_JMPTABLE32:
        return new VormDirectiveLine(DIRECTIVE_LINE, schedule, std::move(tokens), &m_jmptable32);
    default:
        assert(0);
        return nullptr;
    }
}

} // namespace vorp
