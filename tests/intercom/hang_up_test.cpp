// The host's end of a call.
#include "common/stopwatch.h"
#include "tests/intercom/call_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HangUpTest : public CallFixture {
protected:
    /// Hangs up and expects two answers with code 2, after those that came before.
    void ExpectTwoEnds(std::size_t before) {
        CQBTime watch;
        watch.TimeStart();
        EXPECT_EQ(0, K740_HangUp(kIntercom));
        EXPECT_GE(watch.TimeEnd_us(), 20'000);
        EXPECT_EQ(Idle(), StateOf());
        ASSERT_TRUE(WaitForAnswers(before + 2));
        PassMarker();
        const auto answers = ReceivedBy(kStation, 0x8701);
        ASSERT_EQ(before + 2, answers.size());
        for (std::size_t i = before; i < before + 2; ++i) {
            EXPECT_EQ(AnswerBytes(2), answers[i].bytes);
            EXPECT_EQ(29001, answers[i].port);
        }
        EXPECT_GE(answers[before + 1].time - answers[before].time, std::chrono::milliseconds(19));
    }
};

TEST_F(HangUpTest, TalkEndsWithTwoAnswers20MillisecondsApart) {
    RingAndAccept();
    ExpectTwoEnds(2);
    EXPECT_TRUE(WaitForExactLine("K740_HangUp(5500)"));
}

TEST_F(HangUpTest, RefusesAStationThatRings) {
    RingFromStation();
    ExpectTwoEnds(1);
}

TEST_F(HangUpTest, WithdrawsAnInvitation) {
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    ExpectTwoEnds(0);
}

TEST_F(HangUpTest, IdleIntercomTellsItsLastPeer) {
    RingFromStation();
    ExpectTwoEnds(1);
    ExpectTwoEnds(3);
}

TEST_F(HangUpTest, HostIsNotToldOfItsOwnDoing) {
    RingAndAccept();
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    PassMarker();
    EXPECT_THAT(Messages(), ElementsAre(MessageCall{kStation, kIntercom, kInvited}));
}

TEST_F(HangUpTest, WithoutAPeerNothingIsSentAndTheIntercomIsIdle) {
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_GE(watch.TimeEnd_us(), 20'000);
    EXPECT_EQ(Idle(0), StateOf());
    PassMarker();
    EXPECT_THAT(CodesAt(), IsEmpty());
    EXPECT_THAT(CodesAt(kOtherStation), IsEmpty());
    tagTALK_STATUS record;
    EXPECT_EQ(0, g_app->Talker().GetTalkerStatus(kIntercom, record)) << "there is a record from now on";
    EXPECT_EQ(2, record.status);
    EXPECT_EQ(0U, record.peerID);
}

TEST_F(HangUpTest, QueuedAudioIsDropped) {
    RingAndAccept();
    unsigned char audio[2] = {1, 2};
    ASSERT_EQ(0, K740_SendIntercomAudio(kIntercom, audio, 2));
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom)) << "nothing is left";
}

TEST_F(HangUpTest, StationThatIsGoneIsNotTold) {
    RingFromStation();
    ASSERT_EQ(0, K740_RemoveDevice(kStation));
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0));
    EXPECT_EQ(Idle(), StateOf());
}

TEST_F(HangUpTest, GoesToWhereTheStationIsRegistered) {
    RingFromStation();
    ASSERT_EQ(0, K740_RemoveDevice(kStation));
    ASSERT_EQ(0, K740_RemoveDevice(kOtherStation));
    ASSERT_EQ(0, K740_AddDevice(kStation, 2, kOtherStationIP));
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    ASSERT_TRUE(WaitForAnswers(2, kOtherStation));
    EXPECT_EQ(AnswerBytes(2), ReceivedBy(kOtherStation, 0x8701).at(0).bytes);
}

} // namespace
} // namespace k740::test
