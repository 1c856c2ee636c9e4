#pragma once

#include "isa/EncodingFailInfo.h"
#include "model/VormTokenLine.h"

#include <string>
#include <vector>

namespace vorp {

class Encoder;
class EncoderFormat;

// An instruction: its tokens, mnemonic first, and the formats still in play, in table order and so
// in ascending size. Formats are only ever removed; the line is done when one size is left.
class VormLabel;

class VormCodeLine : public VormTokenLine {
public:
    // Whether a jump-table entry needs its trampoline.
    enum TrampolineUse { TRAMPOLINE_USED = 0, TRAMPOLINE_UNDECIDED = 1, TRAMPOLINE_UNUSED = 2 };

    VormCodeLine(std::unique_ptr<TokenLine> tokens, const Encoder* encoder, bool schedule);

    void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    bool chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                       EncodingFailInfo& failInfo, bool final) override;
    bool isDone() const override;
    // The sizes of the first and of the last format left; 0 when none is.
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    void printListing(FILE*) override {}

    // Removes every format whose size is not `numBytes`.
    void forceSize(std::uint32_t numBytes);
    const std::vector<const EncoderFormat*>& getFormats() const { return m_formats; }

    // Registers read and written, as sets: formats that were tried and rejected may have added to
    // them, so they can hold more than the final format needs.
    const std::vector<int>& getRegUse() const { return m_regUse; }
    const std::vector<int>& getRegDef() const { return m_regDef; }
    void addUseReg(int reg);
    void addDefReg(int reg);

    bool isBranch() const;
    bool isLoad() const;
    bool isStore() const;
    bool isBarrier() const;
    bool isLink() const;

    const char* getInstructionName() const { return getToken(0).text; }

    // Makes the line an entry of a compact jump table: 2 bytes only; when no short form reaches
    // the target, the entry branches with `trampolineFormat` to the trampoline label instead, whose
    // interned name is `trampolineLabel`.
    void setJumpTableEntry(const char* trampolineLabel, const EncoderFormat* trampolineFormat);
    bool isJumpTableEntry() const { return m_isJumpTableEntry; }
    TrampolineUse getJumpTableState() const { return m_jumpTableState; }
    const char* getJumpTableEntryTarget() const { return getToken(1).text; }
    void JTmodifyBranchLabel(VormLabels& labels);
    void JTsetAsmFormat();

    // Removes formats that can't encode the line at the present addresses; false when none is left.
    virtual bool chooseEncoderImpl(bool force, VormLabels& labels, AddressReader* addresses, EncodingFailInfo& failInfo,
                                   bool final);
    void replaceToken(unsigned tokenNum, const Token& token);
    // The label that an operand token named when it was last looked up, or null. Format choice asks
    // for the same label in every pass, and the table lookup is its costliest part.
    VormLabel* getCachedLabel(unsigned tokenNum, const char* name) const
    {
        return tokenNum == m_cachedLabelToken && name == m_cachedLabelName ? m_cachedLabel : nullptr;
    }
    void setCachedLabel(unsigned tokenNum, const char* name, VormLabel* label)
    {
        m_cachedLabelToken = tokenNum;
        m_cachedLabelName = name;
        m_cachedLabel = label;
    }
    void getFailInfo(EncodingFailInfo& failInfo, bool outOfRange, const EncodingFailInfo::Ranges* ranges,
                     int value) const;

protected:
    // The sizes of the first and last format left, kept with the list.
    void updateSizes();
    // Whether a repeated look at the same addresses may be skipped; lines whose answer depends on
    // other lines' state say no.
    virtual bool canMemoise() const { return !m_isJumpTableEntry; }

    // The formats still in play, shortest first; a vector, as there is one for every code line.
    std::vector<const EncoderFormat*> m_formats;
    std::uint32_t m_minBytes = 0;
    std::uint32_t m_maxBytes = 0;
    bool m_isJumpTableEntry = false;
    TrampolineUse m_jumpTableState = TRAMPOLINE_UNDECIDED;
    const char* m_jumpTableTarget = nullptr; // interned
    const EncoderFormat* m_jumpTableFormat = nullptr;
    std::vector<int> m_regUse;
    std::vector<int> m_regDef;
    // What the last look at the formats saw when it removed none. The answer depends on the line's
    // address only through the distances to the one label its operands name, so the same distances
    // and formats give the same answer again: format choice passes such a line by, which keeps the
    // many passes over a large section cheap.
    struct Distances {
        std::uint32_t highFromLow = 0;
        std::uint32_t lowFromLow = 0;
        std::uint32_t lowFromHigh = 0;
        bool operator==(const Distances&) const = default;
    };
    struct Memo {
        bool valid = false;
        bool forced = false;
        std::size_t formats = 0;
        Distances distances;
    };
    // The distances from this line to the label its operands name (all 0 with none); false when
    // they name more than one, or one whose address no line gives.
    bool memoDistances(Distances& distances);

    Memo m_memo;
    int m_operandNames = -1;
    unsigned m_cachedLabelToken = 0;
    const char* m_cachedLabelName = nullptr;
    VormLabel* m_cachedLabel = nullptr;
};

} // namespace vorp
