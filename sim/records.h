// What the payloads of command packets say: requests that devices read, answers and reports that they write.
#pragma once

#include "sim/bytes.h"
#include "sim/wire.h"

#include <array>
#include <cstdint>
#include <string>

namespace k740::sim {

/// Stands where the receiver must read nothing; zeros would hide that it does.
inline constexpr std::uint8_t kMeaningless = 0xEE;

/// Play request 0x0205, 66 bytes.
struct PlayRequest {
    std::uint16_t sequence = 0;      // bytes 0-1, echoed by the answer
    std::uint16_t priority = 0;      // bytes 4-5: 256 less the host's priority
    std::uint8_t dryContactMask = 0; // byte 8
    std::uint32_t word9 = 0;         // bytes 9-12, echoed by virtual controllers
    std::uint32_t auxPort = 0;       // bytes 13-16: AUX port, or the task ID again
    std::uint32_t taskId = 0;        // bytes 17-20
    std::uint32_t word21 = 3;        // bytes 21-24, echoed by virtual controllers
    std::uint8_t recovery = 0;       // byte 25
    std::uint32_t zoneMask = 0;      // bytes 38-41, bit 0 is zone 1
    std::string group;               // bytes 54-57 as IPv4 text; on the wire the last number comes first
    std::uint16_t groupPort = 0;     // bytes 58-61
    std::uint32_t origin = 0;        // bytes 62-65: station's node ID, or the AUX device's ID
};
PlayRequest ReadPlayRequest(const Packet& packet);
Bytes Payload(const PlayRequest& request);

/// Answer 0x8205 to a play request, 29 bytes.
struct PlayAnswer {
    bool joinFollows = true;
    std::uint16_t result = 1; // 1 accepted, 255 accepted without a join report, anything else refused
    std::uint16_t sequence = 0;
    std::uint32_t tokenA = 0;
    std::uint32_t tokenB = 0;
    std::uint32_t taskId = 0;
};
Bytes Payload(const PlayAnswer& answer);

/// Join report 0x8206, 26 bytes.
struct JoinReport {
    std::uint16_t status = 1; // 1 joined
    std::uint32_t tokenA = 0;
    std::uint32_t tokenB = 0;
};
Bytes Payload(const JoinReport& report);

/// Close audio request 0x0101: bytes 0-3 are the task ID.
std::uint32_t ReadCloseAudioTask(const Packet& packet);

/// Close zones request 0x0102: bytes 0-3 are the zone mask.
std::uint32_t ReadCloseZonesMask(const Packet& packet);

/// Status report 0x8126 of a zone controller, 85 bytes.
struct StatusReport {
    std::uint8_t deviceStatus = 0;
    std::array<std::uint8_t, 8> zoneStates{};
    std::array<std::uint8_t, 8> amplifierStates{}; // 1-4 at bytes 9-12, 5-8 at bytes 60-63
    std::uint32_t deviceIdEcho = 0;
    std::uint8_t deviceFault = 0;
    std::array<std::uint32_t, 8> zoneValues{};
    std::array<std::uint8_t, 7> bytes50To56{};
    std::uint8_t zoneFlags = 0;
    std::uint8_t extraA = 0;
    std::uint8_t extraB = 0;
    std::array<std::uint8_t, 16> bytes64To79{};
    std::uint32_t trailingWord = 0;
    std::uint8_t trailingByte = 0;
};
Bytes Payload(const StatusReport& report);

/// Status report 0x8700 of a paging station, 9 bytes.
struct PagingStatus {
    std::uint8_t state = 1; // 255 off line, 2 as it stands, anything else on line
    std::uint8_t status1 = 0;
    std::array<std::uint8_t, 2> bytes2To3{};
    std::uint16_t wordA = 0;
    std::uint16_t wordB = 0;
    std::uint8_t status8 = 0;
};
Bytes Payload(const PagingStatus& status);

/// Task request 0x0702 to a paging station, 26 bytes and the zone text.
struct PagingTaskRequest {
    std::uint32_t source = 0; // of the header
    std::uint16_t length = 0; // of the header
    std::uint32_t taskId = 0;
    bool start = false;
    std::uint8_t priority = 0;
    std::string zones; // as long as the header says, at most 488 characters
};
PagingTaskRequest ReadPagingTaskRequest(const Packet& packet);

/// Answer 0x8702 to a task request: an echo word and the result, 1 for success.
struct PagingTaskAnswer {
    std::uint32_t echo = 0;
    std::uint16_t result = 1;
};
Bytes Payload(const PagingTaskAnswer& answer);

} // namespace k740::sim
