#include "common/lifetime.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "tests/common/interruption.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::test {
namespace {

constexpr unsigned kLongMs = 60'000;

class LifetimeTest : public ::testing::Test {
protected:
    LifetimeTest() {
        m_lifetime.Begin();
        m_time.TimeStart();
    }

    CLifetime m_lifetime;
    CQBTime m_time;
};

TEST_F(LifetimeTest, PausesLastFromBeginOn) {
    m_lifetime.Pause(20);
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(LifetimeTest, BeginClearsTheExitFlag) {
    CLifetime lifetime;
    lifetime.RequestExit();
    lifetime.Begin();
    EXPECT_FALSE(lifetime.IsExiting());
}

TEST_F(LifetimeTest, BegunAgainItTakesTheSemaphoreNoSecondTime) {
    m_lifetime.Begin();
    m_lifetime.Pause(20);
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(LifetimeTest, RequestExitSetsTheFlagAndWakesNobody) {
    m_lifetime.RequestExit();
    EXPECT_TRUE(m_lifetime.IsExiting());
    m_lifetime.Pause(20);
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(LifetimeTest, WakeEndsOnePauseOfSeveral) {
    SleepingThread first([this] { m_lifetime.Pause(kLongMs); });
    SleepingThread second([this] { m_lifetime.Pause(kLongMs); });
    ASSERT_TRUE(first.WaitUntilAsleep() && second.WaitUntilAsleep());
    m_lifetime.WakeOneSleeper();
    ASSERT_TRUE(WaitUntil([&] { return first.HasEnded() || second.HasEnded(); }));
    EXPECT_FALSE(first.HasEnded() && second.HasEnded());
    m_lifetime.WakeOneSleeper();
}

TEST_F(LifetimeTest, WakeWithoutASleeperEndsTheNextPauseAlone) {
    m_lifetime.WakeOneSleeper();
    m_lifetime.Pause(kLongMs);
    EXPECT_LT(m_time.TimeEnd(), kLongMs / 2);
    m_time.TimeStart();
    m_lifetime.Pause(20);
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(LifetimeTest, WorkerStepsAndPausesUntilTheExitFlagIsSet) {
    int steps = 0;
    RunWorker(m_lifetime, 5, [&] {
        if (++steps == 3) { m_lifetime.RequestExit(); }
    });
    EXPECT_EQ(3, steps);
    EXPECT_GE(m_time.TimeEnd_us(), 15'000);
}

TEST_F(LifetimeTest, WorkerThatIsTooLateDoesNothing) {
    m_lifetime.RequestExit();
    RunWorker(m_lifetime, kLongMs, [] { FAIL(); });
    EXPECT_LT(m_time.TimeEnd(), kLongMs / 2);
}

TEST_F(LifetimeTest, WorkerOutlivesWhatItsStepThrows) {
    int steps = 0;
    RunWorker(m_lifetime, 1, [&] {
        if (++steps == 3) { m_lifetime.RequestExit(); }
        throw std::runtime_error("thrown by a step");
    });
    EXPECT_EQ(3, steps);
}

TEST(ContainExceptionsTest, TellsWhetherSomethingWasThrown) {
    EXPECT_TRUE(ContainExceptions([] {}));
    EXPECT_FALSE(ContainExceptions([] { throw 1; }));
}

} // namespace
} // namespace k740::test
