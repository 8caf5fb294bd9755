#include "app/k740.h"
#include "common/udp.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace k740::test {
namespace {

using sim::Received;
using ::testing::ElementsAre;

constexpr int kAccepted = 0;
constexpr int kRefused = -1;
constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

class AddDeviceTest : public OnRegistry {
protected:
    int Add(int id, int type, const std::string& ip) { return m_devices.AddDevice(id, type, ip); }
};

TEST_F(AddDeviceTest, ZoneControllersHaveIDsFrom1To999) {
    for (int type : {0, 1, 9}) {
        const std::string net = "10.1." + std::to_string(type) + ".";
        const int middle = 100 + type;
        for (int id : {kLowest, -1, 0, 1000, 5000, kHighest}) { EXPECT_EQ(kRefused, Add(id, type, net + "1")) << id; }
        EXPECT_EQ(kAccepted, Add(1, type, net + "1"));
        EXPECT_EQ(kAccepted, Add(middle, type, net + "2"));
        EXPECT_EQ(kAccepted, Add(999, type, net + "3"));
        for (int id : {1, middle, 999}) { EXPECT_EQ(0, m_devices.RemoveDevice(id)); }
    }
}

TEST_F(AddDeviceTest, PagingStationsHaveIDsFrom5000To5999) {
    for (int type : {2, 10}) {
        const std::string net = "10.2." + std::to_string(type) + ".";
        for (int id : {kLowest, 0, 1, 4999, 6000, kHighest}) { EXPECT_EQ(kRefused, Add(id, type, net + "1")) << id; }
        EXPECT_EQ(kAccepted, Add(5000, type, net + "1"));
        EXPECT_EQ(kAccepted, Add(5999, type, net + "2"));
        for (int id : {5000, 5999}) { EXPECT_EQ(0, m_devices.RemoveDevice(id)); }
    }
}

TEST_F(AddDeviceTest, AuxInterfacesHaveIDsFrom7000To7999) {
    for (int id : {kLowest, 1, 6999, 8000, kHighest}) { EXPECT_EQ(kRefused, Add(id, 3, "10.3.3.1")) << id; }
    EXPECT_EQ(kAccepted, Add(7000, 3, "10.3.3.1"));
    EXPECT_EQ(kAccepted, Add(7999, 3, "10.3.3.2"));
}

TEST_F(AddDeviceTest, OtherTypesHaveAnyID) {
    for (int type = 4; type <= 8; ++type) {
        const std::string net = "10.4." + std::to_string(type) + ".";
        int host = 1;
        for (int id : {kLowest + type, -type, type, 1000 + type, 5000 + type, 7000 + type, kHighest - type}) {
            EXPECT_EQ(kAccepted, Add(id, type, net + std::to_string(host++))) << id;
            EXPECT_EQ(type, m_devices.GetDeviceType(id));
        }
    }
    EXPECT_EQ(kAccepted, Add(0, 5, "10.0.0.5"));
}

TEST_F(AddDeviceTest, TypesBeyond0To10AreRefused) {
    for (int type : {kLowest, -1, 11, kHighest}) { EXPECT_EQ(kRefused, Add(50, type, "10.0.0.5")) << type; }
    EXPECT_FALSE(m_devices.IsDeviceIDValid(50));
}

TEST_F(AddDeviceTest, AddressesAreCheckedForAllButTheLibrarysOwnDevices) {
    for (const char* bad : {"", "127.0.0.1", "0.0.0.0", "224.0.0.1", "239.1.1.1", "256.1.1.1", "1.2.3"}) {
        int id = 1;
        for (int type : {0, 1, 4, 5, 6, 7, 8}) { EXPECT_EQ(kRefused, Add(id++, type, bad)) << bad << " " << type; }
        EXPECT_EQ(kRefused, Add(5000, 2, bad)) << bad;
        EXPECT_EQ(kRefused, Add(7000, 3, bad)) << bad;
    }
    EXPECT_EQ("", m_devices.GetDeviceList());
}

TEST_F(AddDeviceTest, TheLibrarysOwnDevicesAreAtItsOwnAddressWhateverIsGiven) {
    EXPECT_EQ(kAccepted, Add(900, 9, ""));
    EXPECT_EQ(kAccepted, Add(901, 9, "nonsense"));
    EXPECT_EQ(kAccepted, Add(5900, 10, ""));
    EXPECT_EQ(kAccepted, Add(5901, 10, "224.0.0.1"));
    EXPECT_EQ("900   9 127.0.0.1;901   9 127.0.0.1;5900   10 127.0.0.1;5901   10 127.0.0.1;",
              m_devices.GetDeviceList());
}

TEST_F(AddDeviceTest, TheAddressOfAnOwnDeviceIsComparedAsGiven) {
    ASSERT_EQ(kAccepted, Add(900, 9, ""));
    EXPECT_EQ(kRefused, Add(901, 9, "127.0.0.1"));
    ASSERT_EQ(kAccepted, Add(1, 1, "10.0.0.1"));
    EXPECT_EQ(kRefused, Add(902, 9, "10.0.0.1"));
}

TEST_F(AddDeviceTest, AnIDOrAddressInUseIsRefused) {
    ASSERT_EQ(kAccepted, Add(1, 1, "10.0.0.1"));
    EXPECT_EQ(kRefused, Add(1, 1, "10.0.0.2"));
    EXPECT_EQ(kRefused, Add(1, 5, "10.0.0.2"));
    EXPECT_EQ(kRefused, Add(2, 1, "10.0.0.1"));
    EXPECT_EQ(kAccepted, Add(2, 1, "10.0.0.01")); // another text
    EXPECT_EQ("1   1 10.0.0.1;2   1 10.0.0.01;", m_devices.GetDeviceList());
}

TEST_F(AddDeviceTest, AddressesAreCutTo49Characters) {
    const std::string longest = "10.0.0.1" + std::string(41, 'x');
    ASSERT_EQ(49U, longest.size());
    EXPECT_EQ(kAccepted, Add(1, 1, longest));
    EXPECT_EQ(longest, m_devices.GetDeviceIP(1));
    EXPECT_EQ(kRefused, Add(2, 1, longest));
    EXPECT_EQ(kAccepted, Add(2, 1, longest + "y"));
    EXPECT_EQ(longest, m_devices.GetDeviceIP(2));
}

TEST_F(AddDeviceTest, TheTableHolds500Devices) {
    for (int i = 0; i < 500; ++i) { ASSERT_EQ(kAccepted, Add(10000 + i, 4, Address(i))) << i; }
    EXPECT_EQ(kRefused, Add(10500, 4, Address(500)));
    EXPECT_EQ(kRefused, Add(900, 9, ""));
    ASSERT_EQ(0, m_devices.RemoveDevice(10250));
    EXPECT_EQ(kAccepted, Add(10500, 4, Address(500)));
    EXPECT_EQ(kRefused, Add(10501, 4, Address(501)));
}

TEST_F(AddDeviceTest, WhatIsKnownOfADeviceCanBeAsked) {
    Add(5000, 2, "192.168.8.99");
    EXPECT_TRUE(m_devices.IsDeviceIDValid(5000));
    EXPECT_EQ(2, m_devices.GetDeviceType(5000));
    EXPECT_EQ("192.168.8.99", m_devices.GetDeviceIP(5000));
    EXPECT_NE(nullptr, m_devices.GetDeviceUDP(5000));
    EXPECT_EQ("", m_devices.GetRPKPTTMulticastIP(5000));
}

TEST_F(AddDeviceTest, NothingIsKnownOfADeviceThatIsNotRegistered) {
    EXPECT_FALSE(m_devices.IsDeviceIDValid(1));
    EXPECT_EQ(-1, m_devices.GetDeviceType(1));
    EXPECT_EQ("", m_devices.GetDeviceIP(1));
    EXPECT_EQ(nullptr, m_devices.GetDeviceUDP(1));
    EXPECT_EQ("", m_devices.GetRPKPTTMulticastIP(1));
}

TEST_F(AddDeviceTest, PagingStationsAreListedByTheirType) {
    Add(5000, 2, "10.0.0.1");
    Add(5001, 10, "");
    Add(5002, 5, "10.0.0.2");
    Add(5003, 2, "10.0.0.3");
    std::vector<int> ids;
    for (const tagDEVICE_INFO& device : m_devices.GetAllRPKDevices()) { ids.push_back(device.deviceID); }
    EXPECT_THAT(ids, ElementsAre(5000, 5003));
}

// Announcement: an off-line mark and a heartbeat.

TEST_F(AddDeviceTest, ANewZoneControllerIsGreetedAndOffLine) {
    AddZoneController(1, "192.168.1.20");
    Add(1, 1, "192.168.1.20");
    EXPECT_TRUE(Field().Events().WaitFor(Received(1, 0x0125), kPatience));
    m_app->ZCU().UpdateZCUStatus();
    tagZCU_QUERYSTATUS2 record;
    EXPECT_EQ(0, m_app->ZCU().GetZCUStatus(1, record));
    EXPECT_EQ(255, record.status.deviceStatus);
}

TEST_F(AddDeviceTest, ANewPagingStationIsGreetedAndOffLine) {
    AddPagingStation(5000, "192.168.8.99");
    Add(5000, 2, "192.168.8.99");
    EXPECT_TRUE(Field().Events().WaitFor(Received(5000, 0x0700), kPatience));
    m_app->RPK().UpdateRPKStatus();
    ASSERT_EQ(1U, m_app->RPK().GetAllRPKStatus().size());
    EXPECT_TRUE(m_app->RPK().GetAllRPKStatus()[0].IsOffLine());
}

TEST_F(AddDeviceTest, AnyTypeWithAControllersIDIsGreetedAndOffLine) {
    AddZoneController(50, "192.168.1.50");
    Add(50, 5, "192.168.1.50");
    EXPECT_TRUE(Field().Events().WaitFor(Received(50, 0x0125), kPatience));
    m_app->ZCU().UpdateZCUStatus();
    tagZCU_QUERYSTATUS2 record;
    EXPECT_EQ(0, m_app->ZCU().GetZCUStatus(50, record));
}

TEST_F(AddDeviceTest, OtherDevicesAreNotGreeted) {
    AddZoneController(7000, "192.168.1.70");
    AddZoneController(5001, "192.168.1.51");
    AddZoneController(2000, "192.168.1.2");
    Add(7000, 3, "192.168.1.70");
    Add(5001, 5, "192.168.1.51");
    Add(2000, 4, "192.168.1.2");
    Add(5002, 10, "");
    // What is sent on purpose comes first only when nothing was sent before.
    for (int id : {7000, 5001, 2000}) { m_app->SendToDevice(id, MakePacket(9500, 1, 0x7777, 0)); }
    for (std::uint32_t id : {7000U, 5001U, 2000U}) {
        ASSERT_TRUE(Field().Events().WaitFor(Received(id, 0x7777), kPatience)) << id;
    }
    EXPECT_EQ(3U, Field().Events().Events().size());
    m_app->ZCU().UpdateZCUStatus();
    m_app->RPK().UpdateRPKStatus();
    EXPECT_TRUE(m_app->ZCU().GetAllZCUStatus().empty());
    EXPECT_TRUE(m_app->RPK().GetAllRPKStatus().empty());
}

// Log lines.

class AddDeviceLogTest : public OnPrivateNetwork {
protected:
    AddDeviceLogTest() { K740_Initialize(); }
    /// @return the lines that the call has logged
    static std::vector<std::string> LinesOf(int id, int type, const char* ip) {
        static int marker = 9500;
        const auto setMarker = [] {
            K740_SetNodeID(++marker);
            const std::string line = "K740_SetNodeID(" + std::to_string(marker) + ")";
            EXPECT_TRUE(WaitForLogLine(line));
            return line;
        };
        setMarker();
        const std::size_t before = LogTexts().size();
        K740_AddDevice(id, type, ip);
        setMarker();
        const std::vector<std::string> texts = LogTexts();
        return {texts.begin() + static_cast<std::ptrdiff_t>(before), texts.end() - 1};
    }
};

TEST_F(AddDeviceLogTest, ASuccessLogsTheCallAlone) {
    EXPECT_THAT(LinesOf(1, 1, "10.0.0.1"), ElementsAre("K740_AddDevice(1, 1, '10.0.0.1')"));
}

TEST_F(AddDeviceLogTest, EachRefusalIsLoggedAsAnErrorBehindTheCall) {
    EXPECT_THAT(LinesOf(1, 11, "10.0.0.1"),
                ElementsAre("K740_AddDevice(1, 11, '10.0.0.1')", "*****Device type is error."));
    EXPECT_THAT(LinesOf(4999, 2, "10.0.0.1"),
                ElementsAre("K740_AddDevice(4999, 2, '10.0.0.1')", "*****Device ID is outoff range 5000~5999."));
    EXPECT_THAT(LinesOf(6000, 10, ""),
                ElementsAre("K740_AddDevice(6000, 10, '')", "*****Device ID is outoff range 5000~5999."));
    EXPECT_THAT(LinesOf(8000, 3, "10.0.0.1"),
                ElementsAre("K740_AddDevice(8000, 3, '10.0.0.1')", "*****Device ID is outoff range 7000~7999."));
    EXPECT_THAT(LinesOf(1000, 1, "192.168.1.5"),
                ElementsAre("K740_AddDevice(1000, 1, '192.168.1.5')", "*****Device ID is outoff range 1~999."));
    EXPECT_THAT(LinesOf(0, 9, nullptr),
                ElementsAre("K740_AddDevice(0, 9, '')", "*****Device ID is outoff range 1~999."));
    EXPECT_THAT(LinesOf(1, 1, "127.0.0.1"),
                ElementsAre("K740_AddDevice(1, 1, '127.0.0.1')", "*****Device IP is error."));
}

TEST_F(AddDeviceLogTest, ChecksAreMadeInTheOrderTypeRangeAddress) {
    EXPECT_THAT(LinesOf(0, -1, ""), ElementsAre("K740_AddDevice(0, -1, '')", "*****Device type is error."));
    EXPECT_THAT(LinesOf(0, 1, ""), ElementsAre("K740_AddDevice(0, 1, '')", "*****Device ID is outoff range 1~999."));
}

TEST_F(AddDeviceLogTest, TheFirstClashInTableOrderIsNamedTheIDBeforeTheAddress) {
    K740_AddDevice(2, 1, "10.0.0.2");
    K740_AddDevice(1, 1, "10.0.0.1");
    EXPECT_EQ("*****Device ID is already exists.", LinesOf(2, 1, "10.0.0.2").back());
    EXPECT_EQ("*****Device IP is already exists.", LinesOf(1, 1, "10.0.0.2").back());
    K740_GetDeviceList(nullptr, 0); // sorts the table
    EXPECT_EQ("*****Device ID is already exists.", LinesOf(1, 1, "10.0.0.2").back());
}

TEST_F(AddDeviceLogTest, AFullTableIsLoggedBeforeAClash) {
    for (int i = 0; i < 500; ++i) {
        K740_AddDevice(10000 + i, 4, ("10.0." + std::to_string(i / 250) + "." + std::to_string(i % 250)).c_str());
    }
    EXPECT_EQ("*****Device qty. is up to 500", LinesOf(10000, 4, "10.0.0.0").back());
    EXPECT_EQ("*****Device IP is error.", LinesOf(10000, 4, "").back());
}

} // namespace
} // namespace k740::test
