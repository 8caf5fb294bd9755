// What a simulated zone controller answers beside play requests.
#include "sim/zone_controller.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

namespace k740::test {
namespace {

using sim::Bytes;

constexpr std::uint32_t kId = 33;
constexpr const char* kIp = "192.168.1.33";

class ZoneControllerQueryTest : public OnPrivateNetwork {
protected:
    void Ask(std::uint16_t command, const Bytes& payload = {}) { m_station.Request(kIp, kId, command, payload); }

    Station m_station;
    sim::ZoneController& m_controller = AddZoneController(kId, kIp);
};

TEST_F(ZoneControllerQueryTest, VersionThreeTakesAndTellsVolumes) {
    Ask(0x0301, {19, 255, 255, 255, 255, 255, 255, 7, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(11U, m_station.AnswerPayload(0x8301).size());
    EXPECT_EQ((Bytes{19, 0, 0, 0, 0, 0, 0, 7, 255, 255}), m_controller.Volumes());
    Ask(0x0302);
    const Bytes answer = m_station.AnswerPayload(0x8302);
    ASSERT_EQ(12U, answer.size());
    EXPECT_EQ(m_controller.Volumes(), Bytes(answer.begin() + 1, answer.begin() + 11));
}

TEST_F(ZoneControllerQueryTest, VersionTwoTakesAndTellsVolumes) {
    m_controller.SetGeneration(sim::Generation::V2);
    m_controller.SetVolumes({1, 2, 3, 4});
    Ask(0x0302); // of the other generation: no answer
    Ask(0x0109, {0, 19});
    EXPECT_EQ((Bytes{0, 19}), m_station.AnswerPayload(0x8109));
    Ask(0x0127);
    EXPECT_EQ((Bytes{1, 19, 2, 3, 4, 0xEE, 0xEE}), m_station.AnswerPayload(0x8127));
}

TEST_F(ZoneControllerQueryTest, WrongNumberOfVolumesIsRefused) {
    EXPECT_THROW(m_controller.SetVolumes({1, 2, 3, 4}), std::invalid_argument);
}

TEST_F(ZoneControllerQueryTest, EmergencyIsRememberedUntilItIsLeft) {
    EXPECT_EQ(std::nullopt, m_controller.EmergencyPriority());
    Ask(0x0123, {0x1C, 0x25, 0, 0, 0xBA, 0});
    EXPECT_TRUE(Field().WaitUntil([this] { return m_controller.EmergencyPriority() == 0x00BA; }, kSoon));
    Ask(0x0124, {0x1C, 0x25, 0, 0, 0xBA, 0});
    EXPECT_TRUE(Field().WaitUntil([this] { return !m_controller.EmergencyPriority(); }, kSoon));
}

TEST_F(ZoneControllerQueryTest, TellsTheGroupsOfItsZonesInEitherLayout) {
    m_controller.SetZoneGroup(2, "225.1.2.3");
    Ask(0x0303);
    Bytes expected(65);
    const Bytes entry{3, 2, 1, 225, 0xC4, 0x6D, 0, 0}; // 225.1.2.3 and 28100
    std::copy(entry.begin(), entry.end(), expected.begin() + 8);
    EXPECT_EQ(expected, m_station.AnswerPayload(0x8303));

    m_controller.SetZoneGroupLayout(sim::ZoneGroupLayout::Virtual);
    Ask(0x0303);
    expected.insert(expected.begin(), 1);
    expected.pop_back();
    EXPECT_EQ(expected, m_station.AnswerPayload(0x8303));
}

TEST_F(ZoneControllerQueryTest, StreamsToTheGroupsOfItsZonesAtTheSameTime) {
    const sim::UdpSocket first = sim::UdpSocket::InGroup({"225.1.0.1", 28100}, sim::kStationAddress);
    const sim::UdpSocket second = sim::UdpSocket::InGroup({"225.1.0.2", 29000}, sim::kStationAddress);
    m_controller.SetZoneGroup(1, "225.1.0.1");
    m_controller.SetZoneGroup(2, "225.1.0.2");
    sim::AudioStream stream;
    stream.period = std::chrono::milliseconds(2);
    sim::AudioSource& source = m_controller.StreamZone(1, stream);
    stream.stream = 2;
    m_controller.StreamZone(2, stream, 29000);
    for (int datagram = 0; datagram < 3; ++datagram) {
        const auto fromFirst = WaitForDatagram(first);
        const auto fromSecond = WaitForDatagram(second);
        ASSERT_TRUE(fromFirst && fromSecond);
        EXPECT_EQ(1U, sim::ReadAudioDatagram(fromFirst->bytes)->stream);
        EXPECT_EQ(2U, sim::ReadAudioDatagram(fromSecond->bytes)->stream);
        EXPECT_EQ(kId, sim::ReadAudioDatagram(fromFirst->bytes)->node);
    }
    source.Stop();
    EXPECT_FALSE(source.IsStreaming());
}

TEST_F(ZoneControllerQueryTest, ZoneWithoutAGroupCannotStream) {
    EXPECT_THROW(m_controller.StreamZone(1), std::invalid_argument);
    m_controller.SetZoneGroup(1, "225.1.0.1");
    m_controller.SetZoneGroup(1, "");
    EXPECT_THROW(m_controller.StreamZone(1), std::invalid_argument);
    EXPECT_THROW(m_controller.StreamZone(9), std::out_of_range);
}

} // namespace
} // namespace k740::test
