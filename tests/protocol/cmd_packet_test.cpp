#include "protocol/cmd_packet.h"
#include "protocol/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace k740::test {
namespace {

using Bytes = std::array<uint8_t, 532>;

Bytes BytesOf(const _vxa_cmd_packet_t& packet) {
    Bytes bytes;
    static_assert(sizeof(packet) == bytes.size());
    std::memcpy(bytes.data(), &packet, bytes.size());
    return bytes;
}

/// @return both IDs, the command and the payload length
std::array<uint8_t, 12> Header(const Bytes& bytes) {
    std::array<uint8_t, 12> header;
    std::copy_n(bytes.begin() + 6, header.size(), header.begin());
    return header;
}

_vxa_cmd_packet_t StalePacket() {
    _vxa_cmd_packet_t packet;
    std::memset(&packet, 0xEE, sizeof(packet));
    return packet;
}

TEST(CmdPacketTest, FieldsLieWhereTheWireHasThem) {
    EXPECT_EQ(0U, offsetof(_vxa_cmd_packet_t, magic));
    EXPECT_EQ(2U, offsetof(_vxa_cmd_packet_t, version));
    EXPECT_EQ(3U, offsetof(_vxa_cmd_packet_t, reserved));
    EXPECT_EQ(6U, offsetof(_vxa_cmd_packet_t, sourceID));
    EXPECT_EQ(10U, offsetof(_vxa_cmd_packet_t, destinationID));
    EXPECT_EQ(14U, offsetof(_vxa_cmd_packet_t, command));
    EXPECT_EQ(16U, offsetof(_vxa_cmd_packet_t, payloadLength));
    EXPECT_EQ(18U, offsetof(_vxa_cmd_packet_t, payload));
    EXPECT_EQ(514U, sizeof(_vxa_cmd_packet_t::payload));
}

TEST(CmdPacketTest, HeaderIsLittleEndianAndTheRestIsZero) {
    _vxa_cmd_packet_t packet = StalePacket();
    FillK740PackageHeader(&packet, 9500, 0x04030201, 0x8126, 514);
    const Bytes expected{
        0x79, 0x4A,             // magic
        0x03, 0x00, 0x00, 0x00, // version, reserved
        0x1C, 0x25, 0x00, 0x00, // source ID 9500
        0x01, 0x02, 0x03, 0x04, // destination ID
        0x26, 0x81,             // command
        0x02, 0x02,             // payload length 514
    };
    EXPECT_EQ(expected, BytesOf(packet));
}

TEST(CmdPacketTest, PayloadLengthZeroLeavesThePayloadZero) {
    _vxa_cmd_packet_t packet = StalePacket();
    FillK740PackageHeader(&packet, 9500, 33, 0x0127, 0);
    const Bytes bytes = BytesOf(packet);
    EXPECT_TRUE(std::all_of(bytes.begin() + 16, bytes.end(), [](uint8_t byte) { return byte == 0; }));
}

TEST(CmdPacketTest, IDsAreWrittenWhole) {
    _vxa_cmd_packet_t packet = StalePacket();
    FillK740PackageHeader(&packet, 0xFFFFFFFF, 0x80000000, 0xFFFF, 0xFFFF);
    const Bytes bytes = BytesOf(packet);
    EXPECT_EQ((std::array<uint8_t, 12>{0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}),
              Header(bytes));
}

TEST(CmdPacketTest, RecordsAreCopiedAtTheStartOfThePayload) {
    const uint32_t record = 0x04030201;
    const _vxa_cmd_packet_t packet = MakePacket(9500, 33, 0x0125, record);
    const Bytes bytes = BytesOf(packet);
    EXPECT_EQ(4, bytes[16]);
    EXPECT_EQ((std::array<uint8_t, 5>{1, 2, 3, 4, 0}),
              (std::array<uint8_t, 5>{bytes[18], bytes[19], bytes[20], bytes[21], bytes[22]}));
    EXPECT_EQ(record, ReadPayload<uint32_t>(packet));
}

TEST(CommandsTest, CodesOfTheProtocol) {
    EXPECT_EQ(0x0101, kCmdCloseAudio);
    EXPECT_EQ(0x0102, kCmdCloseZones);
    EXPECT_EQ(0x0123, kCmdEnterEmergency);
    EXPECT_EQ(0x0124, kCmdExitEmergency);
    EXPECT_EQ(0x0125, kCmdHeartbeat);
    EXPECT_EQ(0x8125, kCmdHeartbeatAnswer);
    EXPECT_EQ(0x8126, kCmdZCUStatusReport);
    EXPECT_EQ(0x0205, kCmdTriggerTask);
    EXPECT_EQ(0x8205, kCmdTriggerTaskAnswer);
    EXPECT_EQ(0x8206, kCmdJoinMulticastReport);
    EXPECT_EQ(0x0700, kCmdRPKHeartbeat);
    EXPECT_EQ(0x8700, kCmdRPKStatusReport);
    EXPECT_EQ(0x0702, kCmdRPKTask);
    EXPECT_EQ(0x8702, kCmdRPKTaskAnswer);
    EXPECT_EQ(28001, kRequestPort);
    EXPECT_EQ(29001, kReplyPort);
}

} // namespace
} // namespace k740::test
