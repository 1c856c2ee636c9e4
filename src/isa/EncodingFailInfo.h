#pragma once

#include "diag/Location.h"

#include <string>
#include <utility>
#include <vector>

namespace vorp {

// Why no format of an instruction could encode it: filled by the line, reported by the assembler.
struct EncodingFailInfo {
    using Ranges = std::vector<std::pair<int, int>>;

    bool m_outOfRange = false;
    std::string m_instruction;
    LineLocation m_location{"", 0};
    int m_value = 0;
    Ranges m_ranges;
};

} // namespace vorp
