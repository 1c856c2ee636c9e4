#include "encoding/VormCodeLine.h"

#include "encoding/VormOperImm.h"
#include "isa/Encoder.h"
#include "isa/EncoderFormat.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormAssembler.h"
#include "model/VormLabel.h"
#include "model/VormSection.h"

#include <algorithm>
#include <cassert>

namespace vorp {

VormCodeLine::VormCodeLine(std::unique_ptr<TokenLine> tokens, const Encoder* encoder, bool schedule)
    : VormTokenLine(CODE_LINE, schedule, std::move(tokens))
{
    m_formats.reserve(encoder->numFormats());
    for (unsigned i = 0; i < encoder->numFormats(); ++i)
        m_formats.push_back(encoder->getFormat(i));
    updateSizes();
}

void VormCodeLine::updateSizes()
{
    m_minBytes = m_formats.empty() ? 0 : static_cast<std::uint32_t>(m_formats.front()->getNumBytes());
    m_maxBytes = m_formats.empty() ? 0 : static_cast<std::uint32_t>(m_formats.back()->getNumBytes());
}

void VormCodeLine::getByteRange(std::uint32_t& minBytes, std::uint32_t& maxBytes) const
{
    minBytes = m_minBytes;
    maxBytes = m_maxBytes;
}

bool VormCodeLine::isDone() const
{
    return m_minBytes == m_maxBytes;
}

bool VormCodeLine::chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                                 EncodingFailInfo& failInfo, bool final)
{
    Distances distances;
    // The memo compares the lines' own addresses: while a reader answers for them it has no say.
    const bool memo = !final && !addresses;
    if (memo && m_memo.valid && (!force || m_memo.forced) && m_formats.size() == m_memo.formats &&
        memoDistances(distances) && distances == m_memo.distances) {
        changed = false;
        return true;
    }
    std::uint32_t minBefore = 0, maxBefore = 0, minAfter = 0, maxAfter = 0;
    getByteRange(minBefore, maxBefore);
    const std::size_t formatsBefore = m_formats.size();
    const bool result = chooseEncoderImpl(force, labels, addresses, failInfo, final);
    updateSizes();
    getByteRange(minAfter, maxAfter);
    changed = minBefore != minAfter || maxBefore != maxAfter;
    m_memo.valid = false;
    if (memo && result && m_formats.size() == formatsBefore && canMemoise() && memoDistances(distances))
        m_memo = Memo{true, force, formatsBefore, distances};
    return result;
}

bool VormCodeLine::memoDistances(Distances& distances)
{
    if (m_operandNames < 0) {
        m_operandNames = 0;
        for (unsigned i = 1; i < numTokens(); ++i) {
            const Token& token = getToken(i);
            if (token.symbol == S_NAME && !VorpTokeniser::isRegister(token))
                ++m_operandNames;
            // With an addend the target range can wrap around, which distances don't show.
            if (token.symbol == S_PLUS || token.symbol == S_MINUS)
                m_operandNames = 2;
        }
    }
    if (m_operandNames == 0) {
        distances = Distances{};
        return true;
    }
    if (m_operandNames > 1 || !m_cachedLabel)
        return false;
    const VormLine* line = m_cachedLabel->getLabelFollowAliases()->getTargetLine();
    if (!line)
        return false;
    // Only a label in this section has a value here, and then only these differences count.
    if (line->getSection() != getSection()) {
        distances = Distances{};
        return true;
    }
    const VormAddress& here = getAddress();
    const VormAddress& there = line->getAddress();
    distances = Distances{there.max - here.min, there.min - here.min, there.min - here.max};
    return true;
}

bool VormCodeLine::chooseEncoderImpl(bool force, VormLabels& labels, AddressReader* addresses,
                                     EncodingFailInfo& failInfo, bool final)
{
    // The final choice values operands at the lines' own addresses.
    VormOperImm immediates(labels, final ? nullptr : addresses);
    EncodingFailInfo::Ranges ranges;
    bool sawOutOfRange = false;
    int value = 0;
    for (std::size_t position = 0; position < m_formats.size();) {
        const EncoderFormat* format = m_formats[position];
        bool removed = false;
        auto remove = [&] {
            m_formats.erase(m_formats.begin() + static_cast<std::ptrdiff_t>(position));
            removed = true;
        };
        const int lastSize = m_formats.back()->getNumBytes();
        const EncodeResult result =
            format->canEncode(this, immediates, format->getNumBytes() == lastSize, ranges, value);
        bool accepted = false;
        switch (result) {
        case ENCODE_DEFINITE:
            accepted = true;
            break;
        case ENCODE_CURRENT:
            accepted = final;
            break;
        case ENCODE_POSSIBLE:
            // A forced pass breaks stalemates: short forms that don't fit now go.
            if (force && format->getNumBytes() != lastSize)
                remove();
            break;
        case ENCODE_OUT_OF_RANGE:
            sawOutOfRange = true;
            remove();
            break;
        case ENCODE_NO:
            remove();
            break;
        default:
            assert(0 && "Unexpected encoding result");
        }
        if (accepted && format->getNumBytes() == m_formats.front()->getNumBytes()) {
            m_formats.assign(1, format);
            if (m_isJumpTableEntry)
                m_jumpTableState = TRAMPOLINE_UNUSED;
            break;
        }
        if (!removed)
            ++position;
    }
    updateSizes();
    if (!m_formats.empty())
        return true;
    if (m_isJumpTableEntry) {
        // No short branch reaches the target: branch to the trampoline behind the table.
        JTmodifyBranchLabel(labels);
        JTsetAsmFormat();
        m_jumpTableState = TRAMPOLINE_USED;
        return !m_formats.empty();
    }
    getFailInfo(failInfo, sawOutOfRange, sawOutOfRange ? &ranges : nullptr, value);
    return false;
}

void VormCodeLine::setJumpTableEntry(const char* trampolineLabel, const EncoderFormat* trampolineFormat)
{
    m_isJumpTableEntry = true;
    m_jumpTableTarget = trampolineLabel;
    m_jumpTableFormat = trampolineFormat;
    m_jumpTableState = TRAMPOLINE_UNDECIDED;
    forceSize(2);
}

void VormCodeLine::JTmodifyBranchLabel(VormLabels&)
{
    const Token& mnemonic = getToken(0);
    Token target;
    target.symbol = S_NAME;
    target.text = m_jumpTableTarget;
    target.line = mnemonic.line;
    target.file = mnemonic.file;
    replaceToken(1, target);
}

void VormCodeLine::JTsetAsmFormat()
{
    assert(m_jumpTableFormat);
    m_formats.assign(1, m_jumpTableFormat);
    updateSizes();
}

void VormCodeLine::forceSize(std::uint32_t numBytes)
{
    std::erase_if(m_formats, [numBytes](const EncoderFormat* format) {
        return static_cast<std::uint32_t>(format->getNumBytes()) != numBytes;
    });
    updateSizes();
}

void VormCodeLine::addUseReg(int reg)
{
    if (std::find(m_regUse.begin(), m_regUse.end(), reg) == m_regUse.end())
        m_regUse.push_back(reg);
}

void VormCodeLine::addDefReg(int reg)
{
    if (std::find(m_regDef.begin(), m_regDef.end(), reg) == m_regDef.end())
        m_regDef.push_back(reg);
}

bool VormCodeLine::isBranch() const
{
    return !m_formats.empty() && m_formats.front()->isBranch();
}

bool VormCodeLine::isLoad() const
{
    return !m_formats.empty() && m_formats.front()->isLoad();
}

bool VormCodeLine::isStore() const
{
    return !m_formats.empty() && m_formats.front()->isStore();
}

bool VormCodeLine::isBarrier() const
{
    return !m_formats.empty() && m_formats.front()->isBarrier();
}

bool VormCodeLine::isLink() const
{
    return !m_formats.empty() && m_formats.front()->isLink();
}

void VormCodeLine::replaceToken(unsigned tokenNum, const Token& token)
{
    setToken(tokenNum, token);
}

void VormCodeLine::getFailInfo(EncodingFailInfo& failInfo, bool outOfRange, const EncodingFailInfo::Ranges* ranges,
                               int value) const
{
    failInfo.m_outOfRange = outOfRange;
    failInfo.m_instruction = getInstructionName();
    failInfo.m_location = getLocation();
    failInfo.m_value = value;
    if (ranges)
        failInfo.m_ranges = *ranges;
}

void VormCodeLine::encode(std::uint8_t* buffer, Relocations& relocations, VormAssembler& assembler, VorpErrorHandler&)
{
    assert(isDone());
    const EncoderFormat* format = m_formats.front();
    VormOperImm immediates(assembler.getLabels(), nullptr);
    std::uint32_t value = format->getOpcode(this, immediates, &relocations);
    const int size = format->getNumBytes();
    if (size == 4)
        value = (value << 16) | (value >> 16); // the prefix halfword comes first in memory
    for (int i = 0; i < size; ++i)
        buffer[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

} // namespace vorp
