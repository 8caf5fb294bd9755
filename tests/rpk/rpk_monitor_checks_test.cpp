// What K740_StartRPKMonitor and K740_StopRPKMonitor refuse, in which order and with which words.
#include "app/application.h"
#include "app/k740.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>

namespace k740::test {
namespace {

constexpr int kStation = 5000;
constexpr const char* kBadController = "*****zcu device type is error.";
constexpr const char* kBadZone = "*****zone id is error.";
constexpr const char* kBadStation = "*****rpk device type is error.";

class RPKMonitorChecksTest : public OnPrivateNetwork {
protected:
    RPKMonitorChecksTest() {
        K740_AddDevice(kStation, 2, "192.168.8.99");
        K740_AddDevice(5001, 10, "");
        K740_AddDevice(1, 1, "192.168.1.20");
        K740_AddDevice(7000, 3, "192.168.1.22");
        K740_AddDevice(50, 5, "192.168.1.23");
    }
    ~RPKMonitorChecksTest() override { EXPECT_TRUE(m_station.MonitorRequests().empty()) << "nothing is sent"; }

    /// The start fails with -1; this is its only error.
    void ExpectRefused(int station, int controller, int zone, const std::string& error) {
        EXPECT_EQ(-1, K740_StartRPKMonitor(station, controller, zone));
        EXPECT_TRUE(WaitForExactLine(error, ++m_errors[error])) << error;
        EXPECT_EQ(++m_allErrors, CountLogLines("is error."));
    }

private:
    std::map<std::string, std::ptrdiff_t> m_errors;
    std::ptrdiff_t m_allErrors = 0;
    sim::PagingStation& m_station = AddPagingStation(kStation, "192.168.8.99");
};

TEST_F(RPKMonitorChecksTest, OnlyZoneControllersHaveZones) {
    for (int controller : {kStation, 5001, 7000, 50, 2, 0, -1}) {
        ExpectRefused(kStation, controller, 1, kBadController);
    }
}

TEST_F(RPKMonitorChecksTest, ZonesAreOneToEight) {
    for (int zone : {0, 9, -1}) { ExpectRefused(kStation, 1, zone, kBadZone); }
}

TEST_F(RPKMonitorChecksTest, OnlyPagingStationsMonitor) {
    for (int station : {1, 5001, 5002, 7000, 50, 0, -1}) { ExpectRefused(station, 1, 1, kBadStation); }
}

TEST_F(RPKMonitorChecksTest, TheControllerIsLookedAtFirstThenTheZoneThenTheStation) {
    ExpectRefused(1, 2, 9, kBadController);
    ExpectRefused(1, 1, 9, kBadZone);
    ExpectRefused(1, 1, 8, kBadStation);
}

TEST_F(RPKMonitorChecksTest, AStopLooksAtTheStationOnly) {
    EXPECT_EQ(-1, K740_StopRPKMonitor(5001));
    EXPECT_EQ(-1, K740_StopRPKMonitor(5002));
    EXPECT_TRUE(WaitForExactLine(kBadStation, 2));
    EXPECT_EQ(2, CountLogLines("is error."));
}

TEST_F(RPKMonitorChecksTest, ARefusedStartIsNotRemembered) {
    ExpectRefused(kStation, 1, 9, kBadZone);
    ExpectRefused(5001, 1, 1, kBadStation);
    tagRPK_MONITOR_ZONE monitored{};
    EXPECT_EQ(-1, g_app->RPK().GetMonitorZone(kStation, monitored));
    EXPECT_EQ(-1, g_app->RPK().GetMonitorZone(5001, monitored));
}

TEST_F(RPKMonitorChecksTest, AZoneIsRememberedWholeUntilItIsReplacedOrRemoved) {
    CRPK& rpk = g_app->RPK();
    tagRPK_MONITOR_ZONE monitored{};
    const time_t before = time(nullptr);
    rpk.NewMonitorZone(kStation, 1, 8);
    rpk.NewMonitorZone(kStation, 2, 3);
    EXPECT_EQ(0, rpk.GetMonitorZone(kStation, monitored));
    EXPECT_EQ(5000U, monitored.deviceID);
    EXPECT_EQ(2U, monitored.zcuID);
    EXPECT_EQ(3U, monitored.zone);
    EXPECT_GE(monitored.created, before);
    EXPECT_EQ(0, rpk.RemoveMonitorZone(kStation));
    EXPECT_EQ(-1, rpk.RemoveMonitorZone(kStation));
    EXPECT_EQ(-1, rpk.GetMonitorZone(kStation, monitored));
}

TEST_F(RPKMonitorChecksTest, TheZonesOf2048StationsAreRemembered) {
    CRPK& rpk = g_app->RPK();
    tagRPK_MONITOR_ZONE monitored{};
    for (int station = 1; station <= 2048; ++station) { rpk.NewMonitorZone(station, 1, 1); }
    EXPECT_EQ(0, rpk.GetMonitorZone(1, monitored));
    rpk.NewMonitorZone(2049, 1, 1);
    EXPECT_EQ(-1, rpk.GetMonitorZone(1, monitored));
    EXPECT_EQ(0, rpk.GetMonitorZone(2, monitored));
    EXPECT_EQ(0, rpk.GetMonitorZone(2049, monitored));
}

TEST_F(RPKMonitorChecksTest, AStationIsMarkedAsHeardOnceAndUntilItIsNot) {
    CRPK& rpk = g_app->RPK();
    EXPECT_EQ(0, rpk.GetMonitorPTTFlag(kStation));
    EXPECT_TRUE(rpk.NewMonitorPTTFlag(kStation));
    EXPECT_FALSE(rpk.NewMonitorPTTFlag(kStation));
    EXPECT_EQ(-1, rpk.GetMonitorPTTFlag(kStation));
    EXPECT_EQ(0, rpk.GetMonitorPTTFlag(5001));
    rpk.RemoveMonitorPTTFlag(kStation);
    EXPECT_EQ(0, rpk.GetMonitorPTTFlag(kStation));
}

} // namespace
} // namespace k740::test
