#include "common/deadline.h"

#include <gtest/gtest.h>

#include <limits>

namespace k740::test {
namespace {

void ExpectDeadline(time_t seconds, long nanoseconds, const timespec& deadline) {
    EXPECT_EQ(seconds, deadline.tv_sec);
    EXPECT_EQ(nanoseconds, deadline.tv_nsec);
}

TEST(DeadlineTest, NothingAddedIsTheStart) {
    ExpectDeadline(10, 123'456'000, DeadlineAfter({10, 123'456}, 0));
}

TEST(DeadlineTest, JustBelowTheSecondIsNotCarried) {
    ExpectDeadline(10, 999'999'000, DeadlineAfter({10, 999'998}, 1));
}

TEST(DeadlineTest, AtTheSecondIsCarried) {
    ExpectDeadline(11, 0, DeadlineAfter({10, 999'999}, 1));
    ExpectDeadline(11, 1'000, DeadlineAfter({10, 999'999}, 2));
}

TEST(DeadlineTest, SeveralSecondsAreCarried) {
    ExpectDeadline(12, 0, DeadlineAfter({10, 500'000}, 1'500'000));
    ExpectDeadline(12, 499'999'000, DeadlineAfter({10, 999'999}, 1'500'000));
}

TEST(DeadlineTest, TheLongestWaitDoesNotOverflow) {
    // 999999 us + 4294967295 us
    ExpectDeadline(4305, 967'294'000, DeadlineAfter({10, 999'999}, std::numeric_limits<unsigned>::max()));
}

TEST(DeadlineTest, CountsFromNowOnTheRealTimeClock) {
    timespec before{};
    clock_gettime(CLOCK_REALTIME, &before);
    const timespec deadline = DeadlineAfter(2'000'000);
    timespec after{};
    clock_gettime(CLOCK_REALTIME, &after);
    EXPECT_GE(deadline.tv_sec, before.tv_sec + 2);
    EXPECT_LE(deadline.tv_sec, after.tv_sec + 2);
    EXPECT_LT(deadline.tv_nsec, 1'000'000'000);
}

} // namespace
} // namespace k740::test
