// The command packet, built and read by the simulator's own code.
#pragma once

#include "sim/bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace k740::sim {

inline constexpr std::uint16_t kMagic = 0x4A79; // bytes 79 4A on the wire
inline constexpr std::uint8_t kPacketVersion = 3;
inline constexpr std::size_t kPacketSize = 532;      // bytes, always sent whole
inline constexpr std::size_t kPayloadCapacity = 514; // bytes
inline constexpr std::uint16_t kRequestPort = 28001;
inline constexpr std::uint16_t kReplyPort = 29001;
inline constexpr std::uint16_t kIntercomAudioPort = 29002;
inline constexpr std::uint16_t kAudioPort = 28100; // of multicast audio, unless the station is set otherwise
inline constexpr int kZones = 8;                   // of one zone controller
inline constexpr const char* kStationAddress = "192.168.1.166";
inline constexpr std::uint32_t kDefaultStationNode = 9500;

/// Command codes that simulated devices know.
namespace command {
inline constexpr std::uint16_t kCloseAudio = 0x0101;
inline constexpr std::uint16_t kCloseZones = 0x0102;
inline constexpr std::uint16_t kSetVolumeV2 = 0x0109;
inline constexpr std::uint16_t kSetVolumeV2Answer = 0x8109;
inline constexpr std::uint16_t kEnterEmergency = 0x0123;
inline constexpr std::uint16_t kExitEmergency = 0x0124;
inline constexpr std::uint16_t kHeartbeat = 0x0125;
inline constexpr std::uint16_t kHeartbeatAnswer = 0x8125;
inline constexpr std::uint16_t kStatusReport = 0x8126;
inline constexpr std::uint16_t kGetVolumeV2 = 0x0127;
inline constexpr std::uint16_t kGetVolumeV2Answer = 0x8127;
inline constexpr std::uint16_t kGetVersion = 0x0132;
inline constexpr std::uint16_t kVersionAnswer = 0x8132;
inline constexpr std::uint16_t kPlay = 0x0205;
inline constexpr std::uint16_t kPlayAnswer = 0x8205;
inline constexpr std::uint16_t kJoinReport = 0x8206;
inline constexpr std::uint16_t kSetVolumeV3 = 0x0301;
inline constexpr std::uint16_t kSetVolumeV3Answer = 0x8301;
inline constexpr std::uint16_t kGetVolumeV3 = 0x0302;
inline constexpr std::uint16_t kGetVolumeV3Answer = 0x8302;
inline constexpr std::uint16_t kGetZoneGroups = 0x0303;
inline constexpr std::uint16_t kZoneGroupsAnswer = 0x8303;
inline constexpr std::uint16_t kPagingMonitor = 0x030A;
inline constexpr std::uint16_t kPagingMonitorAnswer = 0x830A;
inline constexpr std::uint16_t kAddTaskZones = 0x0313;
inline constexpr std::uint16_t kAddTaskZonesAnswer = 0x8313;
inline constexpr std::uint16_t kRemoveTaskZones = 0x0314;
inline constexpr std::uint16_t kRemoveTaskZonesAnswer = 0x8314;
inline constexpr std::uint16_t kPagingHeartbeat = 0x0700;
inline constexpr std::uint16_t kPagingStatus = 0x8700;
inline constexpr std::uint16_t kCallInvite = 0x0701;
inline constexpr std::uint16_t kCallAnswer = 0x8701;
inline constexpr std::uint16_t kPagingTask = 0x0702;
inline constexpr std::uint16_t kPagingTaskAnswer = 0x8702;
} // namespace command

/// One command packet: little-endian, no padding; unused payload bytes are zero.
struct Packet {
    std::uint8_t version = kPacketVersion;
    std::array<std::uint8_t, 3> reserved{};
    std::uint32_t source = 0;      // device or node ID of the sender
    std::uint32_t destination = 0; // device or node ID of the receiver
    std::uint16_t command = 0;
    std::uint16_t length = 0; // payload bytes in use, as written by the sender
    std::array<std::uint8_t, kPayloadCapacity> payload{};

    bool operator==(const Packet&) const = default;
};

/// A packet of version 3 with the given payload, whose size becomes the length field.
/// @param payload  at most 514 bytes; throws std::length_error for more
Packet MakePacket(std::uint32_t source, std::uint32_t destination, std::uint16_t command, ByteView payload);

/// The packet's 532 bytes.
Bytes Pack(const Packet& packet);

/// @return nothing when the datagram is not 532 bytes long or does not begin with the magic
std::optional<Packet> Unpack(ByteView datagram);

} // namespace k740::sim
