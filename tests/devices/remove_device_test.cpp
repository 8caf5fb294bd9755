#include "app/k740.h"
#include "common/udp.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/process_state.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <string>

namespace k740::test {
namespace {

class RemoveDeviceTest : public OnRegistry {
protected:
    /// @return whether controller 1 still has a status after it was registered with the type and removed
    bool KeepsStatus(int type) {
        m_devices.AddDevice(1, type, "10.0.0.1");
        m_app->ZCU().UpdateZCUStatus();
        tagZCU_QUERYSTATUS2 record;
        EXPECT_EQ(0, m_app->ZCU().GetZCUStatus(1, record));
        EXPECT_EQ(0, m_devices.RemoveDevice(1));
        return m_app->ZCU().GetZCUStatus(1, record) == 0;
    }
};

TEST_F(RemoveDeviceTest, ReturnsZeroOnceAndThenMinusOne) {
    m_devices.AddDevice(1, 1, "10.0.0.1");
    EXPECT_EQ(0, m_devices.RemoveDevice(1));
    EXPECT_EQ(-1, m_devices.RemoveDevice(1));
    EXPECT_EQ("", m_devices.GetDeviceList());
}

TEST_F(RemoveDeviceTest, FreesTheIDAndTheAddress) {
    m_devices.AddDevice(1, 1, "10.0.0.1");
    m_devices.RemoveDevice(1);
    EXPECT_EQ(0, m_devices.AddDevice(1, 1, "10.0.0.1"));
}

TEST_F(RemoveDeviceTest, LeavesTheOthersInTheirOrder) {
    for (int id : {3, 1, 2}) { m_devices.AddDevice(id, 1, Address(id)); }
    m_devices.RemoveDevice(1);
    EXPECT_EQ("0003FF;0002FF;", m_devices.GetAllZones());
}

TEST_F(RemoveDeviceTest, ClosesTheSocket) {
    const auto before = CountDescriptors();
    m_devices.AddDevice(1, 1, "10.0.0.1");
    EXPECT_EQ(before + 1, CountDescriptors());
    m_devices.RemoveDevice(1);
    EXPECT_EQ(before, CountDescriptors());
}

TEST_F(RemoveDeviceTest, ASocketInUseIsClosedByItsLastUser) {
    const auto before = CountDescriptors();
    m_devices.AddDevice(1, 1, "192.168.1.20");
    auto udp = m_devices.GetDeviceUDP(1);
    m_devices.RemoveDevice(1);
    EXPECT_EQ(4, udp->send_udp_data("data", 4));
    udp.reset();
    EXPECT_EQ(before, CountDescriptors());
}

TEST_F(RemoveDeviceTest, ForgetsTheStatusOfZoneControllersOnly) {
    for (int type : {0, 1, 9}) { EXPECT_FALSE(KeepsStatus(type)) << type; }
    for (int type : {4, 8}) { EXPECT_TRUE(KeepsStatus(type)) << type; }
}

TEST_F(RemoveDeviceTest, ForgetsTheReportsOfAZoneControllerThatWait) {
    m_devices.AddDevice(1, 1, "10.0.0.1"); // its off-line mark waits
    m_devices.RemoveDevice(1);
    m_devices.AddDevice(2, 4, "10.0.0.2");
    m_app->ZCU().UpdateZCUStatus();
    const auto records = m_app->ZCU().GetAllZCUStatus();
    ASSERT_EQ(1U, records.size());
    EXPECT_EQ(2, records[0].DeviceID());
}

TEST_F(RemoveDeviceTest, ForgetsTheStatusOfAPagingStationWithTheNextMerge) {
    m_devices.AddDevice(5000, 2, "10.0.0.1");
    m_app->RPK().UpdateRPKStatus();
    ASSERT_EQ(1U, m_app->RPK().GetAllRPKStatus().size());
    m_devices.RemoveDevice(5000);
    m_app->RPK().UpdateRPKStatus();
    EXPECT_TRUE(m_app->RPK().GetAllRPKStatus().empty());
}

class RemoveDeviceLogTest : public OnPrivateNetwork {};

TEST_F(RemoveDeviceLogTest, OnlyASuccessIsLogged) {
    K740_AddDevice(1, 1, "10.0.0.1");
    EXPECT_EQ(-1, K740_RemoveDevice(2));
    EXPECT_EQ(0, K740_RemoveDevice(1));
    EXPECT_EQ(-1, K740_RemoveDevice(1));
    K740_SetNodeID(9999);
    ASSERT_TRUE(WaitForLogLine("K740_SetNodeID(9999)"));
    EXPECT_EQ(1, CountLogLines("\tK740_RemoveDevice(1)"));
    EXPECT_EQ(1, CountLogLines("K740_RemoveDevice"));
}

} // namespace
} // namespace k740::test
