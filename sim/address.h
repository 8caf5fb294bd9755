// IPv4 addresses as payloads carry them: numbers whose highest byte is the address's first number.
#pragma once

#include <cstdint>
#include <string>

namespace k740::sim {

std::string AddressText(std::uint32_t address);

/// @param text  dotted decimal; an empty text is 0.0.0.0
/// @throws std::invalid_argument for anything else
std::uint32_t AddressNumber(const std::string& text);

} // namespace k740::sim
