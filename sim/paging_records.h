// What the payloads of a paging station's monitor requests and intercom calls say.
#pragma once

#include "sim/bytes.h"
#include "sim/wire.h"

#include <cstdint>

namespace k740::sim {

/// Monitor request 0x030A, 7 bytes.
struct MonitorRequest {
    std::uint32_t controller = 0; // bytes 0-3
    std::uint16_t zoneIndex = 0;  // bytes 4-5, 0 is zone 1
    std::uint8_t start = 0;       // byte 6: 1 start, 0 stop
};
MonitorRequest ReadMonitorRequest(const Packet& packet);

/// Answer 0x830A to a monitor request, 2 bytes; 1 is success.
Bytes MonitorAnswerPayload(std::int16_t result);

/// First byte of a call answer 0x8701.
namespace call {
inline constexpr std::uint8_t kRinging = 0;
inline constexpr std::uint8_t kAccepted = 1;
inline constexpr std::uint8_t kHungUp = 2; // or busy
} // namespace call

/// Call answer 0x8701, 9 bytes.
Bytes CallAnswerPayload(std::uint8_t code);
/// Invitation 0x0701, 8 bytes that nobody reads.
Bytes InvitePayload();
/// Handshake 0x0700, 4 bytes that nobody reads.
Bytes HandshakePayload();

} // namespace k740::sim
