#include "player/pacing.h"

#include <gtest/gtest.h>

#include <vector>

namespace k740::test {
namespace {

/// The sleeps of a sender whose every sleep takes this much longer than asked for.
/// @param period  gives the length of each period
template <typename Period> std::vector<int> Sleeps(int count, Period period, int maxDriftMs, int drift, int lateMs) {
    std::vector<int> sleeps;
    for (int i = 0; i < count; ++i) {
        const int periodMs = period();
        const PacingStep step = PlanPacing(periodMs, drift, maxDriftMs);
        sleeps.push_back(step.sleepMs);
        drift = CarryDrift(step, periodMs, step.sleepMs + lateMs);
    }
    return sleeps;
}

/// Milliseconds that a function which sleeps took.
template <typename Sleep> unsigned Measure(Sleep sleep) {
    CQBTime timer;
    timer.TimeStart();
    sleep(timer);
    return timer.TimeEnd();
}

TEST(PacingTest, DriftIsClampedBeforeItIsUsed) {
    EXPECT_EQ(36, PlanPacing(46, 15, 10).sleepMs);
    EXPECT_EQ(36, PlanPacing(46, 11, 10).sleepMs);
    EXPECT_EQ(36, PlanPacing(46, 10, 10).sleepMs);
    EXPECT_EQ(37, PlanPacing(46, 9, 10).sleepMs);
    EXPECT_EQ(56, PlanPacing(46, -10, 10).sleepMs);
    EXPECT_EQ(56, PlanPacing(46, -11, 10).sleepMs);
    EXPECT_EQ(15, PlanPacing(20, 6, 5).sleepMs);
    EXPECT_EQ(25, PlanPacing(20, -6, 5).sleepMs);
}

TEST(PacingTest, DriftCarriesWhatThePeriodRanOver) {
    EXPECT_EQ(0, CarryDrift({46, 0}, 46, 46));
    EXPECT_EQ(2, CarryDrift({46, 0}, 46, 48));
    EXPECT_EQ(10 - 46 + 38, CarryDrift({36, 10}, 46, 38));
    EXPECT_EQ(-3, CarryDrift({20, 0}, 20, 17));
}

TEST(PacingTest, ALateSleepShortensTheNext) {
    EXPECT_EQ((std::vector<int>{15, 18, 18, 18}), Sleeps(
                                                      4, [] { return 20; }, 5, 9, 2));
}

TEST(PacingTest, EveryTwentiethPeriodOf464IsLong) {
    std::vector<int> expected{46};
    expected.insert(expected.end(), 18, 45);
    expected.push_back(53);
    expected.insert(expected.end(), 19, 45);
    expected.push_back(53);
    int counter = 0;
    EXPECT_EQ(expected, Sleeps(
                            40, [&] { return Period464(counter); }, 10, 0, 1));
}

TEST(PacingTest, Sleep464Takes46MillisecondsLessTheDrift) {
    int counter = 0;
    int drift = 15;
    const unsigned took = Measure([&](const CQBTime& timer) { MultiCastSleep464(drift, counter, timer); });
    EXPECT_GE(took, 36U);
    EXPECT_EQ(1, counter);
    EXPECT_GE(drift, 10 - 46 + 36);
}

TEST(PacingTest, EveryTwentiethSleep464IsEightMillisecondsLonger) {
    int counter = 19;
    int drift = 10;
    const unsigned took = Measure([&](const CQBTime& timer) { MultiCastSleep464(drift, counter, timer); });
    EXPECT_GE(took, 44U);
    EXPECT_EQ(0, counter);
    EXPECT_LE(drift, 10 - 54 + static_cast<int>(took));
    EXPECT_GE(drift, 0);
}

TEST(PacingTest, NineteenthSleep464IsShort) {
    int counter = 18;
    int drift = 10;
    CQBTime timer;
    timer.TimeStart();
    MultiCastSleep464(drift, counter, timer);
    EXPECT_EQ(19, counter);
    // The drift tells the period that was meant: it is what the stopwatch showed beyond 46 - 10.
    EXPECT_LE(drift, static_cast<int>(timer.TimeEnd()) - 36);
    EXPECT_GE(drift, 0);
}

TEST(PacingTest, Sleep20Takes20MillisecondsLessTheDrift) {
    int drift = 9;
    EXPECT_GE(Measure([&](const CQBTime& timer) { MultiCastSleep20(drift, timer); }), 15U);
    EXPECT_GE(drift, 0);
}

TEST(PacingTest, Sleep10Takes10MillisecondsLessTheDrift) {
    int drift = -9;
    EXPECT_GE(Measure([&](const CQBTime& timer) { MultiCastSleep10(drift, timer); }), 15U);
    EXPECT_GE(drift, 0);
}

TEST(PacingTest, TimeSpentBeforeTheSleepIsCarriedAsDrift) {
    CQBTime timer;
    timer.TimeStart();
    usTimer(7);
    int drift = 0;
    MultiCastSleep20(drift, timer);
    EXPECT_GE(drift, 7);
}

} // namespace
} // namespace k740::test
