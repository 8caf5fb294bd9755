// Room for what arrives while the reading thread does not run.
#pragma once

namespace k740::sim {

/// Gives a socket a receive buffer of this size, or as much of it as the system grants to an ordinary user
/// (net.core.rmem_max, socket(7)).
/// @throws std::system_error when the descriptor is no socket
void GrowReceiveBuffer(int socket, int bytes);

} // namespace k740::sim
