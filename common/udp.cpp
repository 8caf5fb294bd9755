#include "common/udp.h"

#include "common/format.h"
#include "common/udp_socket.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <system_error>

namespace {

constexpr int kUnicastBufferBytes = 5'242'880;
constexpr const char* kAnyAddress = "0.0.0.0";
constexpr uint8_t kInfo = 0;
constexpr uint8_t kError = 4;

std::atomic<UdpLogHook> g_logHook{nullptr};

void LogLine(uint8_t level, const std::string& text) {
    if (const UdpLogHook hook = g_logHook) { hook(level, text); }
}

} // namespace

void SetUdpLogHook(UdpLogHook hook) {
    g_logHook = hook;
}

int OpenUdpSocket() {
    const int first = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (first > 0) { return first; }
    const int second = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (first == 0 || second == 0) { close(0); } // 0 counts as closed everywhere
    return second > 0 ? second : -1;
}

sockaddr_in SocketAddress(const std::string& ip, int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = ip.empty() ? htonl(INADDR_ANY) : inet_addr(ip.c_str());
    return address;
}

int BindSocket(int socket, const sockaddr_in& address) {
    return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

int SendDatagram(int socket, const sockaddr_in& destination, const char* buf, int len) {
    if (socket <= 0 || buf == nullptr || len < 1) { return -1; }
    return static_cast<int>(sendto(socket, buf, static_cast<std::size_t>(len), 0,
                                   reinterpret_cast<const sockaddr*>(&destination), sizeof(destination)));
}

CQBUDP::~CQBUDP() {
    Close();
}

int CQBUDP::create_udp_host(int port) {
    close_udp();
    m_peer = kAnyAddress;
    m_unicastSocket = OpenUdpSocket();
    const int result = BindSocket(m_unicastSocket, SocketAddress("", port));
    if (result != 0) {
        const std::string reason = std::generic_category().message(errno);
        LogLine(kError, Format("******Failed to bind socket:%d, port:%d, ret:%d, %s", m_unicastSocket, port, result,
                               reason.c_str()));
        close_udp();
        return -1;
    }
    LogLine(kInfo, Format("Bind socket:%d, port:%d", m_unicastSocket, port));
    SetOption(m_unicastSocket, SOL_SOCKET, SO_RCVBUF, kUnicastBufferBytes);
    SetOption(m_unicastSocket, SOL_SOCKET, SO_SNDBUF, kUnicastBufferBytes);
    return m_unicastSocket;
}

int CQBUDP::set_udp_host(const char* ip, int port) {
    close_udp();
    m_peer = ip == nullptr ? "" : ip;
    if (m_peer.empty()) { return -1; }
    m_unicastSocket = OpenUdpSocket();
    m_unicastAddress = SocketAddress(m_peer, port);
    return m_unicastSocket;
}

int CQBUDP::send_udp_data(const char* buf, int len) {
    return SendDatagram(m_unicastSocket, m_unicastAddress, buf, len);
}

void CQBUDP::close_udp() {
    if (m_unicastSocket > 0) { close(m_unicastSocket); }
    m_unicastSocket = -1;
}

void CQBUDP::Close() {
    close_multicast();
    close_udp();
}

int CQBUDP::SendUDPData(const std::string& ip, int port, const unsigned char* buf, int len) {
    CQBUDP sender;
    sender.set_udp_host(ip.c_str(), port);
    return sender.send_udp_data(reinterpret_cast<const char*>(buf), len);
}
