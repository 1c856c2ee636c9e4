#pragma once

#include "model/VormLine.h"

namespace vorp {

// A source position for the line-number program: `.loc FILE LINE [COLUMN] [options]`.
class VormLocDirectiveLine : public VormLine {
public:
    VormLocDirectiveLine(const LineLocation& location, bool schedule) : VormLine(LOC_LINE, schedule), m_location(location) {}

    void encode(std::uint8_t*, Relocations&, VormAssembler&, VorpErrorHandler&) override {}
    LineLocation getLocation() const override { return m_location; }
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override { minBytes = maxBytes = 0; }
    void dump(std::ostream& out) const override { out << ".loc " << m_file << ", " << m_line; }
    void printListing(FILE*) override {}

    std::uint32_t getFile() const { return m_file; }
    void setFile(std::uint32_t file) { m_file = file; }
    std::uint32_t getLine() const { return m_line; }
    void setLine(std::uint32_t line) { m_line = line; }
    std::uint32_t getColumn() const { return m_column; }
    void setColumn(std::uint32_t column) { m_column = column; }
    bool getIsStmt() const { return m_isStmt; }
    void setIsStmt(bool isStmt) { m_isStmt = isStmt; }
    bool getBasicBlock() const { return m_basicBlock; }
    void setBasicBlock(bool basicBlock) { m_basicBlock = basicBlock; }
    bool getEndSequence() const { return m_endSequence; }
    void setEndSequence(bool endSequence) { m_endSequence = endSequence; }
    bool getPrologueEnd() const { return m_prologueEnd; }
    void setPrologueEnd(bool prologueEnd) { m_prologueEnd = prologueEnd; }
    bool getEpilogueBegin() const { return m_epilogueBegin; }
    void setEpilogueBegin(bool epilogueBegin) { m_epilogueBegin = epilogueBegin; }
    std::uint32_t getIsa() const { return m_isa; }
    void setIsa(std::uint32_t isa) { m_isa = isa; }

private:
    LineLocation m_location;
    std::uint32_t m_file = 1;
    std::uint32_t m_line = 1;
    std::uint32_t m_column = 0;
    bool m_isStmt = true;
    bool m_basicBlock = false;
    bool m_endSequence = false;
    bool m_prologueEnd = false;
    bool m_epilogueBegin = false;
    std::uint32_t m_isa = 0;
};

} // namespace vorp
