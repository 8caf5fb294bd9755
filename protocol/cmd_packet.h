// The command packet: the one datagram of the control protocol.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

inline constexpr uint16_t kPacketMagic = 0x4A79; // 0x79, 0x4A on the wire
inline constexpr uint8_t kPacketVersion = 3;
inline constexpr std::size_t kPayloadBytes = 514;

#pragma pack(push, 1)
/// Datagram of the ports 28001 and 29001; little-endian, no padding, always sent whole.
struct _vxa_cmd_packet_t {
    uint16_t magic;                 // kPacketMagic
    uint8_t version;                // kPacketVersion
    uint8_t reserved[3];            // 0
    uint32_t sourceID;              // device ID of the sender
    uint32_t destinationID;         // device ID of the receiver
    uint16_t command;               // a reply carries request | kReplyBit
    uint16_t payloadLength;         // bytes of payload in use
    uint8_t payload[kPayloadBytes]; // unused bytes are 0
};
#pragma pack(pop)
static_assert(sizeof(_vxa_cmd_packet_t) == 532 && offsetof(_vxa_cmd_packet_t, sourceID) == 6);
static_assert(offsetof(_vxa_cmd_packet_t, command) == 14 && offsetof(_vxa_cmd_packet_t, payload) == 18);
static_assert(std::endian::native == std::endian::little, "fields travel in host order");

/// Clears the whole packet and writes its header.
void FillK740PackageHeader(_vxa_cmd_packet_t* packet, uint32_t sourceID, uint32_t destinationID, uint16_t command,
                           uint16_t payloadLength);

/// Copies a record out of the start of the payload.
template <typename Record> Record ReadPayload(const _vxa_cmd_packet_t& packet) {
    static_assert(std::is_trivially_copyable_v<Record> && sizeof(Record) <= kPayloadBytes);
    Record record;
    std::memcpy(&record, packet.payload, sizeof(record));
    return record;
}

/// Copies a record to the start of the payload.
template <typename Record> void WritePayload(_vxa_cmd_packet_t& packet, const Record& record) {
    static_assert(std::is_trivially_copyable_v<Record> && sizeof(Record) <= kPayloadBytes);
    std::memcpy(packet.payload, &record, sizeof(record));
}

/// Builds a packet without a payload.
inline _vxa_cmd_packet_t MakePacket(uint32_t sourceID, uint32_t destinationID, uint16_t command) {
    _vxa_cmd_packet_t packet;
    FillK740PackageHeader(&packet, sourceID, destinationID, command, 0);
    return packet;
}

/// Builds a packet whose payload is one record.
template <typename Record>
_vxa_cmd_packet_t MakePacket(uint32_t sourceID, uint32_t destinationID, uint16_t command, const Record& record) {
    _vxa_cmd_packet_t packet;
    FillK740PackageHeader(&packet, sourceID, destinationID, command, sizeof(record));
    WritePayload(packet, record);
    return packet;
}
