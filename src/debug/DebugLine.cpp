#include "debug/DebugLine.h"

#include "diag/VorpErrorHandler.h"

#include <cassert>

namespace vorp {

void DebugLine::addFile(unsigned index, const std::string& name, const Location& location)
{
    if (index == 0) {
        m_errorHandler->vorpError(location, AssErrorCodes::FILENAME_INDEX, "Invalid filename index.");
        return;
    }
    if (m_files.size() < index)
        m_files.resize(index);
    std::string& slot = m_files[index - 1];
    if (!slot.empty() && slot != name)
        m_errorHandler->vorpError(location, AssErrorCodes::SOURCE_FILENAME, "Filename index is not unique.");
    slot = name;
}

void DebugLine::addEntry(const char* label, unsigned file, unsigned line, unsigned column, bool isStmt,
                         bool basicBlock, bool endSequence, bool prologueEnd, bool epilogueBegin, unsigned isa,
                         const std::string& ccName)
{
    m_rows.push_back(
        DebugLineRow{label, file, line, column, isStmt, basicBlock, endSequence, prologueEnd, epilogueBegin, isa, ccName});
}

void DebugLine::endSequence(const char* label)
{
    assert(!m_rows.empty());
    DebugLineRow row = m_rows.back();
    row.address = label;
    row.endSequence = true;
    row.basicBlock = false;
    row.prologueEnd = false;
    row.epilogueBegin = false;
    m_rows.push_back(row);
}

void DebugLine::validate()
{
    for (const std::string& file : m_files) {
        if (file.empty()) {
            m_errorHandler->vorpError(NoLocation(), AssErrorCodes::LOC_DIRECTIVE,
                                      "File indicies for .file directive are not contiguous.");
            return;
        }
    }
    for (const DebugLineRow& row : m_rows) {
        if (row.file > m_files.size())
            m_errorHandler->vorpError(NoLocation(), AssErrorCodes::LOC_DIRECTIVE, "Invalid file index in .loc directive.");
    }
    if (!m_rows.empty() && !m_rows.back().endSequence)
        endSequence(m_rows.back().address.c_str());
}

} // namespace vorp
