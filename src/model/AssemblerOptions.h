#pragma once

#include <cstdint>
#include <string>

namespace vorp {

class SizeIterationObserver;

// The settings of one assembler run, by name: what the command line gives, or a caller of the
// assembler as a library, or a test.
struct AssemblerOptions {
    enum Arch { TL3B = 0 };

    // The first input file as given: the compilation unit's name, and the file symbol when no
    // .file gives one.
    std::string sourcePath{};
    // The directory the run started in, for the compilation unit; empty when unknown.
    std::string workingDir{};
    // Where the object goes; its name plus ".txt" is the listing.
    std::string outputFile{};
    bool listing = false;
    // Lists the known formats when an instruction matches none.
    bool verbose = false;
    Arch arch = TL3B;
    // -b: accepted and kept, read by nothing.
    bool binaryDump = false;
    std::string binaryDumpFile{};
    // Debug information for plain assembly (-g).
    bool debug = false;
    // Rewrite the compiler's own DWARF data so that dropped blocks take their entries with them.
    bool rewriteDebug = true;
    bool warnRewriteDebug = false;
    std::uint32_t maxEncodingPasses = 4000;
    // Each scheduled block before and after scheduling, on standard error.
    bool debugScheduling = false;
    // For tests: the plain passes of the size iteration instead of the incremental ones, and an
    // observer told the state after every pass.
    bool referenceSizeIteration = false;
    SizeIterationObserver* sizeIterationObserver = nullptr;
};

} // namespace vorp
