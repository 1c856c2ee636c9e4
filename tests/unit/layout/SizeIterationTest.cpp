// The incremental size iteration against the plain one: the same passes, state for state, the same
// failure under a pass limit, the same object.

#include "layout/AddressChain.h"
#include "layout/IndexSet.h"
#include "layout/IterationComparison.h"
#include "layout/RandomProgram.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace vorp::test {
namespace {

namespace fs = std::filesystem;

std::string writeSource(const std::string& name, const std::string& text)
{
    const std::string path = testing::TempDir() + name;
    std::ofstream(path) << text;
    return path;
}

std::string runGenerator(const std::string& arguments, const std::string& name)
{
    const std::string path = testing::TempDir() + name;
    const std::string command = "python3 " VORP_SOURCE_DIR "/bench/gen.py " + arguments + " " + path;
    if (std::system(command.c_str()) != 0)
        return "";
    return path;
}

TEST(AddressChainTest, FoldsSizesAndAlignmentsLikeAWalk)
{
    // Every prefix of a run of sizes and alignments against the plain walk.
    std::mt19937 random(5);
    for (int round = 0; round < 20; ++round) {
        std::vector<AddressChain::Leaf> leaves;
        for (int i = 0; i < 300; ++i) {
            if (random() % 7 == 0) {
                const std::uint32_t alignment = 1u << static_cast<std::uint32_t>(random() % 6);
                leaves.push_back({AddressChain::ALIGN, alignment, alignment});
            } else {
                const auto low = static_cast<std::uint32_t>(random() % 5);
                leaves.push_back({AddressChain::SIZE, low, low + static_cast<std::uint32_t>(random() % 4)});
            }
        }
        AddressChain chain;
        ASSERT_TRUE(chain.build(leaves));
        for (int change = 0; change < 50; ++change) {
            const std::size_t index = random() % leaves.size();
            if (leaves[index].kind == AddressChain::SIZE) {
                leaves[index].minBytes += 1;
                leaves[index].maxBytes = std::max(leaves[index].maxBytes, leaves[index].minBytes);
                chain.setSize(index, leaves[index].minBytes, leaves[index].maxBytes);
            }
        }
        VormAddress walked{0, 0};
        for (std::size_t i = 0; i <= leaves.size(); ++i) {
            const VormAddress folded = chain.addressOf(i);
            ASSERT_EQ(folded.min, walked.min) << "round " << round << " at " << i;
            ASSERT_EQ(folded.max, walked.max) << "round " << round << " at " << i;
            if (i < leaves.size())
                walked = chain.nextAddress(i, walked);
        }
    }
}

TEST(AddressChainTest, RefusesAlignmentsThatAreNoPowerOfTwo)
{
    AddressChain chain;
    EXPECT_FALSE(chain.build({{AddressChain::ALIGN, 6, 6}}));
    EXPECT_TRUE(chain.build({{AddressChain::ALIGN, 0, 0}, {AddressChain::ALIGN, 1, 1}, {AddressChain::SIZE, 3, 5}}));
    EXPECT_EQ(chain.addressOf(3).max, 5u);
}

TEST(IndexSetTest, NextMemberAcrossEmptyWords)
{
    IndexSet set;
    set.reset(300000);
    for (std::uint32_t index : {5u, 64u, 4095u, 4096u, 200000u, 300000u})
        set.insert(index);
    std::vector<std::uint32_t> walked;
    for (std::uint32_t at = set.next(0); at != IndexSet::NONE; at = set.next(at + 1))
        walked.push_back(at);
    EXPECT_EQ(walked, (std::vector<std::uint32_t>{5, 64, 4095, 4096, 200000, 300000}));
    set.erase(4096);
    set.erase(4095);
    EXPECT_EQ(set.next(65), 200000u);
    EXPECT_FALSE(set.contains(4096));
    EXPECT_EQ(set.next(300001), IndexSet::NONE);
}

// The cases of the end-to-end suite that assemble an input file, with their own options.
TEST(SizeIterationTest, EndToEndInputs)
{
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(VORP_SOURCE_DIR "/tests/e2e/cases")) {
        std::ifstream cmd(entry.path() / "cmd");
        if (!cmd || !fs::exists(entry.path() / "a.S"))
            continue;
        std::vector<std::string> words;
        std::string word;
        bool usable = true;
        while (cmd >> word) {
            // Standard input, words files and options that stop before assembling are left out.
            if (word == "-" || word[0] == '@' || word == "-h" || word == "--help" || word == "--version" ||
                word == "--no-warn" || word[0] == '"' || word[0] == '\'')
                usable = false;
            words.push_back(word);
        }
        const auto o = std::find(words.begin(), words.end(), "-o");
        if (o != words.end() && o + 1 != words.end())
            words.erase(o, o + 2);
        if (!usable || std::find(words.begin(), words.end(), "a.S") == words.end())
            continue;
        expectSameIteration(entry.path().string(), words, entry.path().filename().string());
        ++compared;
    }
    EXPECT_GT(compared, 100);
}

// VORP_RANDOM_PROGRAMS=N runs N programs instead of 60: a longer campaign.
TEST(SizeIterationTest, RandomPrograms)
{
    const char* count = std::getenv("VORP_RANDOM_PROGRAMS");
    const unsigned programs = count ? static_cast<unsigned>(std::strtoul(count, nullptr, 10)) : 60;
    for (unsigned seed = 1; seed <= programs; ++seed) {
        RandomProgram program(seed);
        const std::string path = writeSource("random.S", program.generate(seed % 3 == 0 ? 1500 : 300));
        std::vector<std::string> words{path};
        if (seed % 4 == 1)
            words.push_back("-fschedule");
        expectSameIteration("", words, "seed " + std::to_string(seed));
    }
}

TEST(SizeIterationTest, PassLimitsStopAtTheSamePass)
{
    for (unsigned seed = 100; seed < 115; ++seed) {
        RandomProgram program(seed);
        const std::string path = writeSource("limited.S", program.generate(800));
        for (const char* limit : {"1", "2", "5", "12"})
            expectSameIteration("", {path, "--max-encoding-passes", limit},
                                "seed " + std::to_string(seed) + " limit " + limit);
    }
}

TEST(SizeIterationTest, BenchmarkInputs)
{
    const std::string plain = runGenerator("10000", "bench10k.S");
    ASSERT_FALSE(plain.empty()) << "bench/gen.py did not run";
    expectSameIteration("", {plain}, "plain 10k");
    expectSameIteration("", {plain, "-fschedule"}, "schedule 10k");
    const std::string loc = runGenerator("10000 --loc", "bench10kloc.S");
    expectSameIteration("", {loc}, "loc 10k");
    const std::string chain = runGenerator("20000 --chain", "chain20k.S");
    expectSameIteration("", {chain}, "chain 20k");
}

#ifndef VORP_SANITIZED
// The plain passes need seconds here; under the sanitizers, minutes.
TEST(SizeIterationTest, LargeBenchmarkInput)
{
    const std::string large = runGenerator("100000", "bench100k.S");
    ASSERT_FALSE(large.empty()) << "bench/gen.py did not run";
    expectSameIteration("", {large}, "plain 100k");
}
#endif

} // namespace
} // namespace vorp::test
