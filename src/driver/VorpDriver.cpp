#include "driver/VorpDriver.h"

#include "diag/FatalError.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "driver/CommandLine.h"
#include "driver/SignalHandling.h"
#include "assembler/AsmWriter.h"
#include "model/RunStatistics.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <pthread.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace vorp {

namespace {

void printStatistics(const RunStatistics* statistics)
{
    auto line = [](std::uint64_t count, const char* what) {
        std::fprintf(stderr, "vorp: stats: %llu %s\n", static_cast<unsigned long long>(count), what);
    };
    line(statistics->lines, "lines");
    line(statistics->tokens, "tokens");
    for (const RunStatistics::SectionPasses& section : statistics->formatPasses)
        std::fprintf(stderr, "vorp: stats: section %s: %u format passes\n", section.section.c_str(), section.passes);
    line(statistics->groupingsEvaluated, "groupings evaluated");
    line(statistics->objectBytes, "object bytes");
}

// With VORP_STATS set in the environment, the run's statistics go to standard error at its end:
// when this goes out of scope, on a return or while a run that ends early (at the pass limit, say)
// unwinds.
class StatisticsReport {
public:
    explicit StatisticsReport(const RunStatistics& statistics)
        : m_statistics(std::getenv("VORP_STATS") ? &statistics : nullptr)
    {
    }
    StatisticsReport(const StatisticsReport&) = delete;
    StatisticsReport& operator=(const StatisticsReport&) = delete;
    ~StatisticsReport()
    {
        if (m_statistics)
            printStatistics(m_statistics);
    }

private:
    const RunStatistics* m_statistics;
};

int runAssembler(int argc, char** argv, VorpErrorHandler& errorHandler, std::string& outputName)
{
    if (!installSignalHandlers()) {
        errorHandler.vorpError(NoLocation(), AssErrorCodes::SIGNAL_SETUP,
                               "An unrecoverable error has occured; exiting.\n");
        return 1;
    }

    ErrorHandler optionErrors;
    std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    const DriverOptions options = CommandLine(optionErrors).parse(words);

    outputName = options.outputName;
    errorHandler.setShowWarnings(options.showWarnings);
    errorHandler.setFatalWarnings(options.fatalWarnings);

    char directory[512];
    const std::string workingDir = getcwd(directory, sizeof(directory)) ? directory : "";

    TelkUtils utils{&optionErrors};
    std::vector<const char*> inputs;
    for (const std::string& name : options.inputFiles)
        inputs.push_back(name.c_str());

    VormAssembler assembler(options.assemblerOptions(workingDir), &utils, &errorHandler);
    const StatisticsReport report(assembler.statistics());
    vorpparse(assembler, inputs, options.schedule);
    return assembler.postParse(inputs.front()) != 0 ? 1 : 0;
}

int guardedRun(int argc, char** argv)
{
    auto errorHandler = std::make_unique<VorpErrorHandler>();
    std::string outputName;
    // A failed run leaves no object, not even one of an earlier run.
    auto removeOutput = [&outputName] {
        if (!outputName.empty())
            std::remove(outputName.c_str());
    };
    try {
        return runAssembler(argc, argv, *errorHandler, outputName);
    } catch (const FatalError& error) {
        // What there was to say is said.
        if (error.discardsOutput())
            removeOutput();
        return error.status();
    } catch (const std::bad_alloc&) {
        std::fputs("INTERNAL ERROR\n", stderr);
        removeOutput();
        return 1;
    } catch (...) {
        errorHandler->vorpError(NoLocation(), AssErrorCodes::UNRECOVERABLE, "An unrecoverable error has occured.\n");
        removeOutput();
        return 1;
    }
}

struct Run {
    int argc;
    char** argv;
    int status;
};

void* runOnBigStack(void* data)
{
    auto* run = static_cast<Run*>(data);
    useAlternateSignalStack();
    run->status = guardedRun(run->argc, run->argv);
    return nullptr;
}

} // namespace

int vorpMain(int argc, char** argv)
{
    // An input can draw a warning from every byte of a long string: millions of lines. Written a
    // line at a time they cost seconds of system calls, so standard error is fully buffered. Every
    // way out flushes it: a return (fatal errors too), exit() (the signal handler), a failed assertion
    // (which flushes after its text), and any other abort, through its handler.
    static char stderrBuffer[1 << 16];
    std::setvbuf(stderr, stderrBuffer, _IOFBF, sizeof(stderrBuffer));
    flushDiagnosticsOnAbort();
    // Expression trees of generated code can be very deep (a sum of a million terms), and their
    // walks recurse: the run gets a stack to match. The memory is only taken as it is used.
    constexpr std::size_t STACK_SIZE = std::size_t{1} << 32;
    Run run{argc, argv, 1};
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) == 0 && pthread_attr_setstacksize(&attributes, STACK_SIZE) == 0 &&
        pthread_create(&thread, &attributes, runOnBigStack, &run) == 0) {
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
        return run.status;
    }
    return guardedRun(argc, argv);
}

} // namespace vorp
