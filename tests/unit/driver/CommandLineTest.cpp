#include "diag/ErrorHandler.h"
#include "driver/CommandLine.h"
#include "driver/SignalHandling.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

using Words = std::vector<std::string>;

DriverOptions parse(const Words& words)
{
    ErrorHandler handler;
    return CommandLine(handler).parse(words);
}

std::string writeWordFile(const std::string& name, const std::string& content)
{
    const std::string path = testing::TempDir() + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

TEST(CommandLineTest, DefaultOutputNameCutsAtTheLastDotAnywhere)
{
    EXPECT_EQ(CommandLine::defaultOutputName("prog.S"), "prog.o");
    EXPECT_EQ(CommandLine::defaultOutputName("src/x.y.S"), "src/x.y.o");
    EXPECT_EQ(CommandLine::defaultOutputName("dir.d/file"), "dir.o");
    EXPECT_EQ(CommandLine::defaultOutputName("noext"), "noext.o");
    EXPECT_EQ(CommandLine::defaultOutputName("-"), "a.o");
    EXPECT_EQ(CommandLine::defaultOutputName("./-"), ".o"); // the dot of "./" counts too
}

TEST(CommandLineTest, DefaultsAndInputs)
{
    const DriverOptions none = parse({});
    EXPECT_EQ(none.inputFiles, Words{"-"});
    EXPECT_EQ(none.outputName, "a.o");
    EXPECT_TRUE(none.showWarnings);
    EXPECT_FALSE(none.fatalWarnings);
    EXPECT_TRUE(none.rewriteDebug);
    EXPECT_EQ(none.maxEncodingPasses, 4000u);

    const DriverOptions several = parse({"a.S", "-", "b.S", "-o", ""});
    EXPECT_EQ(several.inputFiles, (Words{"a.S", "-", "b.S"}));
    EXPECT_EQ(several.outputName, "a.o"); // an empty -o name falls back to the default

    const DriverOptions odd = parse({"-o", "-x", "a.S", "-b", "bin", "--max-encoding-passes", " +12"});
    EXPECT_EQ(odd.outputName, "-x");
    EXPECT_EQ(odd.binaryName, "bin");
    EXPECT_TRUE(odd.binaryRequested);
    EXPECT_EQ(odd.maxEncodingPasses, 12u);
    EXPECT_EQ(odd.inputFiles, Words{"a.S"});
}

TEST(CommandLineTest, LaterOptionsWinWithinEachFamily)
{
    EXPECT_TRUE(parse({"-g"}).debugInfo);
    EXPECT_TRUE(parse({"-g0", "-g2"}).debugInfo);
    EXPECT_FALSE(parse({"-g", "-g0"}).debugInfo);
    EXPECT_FALSE(parse({"-g-1"}).debugInfo);
    EXPECT_FALSE(parse({"-fschedule", "-fno-schedule"}).schedule);
    EXPECT_TRUE(parse({"-fno-schedule", "--detect-reg-overwrite"}).schedule);

    const DriverOptions quiet = parse({"--fatal-warnings", "-W"});
    EXPECT_FALSE(quiet.showWarnings);
    EXPECT_FALSE(quiet.fatalWarnings);
    const DriverOptions fatal = parse({"-W", "--fatal-warnings"});
    EXPECT_TRUE(fatal.showWarnings);
    EXPECT_TRUE(fatal.fatalWarnings);
    const DriverOptions loud = parse({"--fatal-warnings", "--warn"});
    EXPECT_TRUE(loud.showWarnings);
    EXPECT_FALSE(loud.fatalWarnings);

    const DriverOptions rest = parse({"-l", "-v", "--no-rewrite-debug", "--warn-rewrite-debug", "-march=tl3b"});
    EXPECT_TRUE(rest.listing);
    EXPECT_TRUE(rest.verbose);
    EXPECT_FALSE(rest.rewriteDebug);
    EXPECT_TRUE(rest.warnRewriteDebug);
}

TEST(CommandLineTest, NoWarnAsFirstWordSwallowsLaterWords)
{
    const DriverOptions options = parse({"--no-warn", "a.S", "--fatal-warnings", "-o", "x.o", "-l"});
    EXPECT_EQ(options.inputFiles, Words{"-"});
    EXPECT_FALSE(options.showWarnings);
    EXPECT_FALSE(options.fatalWarnings);
    EXPECT_EQ(options.outputName, "x.o");
    EXPECT_TRUE(options.listing);
}

TEST(CommandLineTest, WordFilesAppendTheirWordsAtTheEnd)
{
    const std::string inner = writeWordFile("inner.words", "inner.S");
    const std::string longName(5000, 'n');
    const std::string words = writeWordFile(
        "outer.words", "-o\n  out.o\t@" + inner + "\n" + longName + "\x01" + "x\xc3" + "y.S\x7f" + "z");
    const DriverOptions options = parse({"@" + words, "first.S", "-o", "early.o"});
    // The words of a file come after everything already on the list, so its -o wins.
    EXPECT_EQ(options.outputName, "out.o");
    EXPECT_EQ(options.inputFiles, (Words{"first.S", longName, "x", "y.S", "z", "inner.S"}));
}

TEST(CommandLineTest, ByteTwoFiftyFiveEndsAWordFile)
{
    const std::string words = writeWordFile("ff.words", std::string("a.S\xff") + "b.S c.S");
    EXPECT_EQ(parse({"@" + words}).inputFiles, Words{"a.S"});
}

TEST(CommandLineDeathTest, VersionAndHelpStop)
{
    EXPECT_EXIT(parse({"--version", "a.S"}), testing::ExitedWithCode(1), "0\\.1\\.0 \\(build 1\\)\nCopyright");
    EXPECT_EXIT(parse({"a.S", "--help"}), testing::ExitedWithCode(0), "");
}

TEST(SignalHandlingDeathTest, CrashesAreReportedAndInterruptsAreSilent)
{
    ASSERT_TRUE(installSignalHandlers());
    EXPECT_EXIT(
        {
            installSignalHandlers();
            std::raise(SIGSEGV);
        },
        testing::ExitedWithCode(1), "^Error: A00019 An unrecoverable error has occured; exiting\\.\n$");
    EXPECT_EXIT(
        {
            installSignalHandlers();
            std::raise(SIGBUS);
        },
        testing::ExitedWithCode(1), "A00019");
    EXPECT_EXIT(
        {
            installSignalHandlers();
            std::raise(SIGINT);
        },
        testing::ExitedWithCode(1), "^$");
    std::signal(SIGSEGV, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGBUS, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
}

} // namespace
} // namespace vorp
