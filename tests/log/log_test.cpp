#include "common/clock_text.h"
#include "log/log.h"
#include "tests/log/log_fixture.h"

#include <type_traits>

namespace k740::test {
namespace {

static_assert(std::has_virtual_destructor_v<CLog>);

constexpr int kMaxLines = 10'240;

class LogTest : public LogFixture {
protected:
    void PushNumbers(int first, int last) {
        for (int i = first; i <= last; ++i) { Push(std::to_string(i)); }
    }
    /// @return the texts of the file after everything queued was written
    std::vector<std::string> Written() {
        m_log.SaveSDKLog();
        return LogTexts();
    }
};

TEST_F(LogTest, LineIsTimeStampTabAndText) {
    Push("K740_StopTask(7)");
    m_log.SaveSDKLog();
    const std::string text = ReadLog();
    EXPECT_TRUE(IsTimeStamp(TimeStampOf(text))) << text;
    EXPECT_EQ("\tK740_StopTask(7)\n", text.substr(text.find('\t')));
}

TEST_F(LogTest, TimeStampIsThePresentWithoutTheCentury) {
    const std::string before = GetNowString(0).substr(2);
    Push("now");
    const std::string after = GetNowString(0).substr(2);
    m_log.SaveSDKLog();
    ASSERT_EQ(1U, LogLines().size());
    EXPECT_LE(before, TimeStampOf(LogLines()[0]));
    EXPECT_LE(TimeStampOf(LogLines()[0]), after);
}

TEST_F(LogTest, OnlyLevel4IsMarked) {
    for (const unsigned level : {0U, 1U, 2U, 3U, 4U, 5U, 255U}) {
        m_log.PushLog("", static_cast<uint8_t>(level), "text");
    }
    EXPECT_EQ((std::vector<std::string>{"text", "text", "text", "text", "*****text", "text", "text"}), Written());
}

TEST_F(LogTest, TypeIsNotWritten) {
    m_log.PushLog("Player", 4, "text");
    EXPECT_EQ(std::vector<std::string>{"*****text"}, Written());
}

TEST_F(LogTest, LinesKeepTheirOrderOverSeveralPasses) {
    PushNumbers(1, 2);
    EXPECT_EQ((std::vector<std::string>{"1", "2"}), Written());
    PushNumbers(3, 3);
    EXPECT_EQ((std::vector<std::string>{"1", "2", "3"}), Written());
}

TEST_F(LogTest, LinesOfAnyLengthAreWrittenWhole) {
    const std::string zones(102'400, 'F');
    Push(zones);
    EXPECT_EQ(std::vector<std::string>{zones}, Written());
}

TEST_F(LogTest, TextIsNoFormat) {
    Push("%s%n%d 100 %");
    EXPECT_EQ(std::vector<std::string>{"%s%n%d 100 %"}, Written());
}

TEST_F(LogTest, OneLineBelowTheBoundIsAllKept) {
    PushNumbers(1, kMaxLines - 1);
    EXPECT_EQ("1", Written().front());
}

TEST_F(LogTest, AsManyLinesAsTheBoundAreAllKept) {
    PushNumbers(1, kMaxLines);
    const auto texts = Written();
    EXPECT_EQ(static_cast<std::size_t>(kMaxLines), texts.size());
    EXPECT_EQ("1", texts.front());
}

TEST_F(LogTest, OneLineMoreDropsTheFirst) {
    PushNumbers(1, kMaxLines + 1);
    const auto texts = Written();
    EXPECT_EQ(static_cast<std::size_t>(kMaxLines), texts.size());
    EXPECT_EQ("2", texts.front());
    EXPECT_EQ("10241", texts.back());
}

TEST_F(LogTest, PassWithoutLinesMakesNoFile) {
    m_log.SaveSDKLog();
    m_log.SaveCallbackLog();
    EXPECT_EQ(0, CountFiles());
}

TEST_F(LogTest, PassWithoutLinesTouchesNoFile) {
    Push("text");
    m_log.SaveSDKLog();
    const std::filesystem::file_time_type longAgo{};
    std::filesystem::last_write_time(LogPath(), longAgo);
    m_log.SaveSDKLog();
    EXPECT_EQ(longAgo, std::filesystem::last_write_time(LogPath()));
}

TEST_F(LogTest, FileIsAppendedTo) {
    std::ofstream(LogPath()) << "from an earlier run\n";
    Push("text");
    EXPECT_EQ((std::vector<std::string>{"from an earlier run", "text"}), Written());
}

TEST_F(LogTest, FileOfExactly50MiBStays) {
    Push("text");
    m_log.SaveSDKLog();
    const std::uintmax_t line = std::filesystem::file_size(LogPath());
    MakeLogFile(kLogFileBound - line);
    Push("text");
    m_log.SaveSDKLog();
    EXPECT_EQ(kLogFileBound, std::filesystem::file_size(LogPath()));
}

TEST_F(LogTest, FileAboveIsReplacedByALineThatSaysSo) {
    Push("text");
    m_log.SaveSDKLog();
    const std::uintmax_t line = std::filesystem::file_size(LogPath());
    MakeLogFile(kLogFileBound - line + 1);
    Push("text");
    m_log.SaveSDKLog();
    const std::string text = ReadLog();
    EXPECT_TRUE(IsTimeStamp(TimeStampOf(text))) << text;
    EXPECT_EQ("\t------------remove log------------\n", text.substr(text.find('\t')));
}

TEST_F(LogTest, LinesAfterTheReplacementFollowIt) {
    MakeLogFile(kLogFileBound);
    Push("lost");
    m_log.SaveSDKLog();
    Push("kept");
    EXPECT_EQ((std::vector<std::string>{"------------remove log------------", "kept"}), Written());
}

TEST_F(LogTest, FileThatCannotBeOpenedLosesTheLinesAlone) {
    std::filesystem::remove("k740log");
    Push("lost");
    m_log.SaveSDKLog();
    std::filesystem::create_directory("k740log");
    Push("kept");
    EXPECT_EQ(std::vector<std::string>{"kept"}, Written());
}

} // namespace
} // namespace k740::test
