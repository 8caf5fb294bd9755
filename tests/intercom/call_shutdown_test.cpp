// The library's end while calls are going on.
#include "common/thread.h"
#include "tests/intercom/talk_fixture.h"
#include "tests/support/process_state.h"

namespace k740::test {
namespace {

using ::testing::Each;
using ::testing::Ne;

constexpr std::chrono::milliseconds kEndOfSenders{20'000}; // 3.1 s and generous leeway

class CallShutdownTest : public TalkFixture {
protected:
    ~CallShutdownTest() override { Host().reaction = nullptr; }

    void LetStationSpeak() {
        m_station.SendIntercomAudio();
        ASSERT_TRUE(Host().WaitForAudio(1));
    }
    /// Ends the library and expects everything to be over soon.
    void Shutdown() const {
        EXPECT_EQ(0, K740_Deinitialize());
        EXPECT_TRUE(IsPortFree(29002));
        EXPECT_TRUE(IsPortFree(29001));
        EXPECT_TRUE(IsPortFree(28001));
        EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }, kEndOfSenders));
        EXPECT_TRUE(Field().WaitUntil([] { return true; }, kSoon)); // the stations have read what had come by then
        for (const int station : {kStation, kOtherStation}) {
            EXPECT_THAT(CodesAt(station), Each(Ne(2))) << "calls are left as they are";
        }
    }
};

TEST_F(CallShutdownTest, PortsAreFreeWhenItReturnsAmidCallsThatBegin) {
    Talk(m_station, kIntercom);
    ASSERT_EQ(0, K740_Invite(kOtherIntercom, kOtherStation));
    LetStationSpeak();
    Shutdown();
    const std::size_t heard = Host().audioBlocks;
    ASSERT_TRUE(m_station.WaitForIntercomAudio(1, kSoon)) << "a call sends its first datagrams all the same";
    EXPECT_EQ(heard, Host().audioBlocks) << "nobody is told after the end";
}

TEST_F(CallShutdownTest, AudioThatFlowsEnds) {
    Talk(m_station, kIntercom);
    FillBuffer(kIntercom);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(200 * kFrameSamplesHeard)));
    LetStationSpeak();
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 2, kSoon));
    Shutdown();
    EXPECT_LT(m_station.IntercomAudio().datagrams, kPriming + 200);
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom)) << "nothing is left";
}

TEST_F(CallShutdownTest, MayBeCalledInTheCallbackOfAMessage) {
    static std::atomic<int> result{77};
    Host().reaction = [](const MessageCall&) { result = K740_Deinitialize(); };
    m_station.Invite(kIntercom);
    ASSERT_TRUE(WaitUntil([] { return result != 77; }));
    EXPECT_EQ(0, result);
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }, kEndOfSenders));
    EXPECT_TRUE(IsPortFree(29002));
}

TEST_F(CallShutdownTest, CallsOfTheHostAreBorneAfterwards) {
    EXPECT_EQ(0, K740_Deinitialize());
    unsigned char audio[2] = {};
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    EXPECT_EQ(0, K740_Accept(kIntercom, kStation));
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio, 2));
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_EQ(Idle(), StateOf());
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }, kEndOfSenders));
}

} // namespace
} // namespace k740::test
