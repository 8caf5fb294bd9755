// On which ports the dissector takes a datagram for one of the protocol.
#include "tests/wireshark/packets.h"

#include <gmock/gmock.h>

namespace k740::test {
namespace {

using ::testing::Each;

constexpr std::uint16_t kOtherPort = 30123;

class PreferencesTest : public DissectorTest {
protected:
    static std::string ProtocolOf(const sim::Bytes& datagram, std::uint16_t port, const std::string& options = {}) {
        return DissectOne(datagram, {kProtocol}, port, options)[kProtocol];
    }
};

/// A command packet that only a port can tell from a foreign datagram.
sim::Bytes Odd() {
    sim::Bytes packet = Request(0x0999);
    packet.push_back(0);
    return packet;
}

TEST_F(PreferencesTest, ThePortsOfTheProtocolAreKnown) {
    EXPECT_EQ("K740", ProtocolOf(Odd(), 28001));
    EXPECT_EQ("K740", ProtocolOf(Odd(), 29001));
    EXPECT_EQ("K740 Audio", ProtocolOf(Odd(), 28100));
    EXPECT_EQ("K740 Audio", ProtocolOf(Odd(), 29002));
    EXPECT_EQ("UDP", ProtocolOf(Odd(), kOtherPort));
}

TEST_F(PreferencesTest, WhatADeviceSendsFromItsRequestPortToAGroupIsAudio) {
    CaptureFile(kCapture).Add(Odd(), kDevice, kGroup);
    EXPECT_EQ("K740 Audio", Dissect(kCapture, {kProtocol}).at(0).at(kProtocol));
}

TEST_F(PreferencesTest, ThePortsCanBeChanged) {
    const std::string command = "-o k740.command_ports:28001,30100-30200";
    const std::string audio = "-o k740.audio_ports:30123";
    EXPECT_EQ("K740", ProtocolOf(Odd(), kOtherPort, command));
    EXPECT_EQ("K740", ProtocolOf(Odd(), 28001, command));
    EXPECT_EQ("UDP", ProtocolOf(Odd(), 29001, command));
    EXPECT_EQ("K740 Audio", ProtocolOf(Odd(), kOtherPort, audio));
    EXPECT_EQ("UDP", ProtocolOf(Odd(), 28100, audio));
}

TEST_F(PreferencesTest, CommandsAndAudioAreRecognisedOnOtherPorts) {
    EXPECT_EQ("K740", ProtocolOf(Request(0x0303), kOtherPort));
    EXPECT_EQ("K740 Audio", ProtocolOf(Audio(341), kOtherPort));
    EXPECT_EQ("K740 Audio", ProtocolOf(sim::EndOfStream(kNode, kController), kOtherPort));
}

TEST_F(PreferencesTest, RecognitionOnOtherPortsWantsMagicCodeAndSize) {
    sim::Bytes magic = Audio(341);
    magic[0] = 0;
    sim::Bytes size = Audio(341);
    size.pop_back();
    const std::vector<Row> rows = DissectAll(
        {magic, size, Audio(346), Request(0x0999), sim::Bytes(17, 0x79), sim::Bytes()}, {kProtocol}, kOtherPort);
    EXPECT_THAT(Column(rows, kProtocol), Each("UDP"));
}

TEST_F(PreferencesTest, RecognitionOnOtherPortsCanBeSwitchedOff) {
    EXPECT_EQ("UDP", ProtocolOf(Audio(341), kOtherPort, "-o k740.heuristics:FALSE"));
    EXPECT_EQ("K740 Audio", ProtocolOf(Audio(341), 28100, "-o k740.heuristics:FALSE"));
}

TEST_F(PreferencesTest, DecodeAsTakesTheKindFromTheCode) {
    const std::string decodeAs = "-o k740.heuristics:FALSE -d udp.port==30123,k740";
    EXPECT_EQ("K740", ProtocolOf(Request(0x0303), kOtherPort, decodeAs));
    EXPECT_EQ("K740", ProtocolOf(Request(0x0999), kOtherPort, decodeAs));
    EXPECT_EQ("K740 Audio", ProtocolOf(Audio(341), kOtherPort, decodeAs));
    EXPECT_EQ("K740 Audio", ProtocolOf(Audio(346), kOtherPort, decodeAs));
}

} // namespace
} // namespace k740::test
