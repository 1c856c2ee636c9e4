#pragma once

#include "debug/DataReader.h"
#include "debug/DebugRewriteVisitor.h"

#include <string>
#include <vector>

namespace vorp {

class VormAssembler;
class VormDataLine;
class VormSection;

// Makes a compiler's ".debug_info" survive the linker's elimination of code and data: entries of
// functions and variables go into blocks predicated on their labels, and the numeric length and
// references between entries become label differences, which the linker works out after it has
// dropped what it drops. Never an error: on failure the section stays as it is, with a warning
// only when asked for.
class DebugInfoRewriter {
public:
    DebugInfoRewriter(VormAssembler& assembler, bool warn) : m_assembler(assembler), m_warn(warn) {}

    void rewriteDwarf();

    bool rewriteDebugInfoSize(VormSection* section, LinePosition end);
    bool rewriteAsLabelDiff(VormSection* section, VormDataLine* dataLine, LinePosition from, LinePosition to);
    bool rewriteDebugInfoReferences(VormSection* section, const std::vector<DebugRewriteEntryReference>& references);
    // One block around the whole section, when it has none yet.
    void eliminateDwarfSection(const std::string& name);

private:
    void warning(const char* format, const char* argument = nullptr);

    VormAssembler& m_assembler;
    bool m_warn;
};

} // namespace vorp
