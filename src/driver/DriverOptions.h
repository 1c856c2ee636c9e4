#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorp {

// Everything the command line decides for one run.
struct DriverOptions {
    std::vector<std::string> inputFiles;
    std::string outputName;
    std::string binaryName;
    bool binaryRequested = false;
    bool listing = false;
    bool verbose = false;
    bool debugInfo = false;
    bool schedule = false;
    bool showWarnings = true;
    bool fatalWarnings = false;
    bool rewriteDebug = true;
    bool warnRewriteDebug = false;
    std::uint32_t maxEncodingPasses = 4000;
};

} // namespace vorp
