#include "app/k740.h"
#include "common/stopwatch.h"
#include "sim/raw_sender.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/wait_until.h"
#include "zcu/zcu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace k740::test {
namespace {

using sim::Received;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint16_t kHeartbeat = 0x0125;
constexpr std::uint16_t kPagingHeartbeat = 0x0700;
constexpr std::uint16_t kMarker = 0x7777;

class HeartbeatTest : public OnRegistry {
protected:
    /// Registers a device with a place in the field, and waits until it was greeted where it is.
    void AddDevice(int id, int type, const std::string& address, std::optional<std::uint16_t> greeting) {
        AddZoneController(static_cast<std::uint32_t>(id), address);
        ASSERT_EQ(0, m_devices.AddDevice(id, type, address));
        if (greeting) { ASSERT_TRUE(WaitFor(id, *greeting)); }
    }
    bool WaitFor(int id, std::uint16_t command, std::size_t count = 1) const {
        return Field()
            .Events()
            .WaitFor(Received(static_cast<std::uint32_t>(id), command), kPatience, count)
            .has_value();
    }
    /// @return the commands that the device has received, up to a marker that is sent here
    std::vector<std::uint16_t> CommandsAt(int id) {
        m_app->SendToDevice(id, MakePacket(9500, 1, kMarker, 0));
        EXPECT_TRUE(WaitFor(id, kMarker)) << id;
        std::vector<std::uint16_t> commands;
        for (const sim::Event& event : Field().Events().Events()) {
            if (event.device == static_cast<std::uint32_t>(id) && event.packet) {
                commands.push_back(event.packet->command);
            }
        }
        commands.pop_back();
        return commands;
    }
    CZCU& m_zcu = m_app->ZCU();
};

TEST_F(HeartbeatTest, CarriesTheNodeIDIn532Bytes) {
    AddDevice(1, 1, "192.168.1.20", kHeartbeat);
    sim::Bytes expected{0x79, 0x4A, 0x03, 0x00, 0x00, 0x00, // magic, version, reserved
                        0x1C, 0x25, 0x00, 0x00,             // source ID 9500
                        0x01, 0x00, 0x00, 0x00,             // destination ID
                        0x25, 0x01, 0x04, 0x00,             // command, payload length
                        0x1C, 0x25, 0x00, 0x00};            // node ID
    expected.resize(532, 0);
    EXPECT_EQ(expected, Field().Events().WaitFor(Received(1, kHeartbeat), kPatience)->bytes);
}

TEST_F(HeartbeatTest, APagingStationGetsOneOfItsOwn) {
    m_app->Configuration().SetNodeID(9999);
    AddDevice(5000, 2, "192.168.8.99", kPagingHeartbeat);
    sim::Bytes expected{0x79, 0x4A, 0x03, 0x00, 0x00, 0x00, // magic, version, reserved
                        0x0F, 0x27, 0x00, 0x00,             // source ID 9999
                        0x88, 0x13, 0x00, 0x00,             // destination ID 5000
                        0x00, 0x07, 0x04, 0x00,             // command, payload length
                        0x0F, 0x27, 0x00, 0x00};            // node ID
    expected.resize(532, 0);
    EXPECT_EQ(expected, Field().Events().WaitFor(Received(5000, kPagingHeartbeat), kPatience)->bytes);
}

TEST_F(HeartbeatTest, IDsDecideWhetherThereIsOne) {
    for (int id : {1, 999, 5000, 5999, 7000, 7999}) { EXPECT_EQ(1, m_zcu.ZCU_Request_HeartBeat(id)) << id; }
    for (int id : {-1, 0, 1000, 4999, 6000, 6999, 8000, 9500}) { EXPECT_EQ(0, m_zcu.ZCU_Request_HeartBeat(id)) << id; }
}

TEST_F(HeartbeatTest, GoesToAllDevicesByTheRangeOfTheirID) {
    AddDevice(1, 1, "192.168.1.20", kHeartbeat);
    AddDevice(999, 0, "192.168.1.21", kHeartbeat);
    AddDevice(50, 5, "192.168.1.22", kHeartbeat);
    AddDevice(5000, 2, "192.168.1.23", kPagingHeartbeat);
    AddDevice(5999, 4, "192.168.1.24", {});
    AddDevice(7000, 3, "192.168.1.25", {});
    AddDevice(7999, 8, "192.168.1.26", {});
    AddDevice(1000, 4, "192.168.1.27", {});
    AddDevice(8000, 4, "192.168.1.28", {});
    m_zcu.SendHeartBeat(0);
    for (int id : {1, 999, 50}) { EXPECT_THAT(CommandsAt(id), ElementsAre(kHeartbeat, kHeartbeat)) << id; }
    EXPECT_THAT(CommandsAt(5000), ElementsAre(kPagingHeartbeat, kPagingHeartbeat));
    EXPECT_THAT(CommandsAt(5999), ElementsAre(kPagingHeartbeat));
    for (int id : {7000, 7999}) { EXPECT_THAT(CommandsAt(id), ElementsAre(kHeartbeat)) << id; }
    for (int id : {1000, 8000}) { EXPECT_THAT(CommandsAt(id), IsEmpty()) << id; }
}

TEST_F(HeartbeatTest, AnyIDBelowOneMeansAll) {
    AddDevice(1, 1, "192.168.1.20", kHeartbeat);
    m_zcu.SendHeartBeat(-5);
    EXPECT_THAT(CommandsAt(1), ElementsAre(kHeartbeat, kHeartbeat));
}

TEST_F(HeartbeatTest, GoesToOneDeviceAlone) {
    AddDevice(1, 1, "192.168.1.20", kHeartbeat);
    AddDevice(2, 1, "192.168.1.21", kHeartbeat);
    m_zcu.SendHeartBeat(2);
    m_zcu.SendHeartBeat(3); // not registered
    EXPECT_THAT(CommandsAt(1), ElementsAre(kHeartbeat));
    EXPECT_THAT(CommandsAt(2), ElementsAre(kHeartbeat, kHeartbeat));
}

TEST_F(HeartbeatTest, AllDevicesGetItInTableOrder) {
    AddDevice(3, 1, "192.168.1.23", kHeartbeat);
    AddDevice(1, 1, "192.168.1.21", kHeartbeat);
    AddDevice(2, 1, "192.168.1.22", kHeartbeat);
    m_zcu.SendHeartBeat(0);
    ASSERT_TRUE(Field().Events().WaitFor(Received(kHeartbeat), kPatience, 6));
    auto events = Field().Events().Events(Received(kHeartbeat));
    events.erase(events.begin(), events.begin() + 3);
    std::sort(events.begin(), events.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
    EXPECT_THAT((std::vector{events[0].device, events[1].device, events[2].device}), ElementsAre(3, 1, 2));
}

// The library in the place of a virtual zone controller.

class HeartbeatAnswerTest : public OnRegistry {
protected:
    void Receive(std::uint32_t sender, std::uint32_t virtualID, const std::string& ip) {
        const _vxa_cmd_packet_t packet = MakePacket(sender, virtualID, kHeartbeat, sender);
        m_app->ZCU().ReceiveHandshake(&packet, ip);
    }
    /// @return a socket on port 29001 of the address, which is new in the field
    sim::UdpSocket ClientAt(const std::string& ip) const {
        Network().AddFieldAddresses({ip});
        std::optional<sim::UdpSocket> socket;
        Network().RunInField([&] { socket.emplace(sim::UdpSocket::BoundTo({ip, sim::kReplyPort})); });
        return std::move(*socket);
    }
    static sim::Bytes NextDatagram(const sim::UdpSocket& socket) {
        std::optional<sim::Datagram> datagram;
        EXPECT_TRUE(WaitUntil([&] { return (datagram = socket.Receive()).has_value(); }));
        return datagram ? datagram->bytes : sim::Bytes{};
    }
    static sim::Bytes AnswerOf(std::uint8_t virtualID, std::uint8_t client) {
        sim::Bytes expected{0x79,      0x4A, 0x03, 0x00, 0x00, 0x00, // magic, version, reserved
                            virtualID, 0x00, 0x00, 0x00,             // source: the virtual controller
                            client,    0x00, 0x00, 0x00,             // destination: the sender
                            0x25,      0x81, 0x06, 0x00,             // command, payload length
                            0x01,      0x00,                         // result, reserved
                            virtualID, 0x00, 0x00, 0x00};            // virtual controller
        expected.resize(532, 0);
        return expected;
    }
    std::deque<tagVIRTUAL_ZCU_CLIENT_SOCKET> Clients() const { return m_app->ZCU().GetVirtualClients(); }
};

TEST_F(HeartbeatAnswerTest, GoesToPort29001OfTheSenderInTheNameOfTheVirtualController) {
    const auto client = ClientAt("192.168.1.20");
    Receive(77, 200, "192.168.1.20"); // no check whether 200 is a virtual controller
    EXPECT_EQ(AnswerOf(200, 77), NextDatagram(client));
}

TEST_F(HeartbeatAnswerTest, RemembersTheSender) {
    const time_t before = time(nullptr);
    Receive(77, 200, "192.168.1.20");
    ASSERT_EQ(1U, Clients().size());
    const tagVIRTUAL_ZCU_CLIENT_SOCKET client = Clients()[0];
    EXPECT_EQ(200U, client.virtualZCUID + 0);
    EXPECT_EQ(77U, client.clientID + 0);
    EXPECT_STREQ("192.168.1.20", client.ip);
    EXPECT_GE(client.lastHeard + 0, before);
}

TEST_F(HeartbeatAnswerTest, ASenderIsKnownByItsAddressAndTheVirtualController) {
    Receive(77, 200, "192.168.1.20");
    Receive(78, 200, "192.168.1.20"); // the same client under another ID
    ASSERT_EQ(1U, Clients().size());
    EXPECT_EQ(77U, Clients()[0].clientID + 0);
    Receive(77, 201, "192.168.1.20");
    Receive(77, 200, "192.168.1.21");
    EXPECT_EQ(3U, Clients().size());
}

TEST_F(HeartbeatAnswerTest, ASecondHeartbeatRenewsTheTimeAtWhichTheSenderWasLastHeard) {
    Receive(77, 200, "192.168.1.20");
    const time_t first = Clients().at(0).lastHeard;
    ASSERT_TRUE(WaitUntil([=] { return time(nullptr) > first; }));
    Receive(78, 200, "192.168.1.20");
    ASSERT_EQ(1U, Clients().size());
    EXPECT_GT(Clients()[0].lastHeard + 0, first);
}

TEST_F(HeartbeatAnswerTest, NobodyIsAnsweredOrRememberedAtTheLibrarysOwnAddressOrNone) {
    const auto own = sim::UdpSocket::BoundTo({"127.0.0.1", sim::kReplyPort});
    Receive(77, 200, "127.0.0.1");
    Receive(77, 200, "0.0.0.0");
    EXPECT_TRUE(Clients().empty());
    m_app->SendToAddress("127.0.0.1", sim::kReplyPort, MakePacket(1, 1, kMarker, 0));
    EXPECT_EQ(0x77, NextDatagram(own).at(14)) << "nothing came before the marker";
}

TEST_F(HeartbeatAnswerTest, TheListHolds1024ClientsAndDropsTheOldestForTheNext) {
    for (std::uint32_t id = 1; id <= 1024; ++id) { Receive(77, id, "192.168.1.20"); }
    EXPECT_EQ(1024U, Clients().size());
    EXPECT_EQ(1U, Clients().front().virtualZCUID + 0);
    Receive(77, 1, "192.168.1.20"); // known
    EXPECT_EQ(1U, Clients().front().virtualZCUID + 0);
    Receive(77, 1025, "192.168.1.20");
    EXPECT_EQ(1024U, Clients().size());
    EXPECT_EQ(2U, Clients().front().virtualZCUID + 0);
    EXPECT_EQ(1025U, Clients().back().virtualZCUID + 0);
}

TEST_F(HeartbeatAnswerTest, IsGivenOnEitherPortOfTheLibrary) {
    const auto client = ClientAt("192.168.1.20");
    const sim::RawSender sender(Network(), "192.168.1.20");
    ASSERT_EQ(0, K740_Initialize());
    for (std::uint16_t port : {sim::kRequestPort, sim::kReplyPort}) {
        sender.Send(sim::Pack(sim::MakePacket(77, 200, kHeartbeat, sim::Bytes{77, 0, 0, 0})), port);
        EXPECT_EQ(AnswerOf(200, 77), NextDatagram(client)) << port;
    }
}

// The thread.

class HeartbeatThreadTest : public OnPrivateNetwork {};

TEST_F(HeartbeatThreadTest, AllDevicesGetAHeartbeatTenSecondsAfterTheStart) {
    AddZoneController(1, "192.168.1.20");
    K740_Initialize();
    CQBTime sinceStart;
    sinceStart.TimeStart();
    K740_AddDevice(1, 1, "192.168.1.20");
    ASSERT_TRUE(Field().Events().WaitFor(Received(1, kHeartbeat), kPatience));
    EXPECT_LT(sinceStart.TimeEnd(), 1000U);
    ASSERT_TRUE(Field().Events().WaitFor(Received(1, kHeartbeat), kPatience + kPatience, 2));
    EXPECT_GE(sinceStart.TimeEnd(), 9500U); // the thread was started by K740_Initialize
    EXPECT_LT(sinceStart.TimeEnd(), 11'000U);
}

} // namespace
} // namespace k740::test
