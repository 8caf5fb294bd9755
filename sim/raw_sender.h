// Any bytes from any address of the field, for packets that no device would send.
#pragma once

#include "sim/bytes.h"
#include "sim/private_network.h"
#include "sim/udp_socket.h"

#include <cstdint>
#include <string>

namespace k740::sim {

/// A socket in `field`. One thread at a time.
class RawSender {
public:
    /// @param address  one of the field's
    /// @param port     0 lets the system choose
    RawSender(const PrivateNetwork& network, const std::string& address, std::uint16_t port = 0);

    /// Sends the bytes, of whatever length, to a port of the station.
    void Send(ByteView bytes, std::uint16_t stationPort) const;

private:
    const UdpSocket m_socket;
};

} // namespace k740::sim
