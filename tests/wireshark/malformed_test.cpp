// Datagrams that are too short, too long or contradict themselves.
#include "sim/records.h"
#include "tests/wireshark/packets.h"

#include <gmock/gmock.h>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

using MalformedTest = DissectorTest;

sim::Bytes Cut(sim::Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

sim::Bytes WithLengthField(sim::Bytes packet, std::uint16_t length) {
    packet[16] = static_cast<std::uint8_t>(length);
    packet[17] = static_cast<std::uint8_t>(length >> 8);
    return packet;
}

/// The first bytes of a datagram, 1, 2 and so on to a whole header.
std::vector<sim::Bytes> PartsOfTheHeader(const sim::Bytes& datagram) {
    std::vector<sim::Bytes> parts;
    for (std::size_t size = 1; size <= 18; ++size) { parts.push_back(Cut(datagram, size)); }
    return parts;
}

TEST_F(MalformedTest, ACommandPacketHas532Bytes) {
    const sim::Bytes packet = Request(0x0303);
    EXPECT_THAT(ExpertsOf({Cut(packet, 531), packet, Cut(packet, 533)}),
                ElementsAre("The datagram has 531 bytes, not 532", "", "1 bytes beyond the end"));
}

TEST_F(MalformedTest, AShortPacketShowsWhatIsThere) {
    const Row row = DissectOne(Cut(Request(0x0109, {2, 14}), 19), {kInfo, "k740.volume.channel", kExpert});
    EXPECT_EQ((Row{{kInfo, "Set volume (V2), channel 2, volume ?"},
                   {"k740.volume.channel", "2"},
                   {kExpert, "The datagram has 19 bytes, not 532"}}),
              row);
}

TEST_F(MalformedTest, AnyPartOfAHeaderIsShown) {
    const std::vector<Row> rows = DissectAll(PartsOfTheHeader(Request(0x0303)), {kInfo, kExpert});
    for (std::size_t size = 1; size <= rows.size(); ++size) {
        const Row& row = rows[size - 1];
        EXPECT_THAT(row.at(kExpert), HasSubstr("The datagram has " + std::to_string(size) + " bytes, not 532"));
        EXPECT_EQ(size < 16 ? "Unknown code ?" : "Read groups of the zones", row.at(kInfo)) << size;
    }
}

TEST_F(MalformedTest, TheLengthFieldMustBeThatOfTheCode) {
    const sim::Bytes packet = Request(0x0109, {2, 14});
    EXPECT_THAT(ExpertsOf({WithLengthField(packet, 1), packet, WithLengthField(packet, 3)}),
                ElementsAre("The length field says 1 bytes; this code has 2", "",
                            "The length field says 3 bytes; this code has 2"));
}

TEST_F(MalformedTest, TheLengthFieldOfAStationsTaskHasBounds) {
    const sim::Bytes packet = Request(0x0702, sim::Bytes(26, 0), kStation);
    EXPECT_THAT(
        ExpertsOf({WithLengthField(packet, 25), packet, WithLengthField(packet, 514), WithLengthField(packet, 515)}),
        ElementsAre("The length field says 25 bytes; this code has 26 to 514", "", "",
                    "The length field says 515 bytes; this code has 26 to 514"));
}

TEST_F(MalformedTest, UnusedBytesAreZero) {
    const auto withByte = [](std::size_t at) {
        sim::Bytes packet = Request(0x0109, {2, 14});
        packet[at] = 1;
        return packet;
    };
    EXPECT_THAT(ExpertsOf({withByte(18 + 1), withByte(18 + 2), withByte(531)}),
                ElementsAre("", "Unused payload bytes are not zero", "Unused payload bytes are not zero"));
}

TEST_F(MalformedTest, AWrongMagicIsMarked) {
    sim::Bytes packet = Request(0x0303);
    packet[0] = 0x78;
    EXPECT_THAT(ExpertsOf({packet}), ElementsAre("The magic is not 0x4A79"));
    sim::Bytes audio = Audio(341);
    audio[1] = 0;
    EXPECT_THAT(ExpertsOf({audio}, sim::kAudioPort), ElementsAre("The magic is not 0x4A79"));
}

TEST_F(MalformedTest, AnUnknownCodeIsMarkedAndItsPayloadShown) {
    const Row row = DissectOne(Request(0x0999, {1, 2, 3}), {kInfo, kExpert, "k740.undecoded"});
    EXPECT_EQ(
        (Row{{kInfo, "Unknown code 0x0999"}, {kExpert, "Unknown command code 0x0999"}, {"k740.undecoded", "010203"}}),
        row);
}

TEST_F(MalformedTest, AnAudioDatagramHasTheSizeOfItsType) {
    const sim::Bytes audio = Audio(341);
    EXPECT_THAT(ExpertsOf({Cut(audio, 1051), audio, Cut(audio, 1053)}, sim::kAudioPort),
                ElementsAre("The datagram has 1051 bytes, not 1052", "", "1 bytes beyond the end"));
}

TEST_F(MalformedTest, AnEndOfStreamHasOneOfTwoSizes) {
    const sim::Bytes end = sim::EndOfStream(kNode, kController);
    const sim::Bytes half = sim::EndOfStream(kNode, kController, sim::kHalfEndOfStreamSize);
    EXPECT_THAT(ExpertsOf({Cut(end, 1051), Cut(end, 1053), Cut(half, 539), Cut(half, 541)}, sim::kAudioPort),
                ElementsAre("The datagram has 1051 bytes, not 1052", "1 bytes beyond the end",
                            "The datagram has 539 bytes, not 540", "1 bytes beyond the end"));
}

TEST_F(MalformedTest, AnAudioHeaderMayBeCutAnywhere) {
    const std::vector<Row> rows = DissectAll(PartsOfTheHeader(Audio(341)), {kProtocol, kExpert}, sim::kAudioPort);
    for (std::size_t size = 1; size <= rows.size(); ++size) {
        EXPECT_EQ("K740 Audio", rows[size - 1].at(kProtocol));
        EXPECT_THAT(rows[size - 1].at(kExpert), HasSubstr("The datagram has " + std::to_string(size) + " bytes"));
    }
}

TEST_F(MalformedTest, WhatTheCaptureCutOffIsNoError) {
    const sim::Endpoint receiver{kDevice.ip, sim::kRequestPort};
    {
        CaptureFile capture(kCapture);
        capture.Add(Request(0x0303), kHost, receiver, 400);
        capture.Add(Request(0x0303), kHost, receiver, 520);
        capture.Add(Audio(341), kHost, kGroup, 500);
        capture.Add(Audio(341), kHost, kGroup, 1040);
    }
    const std::vector<Row> rows = Dissect(kCapture, {kProtocol, kExpert});
    ASSERT_EQ(4U, rows.size());
    for (const Row& row : rows) { EXPECT_THAT(row.at(kProtocol), HasSubstr("K740")); }
    EXPECT_EQ("", rows[0].at(kExpert));
    EXPECT_EQ("", rows[2].at(kExpert));
}

TEST_F(MalformedTest, ThePartInAnErrorReportIsNoRequest) {
    {
        CaptureFile capture(kCapture);
        capture.AddPortUnreachable(Request(0x0303), kHost, kDevice);
        capture.Add(Answer(0x8303, sim::Bytes(65, 0)), kDevice, {kHost.ip, sim::kReplyPort});
    }
    const std::vector<Row> rows = Dissect(kCapture, {kProtocol, "k740.command", "k740.answer_to", kExpert});
    ASSERT_EQ(2U, rows.size());
    EXPECT_EQ("ICMP", rows[0].at(kProtocol));
    EXPECT_EQ("0x0303", rows[0].at("k740.command"));
    EXPECT_EQ("", rows[1].at("k740.answer_to"));
}

} // namespace
} // namespace k740::test
