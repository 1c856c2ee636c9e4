#pragma once

#include "encoding/InstructionGrouping.h"

namespace vorp {

class VormLine;

// The grouping of one line: everything is forwarded.
class InstructionGroupingSingle : public InstructionGrouping {
public:
    explicit InstructionGroupingSingle(VormLine* line) : m_line(line) {}

    void setAddress(const VormAddress& address) override;
    VormAddress getAddress() const override;
    VormAddress getNextAddress() const override;
    bool isDone() const override;
    bool chooseEncoder(bool force, VormLabels& labels, AddressReader* addresses, bool& changed,
                       EncodingFailInfo& failInfo) override;
    void commit() override {}
    VormLine* getLine() const { return m_line; }

private:
    VormLine* m_line;
};

} // namespace vorp
