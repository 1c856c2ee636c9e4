#pragma once

#include "debug/DebugData.h"
#include "encoding/VormDirectives.h"
#include "metadata/NoteMemo.h"
#include "metadata/ZebInfo.h"
#include "vorp/AssemblerOptions.h"
#include "model/VormAssembler.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vorp {

class VorpErrorHandler;
struct TelkUtils;

// One run of the assembler: the assembly the source builds (sections, lines, labels), with
// everything the run gathers beside it (debug and timing data, notes, the directive objects), and
// the steps that turn it into an object, in their fixed order.
class AssemblerRun {
public:
    AssemblerRun(AssemblerOptions options, TelkUtils* utils, VorpErrorHandler* errorHandler);
    AssemblerRun(const AssemblerRun&) = delete;
    AssemblerRun& operator=(const AssemblerRun&) = delete;

    VormAssembler& getAssembler() { return m_assembler; }
    const AssemblerOptions& getOptions() const { return m_assembler.getOptions(); }
    DebugLine& getDebugLine() { return m_debug.getDebugLine(); }
    DebugFrame& getDebugFrame() { return m_debug.getDebugFrame(); }
    DebugInfo& getDebugInfo() { return m_debug.getDebugInfo(); }
    ZebInfo& getZebInfo() { return m_zebInfo; }
    std::vector<NoteMemo>& getNotes() { return m_notes; }
    VormDirectives& getDirectives() { return m_directives; }

    // Runs the steps that precede object emission, each only while no error has been reported;
    // true when none has.
    bool runPasses();
    // Runs the steps and makes the object (into `object`, or through the options' object writer)
    // and the listing, when asked for; 0 on success, 1 after any error, when both stay empty.
    // `fileSymbolName` names the file symbol when no .file did.
    int postParse(const char* fileSymbolName, std::vector<std::uint8_t>& object, std::string& listing);

    // Makes sure the object names its architecture and core revision.
    void addDefaultNotes() { vorp::addDefaultNotes(m_notes, getOptions().arch); }

private:
    void checkForUnterminatedCCTop();
    // Prepares a compiler's ".debug_info" for elimination by the linker.
    void rewriteDwarf();
    void expandDirectives();
    void chooseInstructionFormats();
    // The call frame sections, written once every address is exact.
    void expandLateDirectives();

    VormAssembler m_assembler;
    VorpErrorHandler* m_errorHandler;
    DebugData m_debug;
    ZebInfo m_zebInfo;
    std::vector<NoteMemo> m_notes;
    VormDirectives m_directives;
};

} // namespace vorp
