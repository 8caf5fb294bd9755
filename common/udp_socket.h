// Steps that unicast and multicast sockets share.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <string>

/// Makes a UDP socket that a child process of the host does not inherit. Descriptor 0 is avoided where possible.
/// @return the descriptor, -1 when none can be made
int OpenUdpSocket();

/// @return ip:port for socket calls; any address for an empty ip
sockaddr_in SocketAddress(const std::string& ip, int port);

template <typename Value> bool SetOption(int socket, int level, int option, const Value& value) {
    return setsockopt(socket, level, option, &value, sizeof(value)) == 0;
}

/// Binds the socket. @return what bind(2) returned
int BindSocket(int socket, const sockaddr_in& address);

/// @return bytes sent, -1 on failure or for null, a length below 1 or a closed socket
int SendDatagram(int socket, const sockaddr_in& destination, const char* buf, int len);
