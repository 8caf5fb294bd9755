// Calls that the host makes from an intercom to a paging station.
#include "tests/intercom/call_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const MessageCall kAcceptance{kStation, kIntercom, kAccepted};
const MessageCall kRefusal{kStation, kIntercom, kHungUpByStation};

class OutgoingCallTest : public CallFixture {
protected:
    void InviteStation() {
        EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
        EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x0701), kSoon));
    }
    void InviteAndTalk() {
        InviteStation();
        m_station.AnswerCall(kIntercom, 1);
        EXPECT_TRUE(Host().WaitForMessage(kAcceptance));
    }
};

TEST_F(OutgoingCallTest, InvitationGoesToTheRequestPortWithEightZeros) {
    InviteStation();
    const auto invitations = ReceivedBy(kStation, 0x0701);
    ASSERT_EQ(1U, invitations.size());
    EXPECT_EQ(PacketBytes(kIntercom, kStation, 0x0701, sim::Bytes(8)), invitations[0].bytes);
    EXPECT_EQ(28001, invitations[0].port);
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_TRUE(WaitForExactLine("K740_Invite(5500, 5000)"));
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(OutgoingCallTest, StationThatRingsIsLoggedOnly) {
    InviteStation();
    m_station.AnswerCall(kIntercom, 0);
    PassMarker();
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_THAT(CodesAt(), IsEmpty());
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 ring intercom 5500")); // without a full stop
}

TEST_F(OutgoingCallTest, RingingOfAnIdleIntercomChangesNothing) {
    m_station.AnswerCall(kIntercom, 0);
    PassMarker();
    EXPECT_EQ(Idle(0), StateOf());
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 ring intercom 5500"));
}

TEST_F(OutgoingCallTest, StationAcceptsAndTheHostIsTold) {
    InviteAndTalk();
    EXPECT_EQ(Talking(), StateOf());
    PassMarker();
    EXPECT_THAT(CodesAt(), IsEmpty()) << "an acceptance is not answered";
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 accept intercom 5500."));
}

TEST_F(OutgoingCallTest, StationRefusesAndTheHostIsTold) {
    InviteStation();
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(Host().WaitForMessage(kRefusal));
    EXPECT_EQ(Idle(), StateOf());
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 hang up intercom 5500."));
}

TEST_F(OutgoingCallTest, StationThatActsByItselfIsMetToo) {
    m_station.SetCallBehaviour({sim::CallReply::Accept, std::chrono::milliseconds(10)});
    m_otherStation.SetCallBehaviour({sim::CallReply::Refuse, std::chrono::milliseconds(10)});
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    EXPECT_EQ(0, K740_Invite(kOtherIntercom, kOtherStation));
    EXPECT_TRUE(Host().WaitForMessage(kAcceptance));
    EXPECT_TRUE(Host().WaitForMessage({kOtherStation, kOtherIntercom, kHungUpByStation}));
    EXPECT_EQ(Talking(), StateOf());
    EXPECT_EQ(Idle(kOtherStation), StateOf(kOtherIntercom));
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 ring intercom 5500"));
}

TEST_F(OutgoingCallTest, AnotherStationThatAcceptsBecomesThePeer) {
    InviteStation();
    m_otherStation.AnswerCall(kIntercom, 1);
    EXPECT_TRUE(Host().WaitForMessage({kOtherStation, kIntercom, kAccepted}));
    EXPECT_EQ(Talking(kOtherStation), StateOf());
}

TEST_F(OutgoingCallTest, StationMayAcceptItsOwnInvitation) {
    RingFromStation();
    m_station.AnswerCall(kIntercom, 1);
    EXPECT_TRUE(Host().WaitForMessage(kAcceptance));
    EXPECT_EQ(Talking(), StateOf());
}

TEST_F(OutgoingCallTest, AcceptanceForAnIdleIntercomCausesNothing) {
    m_station.AnswerCall(kIntercom, 1);
    PassMarker();
    EXPECT_EQ(Idle(0), StateOf());
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_TRUE(WaitForExactLine("Receive Q-RPK 5000 accept intercom 5500."));
    EXPECT_EQ(-1, g_app->Talker().ProcessRPKAccept(kIntercom, kStation));
}

TEST_F(OutgoingCallTest, AcceptanceWithoutTheCallbackCausesNothing) {
    InviteStation();
    ASSERT_EQ(0, K740_SetIntercomCallback(nullptr, nullptr));
    EXPECT_EQ(-1, g_app->Talker().ProcessRPKAccept(kIntercom, kStation));
    EXPECT_EQ(Ringing(), StateOf());
    g_app->Talker().ProcessRPKHangUp(kIntercom, kStation);
    EXPECT_EQ(Idle(), StateOf()) << "an end needs none";
}

TEST_F(OutgoingCallTest, AcceptanceWhileTalkingCausesNothing) {
    InviteAndTalk();
    m_otherStation.AnswerCall(kIntercom, 1);
    m_station.AnswerCall(kIntercom, 1);
    PassMarker();
    EXPECT_EQ(Talking(), StateOf());
    EXPECT_THAT(Messages(), ElementsAre(kAcceptance));
}

TEST_F(OutgoingCallTest, OtherAnswerCodesAreIgnored) {
    InviteStation();
    for (int code = 3; code <= 255; ++code) { m_station.AnswerCall(kIntercom, static_cast<std::uint8_t>(code)); }
    PassMarker();
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_THAT(Messages(), IsEmpty());
    K740_SetNodeID(9999);
    ASSERT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
    EXPECT_EQ(0, CountLogLines("Receive Q-RPK"));
}

TEST_F(OutgoingCallTest, InvitingWhileItRingsIsRefused) {
    InviteStation();
    EXPECT_EQ(-3, K740_Invite(kIntercom, kStation));
    EXPECT_EQ(-3, K740_Invite(kIntercom, kOtherStation));
    PassMarker();
    EXPECT_EQ(1U, ReceivedBy(kStation, 0x0701).size());
    EXPECT_THAT(ReceivedBy(kOtherStation, 0x0701), IsEmpty());
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_TRUE(WaitForExactLine("K740_Invite(5500, 5001)")) << "refused calls are logged as well";
}

TEST_F(OutgoingCallTest, InvitingWhileAStationRingsIsRefused) {
    RingFromStation();
    EXPECT_EQ(-3, K740_Invite(kIntercom, kOtherStation));
}

TEST_F(OutgoingCallTest, InvitingWhileItTalksIsRefused) {
    InviteAndTalk();
    EXPECT_EQ(-3, K740_Invite(kIntercom, kOtherStation));
    PassMarker();
    EXPECT_THAT(ReceivedBy(kOtherStation, 0x0701), IsEmpty());
    EXPECT_EQ(Talking(), StateOf());
}

TEST_F(OutgoingCallTest, AfterARefusalTheNextInvitationGoesOut) {
    InviteStation();
    m_station.AnswerCall(kIntercom, 2);
    ASSERT_TRUE(Host().WaitForMessage(kRefusal));
    EXPECT_EQ(0, K740_Invite(kIntercom, kOtherStation));
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kOtherStation, 0x0701), kSoon));
    EXPECT_EQ(Ringing(kOtherStation), StateOf());
}

TEST_F(OutgoingCallTest, HostMayAcceptWhatItMadeRing) {
    InviteStation();
    EXPECT_EQ(0, K740_Accept(kIntercom, kStation));
    EXPECT_TRUE(WaitForAnswers(1));
    EXPECT_THAT(CodesAt(), ElementsAre(1));
    EXPECT_EQ(Talking(), StateOf());
}

} // namespace
} // namespace k740::test
