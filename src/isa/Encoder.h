#pragma once

#include "isa/EncoderFormat.h"

#include <cstdio>
#include <memory>
#include <vector>

namespace vorp {

// A mnemonic: its formats in selection order, every 2-byte format before every 4-byte one.
class Encoder {
public:
    Encoder() = default;
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;
    virtual ~Encoder() = default;

    unsigned numFormats() const { return static_cast<unsigned>(m_formats.size()); }
    const EncoderFormat* getFormat(unsigned fmtNum) const;
    // Formats are shared between the encoders of both syntaxes; the table owns them.
    void addFormat(const EncoderFormat* format) { m_formats.push_back(format); }
    // "        1) <signature> - with <descriptors>" for each format.
    void printFormats(FILE* out) const;

private:
    std::vector<const EncoderFormat*> m_formats;
};

} // namespace vorp
