// The library and zone controllers: broadcasts, volumes, versions, voice alarm, monitoring.
#include "sim/address.h"
#include "tests/wireshark/traffic_fixture.h"

namespace k740::test {
namespace {

using ::testing::Contains;
using ::testing::StartsWith;

constexpr const char* kAddress = "192.168.1.33";
constexpr const char* kGroupOfZone = "225.1.0.1";

class ControllerTrafficTest : public TrafficTest {
protected:
    ControllerTrafficTest() {
        EXPECT_EQ(0, K740_AddDevice(33, 1, kAddress));
        AwaitReceived(33, sim::command::kHeartbeat);
    }

    sim::ZoneController& m_controller = AddZoneController(33, kAddress);
};

bool Push(int task, std::size_t datagrams) {
    for (std::size_t i = 0; i < datagrams; ++i) {
        sim::Bytes bytes = sim::ByteWriter().PutAll(Noise(2048)).Get();
        if (K740_SendAudioStreamProc(task, bytes.data(), static_cast<int>(bytes.size())) != 0) { return false; }
    }
    return true;
}

TEST_F(ControllerTrafficTest, ABroadcast) {
    ASSERT_EQ(0, K740_StartAudioStreamTask(1001, 100, 70, 0, "002101", 0));
    ASSERT_TRUE(WaitUntil([] { return K740_GetTaskStatus(1001) == 2; }));
    ASSERT_TRUE(Push(1001, 5));
    ASSERT_TRUE(m_controller.WaitForDatagrams(5, kPatience));
    ASSERT_EQ(0, K740_StopTask(1001));
    AwaitReceived(33, sim::command::kCloseAudio);

    const std::vector<Row> rows = Captured();
    FindInfo(rows, "Heartbeat");
    const std::string request = "Play request, task 1001, zones 1, 225.0.0.1:28100, priority 70";
    ExpectAnswered(rows, request, "Play answer, task 1001, accepted, join report follows");
    ExpectAnswered(rows, request, "Join report, joined");
    FindInfo(rows, "Close audio, task 1001");
    const auto infos = Infos(rows);
    EXPECT_EQ(5, std::ranges::count(infos, "Audio from 9500, two-channel ADPCM, 2048 samples, 46.4 ms"));
    EXPECT_EQ(2, std::ranges::count(infos, "End of stream from 9500 for controller 33"));
}

TEST_F(ControllerTrafficTest, AnAuxTask) {
    ASSERT_EQ(0, K740_StartNetAUXTask(1002, 80, 7001, "225.7.0.1", 4, 1, "0021FF", 1));
    ASSERT_TRUE(WaitUntil([] { return K740_GetTaskStatus(1002) == 2; }));
    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Play request, task 1002, AUX 7001 port 4, zones 1-8, 225.7.0.1:28100, priority 80",
                   "Join report, joined");
}

TEST_F(ControllerTrafficTest, VolumesOfVersionThree) {
    std::array<int, 8> levels{19, 5, -1, -1, -1, -1, -1, 0};
    ASSERT_EQ(0, K740_SetVolume(33, levels.data()));
    AwaitSent(33, sim::command::kGetVolumeV3Answer); // the library reads back what the controller took
    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Set volumes (V3): 19 5 - - - - - 0", "Set volumes (V3) answer");
    ExpectAnswered(rows, "Read volumes (V3)", "Volumes (V3): 19 5 19 19 19 19 19 0 - -");
}

TEST_F(ControllerTrafficTest, VolumesOfVersionTwo) {
    AddZoneController(34, "192.168.1.34").SetGeneration(sim::Generation::V2);
    ASSERT_EQ(0, K740_AddDevice(34, 0, "192.168.1.34"));
    std::array<int, 8> levels{19, 5, 7, 0, -1, -1, -1, -1};
    ASSERT_EQ(0, K740_SetVolume(34, levels.data()));
    AwaitSent(34, sim::command::kGetVolumeV2Answer, 4);
    const std::vector<Row> rows = Captured();
    FindInfo(rows, "Set volume (V2), channel 3, volume 0");
    ExpectAnswered(rows, "Set volume (V2), channel 0, volume 19", "Set volume (V2) answer");
    ExpectAnswered(rows, "Read volumes (V2)", "Volumes (V2): 19 5 7 0");
}

TEST_F(ControllerTrafficTest, VersionVoiceAlarmAndSilence) {
    EXPECT_LT(0, K740_GetDeviceVersion(33, nullptr, 0));
    EXPECT_EQ(0, K740_EnterVAMode(33, 255));
    EXPECT_EQ(0, K740_ExitVAMode(33, 255));
    EXPECT_EQ(0, K740_CloseZones("002187"));
    AwaitReceived(33, sim::command::kCloseZones);
    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Read version, device 33", "Version, application 2.0.1, MCU 1.3.0, kernel 5.10.0");
    FindInfo(rows, "Voice alarm on, priority 255");
    FindInfo(rows, "Voice alarm off, priority 255");
    FindInfo(rows, "Close zones, zones 1-3,8");
}

TEST_F(ControllerTrafficTest, AStatus) {
    m_controller.SendStatus(m_controller.QuietStatus());
    FindInfo(Captured(), "Status, device state 1, playing zones none");
}

class MonitoredTypeTest : public ControllerTrafficTest, public ::testing::WithParamInterface<std::uint16_t> {};

TEST_P(MonitoredTypeTest, IsRecognisedInTheGroupOfAZone) {
    m_controller.SetZoneGroup(1, kGroupOfZone);
    ASSERT_EQ(0, K740_MonitorZone(33, 1, 1));
    AwaitSent(33, sim::command::kZoneGroupsAnswer);
    sim::AudioStream stream;
    stream.pcm = Noise(2048);
    stream.type = GetParam();
    stream.count = 3;
    stream.node = 33;
    const sim::AudioSource& source = m_controller.StreamZone(1, stream);
    ASSERT_TRUE(WaitUntil([&] { return source.Sent() == 3; }));

    const std::vector<Row> rows = Captured();
    ExpectAnswered(rows, "Read groups of the zones", "Groups of the zones, zone 1 225.1.0.1");
    const auto isAudio = [](const Row& row) { return row.at("k740.audio.type") == std::to_string(GetParam()); };
    EXPECT_EQ(3, std::ranges::count_if(rows, isAudio));
    EXPECT_THAT(Infos(rows), Contains(StartsWith("Audio from 33, ")));
}

INSTANTIATE_TEST_SUITE_P(EveryType, MonitoredTypeTest,
                         ::testing::Values(341, 342, 343, 344, 345, 352, 353, 354, 355, 356, 357, 359, 360));

} // namespace
} // namespace k740::test
