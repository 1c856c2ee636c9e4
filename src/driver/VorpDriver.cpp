#include "driver/VorpDriver.h"

#include "diag/VorpErrorHandler.h"
#include "driver/CommandLine.h"
#include "driver/SignalHandling.h"
#include "frontend/VorpParser.h"
#include "frontend/VorpTokeniser.h"

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace vorp {

namespace {

int runAssembler(int argc, char** argv, VorpErrorHandler& errorHandler)
{
    if (!installSignalHandlers()) {
        errorHandler.vorpError(NoLocation(), AssErrorCodes::SIGNAL_SETUP,
                               "An unrecoverable error has occured; exiting.\n");
        return 1;
    }

    ErrorHandler optionErrors;
    std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    const DriverOptions options = CommandLine(optionErrors).parse(words);

    errorHandler.setShowWarnings(options.showWarnings);
    errorHandler.setFatalWarnings(options.fatalWarnings);

    std::vector<const char*> inputs;
    for (const std::string& name : options.inputFiles)
        inputs.push_back(name.c_str());

    // Front end. Until the assembly model takes the statements, they are only checked.
    VorpTokeniser tokeniser;
    if (tokeniser.lexInit(inputs, &errorHandler)) {
        ParserActions syntaxCheck;
        VorpParser(tokeniser, errorHandler, syntaxCheck).parse();
    }

    // After any error the object must not survive, not even a stale one from an earlier run.
    if (!errorHandler.getMakeBinary()) {
        std::remove(options.outputName.c_str());
        return 1;
    }
    return 0;
}

} // namespace

int vorpMain(int argc, char** argv)
{
    auto errorHandler = std::make_unique<VorpErrorHandler>();
    try {
        return runAssembler(argc, argv, *errorHandler);
    } catch (const std::bad_alloc&) {
        std::fputs("INTERNAL ERROR\n", stderr);
        return 1;
    } catch (...) {
        errorHandler->vorpError(NoLocation(), AssErrorCodes::UNRECOVERABLE, "An unrecoverable error has occured.\n");
        return 1;
    }
}

} // namespace vorp
