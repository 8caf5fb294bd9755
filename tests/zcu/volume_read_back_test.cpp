// Every acknowledged volume change is read back, and what controllers answer, rightly or wrongly.
#include "tests/zcu/controller_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kWait = 200ms; // between the acknowledgement and the read; at least, and longer by some passes of 20 ms

class VolumeReadBackTest : public ControllerTest {
protected:
    void SetVolume(int id) {
        std::array<int, 8> levels{10, -1, -1, -1, -1, -1, -1, -1};
        EXPECT_EQ(0, K740_SetVolume(id, levels.data()));
    }
    /// A library that has taken an acknowledgement from this sender.
    static void Acknowledge(std::uint32_t sender, VolumeGeneration generation) {
        const bool isV2 = generation == VolumeGeneration::V2;
        const _vxa_cmd_packet_t packet = MakePacket(sender, 9500, isV2 ? 0x8109 : 0x8301);
        if (isV2) { return g_app->ZCU().ZCU_Response_AdjustVolume_V2(&packet); }
        g_app->ZCU().ZCU_Response_AdjustVolume_V3(&packet);
    }
    static bool Told(int id) {
        return RecordingHost::Get().volumes.WaitFor([id](const VolumeCall& call) { return call.deviceID == id; });
    }
    /// How long after the acknowledgement the controller was read.
    auto ReadBackDelay(int id, std::uint16_t acknowledgement, std::uint16_t read) {
        const auto device = static_cast<std::uint32_t>(id);
        const auto readEvent = WaitForRequest(id, read);
        const auto acknowledged = Field().Events().WaitFor(sim::Sent(device, acknowledgement), kPatience);
        EXPECT_TRUE(readEvent && acknowledged);
        return readEvent && acknowledged ? readEvent->time - acknowledged->time : 0ms;
    }
};

TEST_F(VolumeReadBackTest, Version3IsRead200MsAfterItHasAcknowledged) {
    SetVolume(kV3);
    const auto delay = ReadBackDelay(kV3, 0x8301, 0x0302);
    EXPECT_GE(delay, kWait - 1ms); // times in the queue are cut to milliseconds
    EXPECT_LT(delay, 3 * kWait);
    EXPECT_TRUE(Told(kV3));
    EXPECT_EQ((VolumeCall{kV3, {10, 19, 19, 19, 19, 19, 19, 19}}), RecordingHost::Get().volumes.All().at(0));
}

TEST_F(VolumeReadBackTest, Version2IsRead200MsAfterItHasAcknowledged) {
    SetVolume(kV2);
    const auto delay = ReadBackDelay(kV2, 0x8109, 0x0127);
    EXPECT_GE(delay, kWait - 1ms);
    EXPECT_LT(delay, 3 * kWait);
    EXPECT_TRUE(Told(kV2));
    EXPECT_EQ((VolumeCall{kV2, {10, 19, 19, 19, -1, -1, -1, -1}}), RecordingHost::Get().volumes.All().at(0));
}

TEST_F(VolumeReadBackTest, EveryAcknowledgedChangeIsReadOnce) {
    std::array<int, 8> levels{1, 2, 3, 4, -1, -1, -1, -1};
    EXPECT_EQ(0, K740_SetVolume(kV2, levels.data()));
    EXPECT_TRUE(WaitForRequest(kV2, 0x0127, 4));
    SetVolume(kV3); // read back after all that was queued before
    EXPECT_TRUE(WaitForRequest(kV3, 0x0302));
    EXPECT_EQ(4U, RequestsUntilNow(kV2, 0x0127).size());
}

TEST_F(VolumeReadBackTest, DueReadsGoOutOneInAPass) {
    constexpr std::size_t kChanges = 10;
    for (std::size_t i = 0; i < kChanges; ++i) { Acknowledge(kV3, VolumeGeneration::V3); }
    const auto last = WaitForRequest(kV3, 0x0302, kChanges);
    ASSERT_TRUE(last);
    const auto first = Field().Events().Events(sim::Received(kV3, 0x0302)).at(0);
    EXPECT_GE(last->time - first.time, (kChanges - 1) * 19ms) << "passes are 20 ms apart, cut to milliseconds";
}

TEST_F(VolumeReadBackTest, AnAcknowledgementTwiceIsReadTwice) {
    m_v3.SetAnswerFault(0x0301, Twice());
    SetVolume(kV3);
    EXPECT_TRUE(WaitForRequest(kV3, 0x0302, 2));
}

TEST_F(VolumeReadBackTest, WithoutAnAcknowledgementNothingIsRead) {
    m_v3.SetAnswerFault(0x0301, Silent());
    SetVolume(kV3);
    EXPECT_TRUE(WaitForRequest(kV3, 0x0301));
    SetVolume(kV2);
    EXPECT_TRUE(WaitForRequest(kV2, 0x0127)); // a change made later was read back
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0302), IsEmpty());
}

TEST_F(VolumeReadBackTest, TheWordOfTheAcknowledgementDecidesAboutTheRead) {
    Acknowledge(kV3, VolumeGeneration::V2); // its type is not looked up
    EXPECT_TRUE(WaitForRequest(kV3, 0x0127));
}

TEST_F(VolumeReadBackTest, AcknowledgementsFromOtherIDsAreDropped) {
    ASSERT_EQ(0, K740_AddDevice(5000, 2, "192.168.1.50"));
    auto& station = AddPagingStation(1000, "192.168.1.50");
    for (const std::uint32_t sender : {0U, 1000U, 5000U, 0xFFFFFFFFU}) {
        Acknowledge(sender, VolumeGeneration::V2);
        Acknowledge(sender, VolumeGeneration::V3);
    }
    Acknowledge(kV3, VolumeGeneration::V3);
    EXPECT_TRUE(WaitForRequest(kV3, 0x0302)); // later than theirs would have gone
    const auto isRead = [&](const sim::Event& event) {
        return event.device == station.Id() && event.packet && (event.packet->command & 0xFF) == 0x27;
    };
    EXPECT_EQ(0U, Field().Events().Count(isRead));
}

TEST_F(VolumeReadBackTest, ReadsOfControllersThatAreGoneDoNotHoldUpTheOthers) {
    for (int i = 0; i < 5; ++i) { Acknowledge(999, VolumeGeneration::V3); }
    Acknowledge(kV3, VolumeGeneration::V3);
    EXPECT_TRUE(WaitForRequest(kV3, 0x0302));
}

// Answers to reads.

TEST_F(VolumeReadBackTest, AVolumeAnswerTwiceIsToldTwice) {
    m_v2.SetAnswerFault(0x0127, Twice());
    EXPECT_EQ(0, K740_GetVolume(kV2));
    EXPECT_TRUE(RecordingHost::Get().volumes.WaitFor([](const VolumeCall&) { return true; }, 2));
}

TEST_F(VolumeReadBackTest, ALateVolumeAnswerIsStillTold) {
    m_v2.SetAnswerFault(0x0127, Late(600ms));
    EXPECT_EQ(0, K740_GetVolume(kV2));
    EXPECT_TRUE(Told(kV2));
}

TEST_F(VolumeReadBackTest, VolumeAnswersAreFromControllersOnlyWhateverTheirGeneration) {
    CZCU zcu(*g_app);
    for (const std::uint32_t sender : {0U, 1U, 999U, 1000U, 5000U}) {
        const _vxa_cmd_packet_t packet = MakePacket(sender, 9500, 0x8127, _zcu_volumes_v3_t{1, {2, 3, 4, 5}, 6});
        zcu.ZCU_Response_GetVolume_V2(&packet);
        zcu.ZCU_Response_GetVolume_V3(&packet);
    }
    const auto v2 = zcu.VolumesV2().TakeAll();
    const auto v3 = zcu.VolumesV3().TakeAll();
    ASSERT_EQ(2U, v2.size());
    ASSERT_EQ(2U, v3.size());
    EXPECT_EQ(1U, v2[0].zcuID + 0);
    EXPECT_EQ(999U, v3[1].zcuID + 0);
    EXPECT_THAT(v2[0].volumes.levels, ElementsAre(2, 3, 4, 5));
    EXPECT_GE(v3[0].receivedAt + 1, time(nullptr));
}

TEST_F(VolumeReadBackTest, VolumeAnswersWaitUpTo2048AndTheOldestGoFirst) {
    CZCU zcu(*g_app);
    for (std::uint32_t i = 0; i <= 2048; ++i) {
        const _vxa_cmd_packet_t packet = MakePacket(1 + i % 999, 9500, 0x8127);
        zcu.ZCU_Response_GetVolume_V2(&packet);
        zcu.ZCU_Response_GetVolume_V3(&packet);
    }
    EXPECT_EQ(2048U, zcu.VolumesV2().Size());
    EXPECT_EQ(2U, zcu.VolumesV2().Copy().front().zcuID + 0);
    EXPECT_EQ(2048U, zcu.VolumesV3().Size());
}

} // namespace
} // namespace k740::test
