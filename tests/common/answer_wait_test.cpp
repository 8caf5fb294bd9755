#include "common/answer_wait.h"
#include "common/bounded_table.h"

#include <gtest/gtest.h>

#include <thread>

namespace k740::test {
namespace {

constexpr time_t kReceived = 1'000'000;

struct Answer {
    int device;
    int value;
    time_t receivedAt;
};
using Answers = CBoundedTable<Answer, 10>;

class AnswerWaitTest : public ::testing::Test {
protected:
    AnswerWaitTest() {
        m_lifetime.Begin();
        m_time.TimeStart();
    }
    std::optional<Answer> WaitForDevice(int device, AnswerTiming timing) {
        return WaitForAnswer(m_lifetime, m_answers, timing,
                             [device](const Answer& answer) { return answer.device == device; });
    }

    CLifetime m_lifetime;
    Answers m_answers;
    CQBTime m_time;
};

TEST_F(AnswerWaitTest, AnswersAreStaleFrom120SecondsOn) {
    EXPECT_FALSE(IsStaleAnswer(kReceived, kReceived));
    EXPECT_FALSE(IsStaleAnswer(kReceived, kReceived + 119));
    EXPECT_TRUE(IsStaleAnswer(kReceived, kReceived + 120));
    EXPECT_TRUE(IsStaleAnswer(kReceived, kReceived + 121));
}

TEST_F(AnswerWaitTest, AnswersOfTheFutureAreNotStale) {
    EXPECT_FALSE(IsStaleAnswer(kReceived, kReceived - 1000));
}

TEST_F(AnswerWaitTest, PurgeDropsTheStaleOnesAlone) {
    m_answers.Append({1, 1, kReceived});
    m_answers.Append({1, 2, kReceived + 1});
    m_answers.Append({1, 3, kReceived - 500});
    PurgeStaleAnswers(m_answers, kReceived + 120);
    ASSERT_EQ(1U, m_answers.Size());
    EXPECT_EQ(2, m_answers.Copy().front().value);
}

TEST_F(AnswerWaitTest, NewestAnswerOfTheDeviceWinsAndIsConsumed) {
    m_answers.Append({1, 10, kReceived});
    m_answers.Append({1, 11, kReceived});
    m_answers.Append({2, 20, kReceived});
    const auto answer = WaitForDevice(1, {1, 1000});
    ASSERT_TRUE(answer);
    EXPECT_EQ(11, answer->value);
    EXPECT_EQ(2U, m_answers.Size());
}

TEST_F(AnswerWaitTest, FirstLookComesAfterThePause) {
    m_answers.Append({1, 10, kReceived});
    EXPECT_TRUE(WaitForDevice(1, {20, 1000}));
    EXPECT_GE(m_time.TimeEnd_us(), 20'000);
}

TEST_F(AnswerWaitTest, AnswerThatComesMeanwhileIsTaken) {
    const std::jthread device([this] { m_answers.Append({1, 10, kReceived}); });
    EXPECT_TRUE(WaitForDevice(1, {1, 60'000}));
    EXPECT_LT(m_time.TimeEnd(), 30'000U);
}

TEST_F(AnswerWaitTest, NothingOnceTheTimeHasRunOut) {
    m_answers.Append({2, 20, kReceived});
    EXPECT_FALSE(WaitForDevice(1, {5, 49}));
    EXPECT_GE(m_time.TimeEnd(), 50U);
    EXPECT_EQ(1U, m_answers.Size());
}

} // namespace
} // namespace k740::test
