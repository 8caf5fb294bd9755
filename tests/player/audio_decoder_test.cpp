// The decoder of one receiver of audio datagrams.
#include "player/audio_decoder.h"
#include "sim/audio_encoder.h"
#include "tests/support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace k740::test {
namespace {

using sim::Bytes;

constexpr std::array<std::uint16_t, 13> kAudioTypes{341, 342, 343, 344, 345, 352, 353, 354, 355, 356, 357, 359, 360};
constexpr std::array<std::uint16_t, 8> kOtherTypes{0, 340, 346, 351, 358, 361, 0x8111, 0xFFFF};
constexpr std::size_t kTypeOffset = 14;

int Decode(CAudioDecoder& decoder, const Bytes& datagram) {
    std::copy(datagram.begin(), datagram.end(), decoder.Room());
    return decoder.Decode(datagram.size());
}

std::vector<std::int16_t> Audio(CAudioDecoder& decoder, std::size_t samples) {
    return {decoder.Audio(), decoder.Audio() + samples};
}

Bytes Hostile(std::size_t length, std::uint16_t type) {
    Bytes datagram(length, 0xFF);
    if (length > kTypeOffset) { datagram[kTypeOffset] = static_cast<std::uint8_t>(type & 0xFF); }
    if (length > kTypeOffset + 1) { datagram[kTypeOffset + 1] = static_cast<std::uint8_t>(type >> 8); }
    return datagram;
}

TEST(AudioDecoderTest, EveryTypeOfEveryLengthIsItsAudioOrNothing) {
    CAudioDecoder decoder;
    for (std::size_t length = 0; length <= kDatagramRoomBytes; ++length) {
        const bool hasType = length >= kTypeOffset + 2;
        for (const std::uint16_t type : kAudioTypes) {
            const auto bytes = static_cast<int>(2 * sim::FormatOf(type)->samples);
            ASSERT_EQ(hasType ? bytes : 0, Decode(decoder, Hostile(length, type))) << type << ' ' << length;
        }
        for (const std::uint16_t type : kOtherTypes) {
            ASSERT_EQ(0, Decode(decoder, Hostile(length, type))) << type << ' ' << length;
        }
        ASSERT_EQ(hasType ? -2 : 0, Decode(decoder, Hostile(length, 0x8112))) << length;
    }
}

TEST(AudioDecoderTest, WhatIsBeyondTheDatagramReadsAsZeros) {
    CAudioDecoder decoder;
    Decode(decoder, Hostile(kDatagramRoomBytes, 354));
    Bytes datagram = sim::Pack(sim::AudioEncoder(1, 1, 354).Encode(Noise(2048)));
    datagram.resize(18 + 2 * 1000 + 1);
    EXPECT_EQ(4096, Decode(decoder, datagram));
    std::vector<std::int16_t> expected = Noise(1001);
    expected.back() &= 0xFF;
    expected.resize(2048);
    EXPECT_EQ(expected, Audio(decoder, 2048));
}

TEST(AudioDecoderTest, TheStateGoesFromDatagramToDatagramUntilReset) {
    sim::AudioEncoder encoder(1, 1, 341);
    const auto samples = Noise(4096);
    const sim::AudioDatagram first = encoder.Encode(sim::SampleView(samples).first(2048));
    const sim::AudioDatagram second = encoder.Encode(sim::SampleView(samples).last(2048));
    CAudioDecoder decoder;
    sim::AudioDecoder expected;
    EXPECT_EQ(4096, Decode(decoder, sim::Pack(first)));
    EXPECT_EQ(expected.Decode(first), Audio(decoder, 2048));
    EXPECT_EQ(4096, Decode(decoder, sim::Pack(second)));
    EXPECT_EQ(expected.Decode(second), Audio(decoder, 2048));
    decoder.Reset();
    EXPECT_EQ(4096, Decode(decoder, sim::Pack(second)));
    EXPECT_EQ(sim::AudioDecoder().Decode(second), Audio(decoder, 2048));
}

TEST(AudioDecoderTest, PcmAndTheEndOfAStreamLeaveTheState) {
    sim::AudioEncoder encoder(1, 1, 343);
    const auto samples = Noise(4096);
    const sim::AudioDatagram first = encoder.Encode(sim::SampleView(samples).first(2048));
    const sim::AudioDatagram second = encoder.Encode(sim::SampleView(samples).last(2048));
    CAudioDecoder decoder;
    sim::AudioDecoder expected;
    Decode(decoder, sim::Pack(first));
    expected.Decode(first);
    EXPECT_EQ(1764, Decode(decoder, sim::Pack(sim::AudioEncoder(1, 1, 355).Encode(Noise(882)))));
    EXPECT_EQ(-2, Decode(decoder, sim::EndOfStream(1, 33)));
    EXPECT_EQ(0, Decode(decoder, Hostile(1052, 346)));
    Decode(decoder, sim::Pack(second));
    EXPECT_EQ(expected.Decode(second), Audio(decoder, 2048));
}

TEST(AudioDecoderTest, TheEndOfAStreamLeavesTheAudio) {
    CAudioDecoder decoder;
    Decode(decoder, sim::Pack(sim::AudioEncoder(1, 1, 355).Encode(Noise(882))));
    Decode(decoder, sim::EndOfStream(1, 33));
    EXPECT_EQ(Noise(882), Audio(decoder, 882));
}

} // namespace
} // namespace k740::test
