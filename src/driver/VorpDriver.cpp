#include "driver/VorpDriver.h"

#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/VorpErrorHandler.h"
#include "driver/CommandLine.h"
#include "driver/SignalHandling.h"
#include "emit/OutputFile.h"
#include "vorp/Assemble.h"

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

// With VORP_STATS set in the environment, the run's counts go to standard error at its end.
void printStatistics(const RunStatistics& statistics)
{
    if (!std::getenv("VORP_STATS"))
        return;
    auto line = [](std::uint64_t count, const char* what) {
        std::fprintf(stderr, "vorp: stats: %llu %s\n", static_cast<unsigned long long>(count), what);
    };
    line(statistics.lines, "lines");
    line(statistics.tokens, "tokens");
    for (const RunStatistics::SectionPasses& section : statistics.formatPasses)
        std::fprintf(stderr, "vorp: stats: section %s: %u format passes\n", section.section.c_str(), section.passes);
    line(statistics.groupingsEvaluated, "groupings evaluated");
    line(statistics.objectBytes, "object bytes");
}

// Writes the object into the output file as the run makes it; the file is opened with the first
// bytes, so that a run that fails before leaves the name alone.
class FileObjectWriter : public ObjectWriter {
public:
    FileObjectWriter(const char* name, ErrorHandler& errors) : m_name(name), m_errors(errors) {}

    bool write(const void* data, std::size_t size) override
    {
        if (!m_opened) {
            if (m_openFailed || !m_file.open(m_name)) {
                if (!m_openFailed)
                    m_errors.fatalError(false, "ERROR: Unable to open output file '%s' for writing elf\n", m_name);
                m_openFailed = true;
                return false;
            }
            m_opened = true;
        }
        if (std::fwrite(data, 1, size, m_file.stream()) != size) {
            m_file.writeFailed();
            return false;
        }
        return true;
    }

    OutputFile& file() { return m_file; }
    bool opened() const { return m_opened; }
    bool openFailed() const { return m_openFailed; }

private:
    const char* m_name;
    ErrorHandler& m_errors;
    OutputFile m_file;
    bool m_opened = false;
    bool m_openFailed = false;
};

// Puts the object, written into `object`, and the listing when there is one, in place: both
// complete before either replaces what was there. False, with the reason reported, when they
// can't be written or the run failed after the object was begun; nothing is left then.
bool finishOutputs(const AssembleResult& result, const DriverOptions& options, OutputFile& object,
                   ErrorHandler& errors)
{
    OutputFile listing;
    bool written = object.close();
    if (!written)
        object.reportFailure(errors);
    if (written && result.status == 0 && options.listing) {
        const std::string path = options.outputName + ".txt";
        if (!listing.open(path.c_str())) {
            object.discard();
            errors.fatalError(false, "vorp: Error: unable to open listing file '%s' for write\n", path.c_str());
            return false;
        }
        if (std::fputs(result.listing.c_str(), listing.stream()) == EOF && !result.listing.empty())
            listing.writeFailed();
        written = listing.close();
        if (!written)
            listing.reportFailure(errors);
    }
    if (written && result.status == 0) {
        written = object.commit() && listing.commit();
        if (!written)
            (object.failed() ? object : listing).reportFailure(errors);
    }
    if (!written || result.status != 0) {
        // After any error the object must not survive, not even a stale one from an earlier run. A
        // device or pipe that refused the bytes is no object, though: it stays.
        const bool keepOutput = object.isDevice() && (object.failed() || listing.failed());
        object.discard();
        listing.discard();
        if (!keepOutput)
            std::remove(options.outputName.c_str());
        return false;
    }
    return true;
}

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

    char directory[512];
    const std::string workingDir = getcwd(directory, sizeof(directory)) ? directory : "";
    AssemblerOptions settings = options.assemblerOptions(workingDir);
    settings.diagnostics = stderr;
    FileObjectWriter object(outputName.c_str(), optionErrors);
    settings.objectWriter = &object;
    AssembleResult result = assembleFiles(settings, options.inputFiles);
    if (object.openFailed()) {
        // A name that can't be opened is left as it is.
        result.status = 1;
    } else if (object.opened()) {
        if (!finishOutputs(result, options, object.file(), optionErrors))
            result.status = 1;
    } else if (result.status != 0 && result.removesEarlierOutput) {
        // A failed run leaves no object, not even one of an earlier run.
        std::remove(outputName.c_str());
    }
    if (result.status != 0)
        result.statistics.objectBytes = 0;
    printStatistics(result.statistics);
    return result.status;
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
        std::fputs(error.message().c_str(), stderr);
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
