// What K740_MonitorZone returns and logs.
#include "tests/monitor/zone_monitor_fixture.h"

namespace k740::test {
namespace {

class ZoneMonitorCallsTest : public ZoneMonitorTest {
protected:
    /// The call fails with -1, and this is the only error that it logs.
    static void ExpectRefused(int deviceID, int zone, int start, const std::string& error) {
        const std::string call = "K740_MonitorZone(" + std::to_string(deviceID) + ", " + std::to_string(zone) + ", " +
                                 std::to_string(start) + ")";
        EXPECT_EQ(-1, K740_MonitorZone(deviceID, zone, start));
        EXPECT_TRUE(WaitForExactLine("*****" + error)) << error;
        EXPECT_EQ(1, CountExactLines(call)) << "the call itself";
        EXPECT_EQ(2, CountLogLines(call));
    }
};

TEST_F(ZoneMonitorCallsTest, AStartAndAStopAreZeroAndLogged) {
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 0));
    EXPECT_TRUE(WaitForExactLine("K740_MonitorZone(33, 1, 0)"));
    EXPECT_EQ(1, CountExactLines("K740_MonitorZone(33, 1, 1)"));
    EXPECT_EQ(2, CountLogLines("K740_MonitorZone"));
}

TEST_F(ZoneMonitorCallsTest, AZoneThatIsMonitoredAlreadyIsOneAndNoFailure) {
    EXPECT_EQ(0, K740_MonitorZone(kController, 3, 1));
    EXPECT_EQ(1, K740_MonitorZone(kController, 3, 1));
    EXPECT_TRUE(WaitForExactLine("K740_MonitorZone(33, 3, 1)", 2));
    EXPECT_EQ(0, CountLogLines("Failed to"));
}

TEST_F(ZoneMonitorCallsTest, AStopOfAZoneThatIsNotMonitoredIsZero) {
    EXPECT_EQ(0, K740_MonitorZone(kController, 8, 0));
}

TEST_F(ZoneMonitorCallsTest, TheSixthZoneIsMinusTwoUntilOneIsStopped) {
    for (int zone = 1; zone <= 5; ++zone) { EXPECT_EQ(0, K740_MonitorZone(kController, zone, 1)) << zone; }
    EXPECT_EQ(-2, K740_MonitorZone(kController, 6, 1));
    EXPECT_TRUE(WaitForExactLine("*****Failed to K740_MonitorZone(33, 6, 1), return -2."));
    EXPECT_EQ(0, K740_MonitorZone(kController, 2, 0));
    EXPECT_EQ(0, K740_MonitorZone(kController, 6, 1));
    EXPECT_EQ(1, CountLogLines("Failed to"));
}

TEST_F(ZoneMonitorCallsTest, WithFiveZonesAMonitoredOneIsMinusTwoToo) {
    for (int zone = 1; zone <= 4; ++zone) { EXPECT_EQ(0, K740_MonitorZone(kController, zone, 1)); }
    EXPECT_EQ(1, K740_MonitorZone(kController, 4, 1));
    EXPECT_EQ(0, K740_MonitorZone(kController, 5, 1));
    EXPECT_EQ(-2, K740_MonitorZone(kController, 4, 1));
}

TEST_F(ZoneMonitorCallsTest, TheSameZoneOfAnotherControllerIsAnotherZone) {
    EXPECT_EQ(0, K740_AddDevice(34, 0, "192.168.1.34"));
    EXPECT_EQ(0, K740_AddDevice(900, 9, ""));
    for (int id : {kController, 34, 900}) { EXPECT_EQ(0, K740_MonitorZone(id, 1, 1)) << id; }
}

TEST_F(ZoneMonitorCallsTest, OnlyZoneControllersHaveZones) {
    EXPECT_EQ(0, K740_AddDevice(5000, 2, "192.168.8.99"));
    EXPECT_EQ(0, K740_AddDevice(7000, 3, "192.168.8.100"));
    EXPECT_EQ(0, K740_AddDevice(50, 5, "192.168.8.101"));
    EXPECT_EQ(0, K740_AddDevice(5001, 10, ""));
    for (int id : {5000, 7000, 50, 5001, 34, 0, -1}) {
        ExpectRefused(id, 1, 1, "K740_MonitorZone(" + std::to_string(id) + ", 1, 1), device id is error.");
    }
    ExpectRefused(34, 1, 0, "K740_MonitorZone(34, 1, 0), device id is error.");
}

TEST_F(ZoneMonitorCallsTest, ZonesAreOneToEight) {
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
    EXPECT_EQ(0, K740_MonitorZone(kController, 8, 1));
    ExpectRefused(kController, 0, 1, "K740_MonitorZone(33, 0, 1), zone id is error.");
    ExpectRefused(kController, 9, 1, "K740_MonitorZone(33, 9, 1), zone id is error.");
    ExpectRefused(kController, -1, 0, "K740_MonitorZone(33, -1, 0), zone id is error.");
}

TEST_F(ZoneMonitorCallsTest, TheDeviceIsLookedAtBeforeTheZoneAndTheZoneBeforeTheFlag) {
    ExpectRefused(34, 9, 2, "K740_MonitorZone(34, 9, 2), device id is error.");
    ExpectRefused(kController, 9, 2, "K740_MonitorZone(33, 9, 2), zone id is error.");
}

TEST_F(ZoneMonitorCallsTest, TheFlagIsOneOrZero) {
    ExpectRefused(kController, 1, 2, "Failed to K740_MonitorZone(33, 1, 2), return -1.");
    ExpectRefused(kController, 1, -1, "Failed to K740_MonitorZone(33, 1, -1), return -1.");
}

TEST_F(ZoneMonitorCallsTest, NobodyAsksForTheGroupOfAZoneThatThereIsNot) {
    CMonitor& monitor = g_app->Monitor();
    const auto before = CountThreads();
    for (std::uint32_t zone : {0U, 9U}) { EXPECT_EQ(0, monitor.StartMonitorZone(kController, zone)); }
    EXPECT_TRUE(WaitUntil([=] { return CountThreads() == before + 2; })) << "each has the one that receives";
    Monitor(1); // a zone that there is is asked for later, and answered
    EXPECT_EQ(1U, CountQueries());
    for (std::uint32_t zone : {0U, 9U}) { EXPECT_EQ(0, monitor.StopMonitorZone(kController, zone)); }
}

TEST_F(ZoneMonitorCallsTest, TheTableComparesTheGenerationOnlyWhenTheGroupIsRead) {
    CMonitor& monitor = g_app->Monitor();
    EXPECT_EQ(0, monitor.StartMonitorZone(34, 2)); // not registered: nobody is asked
    EXPECT_EQ(1, monitor.IsMonitorZoneExists(34, 2, 12345));
    EXPECT_EQ(0, monitor.IsMonitorZoneExists(34, 3, 1));
    monitor.SetMonitorZoneMCast(34, 2, 12345, {0xE1000001, 7});
    _zone_mcast_t multicast{1, 1};
    monitor.GetMonitorZoneMCast(34, 2, 12345, multicast);
    EXPECT_EQ(0U, multicast.group);
    EXPECT_EQ(0U, multicast.uninterpreted);
    monitor.GetMonitorZoneMCast(34, 2, 1, multicast); // the first since the start
    EXPECT_EQ(0xE1000001U, multicast.group);
    EXPECT_EQ(7U, multicast.uninterpreted);
}

} // namespace
} // namespace k740::test
