#include "vorp/Assemble.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace vorp {
namespace {

AssemblerOptions named(const char* source)
{
    AssemblerOptions options;
    options.sourcePath = source;
    options.outputFile = "a.o";
    return options;
}

const char* const PROGRAM = "\t.text\nstart:\n\tldc r0, 5\n\tbu start\n\t.section .rodata\nvalue:\n\t.word 7\n";

TEST(AssembleTest, SourceInMemoryGivesTheObjectOfTheSameFile)
{
    const AssembleResult fromMemory = assemble(named("p.S"), PROGRAM);
    ASSERT_EQ(fromMemory.status, 0) << fromMemory.diagnostics;
    EXPECT_EQ(fromMemory.diagnostics, "");
    ASSERT_GT(fromMemory.object.size(), 52u);
    EXPECT_EQ(std::string(fromMemory.object.begin(), fromMemory.object.begin() + 4), "\x7f" "ELF");
    EXPECT_EQ(fromMemory.statistics.objectBytes, fromMemory.object.size());
    EXPECT_EQ(fromMemory.listing, "");

    const std::string path = testing::TempDir() + "p.S";
    std::ofstream(path) << PROGRAM;
    AssemblerOptions options = named("p.S");
    options.sourcePath = path;
    const AssembleResult fromFile = assembleFiles(options, {path});
    std::remove(path.c_str());
    ASSERT_EQ(fromFile.status, 0) << fromFile.diagnostics;
    // The file symbol carries the name given, so only the names may differ: compare with the
    // same name.
    const AssembleResult again = assemble(options, PROGRAM);
    EXPECT_TRUE(again.object == fromFile.object);
}

TEST(AssembleTest, ErrorsComeAsTheCommandPrintsThemAndLeaveNoObject)
{
    const AssembleResult result = assemble(named("e.S"), "\tnop\n\tfrob r1\n\tbu nowhere_\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.object.empty());
    EXPECT_EQ(result.diagnostics, "e.S:2: Error: A00004 Unknown opcode 'frob'\n");
    EXPECT_EQ(result.statistics.objectBytes, 0u);

    const AssembleResult unreadable = assembleFiles(named("x.S"), {testing::TempDir() + "no/such/file.S"});
    EXPECT_EQ(unreadable.status, 1);
    EXPECT_NE(unreadable.diagnostics.find("Error: A"), std::string::npos) << unreadable.diagnostics;
    EXPECT_NE(unreadable.diagnostics.find("no/such/file.S"), std::string::npos) << unreadable.diagnostics;
}

TEST(AssembleTest, WarningsFollowTheOptions)
{
    // A last line without its line feed draws a warning.
    const char* text = "\tnop";
    const AssembleResult shown = assemble(named("w.S"), text);
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.diagnostics, "w.S:2: Warning: A00002 no new line before end of file\n");

    AssemblerOptions quiet = named("w.S");
    quiet.showWarnings = false;
    const AssembleResult hidden = assemble(quiet, text);
    EXPECT_EQ(hidden.status, 0);
    EXPECT_EQ(hidden.diagnostics, "");
    EXPECT_TRUE(hidden.object == shown.object);

    AssemblerOptions strict = named("w.S");
    strict.fatalWarnings = true;
    const AssembleResult failed = assemble(strict, text);
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(failed.object.empty());
}

TEST(AssembleTest, ListingAndStreamedDiagnostics)
{
    AssemblerOptions options = named("l.S");
    options.listing = true;
    std::FILE* stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    options.diagnostics = stream;
    const AssembleResult result = assemble(options, std::string(PROGRAM) + "\t.text\n\tfrob\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.diagnostics, "");
    EXPECT_EQ(result.listing, "");
    std::rewind(stream);
    char buffer[256] = {};
    const std::size_t count = std::fread(buffer, 1, sizeof(buffer) - 1, stream);
    std::fclose(stream);
    EXPECT_EQ(std::string(buffer, count), "l.S:9: Error: A00004 Unknown opcode 'frob'\n");

    options.diagnostics = nullptr;
    const AssembleResult listed = assemble(options, PROGRAM);
    ASSERT_EQ(listed.status, 0) << listed.diagnostics;
    EXPECT_NE(listed.listing.find("value"), std::string::npos) << listed.listing;
}

// Collects what it is given; refuses once `limit` bytes have come.
class CollectingWriter : public ObjectWriter {
public:
    explicit CollectingWriter(std::size_t limit = SIZE_MAX) : m_limit(limit) {}
    bool write(const void* data, std::size_t size) override
    {
        const auto* first = static_cast<const std::uint8_t*>(data);
        if (bytes.size() + size > m_limit)
            return false;
        bytes.insert(bytes.end(), first, first + size);
        return true;
    }
    std::vector<std::uint8_t> bytes;

private:
    std::size_t m_limit;
};

TEST(AssembleTest, AWriterTakesTheObjectAsItIsMade)
{
    const AssembleResult inMemory = assemble(named("p.S"), PROGRAM);
    AssemblerOptions options = named("p.S");
    CollectingWriter writer;
    options.objectWriter = &writer;
    const AssembleResult written = assemble(options, PROGRAM);
    EXPECT_EQ(written.status, 0);
    EXPECT_TRUE(written.object.empty());
    EXPECT_TRUE(writer.bytes == inMemory.object);
    EXPECT_EQ(written.statistics.objectBytes, inMemory.object.size());

    CollectingWriter refusing(100);
    options.objectWriter = &refusing;
    const AssembleResult refused = assemble(options, PROGRAM);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.statistics.objectBytes, 0u);
}

TEST(AssembleTest, AFatalErrorEndsTheRunNotTheCaller)
{
    // Each branch's short form waits on the other's: two passes at least.
    const char* text = "a:\n\tbu b\n\t.skip 60\nb:\n\tbu a\n";
    AssemblerOptions limited = named("f.S");
    limited.maxEncodingPasses = 1;
    const AssembleResult stopped = assemble(limited, text);
    EXPECT_EQ(stopped.status, 1);
    EXPECT_TRUE(stopped.object.empty());
    EXPECT_EQ(stopped.diagnostics, "vorp: Error: unable to resolve encoder choice after 1 loops\n");
    EXPECT_FALSE(stopped.removesEarlierOutput);
    EXPECT_EQ(stopped.statistics.formatPasses.size(), 1u);

    // The process goes on, and so do later runs.
    const AssembleResult next = assemble(named("f.S"), text);
    EXPECT_EQ(next.status, 0) << next.diagnostics;
    EXPECT_FALSE(next.object.empty());

    const AssembleResult beyond = assemble(named("r.S"), "\t.skip 0x40000000\n\tnop\n");
    EXPECT_EQ(beyond.status, 1);
    EXPECT_TRUE(beyond.removesEarlierOutput);
    EXPECT_NE(beyond.diagnostics.find("30-bit address range"), std::string::npos) << beyond.diagnostics;
}

} // namespace
} // namespace vorp
