// Requests to paging stations to monitor a zone, and what the stations answer.
#include "app/application.h"
#include "app/k740.h"
#include "common/stopwatch.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <thread>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

constexpr int kStation = 5000;
constexpr const char* kStationIP = "192.168.8.99";

/// The request to station 5000 as it is on the wire.
sim::Bytes RequestBytes(std::uint32_t controller, std::uint16_t zoneIndex, std::uint8_t start) {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(0x4A79).Put<std::uint8_t>(3).Fill(3, 0); // magic, version, reserved
    writer.Put<std::uint32_t>(9500).Put<std::uint32_t>(5000);          // source, destination
    writer.Put<std::uint16_t>(0x030A).Put<std::uint16_t>(7);
    writer.Put(controller).Put(zoneIndex).Put(start);
    sim::Bytes expected = writer.Get();
    expected.resize(532, 0);
    return expected;
}

class RPKMonitorTest : public OnPrivateNetwork {
protected:
    RPKMonitorTest() {
        K740_AddDevice(kStation, 2, kStationIP);
        K740_AddDevice(1, 1, "192.168.1.20");
        K740_AddDevice(2, 0, "192.168.1.21");
        K740_AddDevice(3, 9, "");
        EXPECT_TRUE(WaitUntilListening());
    }
    /// @return the latest request
    sim::Bytes Request() const {
        const auto requests = Field().Events().Events(sim::Received(kStation, 0x030A));
        return requests.empty() ? sim::Bytes{} : requests.back().bytes;
    }
    [[nodiscard]] std::size_t CountRequests() const { return m_station.MonitorRequests().size(); }
    /// Makes the library take an answer that nobody has asked for.
    static void TakeAnswer(std::uint32_t sender, std::int16_t result) {
        const _vxa_cmd_packet_t packet = MakePacket(sender, 9500, 0x830A, result);
        g_app->RPK().ReceiveMonitorResponse(&packet, kStationIP);
    }
    sim::PagingStation& m_station = AddPagingStation(kStation, kStationIP);
};

TEST_F(RPKMonitorTest, AStartIs532BytesWithControllerZoneIndexAndOne) {
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 2, 3));
    EXPECT_EQ(RequestBytes(2, 2, 1), Request());
    EXPECT_EQ(1U, CountRequests());
}

TEST_F(RPKMonitorTest, TheFirstAndTheLastZoneAreZeroAndSeven) {
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 1, 1));
    EXPECT_EQ(RequestBytes(1, 0, 1), Request());
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 3, 8));
    EXPECT_EQ(RequestBytes(3, 7, 1), Request());
}

TEST_F(RPKMonitorTest, AStopOfAStationThatNeverStartedNamesControllerOneAndTheFirstZone) {
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(RequestBytes(1, 0, 0), Request());
}

TEST_F(RPKMonitorTest, AStopNamesTheZoneThatWasStartedLastAndKeepsItInMind) {
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 1, 8));
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 2, 3));
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(RequestBytes(2, 2, 0), Request());
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(RequestBytes(2, 2, 0), Request());
    EXPECT_EQ(4U, CountRequests());
}

TEST_F(RPKMonitorTest, EachStationHasItsOwnZone) {
    auto& other = AddPagingStation(5001, "192.168.8.98");
    ASSERT_EQ(0, K740_AddDevice(5001, 2, "192.168.8.98"));
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 2, 3));
    EXPECT_EQ(0, K740_StopRPKMonitor(5001));
    EXPECT_EQ(1U, other.MonitorRequests().at(0).controller);
    EXPECT_EQ(0, other.MonitorRequests().at(0).zoneIndex);
}

TEST_F(RPKMonitorTest, AStartThatIsRefusedIsRemembered) {
    m_station.SetMonitorBehaviour({{0}});
    EXPECT_EQ(-3, K740_StartRPKMonitor(kStation, 2, 5));
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(RequestBytes(2, 4, 0), Request());
}

TEST_F(RPKMonitorTest, RemovalOfTheStationForgetsItsZone) {
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 2, 3));
    EXPECT_EQ(0, K740_RemoveDevice(kStation));
    EXPECT_EQ(-1, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(0, K740_AddDevice(kStation, 2, kStationIP));
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(RequestBytes(1, 0, 0), Request());
}

TEST_F(RPKMonitorTest, RequestsComeFromTheNodeID) {
    K740_SetNodeID(9876);
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(9876U, sim::Unpack(Request())->source);
}

TEST_F(RPKMonitorTest, CallsAreLogged) {
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 2, 3));
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(-1, K740_StartRPKMonitor(-1, -2, -3));
    EXPECT_TRUE(WaitForExactLine("K740_StartRPKMonitor(-1, -2, -3)"));
    EXPECT_EQ(1, CountExactLines("K740_StartRPKMonitor(5000, 2, 3)"));
    EXPECT_EQ(1, CountExactLines("K740_StopRPKMonitor(5000)"));
}

TEST_F(RPKMonitorTest, ResultOneIsSuccessAndLoggedSo) {
    EXPECT_EQ(0, K740_StartRPKMonitor(kStation, 1, 1));
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_TRUE(WaitForExactLine("receive rpk start monitor response, 0"));
    EXPECT_TRUE(WaitForExactLine("receive rpk stop monitor response, 0"));
}

TEST_F(RPKMonitorTest, AnyOtherResultIsARefusalAndLoggedSo) {
    for (std::int16_t result : std::initializer_list<std::int16_t>{0, 2, 255, 256, 257, -1}) {
        m_station.SetMonitorBehaviour({{result}});
        EXPECT_EQ(-3, K740_StartRPKMonitor(kStation, 1, 1)) << result;
    }
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
    EXPECT_TRUE(WaitForExactLine("receive rpk start monitor response, -3", 6));
    EXPECT_TRUE(WaitForExactLine("receive rpk stop monitor response, -3"));
}

TEST_F(RPKMonitorTest, AStationThatIsSilentForFourSecondsIsMinusTwoAndItsLateAnswerServesTheNextRequest) {
    m_station.SetMonitorBehaviour({{0}, 4300ms});
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(-2, K740_StartRPKMonitor(kStation, 2, 3));
    EXPECT_GE(watch.TimeEnd(), 4000U);
    EXPECT_LT(watch.TimeEnd(), 5000U);
    EXPECT_TRUE(WaitForExactLine("*****receive rpk start monitor response timeout."));
    EXPECT_EQ(1U, CountRequests()) << "no second try";

    m_station.SetMonitorBehaviour({{}});
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(RequestBytes(2, 2, 0), Request()) << "the start that failed is remembered";
}

TEST_F(RPKMonitorTest, ASilentStopIsMinusTwoToo) {
    m_station.SetMonitorBehaviour({{}});
    EXPECT_EQ(-2, K740_StopRPKMonitor(kStation));
    EXPECT_TRUE(WaitForExactLine("*****receive rpk stop monitor response timeout."));
}

TEST_F(RPKMonitorTest, ADoubledAnswerServesTheNextRequestToo) {
    m_station.SetMonitorBehaviour({{0, 0}});
    EXPECT_EQ(-3, K740_StartRPKMonitor(kStation, 1, 1));
    ASSERT_TRUE(Field().Events().WaitFor(sim::Sent(kStation, 0x830A), 5s, 2));
    m_station.SetMonitorBehaviour({{}});
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
}

TEST_F(RPKMonitorTest, AnAnswerIsLookedForAfterAPause) {
    TakeAnswer(kStation, 1); // there before the request
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_GE(watch.TimeEnd_us(), 20'000);
}

TEST_F(RPKMonitorTest, TheNewestAnswerWinsAndTheOlderStays) {
    m_station.SetMonitorBehaviour({{}});
    TakeAnswer(kStation, 0);
    TakeAnswer(kStation, 1);
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
}

TEST_F(RPKMonitorTest, AnswersOfOtherDevicesAreLeftAlone) {
    m_station.SetMonitorBehaviour({{0}});
    TakeAnswer(5001, 1); // not registered
    TakeAnswer(1, 1);    // registered, no station
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
}

TEST_F(RPKMonitorTest, AnswersOfDevicesThatAreNotRegisteredAreIgnored) {
    TakeAnswer(5001, 0);
    ASSERT_EQ(0, K740_AddDevice(5001, 2, "192.168.8.98"));
    TakeAnswer(5001, 1); // the only one that was taken
    EXPECT_EQ(0, K740_StopRPKMonitor(5001));
    EXPECT_EQ(-2, K740_StopRPKMonitor(5001));
}

TEST_F(RPKMonitorTest, AnswersOlderThan2048AreDropped) {
    m_station.SetMonitorBehaviour({{}});
    TakeAnswer(kStation, 1);
    for (int i = 0; i < 2047; ++i) { TakeAnswer(2, 1); }
    EXPECT_EQ(0, K740_StopRPKMonitor(kStation));
    TakeAnswer(kStation, 1);
    for (int i = 0; i < 2048; ++i) { TakeAnswer(2, 1); }
    EXPECT_EQ(-2, K740_StopRPKMonitor(kStation));
}

TEST_F(RPKMonitorTest, RequestsToDifferentStationsWaitSideBySide) {
    auto& other = AddPagingStation(5001, "192.168.8.98");
    ASSERT_EQ(0, K740_AddDevice(5001, 2, "192.168.8.98"));
    m_station.SetMonitorBehaviour({{0}, 300ms});
    other.SetMonitorBehaviour({{1}, 300ms});
    int result = 1;
    std::thread host([&] { result = K740_StopRPKMonitor(5001); });
    EXPECT_EQ(-3, K740_StopRPKMonitor(kStation));
    host.join();
    EXPECT_EQ(0, result);
}

TEST_F(RPKMonitorTest, AfterDeinitializeARequestIsSentAndTimesOut) {
    K740_Deinitialize();
    EXPECT_EQ(-2, K740_StopRPKMonitor(kStation));
    EXPECT_EQ(1U, CountRequests());
}

} // namespace
} // namespace k740::test
