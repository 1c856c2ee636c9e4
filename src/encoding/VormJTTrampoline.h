#pragma once

#include "encoding/VormCodeLine.h"

#include <vector>

namespace vorp {

// The long branch behind a compact jump table for the entries that can't reach their target. It
// takes no bytes unless one of its entries needs it.
class VormJTTrampoline : public VormCodeLine {
public:
    VormJTTrampoline(std::unique_ptr<TokenLine> tokens, const Encoder* encoder, bool schedule);

    void addTrampolineUse(VormCodeLine* entry);
    TrampolineUse getUse() const { return m_use; }
    const std::vector<VormCodeLine*>& getEntries() const { return m_entries; }

    // Used as soon as one entry needs it, unused when all reach their targets; undecided entries
    // are asked again.
    TrampolineUse calculateTrampolineUse(VormLabels& labels, AddressReader* addresses);

    void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    // While undecided the trampoline may vanish: its minimum is 0.
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    bool isDone() const override;
    // A stalemate broken by force keeps the trampoline.
    bool chooseEncoderImpl(bool force, VormLabels& labels, AddressReader* addresses, EncodingFailInfo& failInfo,
                           bool final) override;

protected:
    // The answer follows the entries' state.
    bool canMemoise() const override { return false; }

private:
    TrampolineUse m_use = TRAMPOLINE_UNUSED;
    std::vector<VormCodeLine*> m_entries;
};

} // namespace vorp
