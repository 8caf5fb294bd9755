#include "app/application.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

namespace k740::test {
namespace {

constexpr int kController = 33;
constexpr int kStation = 5001;

/// The dispatcher of an application whose threads do not run. The network is for what handlers send.
class DispatchTest : public OnPrivateNetwork {
protected:
    DispatchTest() {
        m_app.Configuration().SetDefaults();
        m_app.Lifetime().Begin();
        EXPECT_EQ(0, m_app.Devices().AddDevice(kController, 1, "192.168.1.33"));
        EXPECT_EQ(0, m_app.Devices().AddDevice(kStation, 2, "192.168.1.51"));
    }

    /// A packet with a payload of ones.
    static _vxa_cmd_packet_t Packet(int source, uint16_t command) {
        _vxa_cmd_packet_t packet;
        FillK740PackageHeader(&packet, static_cast<uint32_t>(source), 9500, command, 514);
        std::fill_n(packet.payload, sizeof(packet.payload), static_cast<uint8_t>(1));
        return packet;
    }
    void Dispatch(const _vxa_cmd_packet_t& packet) { m_app.Communication().ProcessResponse(&packet, "192.168.1.33"); }
    /// @return the merged status of the controller; -1 before its first report
    int ControllerStatus() {
        m_app.ZCU().UpdateZCUStatus();
        tagZCU_QUERYSTATUS2 record;
        return m_app.ZCU().GetZCUStatus(kController, record) == 0 ? record.status.deviceStatus : -1;
    }

    CK740ControlApp m_app;
};

TEST_F(DispatchTest, StatusReportGoesToTheZoneControllers) {
    Dispatch(Packet(kController, 0x8126));
    EXPECT_EQ(1, ControllerStatus());
}

TEST_F(DispatchTest, WrongMagicGoesNowhere) {
    const int before = ControllerStatus();
    _vxa_cmd_packet_t packet = Packet(kController, 0x8126);
    packet.magic = 0x794A;
    Dispatch(packet);
    EXPECT_EQ(before, ControllerStatus());
}

TEST_F(DispatchTest, PagingStationReportGoesToThePagingStations) {
    Dispatch(Packet(kStation, 0x8700));
    m_app.RPK().UpdateRPKStatus();
    const auto all = m_app.RPK().GetAllRPKStatus();
    ASSERT_EQ(1U, all.size());
    EXPECT_EQ(kStation, all[0].DeviceID());
    EXPECT_EQ(1, all[0].status.state);
}

TEST_F(DispatchTest, HeartbeatToAVirtualControllerIsRemembered) {
    ASSERT_EQ(0, m_app.Devices().AddDevice(60, 9, ""));
    _vxa_cmd_packet_t packet = Packet(9600, 0x0125);
    packet.destinationID = 60;
    Dispatch(packet);
    const auto clients = m_app.ZCU().GetVirtualClients();
    ASSERT_EQ(1U, clients.size());
    EXPECT_STREQ("192.168.1.33", std::string(clients[0].ip).c_str());
}

// Every one of the 65,536 codes, from known and unknown senders.
TEST_F(DispatchTest, RandomPayloadsOfEveryCodeDoNoHarm) {
    std::mt19937 random(1);
    _vxa_cmd_packet_t packet;
    for (int code = 0; code <= 0xFFFF; ++code) {
        std::array<uint32_t, sizeof(packet) / sizeof(uint32_t)> words{};
        std::generate(words.begin(), words.end(), random);
        std::memcpy(&packet, words.data(), sizeof(packet));
        packet.magic = kPacketMagic;
        packet.command = static_cast<uint16_t>(code);
        if (code % 3 == 0) { packet.sourceID = code % 2 == 0 ? kController : kStation; }
        Dispatch(packet);
    }
    Dispatch(Packet(kController, 0x8126));
    EXPECT_EQ(1, ControllerStatus());
}

} // namespace
} // namespace k740::test
