// The end of a ringing that nobody answers, on times that the test makes up.
#include "tests/intercom/call_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RingTimeoutTest : public CallFixture {
protected:
    /// @return when the intercom's status changed last
    static time_t Changed(int intercomID = kIntercom) {
        tagTALK_STATUS record;
        EXPECT_EQ(0, g_app->Talker().GetTalkerStatus(intercomID, record));
        return record.changed;
    }
    static void Maintain(time_t now) { g_app->Talker().MaintainTalkStatus(now); }
    static constexpr const char* kLine = "Intercom 5500 hang up for ring is timeout.";
};

TEST_F(RingTimeoutTest, After59SecondsItStillRings) {
    RingFromStation();
    Maintain(Changed() + 59);
    PassMarker();
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_THAT(CodesAt(), ElementsAre(0));
}

TEST_F(RingTimeoutTest, After60SecondsItIsHungUpAndTheHostNotTold) {
    RingFromStation();
    Maintain(Changed() + 60);
    EXPECT_EQ(Idle(), StateOf());
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0, 2, 2));
    const auto answers = ReceivedBy(kStation, 0x8701);
    EXPECT_EQ(AnswerBytes(2), answers[1].bytes);
    EXPECT_GE(answers[2].time - answers[1].time, std::chrono::milliseconds(19));
    EXPECT_EQ(1U, Messages().size()) << "the invitation";
    EXPECT_TRUE(WaitForExactLine(kLine));
    EXPECT_EQ(0, CountLogLines("K740_HangUp"));
}

TEST_F(RingTimeoutTest, LaterThan60SecondsToo) {
    RingFromStation();
    Maintain(Changed() + 61);
    EXPECT_EQ(Idle(), StateOf());
}

TEST_F(RingTimeoutTest, OwnInvitationsTimeOutToo) {
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    Maintain(Changed() + 59);
    EXPECT_EQ(Ringing(), StateOf());
    Maintain(Changed() + 60);
    EXPECT_EQ(Idle(), StateOf());
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(2, 2));
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(RingTimeoutTest, TalkingNeverTimesOut) {
    RingAndAccept();
    Maintain(Changed() + 1'000'000);
    EXPECT_EQ(Talking(), StateOf());
}

TEST_F(RingTimeoutTest, IdleIntercomsAreLeftAlone) {
    RingFromStation();
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    PassMarker();
    const auto before = CodesAt();
    Maintain(Changed() + 60);
    PassMarker();
    EXPECT_EQ(before, CodesAt());
}

TEST_F(RingTimeoutTest, AnotherInvitationDoesNotRenewTheTime) {
    RingFromStation();
    const time_t first = Changed();
    ASSERT_TRUE(WaitUntil([&] { return time(nullptr) > first; }));
    m_station.Invite(kIntercom);
    ASSERT_TRUE(WaitForAnswers(2));
    EXPECT_EQ(first, Changed());
    Maintain(first + 60);
    EXPECT_EQ(Idle(), StateOf());
}

TEST_F(RingTimeoutTest, EachIntercomHasItsOwnTime) {
    RingFromStation();
    const time_t first = Changed();
    ASSERT_TRUE(WaitUntil([&] { return time(nullptr) > first; }));
    EXPECT_EQ(0, K740_Invite(kOtherIntercom, kOtherStation));
    Maintain(first + 60);
    EXPECT_EQ(Idle(), StateOf());
    EXPECT_EQ(Ringing(kOtherStation), StateOf(kOtherIntercom));
}

TEST_F(RingTimeoutTest, QueuedAudioOfAnEarlierTalkIsDropped) {
    RingAndAccept();
    unsigned char audio[2] = {};
    ASSERT_EQ(0, K740_SendIntercomAudio(kIntercom, audio, 2));
    m_station.AnswerCall(kIntercom, 2); // leaves the audio
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kHungUpByStation}));
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    Maintain(Changed() + 60);
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom));
}

TEST_F(RingTimeoutTest, IntercomThatIsNoLongerRegisteredIsLeftAlone) {
    RingFromStation();
    const time_t changed = Changed();
    ASSERT_EQ(0, K740_RemoveDevice(kIntercom));
    Maintain(changed + 60);
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0));
}

} // namespace
} // namespace k740::test
