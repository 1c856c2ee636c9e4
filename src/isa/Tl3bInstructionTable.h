#pragma once

#include "isa/Encoder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vorp {

struct Tl3bFormatRow {
    const char* name;      // the format: instruction and layout
    std::uint32_t base;    // the encoding with every operand 0; two halfwords for 4 bytes
    int numBytes;
    const char* signature; // in the default syntax
    const char* operands;  // the descriptors, in signature order
    const char* flags;
    const char* reads;     // implicit registers
    const char* writes;
};

struct Tl3bMnemonicRow {
    const char* name;
    const char* formats; // separated by blanks, in selection order
};

extern const Tl3bFormatRow tl3bFormatRows[];
extern const std::size_t tl3bFormatRowCount;
extern const Tl3bMnemonicRow tl3bMnemonicRows[];
extern const std::size_t tl3bMnemonicRowCount;
extern const Tl3bMnemonicRow tl3bImmediateNames[];
extern const std::size_t tl3bImmediateNameCount;

// By name; looked up by any text without making a string of it.
using EncoderMap = std::map<std::string, std::unique_ptr<Encoder>, std::less<>>;

// Builds the encoders of both syntaxes from the table. The formats are kept here and shared by
// the encoders.
class Tl3bInstructionTable {
public:
    void build(EncoderMap& defaultEncoders, EncoderMap& architecturalEncoders);

    // The register index of an implicit register name (r0..r11, cp, dp, sp, lr, sr, ssr, spc, et,
    // ed, sed, kep, ksp, fx), or -1.
    static int registerIndex(const std::string& name);
    // The name of a register index, or null.
    static const char* registerName(int index);
    // The signature in the architectural syntax: only the operands, joined by commas.
    static std::string architecturalSignature(const std::string& signature);

private:
    const EncoderFormat* makeFormat(const Tl3bFormatRow& row, const std::string& signature, bool defaultSyntax);

    std::vector<std::unique_ptr<EncoderFormat>> m_formats;
};

// The TL3B instruction set, built once for the process and never changed after: every run's
// lines point into its encoders.
class Tl3bInstructionSet {
public:
    static const Tl3bInstructionSet& get();

    const EncoderMap& defaultEncoders() const { return m_defaultEncoders; }
    const EncoderMap& architecturalEncoders() const { return m_architecturalEncoders; }

private:
    Tl3bInstructionSet() { m_table.build(m_defaultEncoders, m_architecturalEncoders); }

    Tl3bInstructionTable m_table;
    EncoderMap m_defaultEncoders;
    EncoderMap m_architecturalEncoders;
};

} // namespace vorp
