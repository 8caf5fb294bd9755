#include "common/stopwatch.h"
#include "common/udp.h"
#include "tests/common/asked_buffers.h"
#include "tests/common/interruption.h"
#include "tests/common/udp_fixture.h"

#include <fcntl.h>
#include <netinet/ip.h>

#include <array>
#include <csignal>
#include <cstring>

namespace k740::test {
namespace {

constexpr const char* kGroup = "225.0.0.9";
constexpr int kPort = 28100;
constexpr int kMulticastBuffer = 10'485'760; // bytes
constexpr int kWaitMs = 200;
const std::string kAny;

class UdpMulticastTest : public UdpFixture {
protected:
    /// Opens the socket under test as a sender. @return its descriptor
    int Sender(const std::string& nic = kAny) {
        return SocketMadeBy([&] { EXPECT_EQ(0, m_udp.join_multicast_send(kGroup, kPort, nic)); });
    }
    /// Opens the socket under test as a receiver. @return its descriptor
    int Receiver(const std::string& nic = kAny, int waitMs = kWaitMs) {
        return SocketMadeBy([&] { EXPECT_EQ(0, m_udp.join_multicast_recv(kGroup, kPort, nic, waitMs)); });
    }
    /// @return the text that comes to the socket under test next
    std::string Received(CQBUDP& udp) {
        std::array<char, 100> buffer{};
        const int length = udp.recv_multicast_data(buffer.data(), buffer.size());
        return length < 0 ? "error" + std::to_string(length) : std::string(buffer.data(), static_cast<size_t>(length));
    }
    static void Send(CQBUDP& sender, const char* text) {
        EXPECT_EQ(static_cast<int>(std::strlen(text)),
                  sender.send_multicast_data(text, static_cast<int>(std::strlen(text))));
    }
    int ReceiveInto(char* buffer, int length) { return m_udp.recv_multicast_data(buffer, length); }

    std::array<char, 8> m_buffer{};
};

TEST_F(UdpMulticastTest, SenderHasItsOptions) {
    const int socket = Sender();
    ASSERT_GT(socket, 0);
    EXPECT_EQ(1, SocketOption<int>(socket, SOL_SOCKET, SO_REUSEADDR));
    const auto timeout = SocketOption<timeval>(socket, SOL_SOCKET, SO_SNDTIMEO);
    EXPECT_EQ(0, timeout.tv_sec);
    EXPECT_EQ(100'000, timeout.tv_usec);
    EXPECT_EQ(kMulticastBuffer, AskedBuffer(socket, SO_SNDBUF));
    EXPECT_EQ(64, SocketOption<int>(socket, IPPROTO_IP, IP_MULTICAST_TTL));
    EXPECT_EQ(1, SocketOption<int>(socket, IPPROTO_IP, IP_MULTICAST_LOOP));
    EXPECT_NE(0, fcntl(socket, F_GETFD) & FD_CLOEXEC);
}

TEST_F(UdpMulticastTest, SenderIsBoundToTheNicAloneAndChoosesNoInterfaceElse) {
    const int socket = Sender(kStationIP);
    EXPECT_EQ("192.168.1.166:28100", BoundTo(socket));
    EXPECT_EQ("0.0.0.0", DottedText(SocketOption<in_addr>(socket, IPPROTO_IP, IP_MULTICAST_IF)));
}

TEST_F(UdpMulticastTest, SenderWithoutANicIsBoundToAnyAddress) {
    EXPECT_EQ("0.0.0.0:28100", BoundTo(Sender()));
}

TEST_F(UdpMulticastTest, SenderTakesItsNicAsItIs) {
    EXPECT_EQ("255.255.255.255:28100", BoundTo(Sender(" 192.168.1.166"))); // inet_addr(3) refuses the leading blank
}

TEST_F(UdpMulticastTest, SenderThatCannotBindSaysSoOnStandardOutput) {
    ::testing::internal::CaptureStdout();
    int result = 0;
    const int socket = SocketMadeBy([&] { result = m_udp.join_multicast_send(kGroup, kPort, "10.9.9.9"); });
    EXPECT_EQ("********failed to bind mcast: 10.9.9.9\n", ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(-1, result);
    EXPECT_EQ(-1, socket);
    EXPECT_EQ(-1, m_udp.send_multicast_data("x", 1));
}

TEST_F(UdpMulticastTest, ReceiverHasItsOptions) {
    const int socket = Receiver(kStationIP, 1234);
    ASSERT_GT(socket, 0);
    EXPECT_EQ("225.0.0.9:28100", BoundTo(socket));
    EXPECT_EQ(1, SocketOption<int>(socket, SOL_SOCKET, SO_REUSEADDR));
    const auto timeout = SocketOption<timeval>(socket, SOL_SOCKET, SO_RCVTIMEO);
    EXPECT_EQ(1, timeout.tv_sec);
    EXPECT_NEAR(234'000, static_cast<double>(timeout.tv_usec), 10'000); // kept in ticks of the kernel
    EXPECT_EQ(kMulticastBuffer, AskedBuffer(socket, SO_RCVBUF));
    EXPECT_EQ(64, SocketOption<int>(socket, IPPROTO_IP, IP_MULTICAST_TTL));
    EXPECT_EQ(1, SocketOption<int>(socket, IPPROTO_IP, IP_MULTICAST_LOOP));
    EXPECT_EQ(kStationIP, DottedText(SocketOption<in_addr>(socket, IPPROTO_IP, IP_MULTICAST_IF)));
    EXPECT_NE(0, fcntl(socket, F_GETFD) & FD_CLOEXEC);
}

TEST_F(UdpMulticastTest, ReceiverTrimsItsNic) {
    const int socket = Receiver("  192.168.1.166 ");
    EXPECT_EQ(kStationIP, DottedText(SocketOption<in_addr>(socket, IPPROTO_IP, IP_MULTICAST_IF)));
}

TEST_F(UdpMulticastTest, NicOfZerosOrBlanksMeansAnyInterface) {
    for (const char* nic : {"0.0.0.0", " 0.0.0.0 ", "", "   "}) {
        m_udp.Close();
        const int socket = Receiver(nic);
        EXPECT_EQ("0.0.0.0", DottedText(SocketOption<in_addr>(socket, IPPROTO_IP, IP_MULTICAST_IF))) << nic;
        CQBUDP sender;
        ASSERT_EQ(0, sender.join_multicast_send(kGroup, kPort, kAny));
        Send(sender, "heard");
        EXPECT_EQ("heard", Received(m_udp)) << nic;
    }
}

TEST_F(UdpMulticastTest, OwnMachineHearsItsStreamsInEveryReceiver) {
    Receiver();
    CQBUDP second;
    ASSERT_EQ(0, second.join_multicast_recv(kGroup, kPort, kStationIP, kWaitMs));
    CQBUDP sender;
    ASSERT_EQ(0, sender.join_multicast_send(kGroup, kPort, kStationIP));
    Send(sender, "one");
    EXPECT_EQ("one", Received(m_udp));
    EXPECT_EQ("one", Received(second));
}

TEST_F(UdpMulticastTest, AReceiverAnswersTheLastOneItHeard) {
    Receiver();
    CQBUDP sender;
    ASSERT_EQ(0, sender.join_multicast_send(kGroup, kPort, kStationIP));
    Send(sender, "question");
    ASSERT_EQ("question", Received(m_udp));
    Send(m_udp, "answer");
    EXPECT_EQ("answer", Received(sender));
}

TEST_F(UdpMulticastTest, FieldHearsTheStream) {
    const auto device = InField([] { return sim::UdpSocket::InGroup({kGroup, kPort}, kFieldIP); });
    Sender(kStationIP);
    Send(m_udp, "abc");
    const auto datagram = Next(*device);
    ASSERT_TRUE(datagram);
    EXPECT_EQ((sim::Bytes{'a', 'b', 'c'}), datagram->bytes);
    EXPECT_EQ((sim::Endpoint{kStationIP, kPort}), datagram->sender);
}

TEST_F(UdpMulticastTest, ReceiverHearsItsOwnGroupAlone) {
    CQBUDP other;
    ASSERT_EQ(0, other.join_multicast_recv("225.0.0.10", kPort, kAny, kWaitMs));
    Receiver();
    CQBUDP toOther;
    ASSERT_EQ(0, toOther.join_multicast_send("225.0.0.10", kPort, kAny));
    CQBUDP sender;
    ASSERT_EQ(0, sender.join_multicast_send(kGroup, kPort, kAny));
    Send(toOther, "other");
    Send(sender, "own");
    EXPECT_EQ("own", Received(m_udp));
    EXPECT_EQ("other", Received(other));
}

TEST_F(UdpMulticastTest, SenderIsNotHandedTheGroupsOfOthers) {
    const int socket = Sender();
    CQBUDP receiver;
    ASSERT_EQ(0, receiver.join_multicast_recv(kGroup, kPort, kAny, kWaitMs));
    Send(m_udp, "loop");
    EXPECT_EQ("loop", Received(receiver));
    EXPECT_EQ(-1, recv(socket, m_buffer.data(), m_buffer.size(), MSG_DONTWAIT));
}

TEST_F(UdpMulticastTest, NoTrafficIsMinus2AfterTheTimeout) {
    Receiver();
    CQBTime time;
    time.TimeStart();
    EXPECT_EQ(-2, ReceiveInto(m_buffer.data(), 8));
    EXPECT_GE(time.TimeEnd(), 190U);
    EXPECT_LT(time.TimeEnd(), 2000U);
}

TEST_F(UdpMulticastTest, InterruptionIsMinus2) {
    for (const int flags : {0, SA_RESTART}) {
        CountSignals(flags);
        Receiver(kAny, 60'000);
        int result = 0;
        SleepingThread receiver([&] { result = ReceiveInto(m_buffer.data(), 8); });
        ASSERT_TRUE(receiver.Interrupt());
        receiver.Join();
        EXPECT_EQ(-2, result);
    }
}

TEST_F(UdpMulticastTest, ReceivingNowhereIsAnError) {
    Receiver();
    EXPECT_EQ(-1, ReceiveInto(nullptr, 8));
    EXPECT_EQ(-1, ReceiveInto(m_buffer.data(), 0));
    EXPECT_EQ(-1, ReceiveInto(m_buffer.data(), -1));
}

TEST_F(UdpMulticastTest, WithoutASocketEverythingIsAnError) {
    EXPECT_EQ(-1, ReceiveInto(m_buffer.data(), 8));
    EXPECT_EQ(-1, m_udp.send_multicast_data("x", 1));
    EXPECT_EQ(-1, m_udp.leaveGroup());
    EXPECT_FALSE(m_udp.IsMulticastOpen());
    Receiver();
    EXPECT_TRUE(m_udp.IsMulticastOpen());
    m_udp.close_multicast();
    EXPECT_FALSE(m_udp.IsMulticastOpen());
    EXPECT_EQ(-1, ReceiveInto(m_buffer.data(), 8));
}

TEST_F(UdpMulticastTest, LongerDatagramIsCut) {
    Receiver();
    CQBUDP sender;
    ASSERT_EQ(0, sender.join_multicast_send(kGroup, kPort, kAny));
    Send(sender, "0123456789");
    EXPECT_EQ(8, ReceiveInto(m_buffer.data(), 8));
}

TEST_F(UdpMulticastTest, FailedJoinLeavesNoSocketThatWouldBlock) {
    int result = 0;
    // Bound to an address that is not this machine's; and joined on an interface that is not.
    EXPECT_EQ(-1, SocketMadeBy([&] { result = m_udp.join_multicast_recv("10.9.9.9", kPort, kAny, kWaitMs); }));
    EXPECT_EQ(-1, result);
    EXPECT_EQ(-1, SocketMadeBy([&] { result = m_udp.join_multicast_recv(kGroup, kPort, "10.9.9.9", kWaitMs); }));
    EXPECT_EQ(-1, result);
    EXPECT_EQ(-1, ReceiveInto(m_buffer.data(), 8));
}

TEST_F(UdpMulticastTest, GroupHeldByAnUnsharingSocketCannotBeJoined) {
    const sim::UdpSocket holder = sim::UdpSocket::BoundTo({kGroup, kPort});
    EXPECT_EQ(-1, m_udp.join_multicast_recv(kGroup, kPort, kAny, kWaitMs));
}

TEST_F(UdpMulticastTest, JoiningAnotherGroupLeavesTheFirst) {
    Receiver();
    EXPECT_EQ(-1, SocketMadeBy([this] {
        EXPECT_EQ(0, m_udp.join_multicast_recv("225.0.0.10", kPort, kAny, kWaitMs));
    })); // the number is used again
    CQBUDP sender;
    ASSERT_EQ(0, sender.join_multicast_send(kGroup, kPort, kAny));
    CQBUDP toSecond;
    ASSERT_EQ(0, toSecond.join_multicast_send("225.0.0.10", kPort, kAny));
    Send(sender, "first");
    Send(toSecond, "second");
    EXPECT_EQ("second", Received(m_udp));
}

TEST_F(UdpMulticastTest, FailedJoinEndsTheFirstMembershipToo) {
    Receiver();
    EXPECT_EQ(-1, m_udp.join_multicast_recv("10.9.9.9", kPort, kAny, kWaitMs));
    EXPECT_FALSE(m_udp.IsMulticastOpen());
}

TEST_F(UdpMulticastTest, GroupIsLeftOnTheDefaultInterface) {
    Receiver();
    EXPECT_EQ(0, m_udp.leaveGroup());
    EXPECT_EQ(-1, m_udp.leaveGroup()); // no longer a member
}

TEST_F(UdpMulticastTest, UnicastSocketIsAnotherOne) {
    const auto device = InField([] { return sim::UdpSocket::BoundTo({kFieldIP, 28001}); });
    ASSERT_GT(m_udp.set_udp_host(kFieldIP, 28001), 0);
    Receiver();
    m_udp.close_multicast();
    EXPECT_EQ(1, m_udp.send_udp_data("x", 1));
    EXPECT_TRUE(Next(*device));
}

} // namespace
} // namespace k740::test
