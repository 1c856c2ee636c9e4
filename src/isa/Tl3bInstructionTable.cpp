#include "isa/Tl3bInstructionTable.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace vorp {

namespace {

using Range = OperandDescriptor::Range;

FormatLayout layoutOf(const std::string& name)
{
    static const std::map<std::string, FormatLayout> layouts = {
        {"0r", LAYOUT_0r},     {"1r", LAYOUT_1r},     {"2r", LAYOUT_2r},     {"r2r", LAYOUT_r2r},
        {"rus", LAYOUT_rus},   {"3r", LAYOUT_3r},     {"2rus", LAYOUT_2rus}, {"u6", LAYOUT_u6},
        {"ru6", LAYOUT_ru6},   {"u10", LAYOUT_u10},   {"lu6", LAYOUT_lu6},   {"lru6", LAYOUT_lru6},
        {"lu10", LAYOUT_lu10}, {"l2r", LAYOUT_l2r},   {"lr2r", LAYOUT_lr2r}, {"l3r", LAYOUT_l3r},
        {"l2rus", LAYOUT_l2rus}, {"l4r", LAYOUT_l4r}, {"l5r", LAYOUT_l5r},   {"l6r", LAYOUT_l6r},
    };
    const auto found = layouts.find(name.substr(name.rfind('_') + 1));
    assert(found != layouts.end());
    return found->second;
}

// "[0..11]", "[32,1..8,16]": the ranges between the brackets starting at `text`.
std::vector<Range> parseRanges(const std::string& text, std::size_t& position)
{
    assert(text[position] == '[');
    const std::size_t close = text.find(']', position);
    std::vector<Range> ranges;
    std::stringstream items(text.substr(position + 1, close - position - 1));
    std::string item;
    while (std::getline(items, item, ',')) {
        const std::size_t dots = item.find("..");
        if (dots == std::string::npos)
            ranges.emplace_back(std::atoi(item.c_str()), std::atoi(item.c_str()));
        else
            ranges.emplace_back(std::atoi(item.substr(0, dots).c_str()), std::atoi(item.substr(dots + 2).c_str()));
    }
    position = close + 1;
    return ranges;
}

struct ImmediateSpec {
    std::vector<Range> ranges;
    std::vector<Range> mapsTo;
    int scale = 0;
    bool inverted = false;
    OperandDescriptorImm::Mode mode = OperandDescriptorImm::MODE_ABSOLUTE;
    std::uint32_t relocationType = 0;
};

// Operands as written in the table: "rd ru i[0..63]<<1- pc L8".
void addDescriptors(EncoderFormat& format, const std::string& operands, std::uint32_t& relocationType)
{
    std::stringstream words(operands);
    std::string word;
    std::vector<ImmediateSpec> immediates;
    struct Pending {
        bool isRegister;
        std::vector<Range> ranges;
        bool use;
        bool def;
        std::size_t immediate;
    };
    std::vector<Pending> pending;
    while (words >> word) {
        if (word[0] == 'r') {
            Pending reg{true, {{0, 11}}, false, false, 0};
            std::size_t position = 1;
            for (; position < word.size() && word[position] != '['; ++position) {
                reg.def = reg.def || word[position] == 'd';
                reg.use = reg.use || word[position] == 'u';
            }
            if (position < word.size())
                reg.ranges = parseRanges(word, position);
            pending.push_back(reg);
        } else if (word[0] == 'i') {
            ImmediateSpec spec;
            std::size_t position = 1;
            spec.ranges = parseRanges(word, position);
            if (position < word.size() && word[position] == '>') {
                ++position;
                spec.mapsTo = parseRanges(word, position);
            }
            if (word.compare(position, 2, "<<") == 0) {
                spec.scale = word[position + 2] - '0';
                position += 3;
            }
            spec.inverted = position < word.size() && word[position] == '-';
            immediates.push_back(spec);
            pending.push_back(Pending{false, {}, false, false, immediates.size() - 1});
        } else if (word == "pc") {
            immediates.back().mode = OperandDescriptorImm::MODE_PC_RELATIVE;
        } else if (word == "cp") {
            immediates.back().mode = OperandDescriptorImm::MODE_CP_RELATIVE;
        } else if (word == "dp") {
            immediates.back().mode = OperandDescriptorImm::MODE_DP_RELATIVE;
        } else if (word[0] == 'L') {
            immediates.back().relocationType = static_cast<std::uint32_t>(std::atoi(word.c_str() + 1));
        } else {
            assert(0 && "unknown operand word");
        }
    }
    for (const Pending& item : pending) {
        if (item.isRegister) {
            format.addDescriptor(std::make_unique<OperandDescriptorReg>(item.ranges, item.use, item.def));
            continue;
        }
        const ImmediateSpec& spec = immediates[item.immediate];
        if (spec.relocationType)
            relocationType = spec.relocationType;
        format.addDescriptor(std::make_unique<OperandDescriptorImm>(spec.ranges, spec.mapsTo, spec.scale,
                                                                    spec.inverted, spec.mode,
                                                                    spec.relocationType != 0));
    }
}

void readRegisters(const char* names, bool (&registers)[EncoderFormat::NUM_REGISTERS])
{
    std::stringstream words(names);
    std::string name;
    while (words >> name) {
        const int index = Tl3bInstructionTable::registerIndex(name);
        assert(index >= 0);
        registers[index] = true;
    }
}

// Where the default syntax writes operands in another order than the layout packs them: for each
// operand of the layout, the written operand that goes there.
std::vector<unsigned> defaultPlacement(const std::string& name)
{
    static const std::map<std::string, std::vector<unsigned>> placements = {
        {"CRC8_l4r", {1, 0, 2, 3}},     {"LADD_l5r", {1, 0, 2, 3, 4}}, {"LSUB_l5r", {1, 0, 2, 3, 4}},
        {"LDIVU_l5r", {0, 1, 3, 4, 2}}, {"OUTPW_l2rus", {1, 0, 2}},    {"TINITCP_2r", {1, 0}},
        {"TINITDP_2r", {1, 0}},         {"TINITPC_2r", {1, 0}},        {"TINITSP_2r", {1, 0}},
        {"TINITLR_l2r", {1, 0}},        {"TSETR_3r", {1, 2, 0}},
    };
    const auto found = placements.find(name);
    return found == placements.end() ? std::vector<unsigned>() : found->second;
}

std::vector<std::string> splitWords(const char* text)
{
    std::vector<std::string> words;
    std::stringstream stream(text);
    std::string word;
    while (stream >> word)
        words.push_back(word);
    return words;
}

} // namespace

namespace {

const char* const registerNames[EncoderFormat::NUM_REGISTERS] = {
    "r0", "r1", "r2", "r3", "r4", "r5", "r6", "r7", "r8", "r9", "r10", "r11", "cp",
    "dp", "sp", "lr", "sr", "ssr", "spc", "et", "ed", "sed", "kep", "ksp", "fx",
};

} // namespace

int Tl3bInstructionTable::registerIndex(const std::string& name)
{
    for (int i = 0; i < EncoderFormat::NUM_REGISTERS; ++i) {
        if (name == registerNames[i])
            return i;
    }
    return -1;
}

const char* Tl3bInstructionTable::registerName(int index)
{
    return index >= 0 && index < EncoderFormat::NUM_REGISTERS ? registerNames[index] : nullptr;
}

std::string Tl3bInstructionTable::architecturalSignature(const std::string& signature)
{
    std::string result;
    for (std::size_t i = 0; i + 1 < signature.size(); ++i) {
        if (signature[i] != '%')
            continue;
        if (!result.empty())
            result += ',';
        result += signature.substr(i, 2);
        ++i;
    }
    return result;
}

const EncoderFormat* Tl3bInstructionTable::makeFormat(const Tl3bFormatRow& row, const std::string& signature,
                                                      bool defaultSyntax)
{
    std::vector<unsigned> placement = defaultSyntax ? defaultPlacement(row.name) : std::vector<unsigned>();
    auto format = std::make_unique<EncoderFormat>(row.name, signature, layoutOf(row.name), row.base, 0, placement);
    std::uint32_t relocationType = 0;
    addDescriptors(*format, row.operands, relocationType);
    format->setRelocationType(relocationType);
    assert(format->getNumBytes() == row.numBytes);

    const std::string flags = row.flags;
    auto has = [&flags](char flag) { return flags.find(flag) != std::string::npos; };
    format->setFlags(has('B'), has('L'), has('S'), has('X'), has('K'));
    bool uses[EncoderFormat::NUM_REGISTERS] = {};
    bool defs[EncoderFormat::NUM_REGISTERS] = {};
    readRegisters(row.reads, uses);
    readRegisters(row.writes, defs);
    format->setImplicitRegisters(uses, defs);
    m_formats.push_back(std::move(format));
    return m_formats.back().get();
}

const Tl3bInstructionSet& Tl3bInstructionSet::get()
{
    static const Tl3bInstructionSet instructionSet;
    return instructionSet;
}

void Tl3bInstructionTable::build(EncoderMap& defaultEncoders, EncoderMap& architecturalEncoders)
{
    std::map<std::string, const Tl3bFormatRow*> rows;
    std::map<std::string, const EncoderFormat*> defaultFormats;
    std::map<std::string, const EncoderFormat*> architecturalFormats;
    for (std::size_t i = 0; i < tl3bFormatRowCount; ++i) {
        const Tl3bFormatRow& row = tl3bFormatRows[i];
        rows[row.name] = &row;
        defaultFormats[row.name] = makeFormat(row, row.signature, true);
        architecturalFormats[row.name] = makeFormat(row, architecturalSignature(row.signature), false);
    }

    // The upper-case name of each format: with an "I" when an immediate stands for a register.
    std::map<std::string, std::string> upperNames;
    for (std::size_t i = 0; i < tl3bFormatRowCount; ++i)
        upperNames[tl3bFormatRows[i].name] = tl3bFormatRows[i].name;
    for (std::size_t i = 0; i < tl3bImmediateNameCount; ++i)
        upperNames[tl3bImmediateNames[i].formats] = tl3bImmediateNames[i].name;

    auto single = [](const EncoderFormat* format) {
        auto encoder = std::make_unique<Encoder>();
        encoder->addFormat(format);
        return encoder;
    };

    for (std::size_t i = 0; i < tl3bMnemonicRowCount; ++i) {
        const Tl3bMnemonicRow& mnemonic = tl3bMnemonicRows[i];
        auto encoder = std::make_unique<Encoder>();
        for (const std::string& formatName : splitWords(mnemonic.formats)) {
            // `mov` and `nop` write fewer operands of ADD_2rus; the others are taken as 0.
            if (std::strcmp(mnemonic.name, "mov") == 0)
                encoder->addFormat(makeFormat(*rows[formatName], "%r,%r", true));
            else if (std::strcmp(mnemonic.name, "nop") == 0)
                encoder->addFormat(makeFormat(*rows[formatName], "", true));
            else
                encoder->addFormat(defaultFormats[formatName]);
        }
        defaultEncoders[mnemonic.name] = std::move(encoder);
    }

    // Every format under its own name in both tables; in the architectural one also under the part
    // before the underscore, gathering all formats of that instruction, short forms first.
    std::map<std::string, std::vector<const EncoderFormat*>> instructions;
    for (const auto& [formatName, upperName] : upperNames) {
        defaultEncoders[upperName] = single(defaultFormats[formatName]);
        architecturalEncoders[upperName] = single(architecturalFormats[formatName]);
        instructions[upperName.substr(0, upperName.find('_'))].push_back(architecturalFormats[formatName]);
    }
    for (auto& [instruction, formats] : instructions) {
        std::stable_sort(formats.begin(), formats.end(), [](const EncoderFormat* a, const EncoderFormat* b) {
            return a->getNumBytes() < b->getNumBytes();
        });
        auto encoder = std::make_unique<Encoder>();
        for (const EncoderFormat* format : formats)
            encoder->addFormat(format);
        architecturalEncoders[instruction] = std::move(encoder);
    }
}

} // namespace vorp
