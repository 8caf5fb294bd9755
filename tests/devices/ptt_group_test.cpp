#include "app/k740.h"
#include "common/stopwatch.h"
#include "common/thread.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace k740::test {
namespace {

constexpr int kStation = 5000;

class PTTGroupTest : public OnRegistry {
protected:
    PTTGroupTest() {
        m_devices.AddDevice(kStation, 2, "10.0.0.1");
        m_devices.AddDevice(5001, 10, "");
        m_devices.AddDevice(1, 1, "10.0.0.2");
    }
    /// The thread that receives the station's audio ends before the application does.
    ~PTTGroupTest() override {
        m_devices.UpdateRPKMulticastIP(kStation, "");
        // The flag is there before the thread runs, and goes before it ends.
        const auto hasEnded = [this] { return m_app->RPK().GetMonitorPTTFlag(kStation) == 0 && RunningThreads() == 0; };
        EXPECT_TRUE(WaitUntil(hasEnded));
    }
};

TEST_F(PTTGroupTest, IsStoredWithoutBlanks) {
    EXPECT_EQ(0, m_devices.SetRPKPTTMulticastIP(kStation, "  225.1.1.1  "));
    EXPECT_EQ("225.1.1.1", m_devices.GetRPKPTTMulticastIP(kStation));
}

TEST_F(PTTGroupTest, NeedsARegisteredPagingStation) {
    for (int id : {5002, 5001, 1, 0, -1}) { EXPECT_EQ(-1, m_devices.SetRPKPTTMulticastIP(id, "225.1.1.1")) << id; }
    EXPECT_EQ(-1, m_devices.SetRPKPTTMulticastIP(1, "nonsense"));
}

TEST_F(PTTGroupTest, NeedsAMulticastAddressAndKeepsTheOldOneOtherwise) {
    m_devices.SetRPKPTTMulticastIP(kStation, "225.1.1.1");
    for (const char* bad : {"223.1.1.1", "240.1.1.1", "225.1.1.", "192.168.1.1", "nonsense"}) {
        EXPECT_EQ(-2, m_devices.SetRPKPTTMulticastIP(kStation, bad)) << bad;
    }
    EXPECT_EQ("225.1.1.1", m_devices.GetRPKPTTMulticastIP(kStation));
}

TEST_F(PTTGroupTest, AnEmptyAddressSwitchesOff) {
    m_devices.SetRPKPTTMulticastIP(kStation, "225.1.1.1");
    EXPECT_EQ(0, m_devices.SetRPKPTTMulticastIP(kStation, "   "));
    EXPECT_EQ("", m_devices.GetRPKPTTMulticastIP(kStation));
}

TEST_F(PTTGroupTest, IsClearedWhenTheFormerOneIsNotLeftWithinThreeSeconds) {
    m_devices.UpdateRPKMulticastIP(kStation, "225.1.1.1");
    m_app->RPK().NewMonitorPTTFlag(kStation);
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(-3, m_devices.SetRPKPTTMulticastIP(kStation, "225.1.1.2"));
    EXPECT_GE(watch.TimeEnd(), 3000U);
    EXPECT_LT(watch.TimeEnd(), 4000U);
    EXPECT_EQ("", m_devices.GetRPKPTTMulticastIP(kStation));
    m_app->RPK().RemoveMonitorPTTFlag(kStation);
}

TEST_F(PTTGroupTest, IsSetAsSoonAsTheFormerOneIsLeft) {
    m_devices.UpdateRPKMulticastIP(kStation, "225.1.1.1");
    m_app->RPK().NewMonitorPTTFlag(kStation);
    std::thread monitor([this] { // leaves its group when the address is cleared
        EXPECT_TRUE(WaitUntil([this] { return m_devices.GetRPKPTTMulticastIP(kStation).empty(); }));
        m_app->RPK().RemoveMonitorPTTFlag(kStation);
    });
    EXPECT_EQ(0, m_devices.SetRPKPTTMulticastIP(kStation, "225.1.1.2"));
    monitor.join();
    EXPECT_EQ("225.1.1.2", m_devices.GetRPKPTTMulticastIP(kStation));
}

TEST_F(PTTGroupTest, UpdateStoresAnyTextOf49CharactersForAnyType) {
    const std::string longest(49, 'x');
    m_devices.UpdateRPKMulticastIP(kStation, longest + "y");
    EXPECT_EQ(longest, m_devices.GetRPKPTTMulticastIP(kStation));
    m_devices.UpdateRPKMulticastIP(1, "225.1.1.1");
    EXPECT_EQ("225.1.1.1", m_devices.GetAllDevices().at(2).pttMulticastIP);
    EXPECT_EQ("", m_devices.GetRPKPTTMulticastIP(1)); // no paging station
    m_devices.UpdateRPKMulticastIP(2, "225.1.1.1");   // not registered
}

class PTTGroupExportTest : public OnPrivateNetwork {};

TEST_F(PTTGroupExportTest, LogsEveryCallAsItWasMade) {
    K740_AddDevice(kStation, 2, "10.0.0.1");
    EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, " 225.1.1.1 "));
    EXPECT_EQ(-1, K740_SetRPKPTTMulticastIP(1, "225.1.1.1"));
    EXPECT_EQ(-2, K740_SetRPKPTTMulticastIP(kStation, "%s%n%d"));
    EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, nullptr));
    ASSERT_TRUE(WaitForLogLine("\tK740_SetRPKPTTMulticastIP(5000, '')"));
    EXPECT_EQ(1, CountLogLines("\tK740_SetRPKPTTMulticastIP(5000, ' 225.1.1.1 ')"));
    EXPECT_EQ(1, CountLogLines("\tK740_SetRPKPTTMulticastIP(1, '225.1.1.1')"));
    EXPECT_EQ(1, CountLogLines("\tK740_SetRPKPTTMulticastIP(5000, '%s%n%d')"));
}

} // namespace
} // namespace k740::test
