// The port of intercom audio, taken by another program.
#include "tests/intercom/talk_fixture.h"
#include "tests/support/process_state.h"

namespace k740::test {
namespace {

class AudioPortTest : public OnPrivateNetwork {
protected:
    /// Holds the port as another program would.
    void TakePort() { m_other = std::make_unique<sim::UdpSocket>(sim::UdpSocket::BoundTo({"0.0.0.0", 29002})); }
    void Register() {
        ASSERT_EQ(0, K740_SetIntercomCallback(IntercomHost::OnMessage, IntercomHost::OnAudio));
        ASSERT_EQ(0, K740_AddDevice(kStation, 2, kStationIP));
        ASSERT_EQ(0, K740_AddDevice(kIntercom, 10, ""));
    }

    static constexpr const char* kReceiver = "k740-rx29002";

    std::unique_ptr<sim::UdpSocket> m_other;
};

TEST_F(AudioPortTest, IsHeldFromTheBeginning) {
    ASSERT_EQ(0, K740_Initialize());
    EXPECT_FALSE(IsPortFree(29002));
    EXPECT_TRUE(WaitForLogLine(", port:29002"));
    EXPECT_TRUE(g_app->Talker().HoldsPort());
}

TEST_F(AudioPortTest, TakenPortIsLoggedAndCallsWorkWithoutAudioOfTheStation) {
    TakePort();
    sim::PagingStation& station = AddPagingStation(kStation, kStationIP);
    ASSERT_NO_FATAL_FAILURE(Register());
    EXPECT_TRUE(WaitForExactLine("*****Failed to bind udp port 29002"));
    EXPECT_FALSE(g_app->Talker().HoldsPort());
    station.Invite(kIntercom);
    ASSERT_TRUE(IntercomHost::Get().WaitForMessage({kStation, kIntercom, kInvited}));
    ASSERT_EQ(0, K740_Accept(kIntercom, kStation));
    sim::AudioStream stream;
    stream.count = 3;
    station.SendIntercomAudio(stream);
    ASSERT_TRUE(WaitUntil([&] { return m_other->Receive().has_value(); })) << "the other program gets it";
    ASSERT_TRUE(station.WaitForIntercomAudio(kPriming, kSoon));
    EXPECT_TRUE(WaitUntil([&] {
        PushSamples(kIntercom, Noise(kFrameSamplesHeard)); // dropped until the first datagrams are over
        return station.WaitForIntercomAudio(kPriming + 1, std::chrono::milliseconds(10));
    })) << "the host's audio goes out all the same";
    EXPECT_EQ(0U, IntercomHost::Get().audioBlocks);
    EXPECT_EQ(0, K740_HangUp(kIntercom));
}

TEST_F(AudioPortTest, HasAThreadWhileItIsHeld) {
    ASSERT_EQ(0, K740_Initialize());
    EXPECT_TRUE(WaitUntil([] { return ThreadsNamed(kReceiver).size() == 1; }));
}

TEST_F(AudioPortTest, StaysOffWhenItComesFree) {
    TakePort();
    ASSERT_NO_FATAL_FAILURE(Register());
    ASSERT_TRUE(WaitForExactLine("*****Failed to bind udp port 29002"));
    EXPECT_TRUE(WaitUntil([] { return ThreadsNamed(kReceiver).empty(); })) << "nobody is left to try again";
    m_other.reset();
    EXPECT_TRUE(IsPortFree(29002));
    EXPECT_FALSE(g_app->Talker().HoldsPort());
}

TEST_F(AudioPortTest, LibraryWithoutItEndsAsUsual) {
    TakePort();
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitForExactLine("*****Failed to bind udp port 29002"));
    EXPECT_EQ(0, K740_Deinitialize());
}

} // namespace
} // namespace k740::test
