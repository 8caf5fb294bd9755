// What the payloads of version queries and emergency requests say.
#pragma once

#include "sim/bytes.h"
#include "sim/wire.h"

#include <cstdint>
#include <string>

namespace k740::sim {

/// Texts of the version answer 0x8132, 118 bytes. Each is cut to its field, which ends with a zero.
struct Version {
    std::string kernel = "5.10.0";     // at most 11 characters, at byte 24
    std::string application = "2.0.1"; // at most 47, at byte 36
    std::string mcu = "1.3.0";         // at most 27, at byte 84
};
Bytes Payload(const Version& version);

/// Emergency requests 0x0123 and 0x0124: bytes 4-5 are 256 less the host's priority.
std::uint16_t ReadEmergencyPriority(const Packet& packet);

} // namespace k740::sim
