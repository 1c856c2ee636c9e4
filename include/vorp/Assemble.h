#pragma once

// The assembler as a library: a source in, an object out, with the diagnostics the vorp command
// would print. Any number of runs may be made in one process, one after another or at once on
// different threads; a run keeps no state beyond its call.
//
//     vorp::AssemblerOptions options;
//     options.sourcePath = "blink.S";
//     const vorp::AssembleResult result = vorp::assemble(options, text);
//     if (result.status == 0)
//         save(result.object);
//     std::cerr << result.diagnostics;
//
// Expression trees of generated code can be very deep and their walks recurse: for sources of
// unknown shape, call from a thread with a large stack (the vorp command gives its run 4 GiB of
// address space for it). Running out of memory throws std::bad_alloc; a broken internal invariant
// stops the process with an assertion, as in the command.

#include "vorp/AssemblerOptions.h"
#include "vorp/RunStatistics.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorp {

struct AssembleResult {
    // What the vorp command exits with: 0 when the object was made, 1 after any error.
    int status = 1;
    // The relocatable ELF object; empty unless the status is 0, and when it went to
    // `AssemblerOptions::objectWriter`.
    std::vector<std::uint8_t> object;
    // With `listing` set and a status of 0: the text of the listing file.
    std::string listing;
    // Every diagnostic, as the lines vorp prints on standard error; empty when they went to
    // `AssemblerOptions::diagnostics` instead.
    std::string diagnostics;
    RunStatistics statistics;
    // For the vorp command, whether a failed run removes an object an earlier run left under the
    // output name. Most errors do; most fatal ones (a pass limit, an instruction no format fits)
    // leave the file as it was.
    bool removesEarlierOutput = true;
};

// Assembles `source`, named `options.sourcePath`.
AssembleResult assemble(const AssemblerOptions& options, std::string_view source);
// Assembles the files, one after another as one source, as the command line names them ("-" is
// standard input). An input that can't be read is reported like any other error.
AssembleResult assembleFiles(const AssemblerOptions& options, const std::vector<std::string>& inputFiles);

} // namespace vorp
