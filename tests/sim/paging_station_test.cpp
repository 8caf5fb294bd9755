#include "sim/paging_station.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using sim::ReadAt;

constexpr std::uint32_t kId = 5000;
constexpr const char* kIp = "192.168.8.99";

class PagingStationTest : public OnPrivateNetwork {
protected:
    void RequestTask() {
        sim::ByteWriter payload;
        payload.Put<std::uint32_t>(3).Put<std::uint8_t>(1).Put<std::uint8_t>(100).Fill(20, 0);
        payload.PutAll(std::string("0010A"));
        m_station.Request(kIp, kId, 0x0702, payload.Get());
    }
    /// Asks to listen to zone 3 of controller 33.
    void RequestMonitor() {
        sim::ByteWriter payload;
        payload.Put<std::uint32_t>(33).Put<std::uint16_t>(2).Put<std::uint8_t>(1);
        m_station.Request(kIp, kId, 0x030A, payload.Get());
    }
    /// Results of the answers up to a status report that is sent behind them.
    std::vector<std::uint16_t> ResultsBeforeNextStatus() {
        EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kId, 0x0702), kSoon));
        m_paging.SendStatus({});
        std::vector<std::uint16_t> results;
        for (auto packet = m_station.Answer(); packet && packet->command == 0x8702; packet = m_station.Answer()) {
            results.push_back(ReadAt<std::uint16_t>(packet->payload, 4));
        }
        return results;
    }

    Station m_station;
    sim::PagingStation& m_paging = AddPagingStation(kId, kIp);
};

TEST_F(PagingStationTest, AnswersATaskRequestWithTheTasksIdAndOne) {
    RequestTask();
    EXPECT_EQ((Bytes{3, 0, 0, 0, 1, 0}), m_station.AnswerPayload(0x8702));
}

TEST_F(PagingStationTest, KeepsTheRequest) {
    RequestTask();
    ASSERT_TRUE(m_station.Answer());
    const auto requests = m_paging.Requests();
    ASSERT_EQ(1U, requests.size());
    EXPECT_EQ(3U, requests[0].taskId);
    EXPECT_EQ("0010A", requests[0].zones);
}

TEST_F(PagingStationTest, AnswersWithTheResultsItIsTold) {
    m_paging.SetBehaviour({{0, 1}});
    RequestTask();
    EXPECT_EQ((std::vector<std::uint16_t>{0, 1}), ResultsBeforeNextStatus());
}

TEST_F(PagingStationTest, WithoutResultsItIsSilent) {
    m_paging.SetBehaviour({{}});
    RequestTask();
    EXPECT_TRUE(ResultsBeforeNextStatus().empty());
}

TEST_F(PagingStationTest, AnswersAfterItsDelay) {
    m_paging.SetBehaviour({{1}, 50ms});
    RequestTask();
    ASSERT_TRUE(m_station.Answer());
    const auto request = Field().Events().WaitFor(sim::Received(kId, 0x0702), kSoon);
    const auto answer = Field().Events().WaitFor(sim::Sent(kId, 0x8702), kSoon);
    ASSERT_TRUE(request && answer);
    EXPECT_GE(answer->time - request->time, 50ms);
}

TEST_F(PagingStationTest, AnswersAMonitorRequestWithOneAndKeepsIt) {
    RequestMonitor();
    EXPECT_EQ((Bytes{1, 0}), m_station.AnswerPayload(0x830A));
    const auto requests = m_paging.MonitorRequests();
    ASSERT_EQ(1U, requests.size());
    EXPECT_EQ(33U, requests[0].controller);
    EXPECT_EQ(2, requests[0].zoneIndex);
    EXPECT_EQ(1, requests[0].start);
}

TEST_F(PagingStationTest, AnswersAMonitorRequestWithTheResultsItIsTold) {
    m_paging.SetMonitorBehaviour({{-1, 2}});
    RequestMonitor();
    EXPECT_EQ((Bytes{0xFF, 0xFF}), m_station.AnswerPayload(0x830A));
    EXPECT_EQ((Bytes{2, 0}), m_station.AnswerPayload(0x830A));
}

TEST_F(PagingStationTest, WithoutMonitorResultsItIsSilent) {
    m_paging.SetMonitorBehaviour({{}});
    RequestMonitor();
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kId, 0x030A), kSoon));
    m_paging.SendStatus({});
    EXPECT_EQ(9U, m_station.AnswerPayload(0x8700).size());
    EXPECT_EQ(1U, m_paging.MonitorRequests().size());
}

TEST_F(PagingStationTest, AnswersAMonitorRequestAfterItsDelay) {
    m_paging.SetMonitorBehaviour({{1}, 50ms});
    RequestMonitor();
    ASSERT_TRUE(m_station.Answer());
    const auto request = Field().Events().WaitFor(sim::Received(kId, 0x030A), kSoon);
    const auto answer = Field().Events().WaitFor(sim::Sent(kId, 0x830A), kSoon);
    ASSERT_TRUE(request && answer);
    EXPECT_GE(answer->time - request->time, 50ms);
}

TEST_F(PagingStationTest, TalksToItsGroupUnderItsOwnNode) {
    const sim::UdpSocket ear = sim::UdpSocket::InGroup(kGroup, sim::kStationAddress);
    sim::AudioStream talk;
    talk.count = 1;
    m_paging.Talk(kGroup, talk);
    const auto datagram = WaitForDatagram(ear);
    ASSERT_TRUE(datagram);
    const auto audio = sim::ReadAudioDatagram(datagram->bytes);
    ASSERT_TRUE(audio);
    EXPECT_EQ(kId, audio->node);
    EXPECT_EQ(341, audio->type);
}

TEST_F(PagingStationTest, StatusIsSentOnDemandAndPeriodically) {
    m_paging.SendStatus({255, 2, {}, 3, 4, 5});
    EXPECT_EQ((Bytes{255, 2, 0, 0, 3, 0, 4, 0, 5}), m_station.AnswerPayload(0x8700));
    m_paging.RepeatStatus({2, 0, {}, 0, 0, 0}, 10ms);
    EXPECT_TRUE(Field().Events().WaitFor(sim::Sent(kId, 0x8700), kSoon, 4));
}

} // namespace
} // namespace k740::test
