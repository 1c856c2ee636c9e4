#include "diag/ErrorHandler.h"
#include "driver/SignalHandling.h"
#include "emit/OutputFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace vorp {
namespace {

namespace fs = std::filesystem;

// A fresh folder holding one file, "a.o", with the text "earlier".
class OutputFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_folder = fs::path(testing::TempDir()) / ("vorp_output_" + std::to_string(getpid()));
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
        std::ofstream(path()) << "earlier";
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::string path() const { return (m_folder / "a.o").string(); }
    std::string contents() const
    {
        std::ifstream in(path());
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(m_folder))
            found.push_back(entry.path().filename().string());
        return found;
    }

    fs::path m_folder;
};

TEST_F(OutputFileTest, ARegularFileIsReplacedOnlyOnCommit)
{
    OutputFile file;
    ASSERT_TRUE(file.open(path().c_str()));
    std::fputs("new", file.stream());
    ASSERT_TRUE(file.close());
    EXPECT_EQ(contents(), "earlier");
    EXPECT_EQ(names().size(), 2u);
    ASSERT_TRUE(file.commit());
    EXPECT_EQ(contents(), "new");
    EXPECT_EQ(names(), std::vector<std::string>{"a.o"});
    EXPECT_FALSE(file.isDevice());
}

TEST_F(OutputFileTest, DiscardKeepsTheEarlierFile)
{
    {
        OutputFile file;
        ASSERT_TRUE(file.open(path().c_str()));
        std::fputs("partial", file.stream());
        file.discard();
    }
    {
        // Going out of scope uncommitted discards too.
        OutputFile file;
        ASSERT_TRUE(file.open(path().c_str()));
        std::fputs("partial", file.stream());
    }
    EXPECT_EQ(contents(), "earlier");
    EXPECT_EQ(names(), std::vector<std::string>{"a.o"});
}

TEST_F(OutputFileTest, ADeviceIsWrittenInPlace)
{
    OutputFile file;
    ASSERT_TRUE(file.open("/dev/null"));
    EXPECT_TRUE(file.isDevice());
    std::fputs("bytes", file.stream());
    EXPECT_TRUE(file.commit());
}

TEST_F(OutputFileTest, AFailedWriteIsReportedWithItsReason)
{
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full";
    OutputFile file;
    ASSERT_TRUE(file.open("/dev/full"));
    std::fputs("bytes", file.stream());
    EXPECT_FALSE(file.close());
    EXPECT_TRUE(file.failed());
    ErrorHandler errors;
    testing::internal::CaptureStderr();
    file.reportFailure(errors);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vorp: Error: unable to write '/dev/full': No space left on device\n");
}

using OutputFileDeathTest = OutputFileTest;

TEST_F(OutputFileDeathTest, AnInterruptWhileWritingLeavesTheEarlierFileAndNoTemporary)
{
    EXPECT_EXIT(
        {
            installSignalHandlers();
            OutputFile file;
            if (file.open(path().c_str())) {
                std::fputs("partial", file.stream());
                std::fflush(file.stream());
                std::raise(SIGINT);
            }
        },
        testing::ExitedWithCode(1), "");
    EXPECT_EQ(contents(), "earlier");
    EXPECT_EQ(names(), std::vector<std::string>{"a.o"});
}

} // namespace
} // namespace vorp
