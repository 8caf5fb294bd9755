#include "app/k740.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>

namespace k740::test {
namespace {

static_assert(sizeof(K740_PACING) == 40 && offsetof(K740_PACING, seconds) == 0 &&
              offsetof(K740_PACING, microseconds) == 8 && offsetof(K740_PACING, correction) == 36);

constexpr int kPeriodMs = 30;

int64_t NowUs() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return now.tv_sec * 1'000'000LL + now.tv_usec;
}

int64_t StartUs(const K740_PACING& pacing) {
    return pacing.seconds * 1'000'000 + pacing.microseconds;
}

/// Elapsed milliseconds of a period with this stored correction; the least of several, because others use the machine.
int LeastElapsedMs(int32_t correction) {
    int least = INT_MAX;
    for (int i = 0; i < 5; ++i) {
        K740_PACING pacing{};
        pacing.correction = correction;
        K740_SleepStart(&pacing);
        least = std::min(least, K740_SleepEnd(kPeriodMs, &pacing));
    }
    return least;
}

TEST(PacingTest, SleepStartStoresTheTimeOfDayAndNothingElse) {
    std::array<unsigned char, sizeof(K740_PACING)> bytes;
    bytes.fill(0xEE);
    K740_PACING pacing;
    std::memcpy(&pacing, bytes.data(), sizeof(pacing));
    const int64_t before = NowUs();
    K740_SleepStart(&pacing);
    EXPECT_LE(before, StartUs(pacing));
    EXPECT_LE(StartUs(pacing), NowUs());
    EXPECT_EQ(0, std::memcmp(reinterpret_cast<unsigned char*>(&pacing) + 16, bytes.data() + 16, 24));
}

TEST(PacingTest, SleepEndSleepsThePeriodWithoutACorrection) {
    const int elapsed = LeastElapsedMs(0);
    EXPECT_GE(elapsed, kPeriodMs);
    EXPECT_LT(elapsed, kPeriodMs + 5);
}

TEST(PacingTest, SleepEndSleepsFiveMillisecondsLessForACorrectionOfFiveOrMore) {
    for (int correction : {5, 6, 9, INT_MAX}) {
        const int elapsed = LeastElapsedMs(correction);
        EXPECT_GE(elapsed, kPeriodMs - 5) << correction;
        EXPECT_LT(elapsed, kPeriodMs) << correction;
    }
}

TEST(PacingTest, SleepEndSleepsFiveMillisecondsMoreForACorrectionOfMinusFiveOrLess) {
    for (int correction : {-5, -6, -9, INT_MIN}) {
        const int elapsed = LeastElapsedMs(correction);
        EXPECT_GE(elapsed, kPeriodMs + 5) << correction;
        EXPECT_LT(elapsed, kPeriodMs + 10) << correction;
    }
}

TEST(PacingTest, NewCorrectionIsElapsedPlusClampedCorrectionLessPeriod) {
    for (int correction : {-9, -5, -4, 0, 4, 5, 9}) {
        K740_PACING pacing{};
        pacing.correction = correction;
        K740_SleepStart(&pacing);
        const int elapsed = K740_SleepEnd(10, &pacing);
        EXPECT_EQ(elapsed + std::clamp(correction, -5, 5) - 10, pacing.correction) << correction;
    }
}

TEST(PacingTest, AnOverrunIsStoredWhole) {
    K740_PACING pacing{};
    K740_SleepStart(&pacing);
    pacing.seconds -= 2;
    const int elapsed = K740_SleepEnd(10, &pacing);
    EXPECT_GE(elapsed, 2010);
    EXPECT_EQ(elapsed - 10, pacing.correction);
}

TEST(PacingTest, SleepEndChangesNothingButTheCorrection) {
    K740_PACING pacing{};
    K740_SleepStart(&pacing);
    std::fill(std::begin(pacing.unused), std::end(pacing.unused), static_cast<unsigned char>(0xEE));
    const K740_PACING before = pacing;
    K740_SleepEnd(2, &pacing);
    EXPECT_EQ(0, std::memcmp(&before, &pacing, offsetof(K740_PACING, correction)));
}

TEST(PacingTest, PeriodsNoLongerThanTheCorrectionDoNotSleep) {
    for (unsigned period : {0U, 3U, 5U}) {
        K740_PACING pacing{};
        pacing.correction = 5;
        K740_SleepStart(&pacing);
        EXPECT_LT(K740_SleepEnd(period, &pacing), 1000) << period;
    }
}

TEST(PacingTest, TheRecordMayLieAtAnyAddress) {
    std::array<unsigned char, sizeof(K740_PACING) + 1> bytes{};
    void* const odd = bytes.data() + 1;
    K740_SleepStart(static_cast<K740_PACING*>(odd));
    const int elapsed = K740_SleepEnd(2, static_cast<K740_PACING*>(odd));
    EXPECT_GE(elapsed, 1);
    EXPECT_LT(elapsed, 10'000);
}

TEST(PacingTest, NullIsHarmless) {
    K740_SleepStart(nullptr);
    EXPECT_EQ(0, K740_SleepEnd(20, nullptr));
}

} // namespace
} // namespace k740::test
