// Zones are monitored for want of memory, too.
#include "tests/monitor/zone_monitor_fixture.h"
#include "tests/support/allocation_failure.h"

#include <pthread.h>

#include <atomic>
#include <string_view>
#include <utility>

namespace k740::test {
namespace {

using ZoneMonitorDisturbanceTest = ZoneMonitorTest;

bool IsReceiver() {
    char name[16]{};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return std::string_view(name) == "k740-mon-audio";
}

TEST_F(ZoneMonitorDisturbanceTest, WantOfMemoryDoesNotEndTheReception) {
    static std::atomic<int> failures{0};
    EXPECT_EQ(0, K740_SetNIC("192.168.77.77")); // no interface of this machine, which is to be logged
    {
        const AllocationFailure failure([] { return IsReceiver() && ++failures > 0; });
        EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
        EXPECT_TRUE(WaitUntil([] { return failures >= 2; }));
    }
    EXPECT_EQ(0, K740_SetNIC(sim::kStationAddress));
    ASSERT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 1; }));
    StreamAndHear(1, NoiseStream(2));
}

/// An application's zone monitor, without the memory for a thread.
class ZoneMonitorWithoutThreadTest : public ZoneMonitorTest {
protected:
    ZoneMonitorWithoutThreadTest() { // makes room in the list of zones, so that the threads are what needs memory
        for (std::uint32_t zone : {1U, 2U}) { EXPECT_EQ(0, Zones().StartMonitorZone(kController, zone)); }
        for (std::uint32_t zone : {1U, 2U}) { EXPECT_EQ(0, Zones().StopMonitorZone(kController, zone)); }
    }
    static CMonitor& Zones() { return g_app->Monitor(); }
};

TEST_F(ZoneMonitorWithoutThreadTest, TheZoneIsNotListed) {
    static const auto host = pthread_self();
    const AllocationFailure failure([] { return pthread_equal(host, pthread_self()) != 0; });
    EXPECT_EQ(-1, Zones().StartMonitorZone(kController, 1));
    EXPECT_EQ(0, Zones().IsMonitorZoneExists(kController, 1, 0));
}

TEST_F(ZoneMonitorWithoutThreadTest, WhoHasStartedTheZoneMeanwhileKeepsIt) {
    static const auto host = pthread_self();
    static bool isFirst = true;
    const AllocationFailure failure([] {
        if (pthread_equal(host, pthread_self()) == 0 || !std::exchange(isFirst, false)) { return false; }
        EXPECT_EQ(0, Zones().StopMonitorZone(kController, 1));
        EXPECT_EQ(0, Zones().StartMonitorZone(kController, 1));
        return true;
    });
    EXPECT_EQ(-1, Zones().StartMonitorZone(kController, 1));
    EXPECT_EQ(1, Zones().IsMonitorZoneExists(kController, 1, 0));
}

} // namespace
} // namespace k740::test
