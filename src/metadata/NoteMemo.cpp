#include "metadata/NoteMemo.h"

#include <cassert>

namespace vorp {

void addDefaultNotes(std::vector<NoteMemo>& notes, AssemblerOptions::Arch arch)
{
    bool haveCore = false;
    bool haveRevision = false;
    for (const NoteMemo& note : notes) {
        haveCore = haveCore || note.getKind() == NoteMemo::CORE;
        haveRevision = haveRevision || note.getKind() == NoteMemo::CORE_REVISION;
    }
    if (!haveCore)
        notes.emplace_back(NoteMemo::CORE, "TL3");
    if (!haveRevision) {
        std::string revision;
        switch (arch) {
        case AssemblerOptions::TL3B:
            revision = "REVB";
            break;
        default:
            assert(0 && "Unknown arch");
        }
        if (!revision.empty())
            notes.emplace_back(NoteMemo::CORE_REVISION, revision);
    }
}

} // namespace vorp
