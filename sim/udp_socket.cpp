#include "sim/udp_socket.h"

#include "sim/receive_buffer.h"
#include "sim/system_error.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <time.h>

#include <array>
#include <chrono>
#include <cstring>
#include <stdexcept>

namespace k740::sim {
namespace {

constexpr int kReceiveBufferBytes = 4 * 1024 * 1024;
constexpr std::size_t kLargestDatagram = 8192; // bytes; audio has at most 4124

in_addr AddressOf(const std::string& ip) {
    in_addr address{};
    if (::inet_pton(AF_INET, ip.c_str(), &address) != 1) { throw std::invalid_argument("no IPv4 address: " + ip); }
    return address;
}

sockaddr_in SocketAddress(const Endpoint& endpoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr = AddressOf(endpoint.ip);
    return address;
}

Endpoint EndpointOf(const sockaddr_in& address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
    return {text.data(), ntohs(address.sin_port)};
}

std::string Text(const Endpoint& endpoint) {
    return endpoint.ip + ":" + std::to_string(endpoint.port);
}

template <typename Value> int SetOption(int file, int level, int name, const Value& value) {
    return ::setsockopt(file, level, name, &value, sizeof(value));
}

/// Between the wall clock, which stamps datagrams, and the steady one: of some readings the least disturbed.
Clock::duration ReadSteadyLessWall() {
    Clock::duration difference{};
    Clock::duration leastUncertainty = Clock::duration::max();
    for (int reading = 0; reading < 8; ++reading) {
        const Clock::time_point before = Clock::now();
        const auto wall = std::chrono::system_clock::now();
        const Clock::duration uncertainty = Clock::now() - before;
        if (uncertainty >= leastUncertainty) { continue; }
        leastUncertainty = uncertainty;
        difference = before.time_since_epoch() - wall.time_since_epoch();
    }
    return difference;
}

Clock::time_point ArrivalOf(msghdr& message) {
    static const Clock::duration steadyLessWall = ReadSteadyLessWall(); // once, so that the order of stamps stays
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_type != SCM_TIMESTAMPNS) { return Clock::now(); }
    timespec stamp{};
    std::memcpy(&stamp, CMSG_DATA(header), sizeof(stamp));
    return Clock::time_point(std::chrono::seconds(stamp.tv_sec) + std::chrono::nanoseconds(stamp.tv_nsec) +
                             steadyLessWall);
}

} // namespace

UdpSocket::UdpSocket(const Endpoint& local, bool shared)
    : m_file(Checked(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket")) {
    GrowReceiveBuffer(m_file.Get(), kReceiveBufferBytes);
    Checked(SetOption(m_file.Get(), SOL_SOCKET, SO_TIMESTAMPNS, 1), "SO_TIMESTAMPNS");
    if (shared) { Checked(SetOption(m_file.Get(), SOL_SOCKET, SO_REUSEADDR, 1), "SO_REUSEADDR"); }
    const sockaddr_in address = SocketAddress(local);
    Checked(::bind(m_file.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), "bind " + Text(local));
}

UdpSocket UdpSocket::BoundTo(const Endpoint& local) {
    return UdpSocket(local, false);
}

UdpSocket UdpSocket::InGroup(const Endpoint& group, const std::string& interfaceAddress) {
    UdpSocket socket(group, true);
    Checked(SetOption(socket.Descriptor(), IPPROTO_IP, IP_MULTICAST_ALL, 0), "IP_MULTICAST_ALL");
    ip_mreq membership{};
    membership.imr_multiaddr = AddressOf(group.ip);
    membership.imr_interface = AddressOf(interfaceAddress);
    Checked(SetOption(socket.Descriptor(), IPPROTO_IP, IP_ADD_MEMBERSHIP, membership), "join " + Text(group));
    return socket;
}

std::optional<Datagram> UdpSocket::Receive() const {
    std::array<std::uint8_t, kLargestDatagram> buffer; // not initialised: filled as far as it is read
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(timespec))> control;
    sockaddr_in sender{};
    iovec data{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof(sender);
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t received = ::recvmsg(m_file.Get(), &message, 0);
    if (received < 0) { return std::nullopt; }
    return Datagram{Bytes(buffer.data(), buffer.data() + received), EndpointOf(sender), ArrivalOf(message)};
}

void UdpSocket::Send(ByteView bytes, const Endpoint& receiver) const {
    const sockaddr_in address = SocketAddress(receiver);
    Checked(::sendto(m_file.Get(), bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                     sizeof(address)),
            "send to " + Text(receiver));
}

} // namespace k740::sim
