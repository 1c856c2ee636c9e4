#pragma once

// Runs vorp's whole pipeline in a child process, once with the plain size iteration and once with
// the incremental one, and keeps what each left behind: exit status, standard error, the object,
// and after every pass of every section a digest of every grouping's state. A child, because a
// run changes the working folder and standard error.

#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "driver/CommandLine.h"
#include "vorp/Assemble.h"
#include "layout/SizeIteration.h"
#include "model/VormAssembler.h"
#include "model/VormLine.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vorp::test {

struct IterationRun {
    int status = -1;
    std::string diagnostics;
    std::string object;
    std::string trace; // a line per pass: pass, force, digest of the groupings' states
};

// One line per pass. The digest is order-sensitive, so a state that moved to another grouping
// shows as well as a changed one.
class TraceWriter : public SizeIterationObserver {
public:
    explicit TraceWriter(FILE* out) : m_out(out) {}
    void afterPass(unsigned pass, bool force, const std::vector<GroupingState>& groupings) override
    {
        std::uint64_t digest = 1469598103934665603ull;
        auto mix = [&digest](std::uint64_t value) {
            digest ^= value;
            digest *= 1099511628211ull;
        };
        std::uint32_t undone = 0;
        for (const GroupingState& state : groupings) {
            mix(state.address.min);
            mix(state.address.max);
            mix(state.next.min);
            mix(state.next.max);
            mix(state.done);
            mix(state.choices);
            undone += !state.done;
        }
        std::fprintf(m_out, "%u %d %u %zu %016llx\n", pass, force ? 1 : 0, undone, groupings.size(),
                     static_cast<unsigned long long>(digest));
    }

private:
    FILE* m_out;
};

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Assembles with the command-line words `words` (inputs relative to `directory`), writing the
// object to a file of its own.
inline IterationRun runIteration(const std::string& directory, std::vector<std::string> words, bool reference)
{
    // The same names for both runs: the object's name shows in some messages.
    const std::string base = testing::TempDir() + "iteration_" + std::to_string(getpid());
    const std::string object = base + ".o";
    const std::string errors = base + ".err";
    const std::string trace = base + ".trace";
    std::remove(object.c_str());
    words.push_back("-o");
    words.push_back(object);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (!directory.empty() && chdir(directory.c_str()) != 0)
            _exit(99);
        if (!std::freopen(errors.c_str(), "w", stderr))
            _exit(98);
        // Nothing may escape the child: the test would go on running in it.
        int status = 97;
        try {
            FILE* traceFile = std::fopen(trace.c_str(), "w");
            TraceWriter writer(traceFile);
            ErrorHandler optionErrors;
            const DriverOptions options = CommandLine(optionErrors).parse(words);
            AssemblerOptions settings = options.assemblerOptions("");
            settings.referenceSizeIteration = reference;
            settings.sizeIterationObserver = &writer;
            settings.diagnostics = stderr;
            const AssembleResult result = assembleFiles(settings, options.inputFiles);
            if (result.status == 0) {
                std::ofstream out(object, std::ios::binary);
                out.write(reinterpret_cast<const char*>(result.object.data()),
                          static_cast<std::streamsize>(result.object.size()));
            }
            status = result.status;
        } catch (const FatalError& error) {
            std::fputs(error.message().c_str(), stderr);
            status = error.status();
        } catch (...) {
        }
        std::fflush(nullptr);
        _exit(status);
    }
    int waited = 0;
    waitpid(child, &waited, 0);
    IterationRun run;
    run.status = WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
    run.diagnostics = readFile(errors);
    run.object = readFile(object);
    run.trace = readFile(trace);
    for (const std::string& path : {object, errors, trace})
        std::remove(path.c_str());
    return run;
}

// Both iterations on the same input: the same passes, state for state, the same output.
inline void expectSameIteration(const std::string& directory, const std::vector<std::string>& words,
                                const std::string& what)
{
    const IterationRun plain = runIteration(directory, words, true);
    const IterationRun fast = runIteration(directory, words, false);
    ASSERT_LT(plain.status, 2) << what << ": the plain run did not end normally:\n" << plain.diagnostics;
    EXPECT_EQ(plain.status, fast.status) << what;
    EXPECT_EQ(plain.diagnostics, fast.diagnostics) << what;
    EXPECT_TRUE(plain.object == fast.object) << what << ": objects differ";
    if (plain.trace != fast.trace) {
        // The first pass that differs.
        std::istringstream a(plain.trace);
        std::istringstream b(fast.trace);
        std::string lineA;
        std::string lineB;
        while (std::getline(a, lineA) && std::getline(b, lineB) && lineA == lineB) {
        }
        ADD_FAILURE() << what << ": passes differ, plain \"" << lineA << "\" incremental \"" << lineB << "\"";
    }
}

} // namespace vorp::test
