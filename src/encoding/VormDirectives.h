#pragma once

#include "frontend/Token.h"
#include "model/VormDotAssertDirective.h"
#include "encoding/VormDotJmptable32Directive.h"
#include "encoding/VormDotJmptableDirective.h"
#include "model/VormDotSameResourceDirective.h"
#include "model/VormDotSkipDirective.h"

#include <memory>

namespace vorp {

class VormDirectiveLine;

// The directive objects, one per word, and the factory of their lines.
class VormDirectives {
public:
    VormDirectives();
    virtual ~VormDirectives() = default;

    // A line for the directive of token 0.
    VormDirectiveLine* getDirectiveLine(std::unique_ptr<TokenLine> tokens, bool schedule);

private:
    VormDotSkipDirective m_skip;
    VormDotSkipDirective m_space;
    VormDotAssertDirective m_assert;
    VormDotSameResourceDirective m_sameResource;
    VormDotJmptableDirective m_jmptable;
    VormDotJmptable32Directive m_jmptable32;
};

} // namespace vorp
