// IPv4 UDP sockets: unicast to one peer or on one port, multicast to or from one group.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <string>

/// Result of a receive that was interrupted or timed out.
inline constexpr int kReceiveTimedOut = -2;

/// Receives the log lines of sockets. @param level  0 information, 4 error
using UdpLogHook = void (*)(uint8_t level, const std::string& text);

/// Sets where sockets log; null drops the lines. Any thread, at any time.
void SetUdpLogHook(UdpLogHook hook);

/// One unicast and one multicast socket at the most, closed with the object (udp(7), ip(7)).
///
/// Not locked. Multicast objects belong to the thread that made them; sends on a shared unicast socket are serialised
/// by whoever shares it. Addresses are read as inet_addr(3) reads them. Results are -1 for failure unless stated.
class CQBUDP {
public:
    CQBUDP() = default;
    virtual ~CQBUDP();
    CQBUDP(const CQBUDP&) = delete;
    CQBUDP& operator=(const CQBUDP&) = delete;

    /// Opens a listening socket on a port of all interfaces. A second listener on the port is refused. Logs the result.
    /// @return the descriptor, -1 when the port cannot be bound
    int create_udp_host(int port);
    /// Opens an unbound socket aimed at ip:port; an open unicast socket is closed first.
    /// @return the descriptor, -1 for a null or empty address or when no socket can be made
    int set_udp_host(const char* ip, int port);
    /// Sends one datagram to the peer. @return bytes sent, -1 for null, a length below 1 or without a socket
    int send_udp_data(const char* buf, int len);
    void close_udp();

    /// Opens a sender aimed at a group. @param nic  address of the interface to send on, empty for the system's choice
    /// @return 0
    int join_multicast_send(const char* group, int port, const std::string& nic);
    /// Joins a group for receiving; several receivers may join the same one.
    /// @param nic         address of the interface to join on; blanks around it are dropped, "0.0.0.0" means empty
    /// @param timeout_ms  how long recv_multicast_data waits
    /// @return 0
    int join_multicast_recv(const std::string& group, int port, const std::string& nic, int timeout_ms);
    /// Receives one datagram and remembers its sender.
    /// @return bytes received; kReceiveTimedOut; -1 for null, a length below 1, no socket or an error
    int recv_multicast_data(char* buf, int len);
    /// Sends one datagram to the group. @return bytes sent
    int send_multicast_data(const char* buf, int len);
    /// Leaves the group on the system's default interface, whatever it was joined on; closing the socket does the rest.
    /// @return what setsockopt(2) returned
    int leaveGroup();
    void close_multicast();

    /// Closes both sockets.
    void Close();

    /// @return whether the socket is open
    bool IsUnicastOpen() const { return m_unicastSocket > 0; }
    bool IsMulticastOpen() const { return m_multicastSocket > 0; }

    /// Sends one datagram from a socket of its own. @return as send_udp_data
    static int SendUDPData(const std::string& ip, int port, const unsigned char* buf, int len);

private:
    bool PrepareSender(int port, const std::string& nic);
    bool PrepareReceiver(int port, const std::string& nic, int timeout_ms);

    sockaddr_in m_multicastAddress{}; // destination of a sender, last sender seen by a receiver
    sockaddr_in m_unicastAddress{};
    std::string m_peer; // "0.0.0.0" for a listening socket
    std::string m_group;
    int m_unicastSocket = -1;
    int m_multicastSocket = -1;
};
