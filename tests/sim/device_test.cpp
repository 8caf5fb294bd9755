#include "sim/device.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::AnswerFault;
using sim::Bytes;
using sim::Event;

constexpr std::uint32_t kId = 33;
constexpr const char* kIp = "192.168.1.33";
constexpr std::uint16_t kGetVersion = 0x0132;
constexpr std::uint16_t kVersionAnswer = 0x8132;
constexpr std::uint16_t kGetVolume = 0x0302;
constexpr std::uint16_t kVolumeAnswer = 0x8302;

/// The text that begins at an offset and ends with a zero.
std::string TextAt(const Bytes& bytes, std::size_t offset) {
    return reinterpret_cast<const char*>(bytes.data()) + offset;
}

class DeviceTest : public OnPrivateNetwork {
protected:
    void Ask(std::uint16_t request) { m_station.Request(kIp, kId, request, {}); }
    /// Whether the next answer has this code, so that none came before it.
    void ExpectNext(std::uint16_t answer) {
        const auto packet = m_station.Answer();
        ASSERT_TRUE(packet);
        EXPECT_EQ(answer, packet->command);
    }

    Station m_station;
    sim::ZoneController& m_device = AddZoneController(kId, kIp);
};

TEST_F(DeviceTest, VersionAnswerHas118BytesWithThreeTexts) {
    m_device.SetVersion({"4.19.71", "2.3.4-rc1", "0.9"});
    Ask(kGetVersion);
    const Bytes answer = m_station.AnswerPayload(kVersionAnswer);
    ASSERT_EQ(118U, answer.size());
    EXPECT_EQ("4.19.71", TextAt(answer, 24));
    EXPECT_EQ("2.3.4-rc1", TextAt(answer, 36));
    EXPECT_EQ("0.9", TextAt(answer, 84));
    EXPECT_EQ(0xEE, answer[23]);
    EXPECT_EQ(0, answer[111]);
    EXPECT_EQ(0xEE, answer[112]);
}

TEST_F(DeviceTest, VersionTextsAreCutToTheirFields) {
    m_device.SetVersion({std::string(12, 'k'), std::string(48, 'a'), std::string(28, 'm')});
    Ask(kGetVersion);
    const Bytes answer = m_station.AnswerPayload(kVersionAnswer);
    ASSERT_EQ(118U, answer.size());
    EXPECT_EQ(std::string(11, 'k'), TextAt(answer, 24));
    EXPECT_EQ(std::string(47, 'a'), TextAt(answer, 36));
    EXPECT_EQ(std::string(27, 'm'), TextAt(answer, 84));
}

TEST_F(DeviceTest, SilentDeviceAnswersNothing) {
    AnswerFault fault;
    fault.silent = true;
    m_device.SetAnswerFault(fault);
    Ask(kGetVersion);
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kId, kGetVersion), kSoon));
    m_device.SetAnswerFault({});
    Ask(kGetVolume);
    ExpectNext(kVolumeAnswer);
}

TEST_F(DeviceTest, FaultOfOneRequestLeavesTheOthersAlone) {
    AnswerFault fault;
    fault.silent = true;
    m_device.SetAnswerFault(kGetVersion, fault);
    Ask(kGetVersion);
    Ask(kGetVolume);
    ExpectNext(kVolumeAnswer);
    fault.silent = false;
    fault.twice = true;
    m_device.SetAnswerFault(fault); // for all, but the version query keeps its own
    Ask(kGetVersion);
    Ask(kGetVolume);
    ExpectNext(kVolumeAnswer);
    ExpectNext(kVolumeAnswer);
}

TEST_F(DeviceTest, DelayedAnswerComesAfterItsTime) {
    AnswerFault fault;
    fault.delay = 50ms;
    m_device.SetAnswerFault(kGetVersion, fault);
    Ask(kGetVersion);
    Ask(kGetVolume);
    ExpectNext(kVolumeAnswer);
    ExpectNext(kVersionAnswer);
    const auto request = Field().Events().WaitFor(sim::Received(kId, kGetVersion), kSoon);
    const auto answer = Field().Events().WaitFor(sim::Sent(kId, kVersionAnswer), kSoon);
    ASSERT_TRUE(request && answer);
    EXPECT_GE(answer->time - request->time, 50ms);
}

TEST_F(DeviceTest, AnswerIsSentTwice) {
    AnswerFault fault;
    fault.twice = true;
    m_device.SetAnswerFault(fault);
    Ask(kGetVersion);
    ExpectNext(kVersionAnswer);
    ExpectNext(kVersionAnswer);
}

TEST_F(DeviceTest, AnswerNamesAnotherSender) {
    AnswerFault fault;
    fault.source = 34;
    m_device.SetAnswerFault(fault);
    Ask(kGetVersion);
    const auto packet = m_station.Answer();
    ASSERT_TRUE(packet);
    EXPECT_EQ(34U, packet->source);
    EXPECT_EQ(9500U, packet->destination);
}

TEST_F(DeviceTest, EveryNthRequestIsLostAndNotedAsLost) {
    AnswerFault fault;
    fault.loseEvery = 3;
    m_device.SetAnswerFault(kGetVersion, fault);
    for (int request = 1; request <= 7; ++request) { Ask(kGetVersion); }
    ASSERT_TRUE(Field().Events().WaitFor(sim::Sent(kId, kVersionAnswer), kSoon, 5));
    EXPECT_EQ(5U, Field().Events().Count(sim::Received(kId, kGetVersion)));
    EXPECT_EQ(2U, Field().Events().Count(sim::Happened(kId, Event::Kind::Lost)));
    const auto lost = Field().Events().Events(sim::Happened(kId, Event::Kind::Lost));
    EXPECT_EQ(kGetVersion, lost.at(0).packet->command);
}

TEST_F(DeviceTest, LostPlayRequestIsNotMet) {
    AnswerFault fault;
    fault.loseEvery = 1;
    m_device.SetAnswerFault(fault);
    m_station.Play(kIp, kId, 1001, 1);
    ASSERT_TRUE(Field().Events().WaitFor(sim::Happened(kId, Event::Kind::Lost), kSoon));
    EXPECT_FALSE(m_device.IsListening(1001));
    EXPECT_EQ(0U, Field().Events().Count(sim::Sent(kId, 0x8205)));
}

TEST_F(DeviceTest, SendsToAnyIdAtEitherPortOfTheStation) {
    const sim::UdpSocket requestPort = sim::UdpSocket::BoundTo({sim::kStationAddress, sim::kRequestPort});
    m_device.SendToStation(0x0700, 6001, Bytes{1, 2, 3}, sim::kRequestPort);
    const auto datagram = WaitForDatagram(requestPort);
    ASSERT_TRUE(datagram);
    const auto packet = sim::Unpack(datagram->bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(kId, packet->source);
    EXPECT_EQ(6001U, packet->destination);
    EXPECT_EQ(0x0700, packet->command);
    EXPECT_EQ(3, packet->length);
    m_device.SendToStation(0x0700, 6002, {});
    EXPECT_EQ(6002U, m_station.Answer()->destination);
}

TEST_F(DeviceTest, RemovalDropsTheDelayedAnswer) {
    AnswerFault fault;
    fault.delay = 10ms;
    m_device.SetAnswerFault(fault);
    Ask(kGetVersion);
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kId, kGetVersion), kSoon));
    Field().Remove(kId);
    EXPECT_FALSE(Field().Events().WaitFor(sim::Sent(kVersionAnswer), 50ms));
}

} // namespace
} // namespace k740::test
