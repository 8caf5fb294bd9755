// Makes sure that datagrams carry the time of their arrival.
#pragma once

#include "sim/udp_socket.h"

namespace k740::sim {

/// The system begins to stamp arriving datagrams some time after a socket first asks for it, and stops after the last
/// such socket; until then a datagram's time is that of reading it. While an object of this class lives, all datagrams
/// of the machine are stamped.
class ArrivalStamps {
public:
    /// Waits until the system stamps, commonly well below 1 ms. Needs the loopback device.
    /// @throws std::runtime_error when it has not begun within 5 s
    ArrivalStamps();

private:
    const UdpSocket m_socket;
};

} // namespace k740::sim
