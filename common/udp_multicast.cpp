#include "common/qbstring.h"
#include "common/udp.h"
#include "common/udp_socket.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

constexpr int kMulticastBufferBytes = 10'485'760;
constexpr timeval kSendTimeout{0, 100'000};
constexpr int kTimeToLive = 64;
constexpr int kOn = 1;
constexpr int kOff = 0;

ip_mreq Membership(const std::string& group, const std::string& nic) {
    ip_mreq membership{};
    membership.imr_multiaddr.s_addr = inet_addr(group.c_str());
    membership.imr_interface = SocketAddress(nic, 0).sin_addr;
    return membership;
}

} // namespace

int CQBUDP::join_multicast_send(const char* group, int port, const std::string& nic) {
    close_multicast();
    m_group = group == nullptr ? "" : group;
    m_multicastSocket = OpenUdpSocket();
    if (!PrepareSender(port, nic)) {
        close_multicast();
        return -1;
    }
    m_multicastAddress = SocketAddress(m_group, port);
    return 0;
}

bool CQBUDP::PrepareSender(int port, const std::string& nic) {
    if (!SetOption(m_multicastSocket, SOL_SOCKET, SO_REUSEADDR, kOn)) { return false; }
    if (BindSocket(m_multicastSocket, SocketAddress(nic, port)) != 0) {
        std::printf("********failed to bind mcast: %s\n", nic.c_str());
        std::fflush(stdout);
        return false;
    }
    if (!SetOption(m_multicastSocket, SOL_SOCKET, SO_SNDTIMEO, kSendTimeout)) { return false; }
    SetOption(m_multicastSocket, SOL_SOCKET, SO_SNDBUF, kMulticastBufferBytes);
    // Without this a sender bound to any address is handed every group that anybody on the machine has joined.
    SetOption(m_multicastSocket, IPPROTO_IP, IP_MULTICAST_ALL, kOff);
    return SetOption(m_multicastSocket, IPPROTO_IP, IP_MULTICAST_TTL, kTimeToLive) &&
           SetOption(m_multicastSocket, IPPROTO_IP, IP_MULTICAST_LOOP, kOn);
}

int CQBUDP::join_multicast_recv(const std::string& group, int port, const std::string& nic, int timeout_ms) {
    close_multicast();
    m_group = group;
    m_multicastSocket = OpenUdpSocket();
    if (!PrepareReceiver(port, qbstring::trimString(nic), timeout_ms)) {
        // A socket without its receive time-out would block its reader for ever.
        close_multicast();
        return -1;
    }
    return 0;
}

bool CQBUDP::PrepareReceiver(int port, const std::string& nic, int timeout_ms) {
    const int socket = m_multicastSocket;
    if (!SetOption(socket, SOL_SOCKET, SO_REUSEADDR, kOn)) { return false; }
    // Bound to the group itself, so that only this group's datagrams arrive.
    if (BindSocket(socket, SocketAddress(m_group, port)) != 0) { return false; }
    SetOption(socket, SOL_SOCKET, SO_RCVBUF, kMulticastBufferBytes);
    SetOption(socket, SOL_SOCKET, SO_RCVTIMEO, timeval{timeout_ms / 1000, timeout_ms % 1000 * 1000L});
    SetOption(socket, IPPROTO_IP, IP_MULTICAST_TTL, kTimeToLive);
    SetOption(socket, IPPROTO_IP, IP_MULTICAST_LOOP, kOn);
    const ip_mreq membership = Membership(m_group, nic);
    return SetOption(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership) &&
           SetOption(socket, IPPROTO_IP, IP_MULTICAST_IF, membership.imr_interface);
}

int CQBUDP::recv_multicast_data(char* buf, int len) {
    if (buf == nullptr || len < 1 || m_multicastSocket <= 0) { return -1; }
    socklen_t size = sizeof(m_multicastAddress);
    const ssize_t count = recvfrom(m_multicastSocket, buf, static_cast<std::size_t>(len), 0,
                                   reinterpret_cast<sockaddr*>(&m_multicastAddress), &size);
    if (count >= 0) { return static_cast<int>(count); }
    return errno == EINTR || errno == EAGAIN ? kReceiveTimedOut : -1;
}

int CQBUDP::send_multicast_data(const char* buf, int len) {
    return SendDatagram(m_multicastSocket, m_multicastAddress, buf, len);
}

int CQBUDP::leaveGroup() {
    const ip_mreq membership = Membership(m_group, "");
    return setsockopt(m_multicastSocket, IPPROTO_IP, IP_DROP_MEMBERSHIP, &membership, sizeof(membership));
}

void CQBUDP::close_multicast() {
    if (m_multicastSocket > 0) {
        leaveGroup();
        close(m_multicastSocket);
    }
    m_multicastSocket = -1;
}
