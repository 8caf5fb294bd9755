// Datagrams that claim to come from 0.0.0.0, as from a machine that has no address yet.
#pragma once

#include "sim/bytes.h"
#include "sim/file_descriptor.h"
#include "sim/private_network.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdint>

namespace k740::test {

/// The checksum of an IPv4 header (RFC 791) of 20 bytes.
inline std::uint16_t HeaderChecksum(sim::ByteView header) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < 20; i += 2) { sum += static_cast<std::uint32_t>(header[i] << 8 | header[i + 1]); }
    while (sum > 0xFFFF) { sum = (sum >> 16) + (sum & 0xFFFF); }
    return static_cast<std::uint16_t>(~sum);
}

/// @return an IPv4 packet to 255.255.255.255 with the payload; what is above a byte goes highest byte first
inline sim::Bytes BroadcastFromNowhere(sim::ByteView payload, std::uint16_t port) {
    const auto udpLength = static_cast<std::uint16_t>(8 + payload.size());
    const auto length = static_cast<std::uint16_t>(20 + udpLength);
    sim::ByteWriter writer;
    writer.Put<std::uint8_t>(0x45).Fill(1, 0).Put(htons(length)); // version and header length, service
    writer.Fill(4, 0).Put<std::uint8_t>(64).Put<std::uint8_t>(IPPROTO_UDP);
    writer.Fill(2, 0).Fill(4, 0).Fill(4, 255); // checksum, from 0.0.0.0, to 255.255.255.255
    writer.Put(htons(port)).Put(htons(port)).Put(htons(udpLength)).Fill(2, 0).PutAll(payload);
    sim::Bytes packet = writer.Get();
    const std::uint16_t checksum = HeaderChecksum(packet);
    packet[10] = static_cast<std::uint8_t>(checksum >> 8);
    packet[11] = static_cast<std::uint8_t>(checksum);
    return packet;
}

/// Sends the payload from 0.0.0.0 in the field to everybody's port, packet(7).
inline void SendFromNowhere(const sim::PrivateNetwork& network, sim::ByteView payload, std::uint16_t port) {
    network.RunInField([&] {
        const sim::FileDescriptor socket(::socket(AF_PACKET, SOCK_DGRAM, 0));
        sockaddr_ll everybody{};
        everybody.sll_family = AF_PACKET;
        everybody.sll_protocol = htons(ETHERTYPE_IP);
        everybody.sll_ifindex = static_cast<int>(if_nametoindex("field"));
        everybody.sll_halen = ETHER_ADDR_LEN;
        std::fill_n(everybody.sll_addr, ETHER_ADDR_LEN, static_cast<unsigned char>(0xFF));
        const sim::Bytes packet = BroadcastFromNowhere(payload, port);
        EXPECT_EQ(static_cast<ssize_t>(packet.size()),
                  sendto(socket.Get(), packet.data(), packet.size(), 0, reinterpret_cast<sockaddr*>(&everybody),
                         sizeof(everybody)));
    });
}

} // namespace k740::test
