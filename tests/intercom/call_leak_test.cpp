// What many short calls leave behind.
#include "common/thread.h"
#include "tests/intercom/call_fixture.h"
#include "tests/support/process_state.h"

namespace k740::test {
namespace {

using CallLeakTest = CallFixture;

constexpr int kCalls = 200;
constexpr std::chrono::milliseconds kEndOfSenders{20'000}; // 3.1 s and generous leeway

TEST_F(CallLeakTest, TwoHundredCallsLeaveThreadsAndDescriptorsWhereTheyWere) {
    PassMarker();
    const int threads = RunningThreads();
    const auto descriptors = CountDescriptors(); // the socket of the marker's answer may still be among them
    unsigned char audio[4'096] = {};
    for (int call = 0; call < kCalls; ++call) {
        const int intercom = call % 2 == 0 ? kIntercom : kOtherIntercom;
        m_station.Invite(static_cast<std::uint32_t>(intercom));
        ASSERT_TRUE(WaitUntil([=] { return StateOf(intercom) == Ringing(); })) << call;
        ASSERT_EQ(0, K740_Accept(intercom, kStation));
        ASSERT_EQ(0, K740_SendIntercomAudio(intercom, audio, sizeof(audio)));
        if (call % 4 < 2) {
            ASSERT_EQ(0, K740_HangUp(intercom));
        } else {
            m_station.AnswerCall(static_cast<std::uint32_t>(intercom), 2);
        }
        ASSERT_TRUE(WaitUntil([=] { return StateOf(intercom) == Idle(); })) << call;
    }
    EXPECT_TRUE(WaitUntil([=] { return RunningThreads() == threads; }, kEndOfSenders));
    EXPECT_TRUE(WaitForLogLine("stop send audio.", kCalls));
    EXPECT_TRUE(WaitUntil([=] { return CountDescriptors() <= descriptors; }));
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom)) << "no buffer is left";
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kOtherIntercom));
}

} // namespace
} // namespace k740::test
