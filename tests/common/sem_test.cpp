#include "common/sem.h"
#include "common/stopwatch.h"
#include "tests/common/interruption.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <thread>
#include <type_traits>

namespace k740::test {
namespace {

static_assert(std::has_virtual_destructor_v<CQBSem> && std::has_virtual_destructor_v<CQBSemLocker>);
static_assert(!std::is_copy_constructible_v<CQBSem> && !std::is_copy_assignable_v<CQBSem>);
static_assert(!std::is_copy_constructible_v<CQBSemLocker> && !std::is_convertible_v<CQBSem*, CQBSemLocker>);

// The counting is tested here, so locks are given back more often than taken, and by other threads.

class SemTest : public ::testing::TestWithParam<int> {
protected:
    SemTest() { m_sinceStart.TimeStart(); }
    void Take(int times) K740_NO_THREAD_SAFETY_ANALYSIS {
        for (int i = 0; i < times; ++i) { m_sem.Lock(); }
    }
    void GiveBack() K740_NO_THREAD_SAFETY_ANALYSIS { m_sem.UnLock(); }

    CQBSem m_sem;
    CQBTime m_sinceStart;
};

TEST_F(SemTest, StartsFree) {
    EXPECT_EQ(1, m_sem.value());
}

TEST_F(SemTest, LockTakesAndUnLockGivesBack) {
    Take(1);
    EXPECT_EQ(0, m_sem.value());
    GiveBack();
    EXPECT_EQ(1, m_sem.value());
}

TEST_F(SemTest, UnLockOfAFreeSemaphoreLetsTwoLockersThrough) {
    GiveBack();
    EXPECT_EQ(2, m_sem.value());
    Take(2);
    EXPECT_EQ(0, m_sem.value());
}

TEST_F(SemTest, LockerHoldsFromConstructionToDestruction) {
    {
        const CQBSemLocker locker(&m_sem);
        EXPECT_EQ(0, m_sem.value());
    }
    EXPECT_EQ(1, m_sem.value());
}

TEST_F(SemTest, LockersExcludeEachOther) {
    constexpr int kRounds = 10'000;
    int count = 0;
    const auto add = [&] {
        for (int i = 0; i < kRounds; ++i) {
            const CQBSemLocker locker(&m_sem);
            ++count;
        }
    };
    { const std::array<std::jthread, 3> threads{std::jthread(add), std::jthread(add), std::jthread(add)}; }
    EXPECT_EQ(3 * kRounds, count);
}

TEST_F(SemTest, TryLockTakesAFreeSemaphoreAndKeepsIt) {
    EXPECT_EQ(0, m_sem.TryLock_ms(1));
    EXPECT_EQ(0, m_sem.value());
    GiveBack();
    EXPECT_EQ(0, m_sem.TryLock_us(1));
    EXPECT_EQ(0, m_sem.value());
}

TEST_F(SemTest, TryLockOfZeroReturnsAtOnce) {
    Take(1);
    EXPECT_EQ(0, m_sem.TryLock_ms(0));
    EXPECT_EQ(0, m_sem.TryLock_us(0));
    EXPECT_LT(m_sinceStart.TimeEnd(), 1000U);
    EXPECT_EQ(0, m_sem.value());
}

TEST_F(SemTest, TryLockReturns0AlsoWhenTheTimeRunsOut) {
    Take(1);
    EXPECT_EQ(0, m_sem.TryLock_ms(20));
    EXPECT_GE(m_sinceStart.TimeEnd_us(), 20'000);
    EXPECT_EQ(0, m_sem.value());
}

TEST_F(SemTest, TryLockCountsMicroseconds) {
    Take(1);
    EXPECT_EQ(0, m_sem.TryLock_us(1500));
    EXPECT_GE(m_sinceStart.TimeEnd_us(), 1500);
    EXPECT_LT(m_sinceStart.TimeEnd_us(), 1'000'000);
}

TEST_F(SemTest, TryLockOf1500MillisecondsCarriesTheSeconds) {
    Take(1);
    EXPECT_EQ(0, m_sem.TryLock_ms(1500));
    EXPECT_GE(m_sinceStart.TimeEnd_us(), 1'500'000);
    EXPECT_LT(m_sinceStart.TimeEnd_us(), 3'000'000);
}

// A deadline that is not carried is refused at once, so over a whole second no sleep may be short.
TEST_F(SemTest, TryLockIsNeverShortWhereverInTheSecondItBegins) {
    Take(1);
    while (m_sinceStart.TimeEnd() <= 1000) {
        CQBTime slept;
        slept.TimeStart();
        m_sem.TryLock_ms(25);
        ASSERT_GE(slept.TimeEnd_us(), 25'000);
    }
}

TEST_F(SemTest, TryLockFormsItsMicrosecondsIn32Bits) {
    Take(1);
    m_sem.TryLock_ms(4'294'968); // 704 microseconds
    EXPECT_GE(m_sinceStart.TimeEnd_us(), 704);
    EXPECT_LT(m_sinceStart.TimeEnd(), 5000U);
}

TEST_F(SemTest, UnLockCutsATryLockShort) {
    Take(1);
    SleepingThread sleeper([this] { m_sem.TryLock_ms(60'000); });
    ASSERT_TRUE(sleeper.WaitUntilAsleep());
    GiveBack();
    sleeper.Join();
    EXPECT_LT(m_sinceStart.TimeEnd(), 30'000U);
    EXPECT_EQ(0, m_sem.value());
}

TEST_F(SemTest, EachUnLockWakesOneSleeper) {
    Take(1);
    SleepingThread first([this] { m_sem.TryLock_ms(60'000); });
    SleepingThread second([this] { m_sem.TryLock_ms(60'000); });
    ASSERT_TRUE(first.WaitUntilAsleep() && second.WaitUntilAsleep());
    GiveBack();
    ASSERT_TRUE(WaitUntil([&] { return first.HasEnded() || second.HasEnded(); }));
    EXPECT_FALSE(first.HasEnded() && second.HasEnded());
    EXPECT_EQ(0, m_sem.value());
    GiveBack();
}

// With and without SA_RESTART: sem_timedwait ends for a signal in either case, sem_wait only without.
TEST_P(SemTest, LockSurvivesSignals) {
    CountSignals(GetParam());
    Take(1);
    SleepingThread locker([this] { Take(1); });
    for (int i = 0; i < 10; ++i) { ASSERT_TRUE(locker.Interrupt()); }
    ASSERT_TRUE(locker.WaitUntilAsleep());
    EXPECT_FALSE(locker.HasEnded());
    GiveBack();
    locker.Join();
    EXPECT_EQ(0, m_sem.value()); // taken once, by the thread
    GiveBack();
    EXPECT_EQ(1, m_sem.value());
}

TEST_P(SemTest, TryLockSleepsItsTimeInSpiteOfSignals) {
    CountSignals(GetParam());
    Take(1);
    int64_t slept = 0;
    SleepingThread sleeper([&] {
        CQBTime time;
        time.TimeStart();
        EXPECT_EQ(0, m_sem.TryLock_ms(400));
        slept = time.TimeEnd_us();
    });
    ASSERT_TRUE(sleeper.Interrupt());
    ASSERT_TRUE(sleeper.Interrupt());
    sleeper.Join();
    EXPECT_GE(slept, 400'000);
    EXPECT_LT(slept, 5'000'000); // the deadline stays where it was
}

INSTANTIATE_TEST_SUITE_P(Handlers, SemTest, ::testing::Values(0, SA_RESTART), [](const auto& handler) {
    return handler.param == SA_RESTART ? "WithRestart" : "WithoutRestart";
});

} // namespace
} // namespace k740::test
