#pragma once

#include "model/VormAddress.h"

namespace vorp {

class OperandDescriptorImm;
class VormLine;

// How format choice sees line addresses while sizes are open. Without one, a line's address is the
// one last set on it. The incremental size iteration hands itself to the choices it asks for: it
// answers from its bookkeeping of the pass, and hears which distances each choice looked at, so that it can tell
// when the same choice could answer differently.
class AddressReader {
public:
    virtual ~AddressReader() = default;
    virtual VormAddress addressOf(const VormLine& line) = 0;
    // A pc-relative operand of `here` was valued from the distance to `there` (plus `addend`), for
    // a format of `bytes` bytes.
    virtual void noteDistance(const VormLine& here, const VormAddress& hereAddress, const VormLine& there,
                              const VormAddress& thereAddress, int addend, const OperandDescriptorImm& desc,
                              unsigned bytes) = 0;
};

} // namespace vorp
