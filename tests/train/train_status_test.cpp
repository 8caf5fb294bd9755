// The state of the train, as the host tells it, in the status of the virtual zone controller.
#include "common/thread.h"
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace k740::test {
namespace {

using sim::Bytes;

/// The 85 bytes of a status of kVirtual.
Bytes Payload(std::uint8_t deviceStatus, std::uint8_t zone1, std::uint32_t taskWord = 0) {
    Bytes payload(85);
    payload[0] = deviceStatus;
    payload[1] = zone1;
    std::fill_n(payload.begin() + 2, 7, std::uint8_t{0x26});
    std::fill_n(payload.begin() + 9, 4, std::uint8_t{1});
    payload[13] = 0x84; // 900
    payload[14] = 0x03;
    std::memcpy(payload.data() + 18, &taskWord, sizeof(taskWord));
    std::fill_n(payload.begin() + 60, 6, std::uint8_t{1});
    return payload;
}

class TrainStatusTest : public VirtualTest {
protected:
    /// The off-line status that a new device gets is in its place, so that it cannot come after a train's.
    TrainStatusTest() {
        EXPECT_TRUE(WaitUntil([] { return StatusOf(kVirtual)[0] == 255; }));
    }

    static Bytes StatusOf(int id) {
        tagZCU_QUERYSTATUS2 record;
        EXPECT_TRUE(WaitUntil([&] { return g_app->ZCU().GetZCUStatus(id, record) == 0; }));
        Bytes bytes(sizeof(record.status));
        std::memcpy(bytes.data(), &record.status, bytes.size());
        return bytes;
    }
    static Bytes After(int status) {
        EXPECT_EQ(0, K740_SetTrainStatus(kVirtual, status));
        return StatusOf(kVirtual);
    }
};

TEST_F(TrainStatusTest, EachStateHasItsOwnInZone1) {
    EXPECT_EQ(Payload(4, 4), After(1));
    EXPECT_EQ(Payload(4, 5), After(2));
    EXPECT_EQ(Payload(4, 8), After(3));
}

TEST_F(TrainStatusTest, AnyOtherStateIsUnknownAndLeavesZone1Idle) {
    for (const int status : {0, 4, -1, 255, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(Payload(0xFF, 4), After(status)) << status;
    }
}

TEST_F(TrainStatusTest, WhilePlayingZone1PlaysWhateverTheState) {
    Play();
    const std::uint32_t word = kClient << 16 | kTask;
    for (const int status : {1, 2, 3}) { EXPECT_EQ(Payload(4, 5, word), After(status)) << status; }
    EXPECT_EQ(Payload(0xFF, 5, word), After(0));
    EXPECT_EQ(0, K740_SetTrainStatus(kOtherVirtual, 3));
    EXPECT_EQ(8, StatusOf(kOtherVirtual)[1]) << "which plays nothing";
}

TEST_F(TrainStatusTest, TheStatusIsFromNow) {
    const time_t before = time(nullptr);
    After(1);
    tagZCU_QUERYSTATUS2 record;
    ASSERT_EQ(0, g_app->ZCU().GetZCUStatus(kVirtual, record));
    EXPECT_GE(record.LastUpdate(), before);
    EXPECT_LE(record.LastUpdate(), time(nullptr));
}

TEST_F(TrainStatusTest, DevicesThatAreNotVirtualControllersAreRefusedAndStayAsTheyAre) {
    ASSERT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    ASSERT_EQ(0, K740_AddDevice(34, 0, "192.168.1.34"));
    ASSERT_EQ(0, K740_AddDevice(5500, 10, ""));
    const Bytes before = StatusOf(33);
    for (const int id : {33, 34, 5500, 902, 0, -1, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(-1, K740_SetTrainStatus(id, 1)) << id;
    }
    EXPECT_EQ(before, StatusOf(33));
}

TEST_F(TrainStatusTest, ClientsGetItButOnlyWhileItIsKnown) {
    m_client.SendHeartbeat(kVirtual);
    ASSERT_TRUE(WaitUntil([] { return g_app->ZCU().GetVirtualClients().size() == 1; }));
    EXPECT_EQ(0, K740_SetTrainStatus(kVirtual, 4));
    g_app->ZCU().SendVirtualZCUStatus();
    EXPECT_EQ(0, K740_SetTrainStatus(kVirtual, 3));
    g_app->ZCU().SendVirtualZCUStatus();
    const auto report = WaitForAnswer(0x8126);
    ASSERT_TRUE(report);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8126, Payload(4, 8)),
              Field().Events().Events(sim::Received(kClient, 0x8126)).at(0).bytes);
}

TEST_F(TrainStatusTest, VirtualControllersAreNotTheHostsZoneControllers) {
    auto& controller = AddZoneController(33, "192.168.1.33");
    ASSERT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    K740_SetDeviceCallback(RecordingHost::OnZCUStatus, RecordingHost::OnZoneStatus, nullptr, nullptr, nullptr, nullptr,
                           nullptr);
    EXPECT_EQ(0, K740_SetTrainStatus(kVirtual, 1));
    sim::StatusReport report = controller.QuietStatus();
    report.deviceStatus = 3;
    controller.SendStatus(report);
    EXPECT_TRUE(RecordingHost::Get().zcuStatus.WaitFor(
        [](const ZCUStatusCall& call) { return call.deviceID == 33 && call.status == 3; }));
    const auto isVirtual = [](const auto& call) { return call.deviceID == kVirtual; };
    EXPECT_TRUE(RecordingHost::Get().zcuStatus.Matching(isVirtual).empty());
    EXPECT_TRUE(RecordingHost::Get().zoneStatus.Matching(isVirtual).empty());
}

TEST_F(TrainStatusTest, NothingIsLogged) {
    After(1);
    ASSERT_EQ(0, K740_SetNodeID(9999)); // the log's next line
    EXPECT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
    EXPECT_EQ(0, CountLogLines("rain"));
}

TEST(TrainStatusBeforeTest, DoesNotInitialiseTheLibrary) {
    EXPECT_EQ(-1, K740_SetTrainStatus(kVirtual, 1));
    EXPECT_EQ(0, RunningThreads());
}

} // namespace
} // namespace k740::test
