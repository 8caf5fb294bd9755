#include "sim/client.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <numeric>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;

constexpr std::uint32_t kId = 9600;
constexpr const char* kIp = "192.168.4.1";
constexpr std::uint32_t kController = 900;

class ClientTest : public OnPrivateNetwork {
protected:
    ClientTest() {
        Network().AddFieldAddresses({kIp});
        m_client = &Field().AddClient(kId, kIp);
    }
    /// The payload of the request that came, which must be from the client for the controller.
    Bytes Requested(std::uint16_t command) {
        const auto packet = m_station.Answer();
        if (!packet || packet->command != command) { return {}; }
        EXPECT_EQ(kId, packet->source);
        EXPECT_EQ(kController, packet->destination);
        return {packet->payload.begin(), packet->payload.begin() + packet->length};
    }

    Station m_station;
    sim::Client* m_client = nullptr;
};

TEST_F(ClientTest, HeartbeatCarriesItsId) {
    m_client->SendHeartbeat(kController);
    EXPECT_EQ((Bytes{0x80, 0x25, 0, 0}), Requested(0x0125));
}

TEST_F(ClientTest, HeartbeatsAreRepeatedUntilTheyAreEnded) {
    m_client->RepeatHeartbeat(kController, 10ms);
    EXPECT_TRUE(Field().Events().WaitFor(sim::Sent(kId, 0x0125), kSoon, 3));
    m_client->RepeatHeartbeat(kController, 0ms);
    const std::size_t count = Field().Events().Count(sim::Sent(kId, 0x0125));
    EXPECT_FALSE(Field().Events().WaitFor(sim::Sent(kId, 0x0125), 30ms, count + 1));
}

TEST_F(ClientTest, PlayRequestHas66Bytes) {
    sim::PlayRequest request;
    request.taskId = 1001;
    request.zoneMask = 1;
    request.group = kGroup.ip;
    request.groupPort = kGroup.port;
    m_client->RequestPlay(kController, request);
    const Bytes payload = Requested(0x0205);
    ASSERT_EQ(66U, payload.size());
    const sim::PlayRequest read = sim::ReadPlayRequest(sim::MakePacket(kId, kController, 0x0205, payload));
    EXPECT_EQ(1001U, read.taskId);
    EXPECT_EQ(1U, read.zoneMask);
    EXPECT_EQ(kGroup, (sim::Endpoint{read.group, read.groupPort}));
}

TEST_F(ClientTest, OtherRequestsHaveTheirPayloads) {
    m_client->CloseAudio(kController, 1001);
    EXPECT_EQ((Bytes{0xE9, 3, 0, 0, 3, 0, 0, 0}), Requested(0x0101));
    m_client->CloseZones(kController, 5);
    EXPECT_EQ((Bytes{5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), Requested(0x0102));
    m_client->QueryVersion(kController);
    EXPECT_EQ((Bytes{0x84, 3, 0, 0}), Requested(0x0132));
    Bytes extension(28);
    std::iota(extension.begin(), extension.end(), std::uint8_t{1});
    m_client->AddTaskZones(kController, extension);
    EXPECT_EQ(extension, Requested(0x0313));
    m_client->RemoveTaskZones(kController, extension);
    EXPECT_EQ(extension, Requested(0x0314));
    m_client->QueryZoneGroups(kController);
    const auto query = m_station.Answer();
    ASSERT_TRUE(query);
    EXPECT_EQ(0x0303, query->command);
    EXPECT_EQ(0, query->length);
}

TEST_F(ClientTest, EveryRequestGoesToThePortThatIsNamed) {
    const sim::UdpSocket requestPort = sim::UdpSocket::BoundTo({sim::kStationAddress, sim::kRequestPort});
    const std::vector<std::pair<std::uint16_t, std::function<void(std::uint16_t)>>> requests{
        {0x0125, [this](std::uint16_t port) { m_client->SendHeartbeat(kController, port); }},
        {0x0205, [this](std::uint16_t port) { m_client->RequestPlay(kController, {}, port); }},
        {0x0101, [this](std::uint16_t port) { m_client->CloseAudio(kController, 1, port); }},
        {0x0102, [this](std::uint16_t port) { m_client->CloseZones(kController, 1, port); }},
        {0x0132, [this](std::uint16_t port) { m_client->QueryVersion(kController, port); }},
        {0x0303, [this](std::uint16_t port) { m_client->QueryZoneGroups(kController, port); }},
        {0x0313, [this](std::uint16_t port) { m_client->AddTaskZones(kController, {}, port); }},
        {0x0314, [this](std::uint16_t port) { m_client->RemoveTaskZones(kController, {}, port); }}};
    for (const auto& [command, request] : requests) {
        request(sim::kRequestPort);
        const auto datagram = WaitForDatagram(requestPort);
        ASSERT_TRUE(datagram);
        EXPECT_EQ(command, sim::Unpack(datagram->bytes)->command);
    }
}

TEST_F(ClientTest, NotesWhatComesToEitherPort) {
    const sim::UdpSocket sender = sim::UdpSocket::BoundTo({sim::kStationAddress, 0});
    const Bytes answer = sim::Pack(sim::MakePacket(kController, kId, 0x8313, Bytes{1}));
    for (const std::uint16_t port : {sim::kRequestPort, sim::kReplyPort}) {
        sender.Send(answer, {kIp, port});
        const auto arrived = [port](const sim::Event& event) { return event.device == kId && event.port == port; };
        const auto event = Field().Events().WaitFor(arrived, kSoon);
        ASSERT_TRUE(event);
        EXPECT_EQ(0x8313, event->packet->command);
    }
}

} // namespace
} // namespace k740::test
