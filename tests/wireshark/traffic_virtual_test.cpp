// Clients that make requests of a virtual zone controller of the library.
#include "tests/app/recording_host.h"
#include "tests/wireshark/traffic_fixture.h"

namespace k740::test {
namespace {

constexpr int kVirtual = 200;
constexpr std::uint32_t kClient = 9600;
constexpr std::uint32_t kTask = 77;
constexpr const char* kGroup = "225.9.0.1";

class VirtualTrafficTest : public TrafficTest {
protected:
    VirtualTrafficTest() {
        EXPECT_EQ(0, K740_SetTrainCallback(RecordingHost::OnTrainMessage, RecordingHost::OnTrainAudio));
        EXPECT_EQ(0, K740_AddDevice(kVirtual, 9, ""));
        Network().AddFieldAddresses({"192.168.9.1"});
    }
    ~VirtualTrafficTest() override { K740_SetTrainCallback(nullptr, nullptr); }

    /// Makes the client send a request and waits for the answer.
    template <typename Send> void Ask(Send send, std::uint16_t answer) {
        const std::size_t before = Field().Events().Count(sim::Received(kClient, answer));
        send();
        AwaitReceived(kClient, answer, before + 1);
    }
    sim::Client& AddClient() { return Field().AddClient(kClient, "192.168.9.1"); }
};

sim::PlayRequest SomePlay() {
    sim::PlayRequest play;
    play.sequence = 3;
    play.priority = 256 - 60;
    play.taskId = kTask;
    play.zoneMask = 1;
    play.group = kGroup;
    play.groupPort = sim::kAudioPort;
    play.origin = kClient;
    return play;
}

TEST_F(VirtualTrafficTest, Questions) {
    sim::Client& client = AddClient();
    Ask([&] { client.SendHeartbeat(kVirtual); }, 0x8125);
    Ask([&] { client.QueryVersion(kVirtual); }, 0x8132);
    Ask([&] { client.QueryZoneGroups(kVirtual); }, 0x8303);
    Ask([&] { client.AddTaskZones(kVirtual, sim::Bytes(28, 7)); }, 0x8313);
    Ask([&] { client.RemoveTaskZones(kVirtual, sim::Bytes(28, 7)); }, 0x8314);
    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Heartbeat", "Heartbeat answer");
    ExpectAnswered(rows, "Read version, device 200", "Version, application 1.0.4, MCU , kernel ");
    ExpectAnswered(rows, "Read groups of the zones", "Groups of the zones, none");
    ExpectAnswered(rows, "Zones join a task", "Zones join a task answer, done");
    ExpectAnswered(rows, "Zones leave a task", "Zones leave a task answer, done");
}

TEST_F(VirtualTrafficTest, ABroadcastToTheHost) {
    sim::Client& client = AddClient();
    Ask([&] { client.RequestPlay(kVirtual, SomePlay()); }, 0x8206);
    ASSERT_TRUE(RecordingHost::Get().trainMessages.WaitFor([](const auto& call) { return call.message == 1; }));
    sim::AudioStream audio;
    audio.pcm = Noise(2048);
    client.Stream({kGroup, sim::kAudioPort}, audio);
    ASSERT_TRUE(RecordingHost::Get().trainAudio.WaitFor([](const auto&) { return true; }));
    Ask([&] { client.QueryZoneGroups(kVirtual); }, 0x8303);
    client.CloseAudio(kVirtual, kTask);
    ASSERT_TRUE(RecordingHost::Get().trainMessages.WaitFor([](const auto& call) { return call.message == 2; }));
    client.CloseZones(kVirtual, 0xFF);
    Ask([&] { client.SendHeartbeat(kVirtual); }, 0x8125); // the library has taken all that came before

    const std::vector<Row> rows = Captured();
    const std::string request = "Play request, task 77, zones 1, 225.9.0.1:28100, priority 60";
    ExpectAnswered(rows, request, "Play answer, task 77, accepted, join report follows");
    ExpectAnswered(rows, request, "Join report, joined");
    ExpectAnswered(rows, "Read groups of the zones", "Groups of the zones, zone 1 225.9.0.1");
    FindInfo(rows, "Audio from 9600, two-channel ADPCM, 2048 samples, 46.4 ms");
    FindInfo(rows, "Close audio, task 77");
    FindInfo(rows, "Close zones, zones 1-8");
}

TEST_F(VirtualTrafficTest, TheStateOfTheTrain) {
    sim::Client& client = AddClient();
    Ask([&] { client.SendHeartbeat(kVirtual); }, 0x8125);
    Ask([&] { EXPECT_EQ(0, K740_SetTrainStatus(kVirtual, 2)); }, 0x8126);
    FindInfo(Captured(), "Status, device state 4, playing zones 1");
}

} // namespace
} // namespace k740::test
