#include "vorp/Assemble.h"

#include "assembler/AsmWriter.h"
#include "assembler/AssemblerRun.h"
#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/MemoryStream.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "frontend/VorpTokeniser.h"

#include <cstdio>
#include <functional>
#include <optional>

namespace vorp {

namespace {

// One run: `load` hands the source to the tokeniser, false when it couldn't (already reported).
AssembleResult run(const AssemblerOptions& options, const std::function<bool(VorpTokeniser&, VorpErrorHandler&)>& load)
{
    AssembleResult result;
    std::optional<MemoryStream> collected;
    std::FILE* output = options.diagnostics;
    if (!output) {
        collected.emplace();
        output = collected->stream();
    }
    ErrorHandler plainErrors;
    plainErrors.setOutput(output);
    VorpErrorHandler errors;
    errors.setOutput(output);
    errors.setShowWarnings(options.showWarnings);
    errors.setFatalWarnings(options.fatalWarnings);
    TelkUtils utils{&plainErrors};
    {
        AssemblerRun assembly(options, &utils, &errors);
        try {
            VorpTokeniser tokeniser(assembly.getAssembler().getIdStrings());
            if (load(tokeniser, errors))
                parseSource(assembly, tokeniser);
            result.status = assembly.postParse(options.sourcePath.c_str(), result.object, result.listing);
        } catch (const FatalError& error) {
            std::fputs(error.message().c_str(), output);
            result.status = error.status();
            result.removesEarlierOutput = error.discardsOutput();
            result.object.clear();
            result.listing.clear();
        }
        result.statistics = assembly.getAssembler().statistics();
    }
    if (result.status != 0)
        result.statistics.objectBytes = 0;
    if (collected)
        collected->take(result.diagnostics);
    else
        std::fflush(output);
    return result;
}

} // namespace

AssembleResult assemble(const AssemblerOptions& options, std::string_view source)
{
    return run(options, [&](VorpTokeniser& tokeniser, VorpErrorHandler& errors) {
        tokeniser.lexInit({}, &errors);
        tokeniser.addInput(options.sourcePath.c_str(), options.sourcePath.c_str(), source);
        tokeniser.startScanning();
        return true;
    });
}

AssembleResult assembleFiles(const AssemblerOptions& options, const std::vector<std::string>& inputFiles)
{
    return run(options, [&](VorpTokeniser& tokeniser, VorpErrorHandler& errors) {
        std::vector<const char*> names;
        for (const std::string& name : inputFiles)
            names.push_back(name.c_str());
        return tokeniser.lexInit(names, &errors);
    });
}

} // namespace vorp
