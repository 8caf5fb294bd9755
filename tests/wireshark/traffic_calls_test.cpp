// The library and paging stations: status, tasks, monitoring, push-to-talk, intercom calls.
#include "tests/intercom/intercom_host.h"
#include "tests/support/leftovers.h"
#include "tests/wireshark/traffic_fixture.h"

namespace k740::test {
namespace {

using ::testing::Contains;

constexpr const char* kAddress = "192.168.8.99";
constexpr int kStation = 5000;
constexpr int kIntercom = 5500;

class StationTrafficTest : public TrafficTest {
protected:
    StationTrafficTest() {
        EXPECT_EQ(0, K740_AddDevice(kStation, 2, kAddress));
        AwaitReceived(kStation, sim::command::kPagingHeartbeat);
    }

    sim::PagingStation& m_station = AddPagingStation(kStation, kAddress);
};

sim::AudioStream SomeAudio() {
    sim::AudioStream audio;
    audio.pcm = Noise(2048);
    audio.count = 3;
    return audio;
}

TEST_F(StationTrafficTest, AStatusAnswersTheHeartbeat) {
    m_station.SendStatus({});
    ExpectAnswered(Captured(), "Heartbeat of a station", "Status of a station, state 1, activity 0");
}

TEST_F(StationTrafficTest, TasksAndMonitoring) {
    AddZoneController(33, "192.168.1.33");
    ASSERT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    EXPECT_EQ(0, K740_StartRPKTask(kStation, 3, 90, "0021FF"));
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 33, 8));
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Task of a station, start 3, priority 90, 33 zones 1-8", "Task answer of a station, success");
    FindInfo(rows, "Task of a station, stop 3, priority 100");
    ExpectAnswered(rows, "Monitor a zone, start, controller 33, zone 8", "Monitor answer, success");
    FindInfo(rows, "Monitor a zone, stop, controller 33, zone 8");
}

TEST_F(StationTrafficTest, PushToTalkOnAnyPort) {
    ASSERT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, "225.5.0.0"));
    ASSERT_TRUE(WaitUntil([] { return MembersOf("225.5.0.0") == 1; }));
    const sim::AudioSource& talk = m_station.Talk({"225.5.0.0", 30123}, SomeAudio());
    ASSERT_TRUE(WaitUntil([&] { return talk.Sent() == 3; }));
    EXPECT_THAT(Infos(Captured()), Contains("Audio from 5000, two-channel ADPCM, 2048 samples, 46.4 ms").Times(3));
}

class IntercomTrafficTest : public StationTrafficTest {
protected:
    IntercomTrafficTest() {
        EXPECT_EQ(0, K740_SetIntercomCallback(IntercomHost::OnMessage, IntercomHost::OnAudio));
        EXPECT_EQ(0, K740_AddDevice(kIntercom, 10, ""));
    }
    ~IntercomTrafficTest() override { K740_SetIntercomCallback(nullptr, nullptr); }
};

TEST_F(IntercomTrafficTest, TheStationCallsAndBothTalk) {
    m_station.Handshake(kIntercom);
    AwaitReceived(kStation, 0x8700);
    m_station.Invite(kIntercom);
    ASSERT_TRUE(IntercomHost::Get().WaitForMessage({kStation, kIntercom, kInvited}));
    ASSERT_EQ(0, K740_Accept(kIntercom, kStation));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(2, kPatience));
    sim::AudioStream speech = SomeAudio();
    speech.stream = kIntercom;
    m_station.SendIntercomAudio(speech);
    ASSERT_TRUE(IntercomHost::Get().WaitForAudio(3));
    ASSERT_EQ(0, K740_HangUp(kIntercom));
    AwaitReceived(kStation, 0x8701, 4);

    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Handshake with an intercom, 5000 to 5500", "Handshake answer, 5500 to 5000, intercom idle");
    ExpectAnswered(rows, "Intercom call, 5000 to 5500", "Intercom answer, 5500 to 5000, rings");
    ExpectAnswered(rows, "Intercom call, 5000 to 5500", "Intercom answer, 5500 to 5000, accepted");
    EXPECT_EQ("", FindInfo(rows, "Intercom answer, 5500 to 5000, hung up or busy").at("k740.answer_to"));
    FindInfo(rows, "Audio from 5500 to 5000, two-channel ADPCM, 2048 samples, 46.4 ms");
    FindInfo(rows, "Audio from 5000 to 5500, two-channel ADPCM, 2048 samples, 46.4 ms");
}

TEST_F(IntercomTrafficTest, TheHostCallsAndTheStationAccepts) {
    sim::CallBehaviour behaviour;
    behaviour.reply = sim::CallReply::Accept;
    m_station.SetCallBehaviour(behaviour);
    ASSERT_EQ(0, K740_Invite(kIntercom, kStation));
    ASSERT_TRUE(IntercomHost::Get().WaitForMessage({kStation, kIntercom, kAccepted}));
    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Intercom call, 5500 to 5000", "Intercom answer, 5000 to 5500, rings");
    ExpectAnswered(rows, "Intercom call, 5500 to 5000", "Intercom answer, 5000 to 5500, accepted");
}

} // namespace
} // namespace k740::test
