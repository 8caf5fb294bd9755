// UDP sockets of simulated devices.
#pragma once

#include "sim/bytes.h"
#include "sim/file_descriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace k740::sim {

/// An IPv4 address as text, and a UDP port.
struct Endpoint {
    std::string ip;
    std::uint16_t port = 0;

    bool operator==(const Endpoint&) const = default;
};

using Clock = std::chrono::steady_clock;

struct Datagram {
    Bytes bytes;
    Endpoint sender;
    Clock::time_point arrival; // at this machine's network stack, however late it was read
};

/// A non-blocking UDP socket in the network namespace of the thread that opens it.
class UdpSocket {
public:
    /// A socket bound to exactly this address; port 0 lets the system choose.
    /// @throws std::system_error when the address does not exist or the port is taken
    static UdpSocket BoundTo(const Endpoint& local);

    /// A member of a multicast group, on the interface that has the given address. Several sockets may share the
    /// group's address and port; each hears only its own group.
    /// @throws std::system_error when the group cannot be joined
    static UdpSocket InGroup(const Endpoint& group, const std::string& interfaceAddress);

    /// @return nothing when no datagram is waiting
    [[nodiscard]] std::optional<Datagram> Receive() const;

    /// @throws std::system_error when there is no way to the receiver
    void Send(ByteView bytes, const Endpoint& receiver) const;

    [[nodiscard]] int Descriptor() const { return m_file.Get(); }

private:
    explicit UdpSocket(const Endpoint& local, bool shared);

    FileDescriptor m_file;
};

} // namespace k740::sim
