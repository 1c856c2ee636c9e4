#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorp {

// What one run did, counted by the passes that do it; the driver shows it on request.
struct RunStatistics {
    struct SectionPasses {
        std::string section;
        unsigned passes = 0;
    };

    // Walks of the format iteration, per section, in the order the sections were settled.
    std::vector<SectionPasses> formatPasses;
    // Calls of a grouping's chooseEncoder within the format iteration.
    std::uint64_t groupingsEvaluated = 0;
    // Source lines and tokens the parser was handed.
    std::uint64_t lines = 0;
    std::uint64_t tokens = 0;
    // Size of the object written; 0 when none was.
    std::uint64_t objectBytes = 0;
};

} // namespace vorp
