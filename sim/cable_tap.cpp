#include "sim/cable_tap.h"

#include "sim/receive_buffer.h"
#include "sim/system_error.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/ip.h>
#include <netinet/udp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cstring>

namespace k740::sim {
namespace {

constexpr const char* kNetworkDevice = "field";
constexpr int kReceiveBufferBytes = 16 * 1024 * 1024; // for a second in which the thread does not run
constexpr std::size_t kHeaderBytes = 128;             // the longest IPv4 header and a UDP header

FileDescriptor ListenToDevice() {
    // Receives nothing until it is bound to the one device.
    FileDescriptor file(Checked(::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "packet socket"));
    GrowReceiveBuffer(file.Get(), kReceiveBufferBytes);
    const int yes = 1;
    Checked(::setsockopt(file.Get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, &yes, sizeof yes), "PACKET_IGNORE_OUTGOING");
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_IP);
    address.sll_ifindex = static_cast<int>(::if_nametoindex(kNetworkDevice));
    if (address.sll_ifindex == 0) { throw std::system_error(errno, std::generic_category(), kNetworkDevice); }
    Checked(::bind(file.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind to device");
    return file;
}

std::string Text(in_addr address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    return ::inet_ntop(AF_INET, &address, text.data(), text.size());
}

} // namespace

CableTap::CableTap() : m_socket(ListenToDevice()), m_stop(Checked(::eventfd(0, EFD_CLOEXEC), "eventfd")) {
    m_thread = std::thread([this] { Loop(); });
}

CableTap::~CableTap() {
    ::eventfd_write(m_stop.Get(), 1);
    m_thread.join();
}

CableTap::Counts CableTap::Datagrams() const {
    const std::lock_guard lock(m_lock);
    return m_counts;
}

std::size_t CableTap::Missed() {
    tpacket_stats news{};
    socklen_t size = sizeof news;
    Checked(::getsockopt(m_socket.Get(), SOL_PACKET, PACKET_STATISTICS, &news, &size), "PACKET_STATISTICS");
    return m_missed += news.tp_drops; // the system counts from the last look on
}

void CableTap::Loop() {
    while (WaitForPacket()) {
        while (TakePacket()) {} // all that wait: a burst must not find the buffer full
    }
}

bool CableTap::WaitForPacket() const {
    std::array<pollfd, 2> files{pollfd{m_stop.Get(), POLLIN, 0}, pollfd{m_socket.Get(), POLLIN, 0}};
    ::poll(files.data(), files.size(), -1);
    return files[0].revents == 0;
}

bool CableTap::TakePacket() {
    std::array<char, kHeaderBytes> bytes{};
    const ssize_t length = ::recv(m_socket.Get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (length < 0) { return false; }
    Count(std::span(bytes).first(static_cast<std::size_t>(length)));
    return true;
}

void CableTap::Count(std::span<const char> packet) {
    iphdr ip{};
    if (packet.size() < sizeof ip) { return; }
    std::memcpy(&ip, packet.data(), sizeof ip);
    const std::size_t headerLength = ip.ihl * std::size_t{4};
    const bool isFirstFragment = (ntohs(ip.frag_off) & IP_OFFMASK) == 0;
    const bool isWhole = packet.size() >= headerLength + sizeof(udphdr);
    if (ip.protocol != IPPROTO_UDP || !isFirstFragment || !isWhole) { return; }
    udphdr udp{};
    std::memcpy(&udp, packet.data() + headerLength, sizeof udp);
    const std::lock_guard lock(m_lock);
    ++m_counts[{Text({ip.daddr}), ntohs(udp.dest)}];
}

} // namespace k740::sim
