// Names of the command packets.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace k740::sim {

/// @return "unknown" for a code that is none
std::string PacketName(std::uint16_t code);

/// @return nothing for a name that is none
std::optional<std::uint16_t> PacketCode(const std::string& name);

} // namespace k740::sim
