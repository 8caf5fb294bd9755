// Calls that a paging station makes to an intercom.
#include "tests/intercom/call_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using IncomingCallTest = CallFixture;

const MessageCall kInvitation{kStation, kIntercom, kInvited};
const MessageCall kEnd{kStation, kIntercom, kHungUpByStation};

TEST_F(IncomingCallTest, InvitationRingsIsAnsweredAndTold) {
    RingFromStation();
    PassMarker();
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_THAT(Messages(), ElementsAre(kInvitation));
    const auto answers = ReceivedBy(kStation, 0x8701);
    ASSERT_EQ(1U, answers.size());
    EXPECT_EQ(AnswerBytes(0), answers[0].bytes);
    EXPECT_EQ(29001, answers[0].port);
    EXPECT_TRUE(WaitForExactLine("=====Receive Q-RPK 5000 invite intercom 5500."));
}

TEST_F(IncomingCallTest, InvitationMayComeToTheRequestPort) {
    m_station.SendToStation(0x0701, kIntercom, sim::Bytes(8, 0xEE), 28001);
    EXPECT_TRUE(Host().WaitForMessage(kInvitation));
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_TRUE(WaitForAnswers(1));
}

TEST_F(IncomingCallTest, InvitedAgainItAnswersRingingAndNothingElseHappens) {
    RingFromStation();
    m_station.Invite(kIntercom);
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0, 0));
    EXPECT_THAT(Messages(), ElementsAre(kInvitation));
    EXPECT_EQ(Ringing(), StateOf());
    ASSERT_TRUE(WaitForExactLine("=====Receive Q-RPK 5000 invite intercom 5500."));
    EXPECT_EQ(1, CountLogLines("invite intercom"));
}

TEST_F(IncomingCallTest, AnotherStationMeetsRingingTooAndIsNotThePeer) {
    RingFromStation();
    m_otherStation.Invite(kIntercom);
    PassMarker();
    EXPECT_THAT(CodesAt(kOtherStation), ElementsAre(0));
    EXPECT_EQ(AnswerBytes(0, kIntercom, kOtherStation), ReceivedBy(kOtherStation, 0x8701).at(0).bytes);
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_THAT(Messages(), ElementsAre(kInvitation));
}

TEST_F(IncomingCallTest, AcceptingItTalksAndTellsTheStation) {
    RingAndAccept();
    EXPECT_EQ(Talking(), StateOf());
    const auto answers = ReceivedBy(kStation, 0x8701);
    ASSERT_EQ(2U, answers.size());
    EXPECT_EQ(AnswerBytes(1), answers[1].bytes);
    EXPECT_EQ(29001, answers[1].port);
    EXPECT_THAT(Messages(), ElementsAre(kInvitation));
}

TEST_F(IncomingCallTest, AcceptingForAnotherStationTalksToThat) {
    RingFromStation();
    EXPECT_EQ(0, K740_Accept(kIntercom, kOtherStation));
    EXPECT_TRUE(WaitForAnswers(1, kOtherStation));
    EXPECT_EQ(Talking(kOtherStation), StateOf());
    EXPECT_THAT(CodesAt(kOtherStation), ElementsAre(1));
    EXPECT_THAT(CodesAt(), ElementsAre(0));
}

TEST_F(IncomingCallTest, InvitedByWhomItTalksToItSendsNothing) {
    RingAndAccept();
    m_station.Invite(kIntercom);
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0, 1));
    EXPECT_EQ(Talking(), StateOf());
    EXPECT_THAT(Messages(), ElementsAre(kInvitation));
}

TEST_F(IncomingCallTest, InvitedByAnotherWhileItTalksItIsBusy) {
    RingAndAccept();
    m_otherStation.Invite(kIntercom);
    PassMarker();
    const auto answers = ReceivedBy(kOtherStation, 0x8701);
    ASSERT_EQ(1U, answers.size());
    EXPECT_EQ(AnswerBytes(2, kIntercom, kOtherStation), answers[0].bytes);
    EXPECT_EQ(29001, answers[0].port);
    EXPECT_THAT(CodesAt(), ElementsAre(0, 1));
    EXPECT_EQ(Talking(), StateOf());
    EXPECT_THAT(Messages(), ElementsAre(kInvitation));
}

TEST_F(IncomingCallTest, StationGivesUpRinging) {
    RingFromStation();
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(Host().WaitForMessage(kEnd));
    EXPECT_EQ(Idle(), StateOf());
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0)) << "the end is not answered";
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 hang up intercom 5500."));
}

TEST_F(IncomingCallTest, StationEndsTheTalk) {
    RingAndAccept();
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(Host().WaitForMessage(kEnd));
    EXPECT_EQ(Idle(), StateOf());
}

TEST_F(IncomingCallTest, AnotherStationEndsTheTalkAndBecomesThePeer) {
    RingAndAccept();
    m_otherStation.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(Host().WaitForMessage({kOtherStation, kIntercom, kHungUpByStation}));
    EXPECT_EQ(Idle(kOtherStation), StateOf());
}

TEST_F(IncomingCallTest, StationHangsUpAnIdleIntercom) {
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(Host().WaitForMessage(kEnd));
    EXPECT_EQ(Idle(), StateOf());
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(Host().WaitForMessage(kEnd, 2));
}

TEST_F(IncomingCallTest, AfterACallTheNextInvitationRingsAgain) {
    RingAndAccept();
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    m_otherStation.Invite(kIntercom);
    EXPECT_TRUE(Host().WaitForMessage({kOtherStation, kIntercom, kInvited}));
    EXPECT_EQ(Ringing(kOtherStation), StateOf());
    PassMarker();
    EXPECT_THAT(CodesAt(kOtherStation), ElementsAre(0));
}

TEST_F(IncomingCallTest, IntercomsOfOneStationAreApart) {
    m_station.Invite(kOtherIntercom);
    EXPECT_TRUE(Host().WaitForMessage({kStation, kOtherIntercom, kInvited}));
    EXPECT_EQ(Idle(0), StateOf());
    EXPECT_EQ(Ringing(), StateOf(kOtherIntercom));
    RingFromStation();
    EXPECT_EQ(0, K740_HangUp(kOtherIntercom));
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_EQ(Idle(), StateOf(kOtherIntercom));
}

TEST_F(IncomingCallTest, WithoutAnInvitationNothingHappens) {
    PassMarker();
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(Idle(0), StateOf());
}

} // namespace
} // namespace k740::test
