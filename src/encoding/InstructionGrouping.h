#pragma once

#include "model/VormAddress.h"

#include <memory>
#include <vector>

namespace vorp {

class AddressReader;
struct EncodingFailInfo;
class VormLabels;

// What the format iteration walks: one line, or with scheduling a whole block of instructions.
class InstructionGrouping {
public:
    virtual ~InstructionGrouping() = default;
    virtual void setAddress(const VormAddress& address) = 0;
    virtual VormAddress getAddress() const = 0;
    virtual VormAddress getNextAddress() const = 0;
    virtual bool isDone() const = 0;
    // `addresses`: where lines are while sizes are open; null for the addresses set on them.
    virtual bool chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                               EncodingFailInfo& failInfo) = 0;
    // Makes the grouping's final order the section's.
    virtual void commit() = 0;
};

using InstructionGroupings = std::vector<std::unique_ptr<InstructionGrouping>>;

} // namespace vorp
