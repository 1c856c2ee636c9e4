#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace vorp {

class SizeIterationObserver;

// Takes the object's bytes as they are made, in order, in place of `AssembleResult::object`: for a
// caller that puts them straight into a file, and for objects too large to hold twice. Returning
// false stops the writing and fails the run (the writer says why).
class ObjectWriter {
public:
    virtual ~ObjectWriter() = default;
    virtual bool write(const void* data, std::size_t size) = 0;
};

// The settings of one assembler run, by name: what the command line gives, or a caller of the
// assembler as a library, or a test.
struct AssemblerOptions {
    enum Arch { TL3B = 0 };

    // The first input file as given ("-" for standard input): the compilation unit's name, and the
    // file symbol when no .file gives one. A source assembled from memory is named by it too.
    std::string sourcePath{"-"};
    // The directory the run started in, for the compilation unit; empty when unknown.
    std::string workingDir{};
    // The object's name. The assembler writes no file: the caller puts the object (and the listing,
    // named this plus ".txt") where they belong; the name only shows in messages.
    std::string outputFile{"a.o"};
    // Make the listing too.
    bool listing = false;
    // -fschedule: lines are scheduled from the start, as after `.scheduling on`.
    bool schedule = false;
    // Warnings shown, and warnings counted as errors.
    bool showWarnings = true;
    bool fatalWarnings = false;
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
    // Where diagnostics are written as they are made; null to collect them in the result.
    std::FILE* diagnostics = nullptr;
    // Where the object goes as it is made; null to collect it in the result.
    ObjectWriter* objectWriter = nullptr;
};

} // namespace vorp
