// The status of virtual zone controllers, and the reports of it to those who have sent heartbeats.
#include "tests/support/status_records.h"
#include "tests/zcu/virtual_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using ::testing::SizeIs;

class VirtualStatusTest : public VirtualTest {
protected:
    VirtualStatusTest() {
        EXPECT_TRUE(WaitUntil([] { return StatusOf().status.deviceStatus == 255; }));
    }

    static tagZCU_QUERYSTATUS2 StatusOf(int id = kVirtual) {
        tagZCU_QUERYSTATUS2 record;
        g_app->ZCU().GetZCUStatus(id, record);
        return record;
    }
    /// Puts in a status of which every byte is its own number, so that it is on line.
    static Bytes PutCountingStatus(std::uint32_t taskWord) {
        ZCUReport report = CountingReport();
        std::memcpy(report.data() + 18, &taskWord, sizeof(taskWord));
        g_app->ZCU().UpdateZCUStatus(ZCURecord(kVirtual, report));
        return {report.begin(), report.end()};
    }
    /// Greets controllers, and waits until the library remembers that.
    void SendHeartbeat(const std::vector<int>& controllers = {kVirtual}) {
        const std::size_t known = Clients().size();
        for (const int id : controllers) { m_client.SendHeartbeat(static_cast<std::uint32_t>(id)); }
        EXPECT_TRUE(WaitUntil([&] { return Clients().size() == known + controllers.size(); }));
    }
    static std::deque<tagVIRTUAL_ZCU_CLIENT_SOCKET> Clients() { return g_app->ZCU().GetVirtualClients(); }
    /// The report comes by itself within 2 s; this is to have it now.
    static void SendReports() { g_app->ZCU().SendVirtualZCUStatus(); }
};

TEST_F(VirtualStatusTest, AReportIsTheStatusRecordOnPort29001) {
    Bytes payload = PutCountingStatus(0);
    SendHeartbeat();
    SendReports();
    const auto report = WaitForAnswer(0x8126);
    ASSERT_TRUE(report);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8126, payload), report->bytes);
    EXPECT_EQ(29001, report->port);
}

TEST_F(VirtualStatusTest, ATaskWordMakesZone1PlayingInTheReportAlone) {
    Bytes payload = PutCountingStatus(0x25800001);
    payload[1] = 5;
    SendHeartbeat();
    SendReports();
    EXPECT_EQ(PacketBytes(kVirtual, 0x8126, payload), WaitForAnswer(0x8126)->bytes);
    EXPECT_EQ(1, StatusOf().status.zoneStates[0]) << "the record stays as it was";
}

TEST_F(VirtualStatusTest, ReportsComeEveryTwoSeconds) {
    PutCountingStatus(0);
    SendHeartbeat();
    ASSERT_TRUE(WaitForAnswer(0x8126, 3));
    const auto reports = Field().Events().Events(sim::Received(kClient, 0x8126));
    EXPECT_GE(reports[2].time - reports[0].time, 3990ms);
    EXPECT_LT(reports[2].time - reports[0].time, 6000ms);
}

TEST_F(VirtualStatusTest, EachClientGetsThoseOfTheControllersThatItHasGreeted) {
    auto& other = AddClient(9601, "192.168.4.2");
    PutCountingStatus(0);
    g_app->ZCU().UpdateZCUStatus(ZCURecord(kOtherVirtual, CountingReport()));
    SendHeartbeat();
    other.SendHeartbeat(kOtherVirtual);
    other.SendHeartbeat(33); // has no status
    EXPECT_TRUE(WaitUntil([] { return Clients().size() == 3; }));
    SendReports();
    const auto report = Field().Events().WaitFor(sim::Received(9601, 0x8126), kPatience);
    ASSERT_TRUE(report);
    EXPECT_EQ(9601U, report->packet->destination);
    EXPECT_EQ(kOtherVirtual, static_cast<int>(report->packet->source));
    EXPECT_EQ(kVirtual, static_cast<int>(WaitForAnswer(0x8126)->packet->source));
}

TEST_F(VirtualStatusTest, AControllerThatIsOffLineIsNotReported) {
    auto& other = AddClient(9601, "192.168.4.2");
    g_app->ZCU().UpdateZCUStatus(ZCURecord(kOtherVirtual, CountingReport()));
    SendHeartbeat();
    other.SendHeartbeat(kOtherVirtual);
    EXPECT_TRUE(WaitUntil([] { return Clients().size() == 2; }));
    SendReports();
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(9601, 0x8126), kPatience)); // its turn comes after the first
    EXPECT_EQ(0U, CountAnswers(0x8126));
}

TEST_F(VirtualStatusTest, PlayingIsReportedAtOnceWithSourceAndTask) {
    ASSERT_EQ(0, K740_SetTrainStatus(kVirtual, 1));
    SendHeartbeat();
    m_client.RequestPlay(kVirtual, PlayRequestOf());
    const auto isPlaying = [](const sim::Event& event) {
        return sim::Received(kClient, 0x8126)(event) && sim::ReadAt<std::uint32_t>(event.packet->payload, 18) != 0;
    };
    const auto report = Field().Events().WaitFor(isPlaying, kPatience);
    const auto join = WaitForAnswer(0x8206);
    ASSERT_TRUE(report && join);
    EXPECT_LT(report->time - join->time, 1000ms);
    EXPECT_EQ(5, report->packet->payload[1]);
    EXPECT_EQ(9600U << 16 | 1001U, sim::ReadAt<std::uint32_t>(report->packet->payload, 18));
    EXPECT_EQ(9600U << 16 | 1001U, StatusOf().status.zoneTasks[0] + 0);
}

TEST_F(VirtualStatusTest, EveryEndIsReportedAtOnceAndLeavesZone1Idle) {
    ASSERT_EQ(0, K740_SetTrainStatus(kVirtual, 3));
    SendHeartbeat();
    const std::vector<std::function<void()>> ends{[this] { m_client.CloseAudio(kVirtual, kTask); },
                                                  [this] { m_client.CloseZones(kVirtual, 0xFF); },
                                                  [this] { m_client.SendEndOfStream(kGroup, kVirtual); }};
    for (std::size_t i = 0; i < ends.size(); ++i) {
        Play();
        ends[i]();
        ASSERT_TRUE(WaitForMessage(2, i + 1));
        const auto isIdle = [](const sim::Event& event) {
            return sim::Received(kClient, 0x8126)(event) && event.packet->payload[1] == 4 &&
                   sim::ReadAt<std::uint32_t>(event.packet->payload, 18) == 0;
        };
        EXPECT_TRUE(Field().Events().WaitFor(isIdle, 1000ms, i + 1)) << i;
        EXPECT_EQ(4, StatusOf().status.deviceStatus) << "as the train has it";
    }
}

TEST_F(VirtualStatusTest, CloseZonesIsReportedEvenWhenNothingPlays) {
    Bytes payload = PutCountingStatus(0x25800001);
    payload[1] = 4;
    std::fill_n(payload.begin() + 18, 4, std::uint8_t{0});
    SendHeartbeat();
    m_client.CloseAudio(kVirtual, kTask); // which removes nothing and changes nothing
    m_client.CloseZones(kVirtual, 0xFF);
    const auto isIdle = [](const sim::Event& event) {
        return sim::Received(kClient, 0x8126)(event) && sim::ReadAt<std::uint32_t>(event.packet->payload, 18) == 0;
    };
    const auto report = Field().Events().WaitFor(isIdle, kPatience);
    ASSERT_TRUE(report);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8126, payload), report->bytes);
}

TEST_F(VirtualStatusTest, CloseAudioOfAnotherTaskChangesNothing) {
    const Bytes payload = PutCountingStatus(0x25800001);
    m_client.CloseAudio(kVirtual, kTask);
    EXPECT_TRUE(WaitForLogLine("receive a close audio request"));
    EXPECT_EQ(payload[1], StatusOf().status.zoneStates[0]);
    EXPECT_EQ(0x25800001U, StatusOf().status.zoneTasks[0] + 0);
}

TEST_F(VirtualStatusTest, ASourceThatIsNotThereLeavesZone1Idle) {
    PutCountingStatus(0);
    Field()
        .AddClient(0, (Network().AddFieldAddresses({"192.168.4.2"}), "192.168.4.2"))
        .RequestPlay(kVirtual, PlayRequestOf());
    EXPECT_TRUE(WaitForMessage(1, 1, kVirtual, 0));
    EXPECT_EQ(4, StatusOf().status.zoneStates[0]);
    EXPECT_EQ(1001U, StatusOf().status.zoneTasks[0] + 0);
}

TEST_F(VirtualStatusTest, PlayingPutsAnOffLineControllerNotOnLine) {
    Play();
    EXPECT_EQ(255, StatusOf().status.deviceStatus);
    EXPECT_EQ(9600U << 16 | 1001U, StatusOf().status.zoneTasks[0] + 0);
}

// Clients come and go.

TEST_F(VirtualStatusTest, AClientIsForgotten60SecondsAfterItWasLastHeard) {
    SendHeartbeat();
    const auto lastHeard = Clients().at(0).lastHeard;
    g_app->ZCU().RemoveInvalidVirtualZCUClients(lastHeard + 59);
    EXPECT_THAT(Clients(), SizeIs(1));
    g_app->ZCU().RemoveInvalidVirtualZCUClients(lastHeard + 60);
    EXPECT_THAT(Clients(), SizeIs(0));
}

TEST_F(VirtualStatusTest, EveryOverdueClientIsForgottenAtOnce) {
    SendHeartbeat({900, 901, 902, 903});
    const auto lastHeard = Clients().back().lastHeard;
    g_app->ZCU().RemoveInvalidVirtualZCUClients(lastHeard + 61);
    EXPECT_THAT(Clients(), SizeIs(0));
}

} // namespace
} // namespace k740::test
