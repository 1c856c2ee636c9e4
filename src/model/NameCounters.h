#pragma once

#include <cstdint>

namespace vorp {

// The numbers in the names a run makes up. Each counts over the whole run, so that the names are
// unique in its object, and they are the same for the same source whatever else the process
// assembles.
struct NameCounters {
    std::uint32_t lines = 0;          // line ids, in the order lines join sections: ".Ldefined.N"
    unsigned eliminationBlocks = 0;   // "vorp.ccN"
    unsigned generatedCCTops = 0;     // "NAME.elim.N" of frame entries, "NAME.line.N" of line rows
    unsigned frameCIEs = 0;           // ".LcieN"
    unsigned frameFDEs = 0;           // ".LfdeN"
    unsigned zebRecords = 0;          // "NAME.zeb.N"
};

} // namespace vorp
