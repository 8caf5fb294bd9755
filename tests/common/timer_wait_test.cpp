#include "common/stopwatch.h"
#include "common/timer_wait.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>

namespace k740::test {
namespace {

TEST(TimerWaitTest, LastsItsMilliseconds) {
    CQBTime time;
    time.TimeStart();
    timer_wait(20);
    EXPECT_GE(time.TimeEnd_us(), 20'000);
    EXPECT_LT(time.TimeEnd(), 5000U);
}

TEST(TimerWaitTest, CarriesTheSeconds) {
    CQBTime time;
    time.TimeStart();
    timer_wait(1100); // ends in another second wherever it begins
    EXPECT_GE(time.TimeEnd_us(), 1'100'000);
    EXPECT_LT(time.TimeEnd(), 5000U);
}

TEST(TimerWaitTest, InitialisingArmsNothing) {
    EXPECT_EQ(0, initialize_out_timer());
    itimerval timer{};
    getitimer(ITIMER_REAL, &timer);
    EXPECT_FALSE(timerisset(&timer.it_value));
    struct sigaction action {};
    sigaction(SIGALRM, nullptr, &action);
    EXPECT_EQ(SIG_DFL, action.sa_handler);
}

} // namespace
} // namespace k740::test
