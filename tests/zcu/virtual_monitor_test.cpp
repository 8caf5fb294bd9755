// The library monitors a zone of its own virtual zone controller.
#include "sim/audio_encoder.h"
#include "tests/support/noise.h"
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

namespace k740::test {
namespace {

/// What PMONITORZONE was told; never destroyed, because the library's threads may outlive main.
CallList<TrainAudioCall>& Monitored() {
    static auto* const calls = new CallList<TrainAudioCall>;
    return *calls;
}

int NoteMonitored(int device, int zone, unsigned char* audio, int length) {
    Monitored().Note({device, zone, {audio, audio + length}});
    return 0;
}

class VirtualMonitorTest : public VirtualTest {
protected:
    VirtualMonitorTest() { EXPECT_EQ(0, K740_AddDevice(902, 9, sim::kStationAddress)); }
};

TEST_F(VirtualMonitorTest, ItsZoneMulticastQueryIsAnsweredByItself) {
    Play(PlayRequestOf(), 902);
    tagQUERY_ZONE_MCAST_IP_RSP answer{};
    int error = 1;
    ASSERT_TRUE(g_app->ZCU().ZCU_Request_GetZoneMCastIP(902, &answer, error));
    const sim::Bytes expected{1, 3, 2, 1, 225, 0xC4, 0x6D, 0, 0, 0};
    EXPECT_EQ(expected, sim::Bytes(answer.table, answer.table + expected.size()));
}

TEST_F(VirtualMonitorTest, ZoneOneIsMonitoredWhileItPlays) {
    K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, NoteMonitored, nullptr, nullptr);
    Play(PlayRequestOf(), 902);
    ASSERT_EQ(0, K740_MonitorZone(902, 1, 1));
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 2; }));
    sim::AudioEncoder encoder(kClient, 1, 341);
    m_client.SendRaw(sim::Pack(encoder.Encode(Noise(encoder.SamplesPerDatagram()))), kGroup);
    const auto isThere = [](const TrainAudioCall&) { return true; };
    ASSERT_TRUE(Monitored().WaitFor(isThere));
    ASSERT_TRUE(RecordingHost::Get().trainAudio.WaitFor(isThere));
    const TrainAudioCall monitored = Monitored().All().at(0);
    EXPECT_EQ(902, monitored.sourceID);
    EXPECT_EQ(1, monitored.taskID); // the zone
    EXPECT_EQ(RecordingHost::Get().trainAudio.All().at(0).audio, monitored.audio);
    EXPECT_EQ(0, K740_MonitorZone(902, 1, 0));
}

} // namespace
} // namespace k740::test
