#include "common/stopwatch.h"
#include "common/wake_signal.h"
#include "tests/common/interruption.h"

#include <gtest/gtest.h>

#include <atomic>

namespace k740::test {
namespace {

constexpr unsigned kLongMs = 60'000;

class WakeSignalTest : public ::testing::Test {
protected:
    WakeSignalTest() { m_time.TimeStart(); }

    CWakeSignal m_signal;
    CQBTime m_time;
};

TEST_F(WakeSignalTest, WaitLastsItsTimeWhenNobodyRaises) {
    m_signal.Wait(20);
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(WakeSignalTest, RaiseEndsTheWaitInProgress) {
    SleepingThread waiter([this] { m_signal.Wait(kLongMs); });
    ASSERT_TRUE(waiter.WaitUntilAsleep());
    m_signal.Raise();
    waiter.Join();
    EXPECT_LT(m_time.TimeEnd(), kLongMs / 2);
}

TEST_F(WakeSignalTest, RaiseBeforeTheWaitEndsTheNextOne) {
    m_signal.Raise();
    m_signal.Wait(kLongMs);
    EXPECT_LT(m_time.TimeEnd(), kLongMs / 2);
}

TEST_F(WakeSignalTest, ManyRaisesEndOneWait) {
    for (int i = 0; i < 100; ++i) { m_signal.Raise(); }
    m_signal.Wait(kLongMs);
    m_time.TimeStart();
    m_signal.Wait(20);
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(WakeSignalTest, RaisesAfterAWaitCountAgain) {
    for (int i = 0; i < 3; ++i) {
        m_signal.Raise();
        m_signal.Wait(kLongMs);
    }
    EXPECT_LT(m_time.TimeEnd(), kLongMs / 2);
}

// Also where the waits run out just as work comes: what precedes a Raise is seen after the Wait that it ends.
TEST_F(WakeSignalTest, NothingRaisedIsLostBetweenTwoThreads) {
    constexpr int kLast = 20'000;
    std::atomic<int> produced{0};
    SleepingThread consumer([&] {
        while (produced.load(std::memory_order_relaxed) < kLast) { m_signal.Wait(kLongMs); }
    });
    for (int i = 1; i <= kLast; ++i) {
        produced.store(i, std::memory_order_relaxed);
        m_signal.Raise();
    }
    consumer.Join();
    EXPECT_LT(m_time.TimeEnd(), kLongMs / 2);
}

} // namespace
} // namespace k740::test
