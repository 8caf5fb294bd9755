// Which stored answer a trigger takes.
#include "tests/zcu/trigger_fixture.h"
#include "zcu/trigger_job.h"

#include <atomic>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using sim::PlayAnswer;
using sim::PlayReply;

constexpr std::uint32_t kTokenA = 100;
constexpr int kBound = 2048;

/// The controller itself is silent; the test gives its answers, beforehand.
class TriggerAnswersTest : public TriggerTest {
protected:
    TriggerAnswersTest() { Reply(PlayReply::Silent); }

    /// A trigger that finds its answer at its first look takes no longer than this.
    template <typename Trigger> bool IsQuick(Trigger trigger) {
        const auto start = std::chrono::steady_clock::now();
        trigger();
        return std::chrono::steady_clock::now() - start < std::chrono::seconds(4);
    }
};

TEST_F(TriggerAnswersTest, TheAnswersTokensAndFlagAreHandedOut) {
    GiveAnswer(MatchingAnswer(kTokenA));
    const TriggerResult result = TriggerStream();
    EXPECT_EQ(1, result.success);
    EXPECT_EQ(kTokenA, result.outcome.tokenA);
    EXPECT_EQ(kTokenA + 1, result.outcome.tokenB);
    EXPECT_EQ(1, result.outcome.joinFollows);
    EXPECT_TRUE(result.outcome.acceptedNoJoin);
}

TEST_F(TriggerAnswersTest, TheNewerOfTwoAnswersIsTakenAndEachOnce) {
    GiveAnswer(MatchingAnswer(kTokenA));
    GiveAnswer(MatchingAnswer(kTokenA + 10));
    EXPECT_EQ(kTokenA + 10, TriggerStream().outcome.tokenA);
    EXPECT_EQ(kTokenA, TriggerStream().outcome.tokenA);
    EXPECT_EQ("0 trigger -9 join 0 tokens -- follows 0", Summary(TriggerStream()));
}

TEST_F(TriggerAnswersTest, AnswersToOthersDoNotMatch) {
    GiveAnswer(MatchingAnswer(kTokenA));
    PlayAnswer other = MatchingAnswer(1);
    other.sequence = 2;
    GiveAnswer(other);
    other = MatchingAnswer(2);
    other.taskId = kTask + 1;
    GiveAnswer(other);
    GiveAnswer(MatchingAnswer(3), kController + 1);
    EXPECT_EQ(kTokenA, TriggerStream().outcome.tokenA);
}

TEST_F(TriggerAnswersTest, AnAnswerAfterTheTimeoutIsKeptForTheNextRequest) {
    EXPECT_EQ(-9, TriggerStream().outcome.triggerResult);
    GiveAnswer(MatchingAnswer(kTokenA));
    TriggerResult result;
    EXPECT_TRUE(IsQuick([&] { result = TriggerStream(); }));
    EXPECT_EQ(kTokenA, result.outcome.tokenA);
}

TEST_F(TriggerAnswersTest, ThereIsRoomFor2048Answers) {
    GiveAnswer(MatchingAnswer(kTokenA));
    for (int i = 1; i < kBound; ++i) { GiveAnswer(MatchingAnswer(1), kController + 1); }
    EXPECT_EQ(kTokenA, TriggerStream().outcome.tokenA);
}

TEST_F(TriggerAnswersTest, OneMoreErasesTheOldest) {
    GiveAnswer(MatchingAnswer(kTokenA));
    for (int i = 0; i < kBound; ++i) { GiveAnswer(MatchingAnswer(1), kController + 1); }
    EXPECT_EQ(-9, TriggerStream().outcome.triggerResult);
}

TEST_F(TriggerAnswersTest, AnswersOfIDsThatAreNoControllersAreNotStored) {
    GiveAnswer(MatchingAnswer(kTokenA));
    for (int i = 0; i < kBound; ++i) { GiveAnswer(MatchingAnswer(1), i % 2 == 0 ? 0 : 1000); }
    EXPECT_EQ(kTokenA, TriggerStream().outcome.tokenA);
}

TEST_F(TriggerAnswersTest, TheJoinReportMustCarryBothTokensAndTheController) {
    GiveAnswer(MatchingAnswer(kTokenA, 1));
    GiveReport({2, kTokenA, kTokenA + 1}); // older, and a refusal
    GiveReport({1, kTokenA, kTokenA + 1});
    GiveReport({3, kTokenA + 9, kTokenA + 1});
    GiveReport({4, kTokenA, kTokenA + 9});
    GiveReport({5, kTokenA + 1, kTokenA});
    GiveReport({6, kTokenA, kTokenA + 1}, kController + 1);
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 1", Summary(TriggerStream()));
    GiveAnswer(MatchingAnswer(kTokenA, 1));
    EXPECT_EQ("0 trigger 0 join -1 tokens AB follows 1", Summary(TriggerStream()));
}

TEST_F(TriggerAnswersTest, JoinReportsOfIDsThatAreNoControllersAreNotStored) {
    GiveAnswer(MatchingAnswer(kTokenA, 1));
    GiveReport({1, kTokenA, kTokenA + 1});
    for (int i = 0; i < kBound; ++i) { GiveReport({1, 1, 1}, i % 2 == 0 ? 0 : 1000); }
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 1", Summary(TriggerStream()));
}

TEST_F(TriggerAnswersTest, ThereIsRoomFor2048JoinReports) {
    GiveAnswer(MatchingAnswer(kTokenA, 1));
    GiveReport({1, kTokenA, kTokenA + 1});
    for (int i = 1; i < kBound; ++i) { GiveReport({1, 1, 1}); }
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 1", Summary(TriggerStream()));
}

TEST_F(TriggerAnswersTest, OneMoreJoinReportErasesTheOldest) {
    GiveAnswer(MatchingAnswer(kTokenA, 1));
    GiveReport({1, kTokenA, kTokenA + 1});
    for (int i = 0; i < kBound; ++i) { GiveReport({1, 1, 1}); }
    EXPECT_EQ("0 trigger 0 join -9 tokens AB follows 1", Summary(TriggerStream()));
}

TEST_F(TriggerAnswersTest, EveryFlagButZeroAnnouncesAReport) {
    sim::Bytes payload = sim::Payload(MatchingAnswer(kTokenA, 1));
    payload[0] = 0x80;
    m_controller.SendToStation(0x8205, payload);
    GiveReport({2, kTokenA, kTokenA + 1});
    const TriggerResult result = TriggerStream();
    EXPECT_EQ("0 trigger 0 join -1 tokens AB follows 128", Summary(result));
}

TEST_F(TriggerAnswersTest, FreshAnswersSurviveTheCleanUp) {
    GiveAnswer(MatchingAnswer(kTokenA));
    g_app->ZCU().ClearOutDateJoinMCastResponse();
    EXPECT_EQ(kTokenA, TriggerStream().outcome.tokenA);
}

TEST_F(TriggerAnswersTest, AnswersOfTwoMinutesAgoAreCleanedUp) {
    GiveAnswer(MatchingAnswer(kTokenA));
    g_app->ZCU().ClearOutDateJoinMCastResponse(time(nullptr) + 120);
    EXPECT_EQ("0 trigger -9 join 0 tokens -- follows 0", Summary(TriggerStream()));
}

TEST_F(TriggerAnswersTest, ConcurrentTriggersTakeTheirOwnAnswers) {
    Reply(PlayReply::AcceptWithJoin);
    std::atomic<int> joined{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 20; ++i) {
        threads.emplace_back([&, i] {
            tagZCU_PARAM param = m_param;
            param.taskID = static_cast<uint32_t>(kTask + i);
            param.sequence = static_cast<uint16_t>(i + 1);
            TriggerOutcome outcome;
            joined += g_app->ZCU().ZCU_Request_TriggerNetTask(&param, outcome);
        });
    }
    for (std::thread& thread : threads) { thread.join(); }
    EXPECT_EQ(20, joined);
}

TEST_F(TriggerAnswersTest, ATriggerThreadAnswersZeroForASuccessAndElseOne) {
    EXPECT_EQ(kTriggerThreadFailed, CZCU::ThreadTriggerZCUJoinNetStream(nullptr));
    EXPECT_EQ(kTriggerThreadFailed, CZCU::ThreadTriggerZCUJoinNetAUX(nullptr));
    EXPECT_EQ(reinterpret_cast<void*>(1), kTriggerThreadFailed);
    const auto job = [this] { // the thread frees it
        return new TriggerJob{g_app->ZCU(), m_param, [] { return false; }, [] { return false; }};
    };
    GiveAnswer(MatchingAnswer(kTokenA));
    GiveAnswer(MatchingAnswer(kTokenA));
    EXPECT_EQ(nullptr, CZCU::ThreadTriggerZCUJoinNetStream(job()));
    EXPECT_EQ(nullptr, CZCU::ThreadTriggerZCUJoinNetAUX(job()));
    GiveAnswer(MatchingAnswer(kTokenA, 2));
    GiveAnswer(MatchingAnswer(kTokenA, 2));
    EXPECT_EQ(kTriggerThreadFailed, CZCU::ThreadTriggerZCUJoinNetStream(job()));
    EXPECT_EQ(kTriggerThreadFailed, CZCU::ThreadTriggerZCUJoinNetAUX(job()));
}

} // namespace
} // namespace k740::test
