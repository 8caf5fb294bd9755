#include "app/k740.h"
#include "tests/devices/registry_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;

class DeviceListTest : public OnRegistry {
protected:
    std::vector<int> IDsInTableOrder() const {
        std::vector<int> ids;
        for (const tagDEVICE_INFO& device : m_devices.GetAllDevices()) { ids.push_back(device.deviceID); }
        return ids;
    }
};

TEST_F(DeviceListTest, IsEmptyWithoutDevices) {
    EXPECT_EQ("", m_devices.GetDeviceList());
}

TEST_F(DeviceListTest, NamesIDTypeAndAddressByAscendingID) {
    m_devices.AddDevice(5000, 2, "192.168.8.99");
    m_devices.AddDevice(1, 1, "192.168.1.20");
    EXPECT_EQ("1   1 192.168.1.20;5000   2 192.168.8.99;", m_devices.GetDeviceList());
}

TEST_F(DeviceListTest, ShowsAVirtualControllerAtTheLibrarysAddress) {
    m_devices.AddDevice(900, 9, "");
    EXPECT_EQ("900   9 127.0.0.1;", m_devices.GetDeviceList());
}

TEST_F(DeviceListTest, SortsTheTableItself) {
    for (int id : {3, 1, -7, 2}) { m_devices.AddDevice(id, 4, Address(10 + id)); }
    EXPECT_THAT(IDsInTableOrder(), ElementsAre(3, 1, -7, 2));
    m_devices.GetDeviceList();
    EXPECT_THAT(IDsInTableOrder(), ElementsAre(-7, 1, 2, 3));
    m_devices.AddDevice(0, 4, Address(100));
    EXPECT_THAT(IDsInTableOrder(), ElementsAre(-7, 1, 2, 3, 0));
}

/// The export, with a buffer whose untouched bytes can be told.
class GetDeviceListTest : public OnPrivateNetwork {
protected:
    GetDeviceListTest() { K740_AddDevice(1, 1, "192.168.1.20"); }
    static constexpr const char* kList = "1   1 192.168.1.20;";
    static constexpr int kLength = 19;

    /// @return the buffer after a call with this size
    std::string BufferAfter(int size) {
        EXPECT_EQ(kLength, K740_GetDeviceList(m_buffer.data(), size));
        return m_buffer;
    }
    std::string m_buffer = std::string(64, 'E');
};

TEST_F(GetDeviceListTest, WithoutABufferReturnsTheLength) {
    EXPECT_EQ(kLength, K740_GetDeviceList(nullptr, 0));
    EXPECT_EQ(kLength, K740_GetDeviceList(nullptr, 64));
    EXPECT_EQ(kLength, K740_GetDeviceList(nullptr, INT_MAX));
}

TEST_F(GetDeviceListTest, ASizeBelowOneCopiesNothing) {
    EXPECT_EQ(std::string(64, 'E'), BufferAfter(0));
    EXPECT_EQ(std::string(64, 'E'), BufferAfter(-1));
    EXPECT_EQ(std::string(64, 'E'), BufferAfter(INT_MIN));
}

TEST_F(GetDeviceListTest, AShortBufferGetsTheBeginningAndAZero) {
    EXPECT_EQ(std::string("1\0", 2) + std::string(62, 'E'), BufferAfter(1));
    EXPECT_EQ(std::string("1   1\0", 6) + std::string(58, 'E'), BufferAfter(5));
    EXPECT_EQ(std::string(kList, 18) + '\0' + std::string(45, 'E'), BufferAfter(kLength - 1));
}

TEST_F(GetDeviceListTest, ASufficientBufferIsClearedToItsSizeAndOne) {
    EXPECT_EQ(kList + std::string(1, '\0') + std::string(44, 'E'), BufferAfter(kLength));
    EXPECT_EQ(kList + std::string(2, '\0') + std::string(43, 'E'), BufferAfter(kLength + 1));
    EXPECT_EQ(kList + std::string(12, '\0') + std::string(33, 'E'), BufferAfter(30));
}

} // namespace
} // namespace k740::test
