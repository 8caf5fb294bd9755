// Task requests and what the station answers.
#include "app/application.h"
#include "app/k740.h"
#include "common/stopwatch.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace k740::test {
namespace {

constexpr int kStation = 5000;
constexpr const char* kStationIP = "192.168.8.99";
constexpr const char* kZones = "0001FF";

/// The request to station 5000 as it is on the wire.
sim::Bytes RequestBytes(std::uint16_t length, std::uint32_t task, std::uint8_t start, std::uint8_t priority,
                        const std::string& zones) {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(0x4A79).Put<std::uint8_t>(3).Fill(3, 0); // magic, version, reserved
    writer.Put<std::uint32_t>(9500).Put<std::uint32_t>(5000);          // source, destination
    writer.Put<std::uint16_t>(0x0702).Put(length);
    writer.Put(task).Put(start).Put(priority).Fill(20, 0).PutAll(zones);
    sim::Bytes expected = writer.Get();
    expected.resize(532, 0);
    return expected;
}

class RPKTaskTest : public OnPrivateNetwork {
protected:
    RPKTaskTest() {
        K740_AddDevice(kStation, 2, kStationIP);
        K740_AddDevice(1, 1, "192.168.1.20");
        K740_AddDevice(2, 0, "192.168.1.21");
    }
    /// @return the only request so far
    sim::Bytes Request() const {
        const auto requests = Field().Events().Events(sim::Received(kStation, 0x0702));
        EXPECT_EQ(1U, requests.size());
        return requests.at(0).bytes;
    }
    /// @return the zone text of the request for these zones
    std::string ZoneTextOf(const std::string& zones) {
        EXPECT_EQ(0, K740_StartRPKTask(kStation, 3, 100, zones.c_str()));
        const sim::PagingTaskRequest request = m_station.Requests().back();
        EXPECT_EQ(26 + request.zones.size(), request.length);
        return request.zones;
    }
    /// Makes the library take an answer that nobody has asked for.
    static void TakeAnswer(std::uint32_t sender, std::uint16_t result) {
        const _rpk_task_answer_t answer{3, result};
        const _vxa_cmd_packet_t packet = MakePacket(sender, 9500, 0x8702, answer);
        g_app->RPK().ReceivePlayPTTAUXResponse(&packet, kStationIP);
    }
    sim::PagingStation& m_station = AddPagingStation(kStation, kStationIP);
};

TEST_F(RPKTaskTest, AStartIs532BytesWithTaskPriorityAndZones) {
    EXPECT_EQ(0, K740_StartRPKTask(kStation, 7, 200, "00010A;00020B"));
    EXPECT_EQ(RequestBytes(36, 7, 1, 200, "0010A0020B"), Request());
}

TEST_F(RPKTaskTest, AStopHasPriority100AndNoZones) {
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(RequestBytes(26, 3, 0, 100, ""), Request());
}

TEST_F(RPKTaskTest, AStopChecksNeitherZonesNorPriority) {
    EXPECT_EQ(0, g_app->RPK().StartStopRPKTask(kStation, 3, 0, "", 0));
}

TEST_F(RPKTaskTest, TheFirstAndTheLastPriorityAreSent) {
    EXPECT_EQ(0, K740_StartRPKTask(kStation, 3, 56, kZones));
    EXPECT_EQ(0, K740_StartRPKTask(kStation, 3, 255, kZones));
    EXPECT_EQ(56, m_station.Requests().at(0).priority);
    EXPECT_EQ(255, m_station.Requests().at(1).priority);
}

TEST_F(RPKTaskTest, RequestsComeFromTheNodeID) {
    K740_SetNodeID(9876);
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(9876U, m_station.Requests().at(0).source);
}

TEST_F(RPKTaskTest, AZoneIsFiveUpperCaseDigitsOrSixForAnIDAboveFFF) {
    EXPECT_EQ("001FF", ZoneTextOf("0001FF"));
    EXPECT_EQ("00180FFFAB", ZoneTextOf("000180;0fffab;"));
    EXPECT_EQ("001011001FF", ZoneTextOf("000101;1001FF"));
    EXPECT_EQ("00101", ZoneTextOf("  000101  "));
}

TEST_F(RPKTaskTest, EveryZoneIsEveryRegisteredController) {
    EXPECT_EQ("001FF002FF", ZoneTextOf("FFFFFF"));
}

TEST_F(RPKTaskTest, AZoneTextOf488CharactersFits) {
    std::string zones;
    std::string text;
    for (int i = 0; i < 94; ++i) {
        zones += "0001FF;";
        text += "001FF";
    }
    for (int i = 0; i < 3; ++i) {
        zones += "1002FF;";
        text += "1002FF";
    }
    ASSERT_EQ(488U, text.size());
    EXPECT_EQ(text, ZoneTextOf(zones));
}

TEST_F(RPKTaskTest, ResultOneIsSuccessAndLoggedSo) {
    EXPECT_EQ(0, K740_StartRPKTask(kStation, 3, 100, kZones));
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    EXPECT_TRUE(WaitForLogLine("\treceive rpk start task response, 0"));
    EXPECT_TRUE(WaitForLogLine("\treceive rpk stop task response, 0"));
}

TEST_F(RPKTaskTest, AnyOtherResultIsARefusalAndLoggedSo) {
    for (std::uint16_t result : std::initializer_list<std::uint16_t>{0, 2, 255, 256, 257, 65535}) {
        m_station.SetBehaviour({{result}});
        EXPECT_EQ(-3, K740_StartRPKTask(kStation, 3, 100, kZones)) << result;
    }
    EXPECT_EQ(-3, K740_StopRPKTask(kStation, 3));
    EXPECT_TRUE(WaitForLogLine("\treceive rpk start task response, -3", 6));
    EXPECT_TRUE(WaitForLogLine("\treceive rpk stop task response, -3"));
}

TEST_F(RPKTaskTest, AStationThatIsSilentForFourSecondsIsMinusTwo) {
    m_station.SetBehaviour({{}});
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(-2, K740_StartRPKTask(kStation, 3, 100, kZones));
    EXPECT_GE(watch.TimeEnd(), 3999U);
    EXPECT_LT(watch.TimeEnd(), 4500U);
    EXPECT_TRUE(WaitForLogLine("\t*****receive rpk start task response timeout, -2"));
    EXPECT_EQ(1U, m_station.Requests().size()) << "no second try";
}

TEST_F(RPKTaskTest, ASilentStopIsMinusTwoToo) {
    m_station.SetBehaviour({{}});
    EXPECT_EQ(-2, K740_StopRPKTask(kStation, 3));
    EXPECT_TRUE(WaitForLogLine("\t*****receive rpk stop task response timeout, -2"));
}

TEST_F(RPKTaskTest, AnAnswerIsLookedForAfterAPause) {
    TakeAnswer(kStation, 1); // there before the request
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    EXPECT_GE(watch.TimeEnd_us(), 20'000);
}

TEST_F(RPKTaskTest, ALateAnswerCounts) {
    m_station.SetBehaviour({{1}, std::chrono::milliseconds(500)});
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
}

TEST_F(RPKTaskTest, TheNewestAnswerWinsAndTheOlderStays) {
    m_station.SetBehaviour({{}});
    TakeAnswer(kStation, 0);
    TakeAnswer(kStation, 1);
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(-3, K740_StopRPKTask(kStation, 3));
}

TEST_F(RPKTaskTest, AnswersOfOtherStationsAreLeftToTheirRequests) {
    ASSERT_EQ(0, K740_AddDevice(5001, 2, "192.168.8.98"));
    m_station.SetBehaviour({{0}});
    TakeAnswer(5001, 1);
    EXPECT_EQ(-3, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(0, K740_StopRPKTask(5001, 3));
}

TEST_F(RPKTaskTest, AnswersOfDevicesThatAreNotRegisteredAreIgnored) {
    TakeAnswer(5001, 1);
    ASSERT_EQ(0, K740_AddDevice(5001, 2, "192.168.8.98"));
    TakeAnswer(5001, 0); // the only one that was taken
    EXPECT_EQ(-3, K740_StopRPKTask(5001, 3));
    EXPECT_EQ(-2, K740_StopRPKTask(5001, 3));
}

TEST_F(RPKTaskTest, AnswersOlderThan2048AreDropped) {
    m_station.SetBehaviour({{}});
    TakeAnswer(kStation, 1);
    for (int i = 0; i < 2047; ++i) { TakeAnswer(2, 1); }
    EXPECT_EQ(0, K740_StopRPKTask(kStation, 3));
    TakeAnswer(kStation, 1);
    for (int i = 0; i < 2048; ++i) { TakeAnswer(2, 1); }
    EXPECT_EQ(-2, K740_StopRPKTask(kStation, 3));
}

TEST_F(RPKTaskTest, RequestsToDifferentStationsWaitSideBySide) {
    auto& other = AddPagingStation(5001, "192.168.8.98");
    ASSERT_EQ(0, K740_AddDevice(5001, 2, "192.168.8.98"));
    m_station.SetBehaviour({{0}, std::chrono::milliseconds(300)});
    other.SetBehaviour({{1}, std::chrono::milliseconds(300)});
    int result = 1;
    std::thread host([&] { result = K740_StopRPKTask(5001, 3); });
    EXPECT_EQ(-3, K740_StopRPKTask(kStation, 3));
    host.join();
    EXPECT_EQ(0, result);
}

TEST_F(RPKTaskTest, AfterDeinitializeARequestIsSentAndTimesOut) {
    K740_Deinitialize();
    EXPECT_EQ(-2, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(1U, m_station.Requests().size());
}

} // namespace
} // namespace k740::test
