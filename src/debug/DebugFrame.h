#pragma once

#include <map>
#include <string>
#include <vector>

namespace vorp {

class DataWriter;
class VormAssembler;
class VormLabel;
class VormSection;

// Call frame instructions, by their DWARF numbers.
enum DwCfa : unsigned {
    DW_CFA_set_loc = 1,
    DW_CFA_offset_extended = 5,
    DW_CFA_restore_extended = 6,
    DW_CFA_undefined = 7,
    DW_CFA_same_value = 8,
    DW_CFA_register = 9,
    DW_CFA_remember_state = 10,
    DW_CFA_restore_state = 11,
    DW_CFA_def_cfa = 12,
    DW_CFA_def_cfa_register = 13,
    DW_CFA_def_cfa_offset = 14,
    DW_CFA_offset_extended_sf = 17,
    DW_CFA_offset = 128,
    DW_CFA_restore = 192,
};

// One frame directive inside a procedure, at a label of its own.
struct DebugFrameInstruction {
    unsigned opcode = 0;
    int args[2] = {0, 0};
    unsigned numArgs = 0;
    VormLabel* label = nullptr;

    int getArg(unsigned num) const;
    void encode(DataWriter& writer) const;
};

// What the frame directives say about one procedure, from .cfi_startproc to .cfi_endproc.
struct DebugFrameProc {
    VormLabel* startLabel = nullptr;
    VormLabel* endLabel = nullptr;
    bool simple = false; // stored, never read
    unsigned personalityEncoding = 255;
    VormLabel* personality = nullptr;
    unsigned lsdaEncoding = 255;
    VormLabel* lsda = nullptr;
    unsigned returnColumn = 15;
    std::vector<DebugFrameInstruction> instructions;

    void encode(DataWriter& writer, const std::string& cieLabel, const struct DebugFrameCIE& cie, bool eh) const;
};

// The key by which procedures share a common information entry.
struct DebugFrameCIE {
    unsigned personalityEncoding = 255;
    VormLabel* personality = nullptr;
    unsigned lsdaEncoding = 255;
    unsigned returnColumn = 15;

    bool operator<(const DebugFrameCIE& other) const;
    bool usesLAugmentation(bool eh) const;
    bool usesPAugmentation(bool eh) const;
    bool usesAugmentation(bool eh) const;
    unsigned getAugmentationSize(bool eh) const;
    unsigned getFDEAugmentationSize(bool eh) const;
    // Writes the entry; returns the name of its begin label.
    std::string encode(DataWriter& writer, bool eh) const;
};

// The call frames of the whole input, written as ".eh_frame" and/or ".debug_frame" once all
// instruction formats are chosen.
class DebugFrame {
public:
    DebugFrame() = default;
    DebugFrame(const DebugFrame&) = delete;
    DebugFrame& operator=(const DebugFrame&) = delete;
    ~DebugFrame();

    DebugFrameProc* addProc();
    void validate(VormAssembler&) {}
    // Writes the sections asked for and appends them to `sections`.
    void encode(VormAssembler& assembler, std::vector<VormSection*>& sections);
    void encode(VormAssembler& assembler, std::vector<VormSection*>& sections, bool eh);
    void buildCIEs(bool eh, std::multimap<DebugFrameCIE, DebugFrameProc*>& cies) const;

    void setSections(bool debugFrame, bool ehFrame)
    {
        m_debugFrameSection = debugFrame;
        m_ehFrameSection = ehFrame;
    }
    const std::vector<DebugFrameProc*>& getProcs() const { return m_procs; }

    // The next number of the run-wide counter that names the generated elimination blocks of the
    // frame sections and of the line table.
    static unsigned nextCCTopNumber(VormAssembler& assembler);
    // `name` + ".elim." + the next number.
    static std::string genCCTopLabel(VormAssembler& assembler, const std::string& name);

private:
    bool m_debugFrameSection = false;
    bool m_ehFrameSection = true;
    std::vector<DebugFrameProc*> m_procs;
};

} // namespace vorp
