#include "sim/wire.h"

#include <algorithm>
#include <stdexcept>

namespace k740::sim {

Packet MakePacket(std::uint32_t source, std::uint32_t destination, std::uint16_t command, ByteView payload) {
    if (payload.size() > kPayloadCapacity) { throw std::length_error("a packet's payload has at most 514 bytes"); }
    Packet packet;
    packet.source = source;
    packet.destination = destination;
    packet.command = command;
    packet.length = static_cast<std::uint16_t>(payload.size());
    std::copy(payload.begin(), payload.end(), packet.payload.begin());
    return packet;
}

Bytes Pack(const Packet& packet) {
    ByteWriter writer;
    writer.Put(kMagic).Put(packet.version).PutAll(packet.reserved);
    writer.Put(packet.source).Put(packet.destination).Put(packet.command).Put(packet.length).PutAll(packet.payload);
    return writer.Get();
}

std::optional<Packet> Unpack(ByteView datagram) {
    if (datagram.size() != kPacketSize || ReadAt<std::uint16_t>(datagram, 0) != kMagic) { return std::nullopt; }
    Packet packet;
    packet.version = datagram[2];
    std::copy_n(datagram.begin() + 3, packet.reserved.size(), packet.reserved.begin());
    packet.source = ReadAt<std::uint32_t>(datagram, 6);
    packet.destination = ReadAt<std::uint32_t>(datagram, 10);
    packet.command = ReadAt<std::uint16_t>(datagram, 14);
    packet.length = ReadAt<std::uint16_t>(datagram, 16);
    std::copy_n(datagram.begin() + 18, packet.payload.size(), packet.payload.begin());
    return packet;
}

} // namespace k740::sim
