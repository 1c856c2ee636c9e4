// The fuzz target: one input is one source, assembled in memory with settings picked by the
// input's own hash, so that mutations reach -g, scheduling, the listing and low pass limits.
// libFuzzer calls it directly; FuzzMain.cpp runs a corpus through it where there is no libFuzzer.

#include "vorp/Assemble.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    const std::size_t bits = std::hash<std::string_view>{}(source);
    vorp::AssemblerOptions options;
    options.sourcePath = "fuzz.S";
    options.outputFile = "fuzz.o";
    options.debug = bits & 1;
    options.schedule = bits & 2;
    options.listing = bits & 4;
    options.fatalWarnings = bits & 8;
    options.rewriteDebug = !(bits & 16);
    options.maxEncodingPasses = (bits & 32) ? 1 + (bits >> 6) % 8 : 4000;
    const vorp::AssembleResult result = vorp::assemble(options, source);
    // A made object is never empty, and a failed run never leaves one.
    if ((result.status == 0) == result.object.empty())
        __builtin_trap();
    return 0;
}
