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
inline constexpr const char* kStationAddress = "192.168.1.166";
inline constexpr std::uint32_t kDefaultStationNode = 9500;

/// Command codes that simulated devices know.
namespace command {
inline constexpr std::uint16_t kCloseAudio = 0x0101;
inline constexpr std::uint16_t kCloseZones = 0x0102;
inline constexpr std::uint16_t kHeartbeat = 0x0125;
inline constexpr std::uint16_t kStatusReport = 0x8126;
inline constexpr std::uint16_t kPlay = 0x0205;
inline constexpr std::uint16_t kPlayAnswer = 0x8205;
inline constexpr std::uint16_t kJoinReport = 0x8206;
inline constexpr std::uint16_t kPagingHeartbeat = 0x0700;
inline constexpr std::uint16_t kPagingStatus = 0x8700;
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
