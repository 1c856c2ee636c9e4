#include "isa/Encoder.h"

#include <cassert>

namespace vorp {

const EncoderFormat* Encoder::getFormat(unsigned fmtNum) const
{
    assert(fmtNum < numFormats());
    return m_formats[fmtNum];
}

void Encoder::printFormats(FILE* out) const
{
    for (unsigned i = 0; i < numFormats(); ++i) {
        fprintf(out, "        %u) %s - with ", i + 1, m_formats[i]->getSignature().c_str());
        for (unsigned d = 0; d < m_formats[i]->numDescriptors(); ++d)
            m_formats[i]->getDescriptor(d)->print(out);
        fputc('\n', out);
    }
}

} // namespace vorp
