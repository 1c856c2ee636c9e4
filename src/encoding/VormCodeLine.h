#pragma once

#include "encoding/EncodingFailInfo.h"
#include "model/VormTokenLine.h"

#include <list>
#include <vector>

namespace vorp {

class Encoder;
class EncoderFormat;

// An instruction: its tokens, mnemonic first, and the formats still in play, in table order and so
// in ascending size. Formats are only ever removed; the line is done when one size is left.
class VormCodeLine : public VormTokenLine {
public:
    VormCodeLine(std::unique_ptr<TokenLine> tokens, const Encoder* encoder, bool schedule);

    void encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler,
                VorpErrorHandler& errorHandler) override;
    bool chooseEncoder(bool force, VormLabels& labels, bool& changed, EncodingFailInfo& failInfo,
                       bool final) override;
    bool isDone() const override;
    // The sizes of the first and of the last format left; 0 when none is.
    void getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const override;
    void printListing(FILE*) override {}

    // Removes every format whose size is not `numBytes`.
    void forceSize(std::uint32_t numBytes);
    const std::list<const EncoderFormat*>& getFormats() const { return m_formats; }

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
    void replaceToken(unsigned tokenNum, const Token& token);
    void getFailInfo(EncodingFailInfo& failInfo, bool outOfRange, const EncodingFailInfo::Ranges* ranges,
                     int value) const;

protected:
    virtual bool chooseEncoderImpl(bool force, VormLabels& labels, EncodingFailInfo& failInfo, bool final);

private:
    // The sizes of the first and last format left, kept with the list: the iteration asks for
    // them on every line of every pass.
    void updateSizes();

    std::list<const EncoderFormat*> m_formats;
    std::uint32_t m_minBytes = 0;
    std::uint32_t m_maxBytes = 0;
    std::vector<int> m_regUse;
    std::vector<int> m_regDef;
};

} // namespace vorp
