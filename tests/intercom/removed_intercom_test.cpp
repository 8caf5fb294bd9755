// What is left of a call whose intercom is removed.
#include "sim/raw_sender.h"
#include "tests/intercom/talk_fixture.h"

#include <thread>

namespace k740::test {
namespace {

using ::testing::ElementsAre;

class RemovedIntercomTest : public TalkFixture {
protected:
    static void Remove() { ASSERT_EQ(0, K740_RemoveDevice(kIntercom)); }
    static void AddAgain() { ASSERT_EQ(0, K740_AddDevice(kIntercom, 10, "")); }
    static sim::Bytes Frame() { return sim::Bytes(4'096, 0x11); }

    /// Lets a station say one datagram.
    void Say(int stationID) const {
        sim::AudioEncoder encoder(static_cast<std::uint32_t>(stationID), 1, 341);
        m_sender.Send(sim::Pack(encoder.Encode(Noise(kFrameSamplesHeard))), 29002);
    }

    const sim::RawSender m_sender{Network(), kStationIP};
};

TEST_F(RemovedIntercomTest, SenderEnds) {
    RingAndAccept();
    FillBuffer(kIntercom);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(100 * kFrameSamplesHeard)));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 1, kSoon));
    Remove();
    EXPECT_TRUE(WaitForExactLine(EndLine()));
    EXPECT_LE(m_station.IntercomAudio().datagrams, kPriming + 60) << "200 ms are 5 datagrams";
}

TEST_F(RemovedIntercomTest, AudioIsRefusedAsThatOfNoCallAndWhatWaitedIsDropped) {
    RingAndAccept();
    ASSERT_EQ(0, PushBytes(kIntercom, Frame()));
    Remove();
    EXPECT_EQ(-2, PushBytes(kIntercom, Frame()));
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom)) << "nothing is left";
}

TEST_F(RemovedIntercomTest, StationIsNoLongerHeard) {
    RingAndAccept();
    Talk(m_otherStation, kOtherIntercom);
    Remove();
    Say(kStation);
    Say(kOtherStation);
    ASSERT_TRUE(Host().WaitForAudio(1));
    EXPECT_EQ(kOtherStation, Host().audio.All().at(0).stationID);
}

TEST_F(RemovedIntercomTest, NeitherStationNorHostAreTold) {
    RingAndAccept();
    Remove();
    PassMarker();
    EXPECT_THAT(CodesAt(), ElementsAre(0, 1));
    EXPECT_THAT(Messages(), ElementsAre(MessageCall{kStation, kIntercom, kInvited}));
}

TEST_F(RemovedIntercomTest, CallsOfTheHostNameNoIntercom) {
    RingAndAccept();
    Remove();
    EXPECT_EQ(-2, K740_HangUp(kIntercom));
    EXPECT_EQ(-2, K740_Invite(kIntercom, kStation));
    EXPECT_EQ(-1, K740_GetIntercomStatus(kIntercom, nullptr, nullptr));
}

TEST_F(RemovedIntercomTest, RegisteredAgainItIsIdleAndRemembersItsPeer) {
    RingAndAccept();
    Remove();
    AddAgain();
    EXPECT_EQ(Idle(), StateOf());
    EXPECT_EQ(-2, PushBytes(kIntercom, Frame()));
}

TEST_F(RemovedIntercomTest, RegisteredAgainItTalksAnew) {
    RingAndAccept();
    Remove();
    AddAgain();
    Talk(m_otherStation, kIntercom);
    FillBuffer(kIntercom);
    const auto samples = Noise(kFrameSamplesHeard);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, samples));
    ASSERT_TRUE(m_otherStation.WaitForIntercomAudio(kPriming + 1, kSoon));
    EXPECT_THAT(HeardFrom(m_otherStation, kPriming),
                ::testing::ElementsAreArray(Datagrams(samples, kIntercom, kOtherStation)));
}

TEST_F(RemovedIntercomTest, RingingEndsToo) {
    RingFromStation();
    Remove();
    AddAgain();
    EXPECT_EQ(Idle(), StateOf());
}

TEST_F(RemovedIntercomTest, IntercomThatNeverHadACallHasNoneAfterwards) {
    Remove();
    AddAgain();
    EXPECT_EQ(Idle(0), StateOf());
    tagTALK_STATUS record;
    EXPECT_EQ(-1, g_app->Talker().GetTalkerStatus(kIntercom, record));
}

TEST_F(RemovedIntercomTest, CallThatIsAcceptedDuringTheRemovalEndsWithIt) {
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(0, K740_Invite(kIntercom, kStation)) << round;
        std::thread host([] { K740_Accept(kIntercom, kStation); });
        Remove();
        host.join();
        AddAgain();
        ASSERT_EQ(Idle(), StateOf()) << round;
    }
}

} // namespace
} // namespace k740::test
