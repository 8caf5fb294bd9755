#include "common/text_file.h"
#include "tests/support/sdk_log.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <thread>

namespace k740::test {
namespace {

constexpr std::uintmax_t kLimit = 52'428'800; // bytes
const std::string kPath = "some.log";

class TextFileTest : public ::testing::Test {
protected:
    /// Makes a file of this size that takes no room.
    static void MakeFile(std::uintmax_t size) {
        std::ofstream(kPath).flush();
        std::filesystem::resize_file(kPath, size);
    }

private:
    const TemporaryDirectory m_directory;
};

TEST_F(TextFileTest, MakesTheFile) {
    EXPECT_EQ(0, WriteLog(kPath, "first\n"));
    EXPECT_EQ("first\n", ReadTextFile(kPath));
}

TEST_F(TextFileTest, Appends) {
    WriteLog(kPath, "first\n");
    EXPECT_EQ(0, WriteLog(kPath, "second"));
    EXPECT_EQ("first\nsecond", ReadTextFile(kPath));
}

TEST_F(TextFileTest, FileBelowTheLimitStays) {
    MakeFile(kLimit - 11);
    EXPECT_EQ(0, WriteLog(kPath, "0123456789"));
    EXPECT_EQ(kLimit - 1, std::filesystem::file_size(kPath));
}

TEST_F(TextFileTest, FileOfExactly52428800BytesStays) {
    MakeFile(kLimit - 10);
    EXPECT_EQ(0, WriteLog(kPath, "0123456789"));
    EXPECT_EQ(kLimit, std::filesystem::file_size(kPath));
}

TEST_F(TextFileTest, FileOf52428801BytesIsDeletedWithTheText) {
    MakeFile(kLimit - 9);
    EXPECT_EQ(1, WriteLog(kPath, "0123456789"));
    EXPECT_FALSE(std::filesystem::exists(kPath));
}

TEST_F(TextFileTest, NextTextBeginsANewFile) {
    MakeFile(kLimit);
    EXPECT_EQ(1, WriteLog(kPath, "x"));
    EXPECT_EQ(0, WriteLog(kPath, "new\n"));
    EXPECT_EQ("new\n", ReadTextFile(kPath));
}

TEST_F(TextFileTest, EmptyTextToAFileThatIsTooLargeDeletesItToo) {
    MakeFile(kLimit + 1);
    EXPECT_EQ(1, WriteLog(kPath, ""));
    EXPECT_FALSE(std::filesystem::exists(kPath));
}

TEST_F(TextFileTest, FileThatCannotBeOpenedLosesTheTextQuietly) {
    EXPECT_EQ(0, WriteLog("no/such/directory/some.log", "lost"));
    std::filesystem::create_directory("directory");
    EXPECT_EQ(0, WriteLog("directory", "lost"));
    EXPECT_TRUE(std::filesystem::is_empty("directory"));
}

TEST_F(TextFileTest, FullDiskLosesTheTextQuietly) {
    EXPECT_EQ(0, WriteLog("/dev/full", "lost"));
}

TEST_F(TextFileTest, TextsFromSeveralThreadsAreNotTorn) {
    constexpr std::size_t kTexts = 100;
    constexpr std::size_t kLength = 1000;
    const auto write = [](char letter) {
        for (std::size_t i = 0; i < kTexts; ++i) { WriteLog(kPath, std::string(kLength - 1, letter) + "\n"); }
    };
    {
        const std::array<std::jthread, 3> writers{std::jthread(write, 'a'), std::jthread(write, 'b'),
                                                  std::jthread(write, 'c')};
    }
    std::istringstream text(ReadTextFile(kPath));
    std::size_t lines = 0;
    for (std::string line; std::getline(text, line); ++lines) {
        ASSERT_EQ(std::string(kLength - 1, line.front()), line);
    }
    EXPECT_EQ(3 * kTexts, lines);
}

} // namespace
} // namespace k740::test
