// Setting and reading volumes, as a host asks for it and as it is on the wire.
#include "tests/zcu/controller_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace k740::test {
namespace {

using sim::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Levels = std::array<int, 8>;
constexpr Levels kUnchanged{-1, -1, -1, -1, -1, -1, -1, -1};

int SetVolume(int id, Levels levels) {
    return K740_SetVolume(id, levels.data());
}

using VolumeRequestsTest = ControllerTest;

TEST_F(VolumeRequestsTest, Version3IsToldAllChannelsAtOnceAsAttenuation) {
    EXPECT_EQ(0, SetVolume(kV3, {0, 19, -1, -1, -1, -1, -1, -1}));
    EXPECT_EQ(RequestBytes(kV3, 0x0301, {19, 0, 255, 255, 255, 255, 255, 255, 0xFF, 0xFF, 0xFF}),
              WaitForRequest(kV3, 0x0301)->bytes);
    EXPECT_THAT(m_v3.Volumes(), ElementsAre(19, 0, 0, 0, 0, 0, 0, 0, 255, 255));
}

TEST_F(VolumeRequestsTest, Version3TakesEachOfItsEightChannels) {
    EXPECT_EQ(0, SetVolume(kV3, {1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(RequestBytes(kV3, 0x0301, {18, 17, 16, 15, 14, 13, 12, 11, 0xFF, 0xFF, 0xFF}),
              WaitForRequest(kV3, 0x0301)->bytes);
}

TEST_F(VolumeRequestsTest, Version3IsAskedEvenToLeaveEverythingAsItIs) {
    EXPECT_EQ(0, SetVolume(kV3, kUnchanged));
    EXPECT_EQ(RequestBytes(kV3, 0x0301, Bytes(11, 0xFF)), WaitForRequest(kV3, 0x0301)->bytes);
}

TEST_F(VolumeRequestsTest, Version2IsToldChannelByChannelInOrder) {
    EXPECT_EQ(0, SetVolume(kV2, {0, 19, -1, 5, -1, -1, -1, -1}));
    EXPECT_THAT(RequestsUntilNow(kV2, 0x0109),
                ElementsAre(RequestBytes(kV2, 0x0109, {0, 19}), RequestBytes(kV2, 0x0109, {1, 0}),
                            RequestBytes(kV2, 0x0109, {3, 14})));
}

TEST_F(VolumeRequestsTest, Version2HasFourChannelsAndTheOtherEntriesAreIgnored) {
    EXPECT_EQ(0, SetVolume(kV2, {-1, -1, -1, -1, 1, 2, 3, 4}));
    EXPECT_THAT(RequestsUntilNow(kV2, 0x0109), IsEmpty());
}

TEST_F(VolumeRequestsTest, EntriesOutsideMinus1To19AreMinus2AndNothingIsSent) {
    for (std::size_t channel = 0; channel < 8; ++channel) {
        for (const int level : {-2, 20, 255, -2'147'483'647}) {
            Levels levels{5, 5, 5, 5, 5, 5, 5, 5};
            levels.at(channel) = level;
            EXPECT_EQ(-2, SetVolume(kV3, levels)) << channel << ' ' << level;
            EXPECT_EQ(-2, SetVolume(kV2, levels)) << channel << ' ' << level;
        }
    }
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0301), IsEmpty());
    EXPECT_THAT(RequestsUntilNow(kV2, 0x0109), IsEmpty());
}

TEST_F(VolumeRequestsTest, BadLevelsAreMinus2EvenForADeviceThatIsUnknown) {
    EXPECT_EQ(-2, K740_SetVolume(kV3, nullptr));
    EXPECT_EQ(-2, K740_SetVolume(999, nullptr));
    EXPECT_EQ(-2, SetVolume(999, {20, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(VolumeRequestsTest, OtherDevicesHaveNoVolumes) {
    ASSERT_EQ(0, K740_AddDevice(900, 9, "192.168.1.90"));
    ASSERT_EQ(0, K740_AddDevice(7001, 3, "192.168.1.71"));
    ASSERT_EQ(0, K740_AddDevice(5000, 2, "192.168.1.50"));
    ASSERT_EQ(0, K740_AddDevice(50, 4, "192.168.1.51"));
    for (const int id : {900, 7001, 5000, 50, 999, 0, -1, 1000}) {
        EXPECT_EQ(-1, SetVolume(id, kUnchanged)) << id;
        EXPECT_EQ(-1, K740_GetVolume(id)) << id;
    }
}

TEST_F(VolumeRequestsTest, WhatTheSystemRefusesToSendIsAFailureForVersion3Alone) {
    ASSERT_EQ(0, K740_AddDevice(50, 1, kUnroutableIP));
    ASSERT_EQ(0, K740_AddDevice(51, 0, "10.0.0.2"));
    int levels[8] = {};
    EXPECT_EQ(-1, K740_SetVolume(50, levels));
    EXPECT_EQ(0, K740_SetVolume(51, levels));
    EXPECT_EQ(0, K740_GetVolume(50));
    EXPECT_EQ(-1, g_app->ZCU().ZCU_Request_GetVolume_V3(50));
}

TEST_F(VolumeRequestsTest, SettingVersion3IsLoggedWithItsEightEntries) {
    EXPECT_EQ(0, SetVolume(kV2, {1, 2, 3, 4, 5, 6, 7, 8})); // not logged
    EXPECT_EQ(-2, SetVolume(kV3, {20, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(-1, SetVolume(999, kUnchanged));
    EXPECT_EQ(0, SetVolume(kV3, {5, 5, 5, 5, -1, -1, -1, -1}));
    EXPECT_TRUE(WaitForExactLine("K740_SetVolume(33,5,5,5,5,-1,-1,-1,-1)"));
    EXPECT_EQ(1, CountLogLines("SetVolume"));
}

TEST_F(VolumeRequestsTest, ReadingIsARequestWithoutPayload) {
    EXPECT_EQ(0, K740_GetVolume(kV3));
    EXPECT_EQ(0, K740_GetVolume(kV2));
    EXPECT_EQ(RequestBytes(kV3, 0x0302), WaitForRequest(kV3, 0x0302)->bytes);
    EXPECT_EQ(RequestBytes(kV2, 0x0127), WaitForRequest(kV2, 0x0127)->bytes);
}

TEST_F(VolumeRequestsTest, TheHostIsToldTheVolumesOfVersion2) {
    m_v2.SetVolumes({0, 19, 255, 7});
    EXPECT_EQ(0, K740_GetVolume(kV2));
    const VolumeCall expected{kV2, {19, 0, -1, 12, -1, -1, -1, -1}};
    EXPECT_TRUE(RecordingHost::Get().volumes.WaitFor([&](const VolumeCall& call) { return call == expected; }));
}

TEST_F(VolumeRequestsTest, TheHostIsToldTheTenVolumesOfVersion3) {
    K740_SetDeviceCallback(nullptr, nullptr, RecordingHost::OnVolumesV3, nullptr, nullptr, nullptr, nullptr);
    m_v3.SetVolumes({0, 1, 2, 3, 4, 5, 6, 19, 18, 255});
    EXPECT_EQ(0, K740_GetVolume(kV3));
    const VolumeCall expected{kV3, {19, 18, 17, 16, 15, 14, 13, 0, 1, -1}};
    EXPECT_TRUE(RecordingHost::Get().volumes.WaitFor([&](const VolumeCall& call) { return call == expected; }));
}

// The requests themselves, below the exported functions.

TEST_F(VolumeRequestsTest, ARequestForVersion2ChecksControllerChannelAndLevel) {
    CZCU& zcu = g_app->ZCU();
    const auto request = [&](std::uint32_t id, std::uint8_t channel, std::uint8_t level) {
        const tagADJUST_DEVICE_VOLUME_REQ_V2 record{id, channel, level};
        return zcu.ZCU_Request_AdjustVolume(&record);
    };
    EXPECT_EQ(0, request(kV2, 0, 0));
    EXPECT_EQ(0, request(kV2, 3, 19));
    EXPECT_EQ(-1, request(kV2, 4, 0));
    EXPECT_EQ(-1, request(kV2, 0, 20));
    for (const std::uint32_t id : {0U, 1000U, 0xFFFFFFFFU}) { EXPECT_EQ(-1, request(id, 0, 0)) << id; }
    EXPECT_EQ(-1, request(999, 0, 0)) << "without a socket";
    EXPECT_EQ(-1, zcu.ZCU_Request_AdjustVolume(static_cast<const tagADJUST_DEVICE_VOLUME_REQ_V2*>(nullptr)));
    EXPECT_THAT(RequestsUntilNow(kV2, 0x0109),
                ElementsAre(RequestBytes(kV2, 0x0109, {0, 0}), RequestBytes(kV2, 0x0109, {3, 19})));
}

TEST_F(VolumeRequestsTest, ARequestForVersion3IsSentAsItIs) {
    tagADJUST_DEVICE_VOLUME_REQ_V3 record{kV3, {{0, 1, 2, 3, 4, 5, 6, 200}, 0x0908, 0x0A}};
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_AdjustVolume(&record));
    EXPECT_EQ(RequestBytes(kV3, 0x0301, {0, 1, 2, 3, 4, 5, 6, 200, 8, 9, 10}), WaitForRequest(kV3, 0x0301)->bytes);
    for (const std::uint32_t id : {0U, 999U, 1000U}) {
        record.zcuID = id;
        EXPECT_EQ(-1, g_app->ZCU().ZCU_Request_AdjustVolume(&record)) << id;
    }
    EXPECT_EQ(-1, g_app->ZCU().ZCU_Request_AdjustVolume(static_cast<const tagADJUST_DEVICE_VOLUME_REQ_V3*>(nullptr)));
}

TEST_F(VolumeRequestsTest, AReadChecksTheController) {
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_GetVolume_V2(kV2));
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_GetVolume_V3(kV3));
    for (const int id : {0, -1, 999, 1000}) { // 999: without a socket
        EXPECT_EQ(-1, g_app->ZCU().ZCU_Request_GetVolume_V2(id)) << id;
        EXPECT_EQ(-1, g_app->ZCU().ZCU_Request_GetVolume_V3(id)) << id;
    }
}

} // namespace
} // namespace k740::test
