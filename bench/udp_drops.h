// What the kernel had to drop because a socket's buffer was full.
#pragma once

#include <cstdint>

namespace k740::bench {

/// @return datagrams dropped so far at the sockets of this network namespace that are bound to the port
///         (proc_net_udp, column "drops")
std::int64_t UdpDrops(int port);

} // namespace k740::bench
