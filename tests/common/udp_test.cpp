#include "common/udp.h"
#include "tests/common/asked_buffers.h"
#include "tests/common/udp_fixture.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <type_traits>
#include <vector>

namespace k740::test {
namespace {

static_assert(std::has_virtual_destructor_v<CQBUDP>);
static_assert(!std::is_copy_constructible_v<CQBUDP> && !std::is_copy_assignable_v<CQBUDP>);

constexpr int kPort = 28001;
constexpr int kUnicastBuffer = 5'242'880; // bytes

struct SocketLine {
    int level;
    std::string text;
    bool operator==(const SocketLine&) const = default;
};
std::vector<SocketLine> g_lines;

class UdpTest : public UdpFixture {
protected:
    UdpTest() {
        g_lines.clear();
        SetUdpLogHook([](uint8_t level, const std::string& text) { g_lines.push_back({level, text}); });
    }
    ~UdpTest() override { SetUdpLogHook(nullptr); }

    int SendPacket() { return m_udp.send_udp_data(m_packet.data(), 532); }

    std::array<char, 532> m_packet{'\x79', '\x4A', '\x03'};
};

TEST_F(UdpTest, HostListensOnThePortOfAllInterfaces) {
    const int socket = m_udp.create_udp_host(kPort);
    ASSERT_GT(socket, 0);
    EXPECT_EQ("0.0.0.0:28001", BoundTo(socket));
}

TEST_F(UdpTest, HostLogsItsSocketAndPort) {
    const int socket = m_udp.create_udp_host(kPort);
    EXPECT_EQ((std::vector<SocketLine>{{0, "Bind socket:" + std::to_string(socket) + ", port:28001"}}), g_lines);
}

TEST_F(UdpTest, HostHasLargeBuffersAndDoesNotShareItsPort) {
    const int socket = m_udp.create_udp_host(kPort);
    EXPECT_EQ(kUnicastBuffer, AskedBuffer(socket, SO_RCVBUF));
    EXPECT_EQ(kUnicastBuffer, AskedBuffer(socket, SO_SNDBUF));
    EXPECT_EQ(0, SocketOption<int>(socket, SOL_SOCKET, SO_REUSEADDR));
}

TEST_F(UdpTest, ProgramsThatTheHostStartsDoNotInheritTheSocket) {
    EXPECT_NE(0, fcntl(m_udp.create_udp_host(kPort), F_GETFD) & FD_CLOEXEC);
    EXPECT_NE(0, fcntl(m_udp.set_udp_host(kFieldIP, kPort), F_GETFD) & FD_CLOEXEC);
}

TEST_F(UdpTest, SecondHostOnThePortFailsAndLogsWhy) {
    ASSERT_GT(m_udp.create_udp_host(kPort), 0);
    g_lines.clear();
    CQBUDP second;
    int result = 0;
    EXPECT_EQ(-1, SocketMadeBy([&] { result = second.create_udp_host(kPort); }));
    EXPECT_EQ(-1, result);
    ASSERT_EQ(1U, g_lines.size());
    EXPECT_EQ(4, g_lines[0].level);
    EXPECT_THAT(g_lines[0].text, ::testing::MatchesRegex(
                                     "[*]{6}Failed to bind socket:[0-9]+, port:28001, ret:-1, Address already in use"));
}

TEST_F(UdpTest, HostAgainClosesTheFirstSocket) {
    ASSERT_GT(m_udp.create_udp_host(kPort), 0);
    EXPECT_EQ(-1, SocketMadeBy([this] { EXPECT_GT(m_udp.create_udp_host(kPort), 0); })); // the number is used again
}

TEST_F(UdpTest, PortIsFreeOnceClosed) {
    ASSERT_GT(m_udp.create_udp_host(kPort), 0);
    m_udp.close_udp();
    CQBUDP second;
    EXPECT_GT(second.create_udp_host(kPort), 0);
}

TEST_F(UdpTest, DestructorClosesBothSockets) {
    const std::set<int> before = OpenDescriptors();
    {
        CQBUDP udp;
        ASSERT_GT(udp.create_udp_host(kPort), 0);
        ASSERT_EQ(0, udp.join_multicast_send("225.0.0.9", 28100, ""));
        EXPECT_EQ(before.size() + 2, OpenDescriptors().size());
    }
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(UdpTest, ClosingMayBeRepeated) {
    m_udp.create_udp_host(kPort);
    m_udp.Close();
    const std::set<int> before = OpenDescriptors();
    m_udp.Close();
    m_udp.close_udp();
    m_udp.close_multicast();
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(UdpTest, LinesGoNowhereWithoutAHook) {
    SetUdpLogHook(nullptr);
    EXPECT_GT(m_udp.create_udp_host(kPort), 0);
    EXPECT_TRUE(g_lines.empty());
}

TEST_F(UdpTest, DatagramReachesThePeerWhole) {
    const auto device = InField([] { return sim::UdpSocket::BoundTo({kFieldIP, kPort}); });
    ASSERT_GT(m_udp.set_udp_host(kFieldIP, kPort), 0);
    EXPECT_EQ(532, SendPacket());
    const auto datagram = Next(*device);
    ASSERT_TRUE(datagram);
    EXPECT_EQ(sim::Bytes(m_packet.begin(), m_packet.end()), datagram->bytes);
    EXPECT_EQ(kStationIP, datagram->sender.ip);
}

TEST_F(UdpTest, SourcePortStaysAndIsTheSystemsChoice) {
    const auto device = InField([] { return sim::UdpSocket::BoundTo({kFieldIP, kPort}); });
    const int socket = m_udp.set_udp_host(kFieldIP, kPort);
    EXPECT_EQ("0.0.0.0:0", BoundTo(socket)); // not bound before the first send
    SendPacket();
    SendPacket();
    const auto first = Next(*device);
    const auto second = Next(*device);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->sender, second->sender);
    EXPECT_GT(first->sender.port, 1023);
}

TEST_F(UdpTest, EmptyOrNullPeerLeavesNoSocket) {
    ASSERT_GT(m_udp.set_udp_host(kFieldIP, kPort), 0);
    EXPECT_EQ(-1, m_udp.set_udp_host("", kPort));
    EXPECT_EQ(-1, SendPacket());
    ASSERT_GT(m_udp.set_udp_host(kFieldIP, kPort), 0);
    EXPECT_EQ(-1, m_udp.set_udp_host(nullptr, kPort));
    EXPECT_EQ(-1, SendPacket());
}

TEST_F(UdpTest, NewPeerReplacesTheSocket) {
    ASSERT_GT(m_udp.set_udp_host("192.168.1.34", kPort), 0);
    const auto device = InField([] { return sim::UdpSocket::BoundTo({kFieldIP, kPort}); });
    EXPECT_EQ(-1, SocketMadeBy([this] { m_udp.set_udp_host(kFieldIP, kPort); }));
    EXPECT_EQ(532, SendPacket());
    EXPECT_TRUE(Next(*device));
}

TEST_F(UdpTest, NothingToSendIsAnError) {
    ASSERT_GT(m_udp.set_udp_host(kFieldIP, kPort), 0);
    EXPECT_EQ(-1, m_udp.send_udp_data(nullptr, 532));
    EXPECT_EQ(-1, m_udp.send_udp_data(m_packet.data(), 0));
    EXPECT_EQ(-1, m_udp.send_udp_data(m_packet.data(), -1));
}

TEST_F(UdpTest, SendingWithoutASocketIsAnError) {
    EXPECT_EQ(-1, SendPacket());
    m_udp.set_udp_host(kFieldIP, kPort);
    m_udp.close_udp();
    EXPECT_EQ(-1, SendPacket());
}

TEST_F(UdpTest, ClosedPortOfThePeerIsNoError) {
    ASSERT_GT(m_udp.set_udp_host(kFieldIP, kPort), 0);
    for (int i = 0; i < 5; ++i) { EXPECT_EQ(532, SendPacket()); }
}

TEST_F(UdpTest, PeerThatDoesNotExistIsNoError) {
    ASSERT_GT(m_udp.set_udp_host("192.168.77.77", kPort), 0);
    EXPECT_EQ(532, SendPacket());
}

TEST_F(UdpTest, OneShotSendReachesTheAddress) {
    const auto device = InField([] { return sim::UdpSocket::BoundTo({kFieldIP, 29001}); });
    const std::array<unsigned char, 3> bytes{1, 2, 3};
    const std::set<int> before = OpenDescriptors();
    EXPECT_EQ(3, CQBUDP::SendUDPData(kFieldIP, 29001, bytes.data(), 3));
    EXPECT_EQ(before, OpenDescriptors());
    const auto datagram = Next(*device);
    ASSERT_TRUE(datagram);
    EXPECT_EQ((sim::Bytes{1, 2, 3}), datagram->bytes);
}

TEST_F(UdpTest, OneShotSendToAnUnreachableAddressStillReturnsItsBytes) {
    const std::array<unsigned char, 532> bytes{};
    EXPECT_EQ(532, CQBUDP::SendUDPData("192.168.77.77", 29001, bytes.data(), 532));
}

TEST_F(UdpTest, OneShotSendOfNothingOrToNobodyIsAnError) {
    const std::array<unsigned char, 3> bytes{};
    EXPECT_EQ(-1, CQBUDP::SendUDPData("", 29001, bytes.data(), 3));
    EXPECT_EQ(-1, CQBUDP::SendUDPData(kFieldIP, 29001, nullptr, 3));
    EXPECT_EQ(-1, CQBUDP::SendUDPData(kFieldIP, 29001, bytes.data(), 0));
}

TEST_F(UdpTest, DescriptorZeroIsNeitherUsedNorLost) {
    const sim::FileDescriptor standardInput(dup(0));
    ASSERT_EQ(0, close(0));
    const int socket = m_udp.create_udp_host(kPort);
    EXPECT_GT(socket, 0);
    EXPECT_EQ(-1, fcntl(0, F_GETFD)); // free again
    dup2(standardInput.Get(), 0);
}

} // namespace
} // namespace k740::test
