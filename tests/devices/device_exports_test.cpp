// What bad arguments do to the exported functions of the registry: the stated result and nothing else.
#include "app/application.h"
#include "app/k740.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace k740::test {
namespace {

class DeviceExportsTest : public OnPrivateNetwork {
protected:
    DeviceExportsTest() {
        K740_AddDevice(1, 1, "192.168.1.20");
        K740_AddDevice(5000, 2, "192.168.8.99");
        K740_SetRPKPTTMulticastIP(5000, "225.1.1.1");
    }
    ~DeviceExportsTest() override {
        EXPECT_EQ("1   1 192.168.1.20;5000   2 192.168.8.99;", g_app->Devices().GetDeviceList()) << "nothing changed";
        EXPECT_EQ("225.1.1.1", g_app->Devices().GetRPKPTTMulticastIP(5000)) << "nothing changed";
    }
    const std::string m_overlong = std::string(200'000, 'x');
};

TEST_F(DeviceExportsTest, AddDeviceRefusesNullAndEmptyAddresses) {
    EXPECT_EQ(-1, K740_AddDevice(2, 1, nullptr));
    EXPECT_EQ(-1, K740_AddDevice(2, 1, ""));
    EXPECT_EQ(-1, K740_AddDevice(5001, 2, nullptr));
}

TEST_F(DeviceExportsTest, AddDeviceRefusesFormatCharactersAndLogsThemAsTheyAre) {
    EXPECT_EQ(-1, K740_AddDevice(2, 1, "%s%n%d"));
    EXPECT_TRUE(WaitForLogLine("\tK740_AddDevice(2, 1, '%s%n%d')"));
}

TEST_F(DeviceExportsTest, AddDeviceRefusesAnOverlongTextAndLogsItWhole) {
    EXPECT_EQ(-1, K740_AddDevice(2, 1, m_overlong.c_str()));
    EXPECT_TRUE(WaitForLogLine("\tK740_AddDevice(2, 1, '" + m_overlong + "')"));
}

TEST_F(DeviceExportsTest, AddDeviceRefusesNumbersOutOfRange) {
    for (int id : {INT_MIN, -1, 0, 1000, INT_MAX}) { EXPECT_EQ(-1, K740_AddDevice(id, 1, "192.168.1.21")) << id; }
    for (int type : {INT_MIN, -1, 11, INT_MAX}) { EXPECT_EQ(-1, K740_AddDevice(2, type, "192.168.1.21")) << type; }
}

TEST_F(DeviceExportsTest, AnOverlongAddressThatBeginsWellIsCut) {
    EXPECT_EQ(0, K740_AddDevice(2, 1, ("192.168.1.21" + m_overlong).c_str()));
    EXPECT_EQ("192.168.1.21" + std::string(37, 'x'), g_app->Devices().GetDeviceIP(2));
    EXPECT_EQ(0, K740_RemoveDevice(2));
}

TEST_F(DeviceExportsTest, NullIsAnEmptyAddressForTheLibrarysOwnDevices) {
    EXPECT_EQ(0, K740_AddDevice(900, 9, nullptr));
    EXPECT_EQ(0, K740_AddDevice(5900, 10, nullptr));
    EXPECT_EQ(0, K740_RemoveDevice(900));
    EXPECT_EQ(0, K740_RemoveDevice(5900));
}

TEST_F(DeviceExportsTest, RemoveDeviceRefusesUnknownIDs) {
    for (int id : {INT_MIN, -1, 0, 2, 4999, INT_MAX}) { EXPECT_EQ(-1, K740_RemoveDevice(id)) << id; }
}

TEST_F(DeviceExportsTest, SetRPKPTTMulticastIPRefusesBadArguments) {
    for (int id : {INT_MIN, -1, 0, 1, 5001, INT_MAX}) {
        EXPECT_EQ(-1, K740_SetRPKPTTMulticastIP(id, "225.1.1.2")) << id;
    }
    EXPECT_EQ(-2, K740_SetRPKPTTMulticastIP(5000, "%s%n%d%s%n"));
    EXPECT_EQ(-2, K740_SetRPKPTTMulticastIP(5000, m_overlong.c_str()));
    EXPECT_EQ(-2, K740_SetRPKPTTMulticastIP(5000, "240.1.1.1"));
}

} // namespace
} // namespace k740::test
