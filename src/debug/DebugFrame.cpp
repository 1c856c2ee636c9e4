#include "debug/DebugFrame.h"

#include "debug/DataWriter.h"
#include "diag/VorpErrorHandler.h"
#include "model/VormAssembler.h"
#include "model/VormLabel.h"
#include "model/VormLine.h"

#include <cassert>

namespace vorp {

namespace {

// Whether a's address is above b's; both are in one section and every format is chosen.
bool labelIsAfter(const VormLabel* a, const VormLabel* b)
{
    const VormLine* aTarget = a->getTargetLine();
    const VormLine* bTarget = b->getTargetLine();
    assert(aTarget && bTarget && aTarget->getSection() == bTarget->getSection());
    const VormAddress& aAddress = aTarget->getAddress();
    const VormAddress& bAddress = bTarget->getAddress();
    assert(aAddress.getVariance() == 0);
    assert(bAddress.getVariance() == 0);
    return aAddress.min > bAddress.min;
}

} // namespace

unsigned DebugFrame::nextCCTopNumber(VormAssembler& assembler)
{
    return assembler.nameCounters().generatedCCTops++;
}

std::string DebugFrame::genCCTopLabel(VormAssembler& assembler, const std::string& name)
{
    return name + ".elim." + std::to_string(nextCCTopNumber(assembler));
}

DebugFrame::~DebugFrame()
{
    for (DebugFrameProc* proc : m_procs)
        delete proc;
}

DebugFrameProc* DebugFrame::addProc()
{
    m_procs.push_back(new DebugFrameProc);
    return m_procs.back();
}

void DebugFrame::encode(VormAssembler& assembler, std::vector<VormSection*>& sections)
{
    if (m_procs.empty())
        return;
    // A procedure that never ended has no range to describe: refuse it where it began.
    bool unclosed = false;
    for (const DebugFrameProc* proc : m_procs) {
        if (!proc->endLabel) {
            assembler.getErrorHandler().vorpError(proc->startLabel->getTargetLine()->getLocation(),
                                                  AssErrorCodes::CFI_NOT_CLOSED,
                                                  "previous .cfi_startproc directive not closed with .cfi_endproc\n");
            unclosed = true;
        }
    }
    if (unclosed)
        return;
    if (m_debugFrameSection)
        encode(assembler, sections, false);
    if (m_ehFrameSection)
        encode(assembler, sections, true);
}

void DebugFrame::encode(VormAssembler& assembler, std::vector<VormSection*>& sections, bool eh)
{
    VormSection* section = eh ? assembler.addSection(".eh_frame", "a", "progbits", 0, "", false)
                              : assembler.addSection(".debug_frame", "", "progbits", 0, "", false);
    DataWriter writer(assembler, section);
    std::multimap<DebugFrameCIE, DebugFrameProc*> cies;
    buildCIEs(eh, cies);
    if (cies.empty())
        return;
    auto equivalent = [](const DebugFrameCIE& a, const DebugFrameCIE& b) { return !(a < b) && !(b < a); };
    for (auto entry = cies.begin(); entry != cies.end();) {
        const DebugFrameCIE& cie = entry->first;
        const std::string cieLabel = cie.encode(writer, eh);
        // The following equivalent keys share the entry of this one, personality included.
        do {
            entry->second->encode(writer, cieLabel, cie, eh);
            ++entry;
        } while (entry != cies.end() && equivalent(entry->first, cie));
    }
    sections.push_back(section);
}

void DebugFrame::buildCIEs(bool eh, std::multimap<DebugFrameCIE, DebugFrameProc*>& cies) const
{
    for (DebugFrameProc* proc : m_procs) {
        DebugFrameCIE key;
        key.returnColumn = proc->returnColumn;
        if (eh) {
            key.personalityEncoding = proc->personalityEncoding;
            key.personality = proc->personality;
            key.lsdaEncoding = proc->lsdaEncoding;
        }
        cies.emplace(key, proc);
    }
}

bool DebugFrameCIE::operator<(const DebugFrameCIE& other) const
{
    if (personalityEncoding != other.personalityEncoding)
        return personalityEncoding < other.personalityEncoding;
    // Different personalities under one encoding count as equivalent: such procedures share the
    // entry of the first one. The linker output depends on it, so keep it.
    if (personality != other.personality)
        return false;
    if (lsdaEncoding != other.lsdaEncoding)
        return lsdaEncoding < other.lsdaEncoding;
    return returnColumn < other.returnColumn;
}

bool DebugFrameCIE::usesLAugmentation(bool) const
{
    return lsdaEncoding != 255;
}

bool DebugFrameCIE::usesPAugmentation(bool) const
{
    return personalityEncoding != 255;
}

bool DebugFrameCIE::usesAugmentation(bool eh) const
{
    return eh && (usesLAugmentation(eh) || usesPAugmentation(eh));
}

unsigned DebugFrameCIE::getAugmentationSize(bool eh) const
{
    assert(usesAugmentation(eh));
    // The personality alone counts for nothing here; readers of our objects expect these sizes.
    return usesLAugmentation(eh) ? 6 : 0;
}

unsigned DebugFrameCIE::getFDEAugmentationSize(bool eh) const
{
    assert(usesAugmentation(eh));
    return usesLAugmentation(eh) ? 4 : 0;
}

std::string DebugFrameCIE::encode(DataWriter& writer, bool eh) const
{
    const std::string name = ".Lcie" + std::to_string(writer.getAssembler().nameCounters().frameCIEs++);
    writer.emitLabel(name + "_begin");
    writer.emitDifference(name + "_end", name + "_after_length");
    writer.emitLabel(name + "_after_length");
    writer.emitU32(eh ? 0 : 0xFFFFFFFF);
    writer.emitU8(eh ? 1 : 3);
    if (usesAugmentation(eh)) {
        writer.emitU8('z');
        if (usesLAugmentation(eh))
            writer.emitU8('L');
        if (usesPAugmentation(eh))
            writer.emitU8('P');
    }
    writer.emitU8(0);
    writer.emitU8(1); // code alignment factor
    writer.emitU8(1); // data alignment factor: offsets are plain bytes
    writer.emitUleb128(returnColumn);
    if (usesAugmentation(eh)) {
        writer.emitUleb128(getAugmentationSize(eh));
        if (usesLAugmentation(eh))
            writer.emitU8(0);
        if (usesPAugmentation(eh)) {
            writer.emitU8(0);
            // An encoding given without a symbol has nothing to point at.
            if (personality)
                writer.emitReference(personality->getName());
            else
                writer.emitU32(0);
        }
    }
    // The frame starts at the stack pointer, register 14.
    writer.emitU8(DW_CFA_def_cfa);
    writer.emitUleb128(14);
    writer.emitUleb128(0);
    writer.emitAlign(4, 0);
    writer.emitLabel(name + "_end");
    return name + "_begin";
}

void DebugFrameProc::encode(DataWriter& writer, const std::string& cieLabel, const DebugFrameCIE& cie,
                            bool eh) const
{
    const std::string name = ".Lfde" + std::to_string(writer.getAssembler().nameCounters().frameFDEs++);
    // The entry goes when the linker drops the code it describes.
    writer.emitCCTop(DebugFrame::genCCTopLabel(writer.getAssembler(), name), startLabel->getName());
    writer.emitDifference(name + "_end", name + "_afterLength");
    writer.emitLabel(name + "_afterLength");
    if (eh)
        writer.emitDifference(name + "_afterLength", cieLabel);
    else
        writer.emitReference(cieLabel);
    writer.emitReference(startLabel->getName());
    writer.emitDifference(endLabel->getName(), startLabel->getName());
    if (cie.usesAugmentation(eh)) {
        writer.emitUleb128(cie.getFDEAugmentationSize(eh));
        if (cie.usesLAugmentation(eh)) {
            if (lsda)
                writer.emitReference(lsda->getName());
            else
                writer.emitU32(0);
        }
    }
    const VormLabel* current = startLabel;
    for (const DebugFrameInstruction& instruction : instructions) {
        if (labelIsAfter(instruction.label, current)) {
            writer.emitU8(DW_CFA_set_loc);
            writer.emitReference(instruction.label->getName());
            current = instruction.label;
        }
        instruction.encode(writer);
    }
    writer.emitAlign(4, 0);
    writer.emitLabel(name + "_end");
    writer.emitCCBottom();
}

int DebugFrameInstruction::getArg(unsigned num) const
{
    assert(num < numArgs);
    return args[num];
}

void DebugFrameInstruction::encode(DataWriter& writer) const
{
    switch (opcode) {
    case DW_CFA_undefined:
    case DW_CFA_same_value:
    case DW_CFA_def_cfa_register:
    case DW_CFA_def_cfa_offset:
        writer.emitU8(static_cast<unsigned char>(opcode));
        writer.emitUleb128(static_cast<unsigned>(getArg(0)));
        break;
    case DW_CFA_register:
    case DW_CFA_def_cfa:
        writer.emitU8(static_cast<unsigned char>(opcode));
        writer.emitUleb128(static_cast<unsigned>(getArg(0)));
        writer.emitUleb128(static_cast<unsigned>(getArg(1)));
        break;
    case DW_CFA_remember_state:
    case DW_CFA_restore_state:
        writer.emitU8(static_cast<unsigned char>(opcode));
        break;
    case DW_CFA_offset: {
        const int reg = getArg(0);
        const int offset = getArg(1);
        if (offset < 0) {
            writer.emitU8(DW_CFA_offset_extended_sf);
            writer.emitUleb128(static_cast<unsigned>(reg));
            writer.emitSleb128(offset);
        } else if (static_cast<unsigned>(reg) > 63) {
            writer.emitU8(DW_CFA_offset_extended);
            writer.emitUleb128(static_cast<unsigned>(reg));
            writer.emitUleb128(static_cast<unsigned>(offset));
        } else {
            writer.emitU8(static_cast<unsigned char>(DW_CFA_offset + static_cast<unsigned>(reg)));
            writer.emitUleb128(static_cast<unsigned>(offset));
        }
        break;
    }
    case DW_CFA_restore: {
        const unsigned reg = static_cast<unsigned>(getArg(0));
        if (reg < 64) {
            writer.emitU8(static_cast<unsigned char>(DW_CFA_restore + reg));
        } else {
            writer.emitU8(DW_CFA_restore_extended);
            writer.emitUleb128(reg);
        }
        break;
    }
    default:
        assert(0 && "Unexpected opcode");
    }
}

} // namespace vorp
