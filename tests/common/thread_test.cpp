#include "common/sem.h"
#include "common/thread.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

/// A thread that waits to be let go and then tells how it finds itself.
struct Report {
    std::atomic<bool> letGo{false};
    std::atomic<int> detachState{-1};
    std::atomic<std::size_t> stackBytes{0};
    std::atomic<bool> ended{false};
};

void* ReportOnItself(void* arg) {
    auto& report = *static_cast<Report*>(arg);
    WaitUntil([&] { return report.letGo.load(); });
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    int detachState = -1;
    pthread_attr_getdetachstate(&attributes, &detachState);
    std::size_t stackBytes = 0;
    pthread_attr_getstacksize(&attributes, &stackBytes);
    pthread_attr_destroy(&attributes);
    report.detachState = detachState;
    report.stackBytes = stackBytes;
    report.ended = true;
    return &report;
}

bool WaitForEnd(Report& report) {
    report.letGo = true;
    return WaitUntil([&] { return report.ended.load(); });
}

TEST(ThreadTest, DetachedAtOnceWhenAskedFor) {
    static Report report; // the thread may outlive the test by a moment
    pthread_t thread{};
    EXPECT_EQ(0, createThread(thread, ReportOnItself, &report, 1));
    ASSERT_TRUE(WaitForEnd(report));
    EXPECT_EQ(PTHREAD_CREATE_DETACHED, report.detachState);
}

TEST(ThreadTest, ElseJoinableWithItsResult) {
    Report report;
    pthread_t thread{};
    EXPECT_EQ(0, createThread(thread, ReportOnItself, &report, 0));
    ASSERT_TRUE(WaitForEnd(report));
    void* result = nullptr;
    EXPECT_EQ(0, pthread_join(thread, &result));
    EXPECT_EQ(&report, result);
    EXPECT_EQ(PTHREAD_CREATE_JOINABLE, report.detachState);
}

TEST(ThreadTest, StackIsAsLargeAsAskedFor) {
    Report report;
    pthread_t thread{};
    EXPECT_EQ(0, createThread(thread, ReportOnItself, &report, 0, 4 * kSmallStackBytes));
    ASSERT_TRUE(WaitForEnd(report));
    EXPECT_EQ(0, pthread_join(thread, nullptr));
    EXPECT_GE(report.stackBytes, 4 * kSmallStackBytes);
    EXPECT_LT(report.stackBytes, 8 * kSmallStackBytes);
}

TEST(ThreadTest, AStackThatCannotBeHadIsReplacedByTheDefault) {
    static Report report;
    pthread_t thread{};
    ASSERT_EQ(0, createThread(thread, ReportOnItself, &report, 1, SIZE_MAX / 4)); // no such stack
    ASSERT_TRUE(WaitForEnd(report));
}

TEST(ThreadTest, CloseThreadHandleDetaches) {
    static Report report;
    pthread_t thread{};
    ASSERT_EQ(0, createThread(thread, ReportOnItself, &report, 0));
    CloseThreadHandle(thread);
    ASSERT_TRUE(WaitForEnd(report));
    EXPECT_EQ(PTHREAD_CREATE_DETACHED, report.detachState);
}

TEST(ThreadTest, CloseThreadHandleDetachesEveryThreadOfAList) {
    static std::array<Report, 3> reports;
    std::vector<pthread_t> threads(reports.size());
    for (std::size_t i = 0; i < reports.size(); ++i) {
        ASSERT_EQ(0, createThread(threads[i], ReportOnItself, &reports[i], 0));
    }
    CloseThreadHandle(threads);
    for (Report& report : reports) {
        ASSERT_TRUE(WaitForEnd(report));
        EXPECT_EQ(PTHREAD_CREATE_DETACHED, report.detachState);
    }
}

TEST(ThreadTest, RunningThreadsAreCounted) {
    EXPECT_EQ(0, RunningThreads());
    INTHREAD();
    INTHREAD();
    EXPECT_EQ(2, RunningThreads());
    DETHREAD();
    EXPECT_EQ(1, RunningThreads());
    DETHREAD();
    EXPECT_EQ(0, RunningThreads());
}

TEST(ThreadTest, RunningThreadsAreCountedFromManyThreads) {
    const auto comeAndGo = [] {
        for (int i = 0; i < 1000; ++i) {
            INTHREAD();
            DETHREAD();
        }
        INTHREAD();
    };
    {
        const std::array<std::jthread, 3> threads{std::jthread(comeAndGo), std::jthread(comeAndGo),
                                                  std::jthread(comeAndGo)};
    }
    EXPECT_EQ(3, RunningThreads());
}

TEST(ThreadTest, ScopeCountsAndNamesTheThread) {
    std::array<char, 16> name{};
    std::jthread([&name] {
        const CThreadScope scope("k740-fifteen-ch");
        EXPECT_EQ(1, RunningThreads());
        pthread_getname_np(pthread_self(), name.data(), name.size());
    }).join();
    EXPECT_STREQ("k740-fifteen-ch", name.data());
    EXPECT_EQ(0, RunningThreads());
}

TEST(ThreadTest, ScopeCountsOutAlsoWhenSomethingIsThrown) {
    std::jthread([] {
        try {
            const CThreadScope scope("test");
            throw std::runtime_error("thrown in a thread");
        } catch (const std::runtime_error&) { EXPECT_EQ(0, RunningThreads()); }
    }).join();
    EXPECT_EQ(0, RunningThreads());
}

} // namespace
} // namespace k740::test
