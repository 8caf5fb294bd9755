#include "common/stopwatch.h"
#include "log/log.h"
#include "tests/log/log_fixture.h"

#include <algorithm>
#include <climits>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

/// A log with its writer at work.
class LogThreadTest : public ::testing::Test {
protected:
    LogThreadTest() {
        std::filesystem::create_directory("k740log");
        m_log.PushLog("", 0, "first");
        m_time.TimeStart();
        m_log.SetBaseDirectory(m_directory.Path().string());
        m_log.Initialization();
    }
    ~LogThreadTest() override {
        EXPECT_TRUE(WaitForLogLine("first")); // so the writer has begun
        m_log.Finish();
        EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    }

    /// @return milliseconds from one write to the next, the best of several on a busy machine
    unsigned BestRoundMs() {
        unsigned best = UINT_MAX;
        for (int round = 0; round < 10 && best >= 300; ++round) {
            const std::string line = "round " + std::to_string(round);
            m_time.TimeStart();
            m_log.PushLog("", 0, line);
            EXPECT_TRUE(WaitForLogLine(line));
            best = std::min(best, m_time.TimeEnd());
        }
        return best;
    }

private:
    const TemporaryDirectory m_directory;

protected:
    CLog m_log;
    CQBTime m_time;
};

TEST_F(LogThreadTest, WritesBothLogsEvery200Milliseconds) {
    m_log.PushLog2("PTASKSTATUS", 0, "PTASKSTATUS(1, 2)");
    ASSERT_TRUE(WaitForLogLine("first"));
    EXPECT_GE(m_time.TimeEnd(), 199U);
    EXPECT_TRUE(WaitForCallbackLogLine("PTASKSTATUS", "PTASKSTATUS(1, 2)"));
    EXPECT_LT(BestRoundMs(), 300U);
}

TEST_F(LogThreadTest, FinishWritesWhatIsQueuedWithoutThePause) {
    ASSERT_TRUE(WaitForLogLine("first")); // a new pause has begun
    m_log.PushLog("", 0, "last");
    m_log.PushLog2("PTASKSTATUS", 0, "last");
    m_time.TimeStart();
    m_log.Finish();
    EXPECT_LT(m_time.TimeEnd(), 190U);
    EXPECT_EQ((std::vector<std::string>{"first", "last"}), LogTexts());
    EXPECT_EQ(std::vector<std::string>{"last"}, LogTexts("PTASKSTATUS"));
}

TEST_F(LogThreadTest, FinishEndsTheWriter) {
    m_log.Finish();
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    m_log.PushLog("", 0, "too late");
    m_log.Finish();
    EXPECT_EQ(std::vector<std::string>{"first"}, LogTexts());
}

TEST_F(LogThreadTest, LinesBehindTheEndOfTheWriterAreNotKept) {
    m_log.Finish();
    ASSERT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    m_log.PushLog("", 0, "too late");
    m_log.PushLog2("PTASKSTATUS", 0, "too late");
    m_log.SaveSDKLog();
    m_log.SaveCallbackLog();
    EXPECT_EQ(std::vector<std::string>{"first"}, LogTexts());
    EXPECT_FALSE(std::filesystem::exists(LogPath("PTASKSTATUS")));
}

TEST_F(LogThreadTest, ThreadIsNamedAfterItsWork) {
    ASSERT_TRUE(WaitForLogLine("first"));
    std::vector<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        names.push_back(ReadTextFile(task.path().string() + "/comm"));
    }
    EXPECT_EQ(1, std::count(names.begin(), names.end(), "k740-log\n"));
}

TEST_F(LogThreadTest, LinesOfManyThreadsAllArrive) {
    constexpr int kThreads = 3;
    constexpr int kLines = 1000;
    {
        const auto push = [this](int thread) {
            for (int i = 0; i < kLines; ++i) { m_log.PushLog("", 0, "line of thread " + std::to_string(thread)); }
        };
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < kThreads; ++thread) { threads.emplace_back(push, thread); }
    }
    m_log.Finish();
    for (int thread = 0; thread < kThreads; ++thread) {
        EXPECT_EQ(kLines, CountLogLines("line of thread " + std::to_string(thread)));
    }
}

} // namespace
} // namespace k740::test
