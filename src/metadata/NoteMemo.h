#pragma once

#include "vorp/AssemblerOptions.h"

#include <string>
#include <vector>

namespace vorp {

// One note section to write: an identification text, the architecture or the core revision.
class NoteMemo {
public:
    enum Kind { IDENT = 1, CORE = 2, CORE_REVISION = 3 };

    NoteMemo(int kind, std::string text) : m_kind(kind), m_text(std::move(text)) {}
    virtual ~NoteMemo() = default;

    int getKind() const { return m_kind; }
    const std::string& getText() const { return m_text; }

private:
    int m_kind;
    std::string m_text;
};

// Makes sure the object names its architecture and core revision.
void addDefaultNotes(std::vector<NoteMemo>& notes, AssemblerOptions::Arch arch);

} // namespace vorp
