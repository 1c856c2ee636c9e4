// Runs of one process share nothing: two sources assembled with their phases interleaved give the
// objects each gives alone, and a run that an error ends leaves the others as they were.

#include "assembler/AsmWriter.h"
#include "diag/ErrorHandler.h"
#include "diag/FatalError.h"
#include "diag/TelkUtils.h"
#include "diag/VorpErrorHandler.h"
#include "driver/CommandLine.h"
#include "frontend/VorpTokeniser.h"
#include "model/VormAssembler.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace vorp {
namespace {

// One assembly of an end-to-end case's a.S with the options of its cmd, driven a phase at a time.
class CaseRun {
public:
    CaseRun(const std::string& name, const std::string& object)
        : m_options(options(name, object)), m_utils{&m_optionErrors},
          m_run(m_options.assemblerOptions(""), &m_utils, &m_errors), m_tokeniser(m_run.getAssembler().getIdStrings())
    {
        m_errors.setShowWarnings(m_options.showWarnings);
        for (const std::string& input : m_options.inputFiles)
            m_inputs.push_back(input.c_str());
    }

    void parse()
    {
        if (m_tokeniser.lexInit(m_inputs, &m_errors))
            parseSource(m_run, m_tokeniser);
    }

    // The exit status, and the object when the run leaves one.
    std::string finish()
    {
        std::string status;
        std::vector<std::uint8_t> object;
        std::string listing;
        try {
            status = std::to_string(m_run.postParse(m_inputs.front(), object, listing));
        } catch (const FatalError& error) {
            status = "fatal " + std::to_string(error.status());
        }
        return status + "\n" + std::string(object.begin(), object.end());
    }

private:
    // The words of the case's cmd, with its input where it lies and its object at `object`.
    static DriverOptions options(const std::string& name, const std::string& object)
    {
        const std::string folder = VORP_SOURCE_DIR "/tests/e2e/cases/" + name + "/";
        std::ifstream cmd(folder + "cmd");
        std::vector<std::string> words;
        for (std::string word; cmd >> word;) {
            if (word == "-o")
                cmd >> word; // the case's own object name
            else if (word == "a.S")
                words.push_back(folder + word);
            else
                words.push_back(word);
        }
        words.push_back("-o");
        words.push_back(object);
        ErrorHandler errors;
        return CommandLine(errors).parse(words);
    }

    ErrorHandler m_optionErrors;
    DriverOptions m_options;
    TelkUtils m_utils;
    VorpErrorHandler m_errors;
    AssemblerRun m_run;
    VorpTokeniser m_tokeniser;
    std::vector<const char*> m_inputs;
};

std::string objectPath(const std::string& name)
{
    return testing::TempDir() + "separate_runs_" + std::to_string(getpid()) + "_" + name + ".o";
}

// Objects are long: a difference is told by where it starts.
testing::AssertionResult same(const std::string& actual, const std::string& expected)
{
    if (actual == expected)
        return testing::AssertionSuccess();
    std::size_t at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at])
        ++at;
    return testing::AssertionFailure() << "status and object differ from byte " << at << " on ("
                                       << actual.size() << " bytes against " << expected.size() << ")";
}

std::string alone(const std::string& name)
{
    CaseRun run(name, objectPath(name + "_alone"));
    run.parse();
    return run.finish();
}

// Cases whose objects hold names numbered over a run: frame entries and their elimination blocks,
// line rows of -g and of .loc, zeb records, jump-table trampolines, rewritten debug information,
// nameless labels named after their lines, linker records with strings.
const char* const p_cases[] = {
    "frame_both_sections_personality", "line_g_cc_blocks",          "zeb_branch_loop_thread_sections",
    "jmptable_counter_belongs_to_the_run", "debug_rewrite_compiler_unit", "object_elimination_blocks",
    "object_data_and_linker_records",  "sched_labels_and_loc",      "line_loc_cc_blocks",
};

TEST(SeparateRunsTest, InterleavedPhasesGiveTheObjectsOfRunsAlone)
{
    testing::internal::CaptureStderr();
    std::vector<std::string> expected;
    for (const char* name : p_cases)
        expected.push_back(alone(name));

    // Each case against the next, twice over: parse A, parse B, finish A, finish B.
    for (std::size_t i = 0; i < std::size(p_cases); ++i) {
        const std::size_t j = (i + 1) % std::size(p_cases);
        CaseRun a(p_cases[i], objectPath("a"));
        CaseRun b(p_cases[j], objectPath("b"));
        a.parse();
        b.parse();
        EXPECT_TRUE(same(a.finish(), expected[i])) << p_cases[i] << " before " << p_cases[j];
        EXPECT_TRUE(same(b.finish(), expected[j])) << p_cases[j] << " after " << p_cases[i];
    }
    testing::internal::GetCapturedStderr();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].substr(0, 2), "0\n") << p_cases[i];
        EXPECT_GT(expected[i].size(), 100u) << p_cases[i];
    }
}

TEST(SeparateRunsTest, ARunThatAnErrorEndsLeavesTheOthersAlone)
{
    const std::string solo = alone("frame_both_sections_personality");
    testing::internal::CaptureStderr();
    CaseRun a("frame_both_sections_personality", objectPath("a"));
    CaseRun limited("encode_pass_limit", objectPath("limited"));
    a.parse();
    limited.parse();
    EXPECT_EQ(limited.finish(), "fatal 1\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vorp: Error: unable to resolve encoder choice after 1 loops\n");
    EXPECT_TRUE(same(a.finish(), solo));
}

} // namespace
} // namespace vorp
