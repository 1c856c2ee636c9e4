#pragma once

#include "frontend/Token.h"
#include "model/VormLine.h"

#include <memory>
#include <vector>

namespace vorp {

// A line kept as the tokens of its source line; later passes re-read the operands from them.
class VormTokenLine : public VormLine {
public:
    // The line must hold at least one token; its place is that of the first.
    VormTokenLine(LineType type, bool schedule, std::unique_ptr<TokenLine> tokens);

    LineLocation getLocation() const override { return m_location; }
    // Tokens separated by one blank, but no blank before a comma.
    void dump(std::ostream& out) const override;

    unsigned numTokens() const { return static_cast<unsigned>(m_tokenPointers.size()); }
    const std::vector<Token*>& getTokens() const { return m_tokenPointers; }
    const Token& getToken(unsigned tokenNum) const;

protected:
    void setToken(unsigned tokenNum, const Token& token);

private:
    std::unique_ptr<TokenLine> m_tokenLine;
    LineLocation m_location;
    std::vector<Token*> m_tokenPointers;
};

} // namespace vorp
