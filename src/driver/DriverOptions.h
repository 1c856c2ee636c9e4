#pragma once

#include "vorp/AssemblerOptions.h"

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
    bool debugScheduling = false;

    // The assembler's share of it, for a run started in `workingDir`.
    AssemblerOptions assemblerOptions(std::string workingDir) const
    {
        AssemblerOptions options;
        options.sourcePath = inputFiles.empty() ? "-" : inputFiles.front();
        options.workingDir = std::move(workingDir);
        options.outputFile = outputName;
        options.listing = listing;
        options.schedule = schedule;
        options.showWarnings = showWarnings;
        options.fatalWarnings = fatalWarnings;
        options.verbose = verbose;
        options.binaryDump = binaryRequested;
        options.binaryDumpFile = binaryName;
        options.debug = debugInfo;
        options.rewriteDebug = rewriteDebug;
        options.warnRewriteDebug = warnRewriteDebug;
        options.maxEncodingPasses = maxEncodingPasses;
        options.debugScheduling = debugScheduling;
        return options;
    }
};

} // namespace vorp
