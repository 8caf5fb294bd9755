#include "common/stopwatch.h"
#include "tests/common/interruption.h"

#include <gtest/gtest.h>

#include <csignal>
#include <type_traits>

namespace k740::test {
namespace {

static_assert(std::has_virtual_destructor_v<CQBTime>);

/// @return the real time that lies some milliseconds before now
timeval Before(int64_t milliseconds) {
    timeval now{};
    gettimeofday(&now, nullptr);
    const int64_t start = int64_t{now.tv_sec} * 1'000'000 + now.tv_usec - milliseconds * 1000;
    return {start / 1'000'000, start % 1'000'000};
}

TEST(StopwatchTest, BeforeTheStartItShowsAllBitsOf32) {
    const CQBTime time;
    EXPECT_EQ(0xFFFFFFFFU, time.TimeEnd());
    EXPECT_EQ(int64_t{0xFFFFFFFF}, time.TimeEnd_us());
}

TEST(StopwatchTest, CountsMillisecondsAndMicroseconds) {
    CQBTime time;
    time.TimeStart();
    usTimer(20);
    EXPECT_GE(time.TimeEnd_us(), 20'000);
    EXPECT_GE(time.TimeEnd(), 20U);
    EXPECT_LT(time.TimeEnd(), 5000U);
}

TEST(StopwatchTest, ReadingDoesNotRestartIt) {
    CQBTime time;
    time.TimeStart();
    usTimer(10);
    const int64_t first = time.TimeEnd_us();
    time.TimeEnd();
    EXPECT_GE(time.TimeEnd_us(), first);
}

TEST(StopwatchTest, StartingAgainRestartsIt) {
    CQBTime time;
    time.TimeStart();
    usTimer(50);
    const int64_t first = time.TimeEnd_us();
    time.TimeStart();
    EXPECT_LT(time.TimeEnd_us(), first);
}

TEST(StopwatchTest, PeriodIsMillisecondsSinceTheStart) {
    const uint32_t period = GetTimePeriod(Before(2500));
    EXPECT_GE(period, 2500U);
    EXPECT_LT(period, 5000U);
}

TEST(StopwatchTest, PeriodOfAStartToComeWrapsModulo32Bits) {
    EXPECT_GE(GetTimePeriod(Before(-60'000)), 0U - 60'000U);
}

TEST(StopwatchTest, PeriodIsTakenModulo32Bits) {
    constexpr int64_t kTwoTo32 = int64_t{1} << 32;
    const uint32_t period = GetTimePeriod(Before(kTwoTo32 + 7));
    EXPECT_GE(period, 7U);
    EXPECT_LT(period, 5000U);
}

TEST(StopwatchTest, SleepIsInMilliseconds) {
    CQBTime time;
    time.TimeStart();
    usTimer(1500);
    EXPECT_GE(time.TimeEnd_us(), 1'500'000);
    EXPECT_LT(time.TimeEnd_us(), 4'000'000);
}

TEST(StopwatchTest, SleepOfZeroOrLessReturnsAtOnce) {
    CQBTime time;
    time.TimeStart();
    usTimer(0);
    usTimer(-1);
    usTimer(-60'000);
    EXPECT_LT(time.TimeEnd(), 1000U);
}

TEST(StopwatchTest, SignalCutsTheSleepShort) {
    CountSignals(SA_RESTART);
    CQBTime time;
    time.TimeStart();
    SleepingThread sleeper([] { usTimer(60'000); });
    ASSERT_TRUE(sleeper.Interrupt());
    sleeper.Join();
    EXPECT_LT(time.TimeEnd(), 30'000U);
}

} // namespace
} // namespace k740::test
