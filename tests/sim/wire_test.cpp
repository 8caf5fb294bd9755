#include "sim/wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace k740::sim {
namespace {

Bytes Heartbeat() {
    Bytes bytes{0x79, 0x4A, 0x03, 0x00, 0x00, 0x00, // magic, version, reserved
                0x1C, 0x25, 0x00, 0x00,             // source 9500
                0x01, 0x00, 0x00, 0x00,             // destination 1
                0x25, 0x01, 0x04, 0x00,             // command, length
                0x1C, 0x25, 0x00, 0x00};            // payload: node 9500
    bytes.resize(532);
    return bytes;
}

TEST(WireTest, PackWritesTheHeaderLittleEndianAndFillsUpWithZeros) {
    const Bytes payload{0x1C, 0x25, 0x00, 0x00};
    EXPECT_EQ(Heartbeat(), Pack(MakePacket(9500, 1, 0x0125, payload)));
}

TEST(WireTest, UnpackReadsEveryField) {
    const auto packet = Unpack(Heartbeat());
    ASSERT_TRUE(packet);
    EXPECT_EQ(3, packet->version);
    EXPECT_EQ(9500U, packet->source);
    EXPECT_EQ(1U, packet->destination);
    EXPECT_EQ(0x0125, packet->command);
    EXPECT_EQ(4, packet->length);
    EXPECT_EQ(0x1C, packet->payload[0]);
}

TEST(WireTest, UnpackGivesBackWhatWasPacked) {
    Packet packet;
    packet.version = 0;
    packet.reserved = {1, 2, 3};
    packet.source = 0x12345678;
    packet.destination = 0x9ABCDEF0;
    packet.command = 0x8206;
    packet.length = 514;
    std::ranges::fill(packet.payload, std::uint8_t{0xA5});
    EXPECT_EQ(packet, Unpack(Pack(packet)));
}

TEST(WireTest, UnpackRefusesAWrongMagic) {
    Bytes bytes = Heartbeat();
    std::swap(bytes[0], bytes[1]);
    EXPECT_FALSE(Unpack(bytes));
}

TEST(WireTest, UnpackRefusesEveryLengthBut532) {
    Bytes bytes = Heartbeat();
    bytes.resize(531);
    EXPECT_FALSE(Unpack(bytes));
    bytes.resize(533);
    EXPECT_FALSE(Unpack(bytes));
    EXPECT_FALSE(Unpack(Bytes{}));
}

TEST(WireTest, PayloadHasAtMost514Bytes) {
    EXPECT_EQ(514, MakePacket(1, 2, 3, Bytes(514)).length);
    EXPECT_THROW(MakePacket(1, 2, 3, Bytes(515)), std::length_error);
}

} // namespace
} // namespace k740::sim
