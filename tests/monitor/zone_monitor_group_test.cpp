// How a monitored zone's group is asked for, joined and left.
#include "tests/monitor/zone_monitor_fixture.h"

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::command::kGetZoneGroups;

class ZoneMonitorGroupTest : public ZoneMonitorTest {
protected:
    /// Monitors another zone until it has been heard: what was asked for before has been answered then.
    void MonitorMarkerZone(int zone) {
        Monitor(zone);
        StreamAndHear(zone, NoiseStream(1));
    }
    /// Waits until the library knows the zone's group.
    static void MonitorAnswered(std::uint32_t zone) {
        EXPECT_TRUE(WaitUntil([=] {
            _zone_mcast_t multicast{};
            g_app->Monitor().GetMonitorZoneMCast(kController, zone, 1, multicast);
            return multicast.group != 0;
        }));
    }
    /// Another station.
    sim::Client& AddClient() {
        Network().AddFieldAddresses({"192.168.1.200"});
        return Field().AddClient(9600, "192.168.1.200");
    }
};

TEST_F(ZoneMonitorGroupTest, TheQueryHasNoPayloadAndNamesNodeAndController) {
    Monitor(1);
    const auto query = Field().Events().WaitFor(sim::Received(kController, kGetZoneGroups), kSoon);
    ASSERT_TRUE(query);
    EXPECT_EQ(sim::Pack(sim::MakePacket(9500, kController, 0x0303, {})), query->bytes);
    EXPECT_EQ(28001, query->port);
}

TEST_F(ZoneMonitorGroupTest, AZoneWithoutAGroupIsNotJoinedAndNotHeard) {
    const auto before = GroupMembers();
    m_controller.SetZoneGroup(1, "0.0.0.0");
    m_controller.SetZoneGroup(2, "192.168.1.33"); // no group either
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
    EXPECT_EQ(0, K740_MonitorZone(kController, 2, 1));
    WaitForQuery(2);
    MonitorMarkerZone(3);
    Stop(3);
    EXPECT_TRUE(WaitUntil([&] { return GroupMembers() == before; }));
    EXPECT_EQ(1U, ZoneAudio().CountAll());
    EXPECT_EQ(1U, ZoneAudio().Count(kController, 3));
}

TEST_F(ZoneMonitorGroupTest, ATableBehindALeadingOneIsReadForTheFirstAndTheLastZone) {
    m_controller.SetZoneGroupLayout(sim::ZoneGroupLayout::Virtual);
    for (int zone : {1, 8}) {
        Monitor(zone);
        StreamAndHear(zone, NoiseStream(1));
    }
}

TEST_F(ZoneMonitorGroupTest, AVirtualControllersZoneIsMonitoredLikeAny) {
    EXPECT_EQ(0, K740_AddDevice(900, 9, ""));
    sim::Client& client = AddClient();
    sim::PlayRequest request;
    request.taskId = 7;
    request.zoneMask = 1;
    request.group = "225.2.2.2";
    request.groupPort = sim::kAudioPort;
    client.RequestPlay(900, request);
    ASSERT_TRUE(WaitUntil([] { return MembersOf("225.2.2.2") == 1; }));
    EXPECT_EQ(0, K740_MonitorZone(900, 1, 1));
    ASSERT_TRUE(WaitUntil([] { return MembersOf("225.2.2.2") == 2; }));
    const sim::AudioStream stream = NoiseStream(3);
    client.Stream({"225.2.2.2", sim::kAudioPort}, stream);
    ASSERT_TRUE(ZoneAudio().WaitFor(900, 1, 3));
    EXPECT_EQ(DecodedAudio(stream), ZoneAudio().Samples(900, 1));
}

TEST_F(ZoneMonitorGroupTest, ANewGroupIsJoinedAndTheFormerLeft) {
    Monitor(1);
    sim::AudioStream former; // without end
    former.pcm = Noise(4096);
    AddClient().Stream({GroupOfZone(1), sim::kAudioPort}, former);
    ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, 2));

    m_controller.SetZoneGroup(1, "225.9.9.9");
    ASSERT_TRUE(WaitUntil([] { return MembersOf("225.9.9.9") == 1; }));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 0; }));
    const std::size_t before = ZoneAudio().Count(kController, 1);
    const sim::AudioStream pcm = NoiseStream(5, 357, 9);
    StreamAndHear(1, pcm);
    EXPECT_EQ(before + 5, ZoneAudio().Count(kController, 1)) << "nothing of the former group";
    const auto heard = ZoneAudio().Samples(kController, 1);
    EXPECT_EQ(DecodedAudio(pcm), std::vector(heard.end() - 5 * 882, heard.end()));
    EXPECT_GE(WaitForQuery(2) - WaitForQuery(1), 3000ms);
}

TEST_F(ZoneMonitorGroupTest, AGroupThatIsNoMoreIsLeftAndJoinedAgainWhenItIsBack) {
    Monitor(1);
    m_controller.SetZoneGroup(1, "");
    EXPECT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 0; }));
    m_controller.SetZoneGroup(1, GroupOfZone(1));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 1; }));
    StreamAndHear(1, NoiseStream(2));
}

TEST_F(ZoneMonitorGroupTest, AGroupThatCannotBeJoinedIsTriedAgain) {
    EXPECT_EQ(0, K740_SetNIC("192.168.77.77")); // no interface of this machine
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
    MonitorAnswered(1);
    EXPECT_EQ(0, MembersOf(GroupOfZone(1)));
    EXPECT_EQ(0, K740_SetNIC(sim::kStationAddress));
    ASSERT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 1; }));
    StreamAndHear(1, NoiseStream(1));
}

// The query that fails takes 4 s, and the next follows 3 s after its end.
TEST_F(ZoneMonitorGroupTest, AFailedQueryKeepsTheGroupAndThePeriodBeginsAtItsEnd) {
    Monitor(1);
    Silence();
    const auto second = WaitForQuery(2);
    const auto third = WaitForQuery(3);
    EXPECT_GE(third - second, 6999ms);
    EXPECT_EQ(1, MembersOf(GroupOfZone(1)));
    StreamAndHear(1, NoiseStream(2));
    EXPECT_EQ(3U, CountQueries());
}

} // namespace
} // namespace k740::test
