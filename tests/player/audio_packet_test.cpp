#include "player/audio_packet.h"
#include "sim/bytes.h"
#include "tests/support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace k740::test {
namespace {

using sim::Bytes;

constexpr std::size_t kPayloadAt = 18;
constexpr std::size_t kTrailerBytes = 10;

_vxa_data_packet_t_mcast Header(char codec) {
    _vxa_data_packet_t_mcast packet{};
    SetMCastPackageHeader(packet, codec, 9500, 1);
    return packet;
}

Bytes FirstBytes(const _vxa_data_packet_t_mcast& packet, std::size_t count) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&packet);
    return {bytes, bytes + count};
}

TEST(AudioPacketTest, HeaderHasMagicNodeStreamTypeAndLength) {
    const Bytes expected{0x79, 0x4A, 0x00, 0x00, 0x00, 0x00, // magic, reserved
                         0x1C, 0x25, 0x00, 0x00,             // node 9500
                         0x01, 0x00, 0x00, 0x00,             // stream
                         0x55, 0x01, 0x08, 0x04};            // type 341, length 1032
    EXPECT_EQ(expected, FirstBytes(Header(0), expected.size()));
}

TEST(AudioPacketTest, CodecOneIsType343WithLength1032) {
    EXPECT_EQ(343, Header(1).type);
    EXPECT_EQ(1032, Header(1).length);
}

TEST(AudioPacketTest, CodecTwoIsType345WithLength520) {
    EXPECT_EQ(345, Header(2).type);
    EXPECT_EQ(520, Header(2).length);
}

TEST(AudioPacketTest, EveryOtherCodecIsType341WithLength1032) {
    for (const int codec : {-128, -1, 0, 3, 4, 127}) {
        EXPECT_EQ(341, Header(static_cast<char>(codec)).type) << codec;
        EXPECT_EQ(1032, Header(static_cast<char>(codec)).length) << codec;
    }
}

TEST(AudioPacketTest, HeaderTouchesNothingElse) {
    _vxa_data_packet_t_mcast packet;
    std::memset(&packet, 0xEE, sizeof(packet));
    SetMCastPackageHeader(packet, 0, 9500, 1);
    const Bytes bytes = FirstBytes(packet, sizeof(packet));
    EXPECT_EQ(Bytes(4, 0xEE), Bytes(bytes.begin() + 2, bytes.begin() + 6));
    EXPECT_EQ(Bytes(sizeof(packet) - kPayloadAt, 0xEE), Bytes(bytes.begin() + kPayloadAt, bytes.end()));
}

enum class Coding { TwoChannel, Mono, Pcm };

struct TypeCase {
    int type;
    Coding coding;
    std::size_t payload;
    int decoded;
    std::size_t datagram;
};

void PrintTo(const TypeCase& tested, std::ostream* out) {
    *out << "type " << tested.type;
}

constexpr TypeCase kTypes[] = {
    {341, Coding::TwoChannel, 1024, 4096, 1052}, {342, Coding::TwoChannel, 1024, 4096, 1052},
    {343, Coding::Mono, 1024, 4096, 1052},       {344, Coding::Mono, 1024, 4096, 1052},
    {345, Coding::Mono, 441, 1764, 469},         {352, Coding::Mono, 441, 1764, 469},
    {353, Coding::Pcm, 3528, 3528, 3556},        {354, Coding::Pcm, 4096, 4096, 4124},
    {356, Coding::Pcm, 4096, 4096, 4124},        {355, Coding::Pcm, 1764, 1764, 1792},
    {357, Coding::Pcm, 1764, 1764, 1792},        {359, Coding::Mono, 882, 3528, 910},
    {360, Coding::Mono, 882, 3528, 910},
};

/// A datagram of noise: header, payload, state block (value A 1000, B -2000, index A 10, B 20), four zero bytes.
Bytes Datagram(int type, std::size_t payload) {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(0x4A79).Fill(4, 0).Put<std::uint32_t>(9500).Put<std::uint32_t>(1);
    writer.Put(static_cast<std::uint16_t>(type)).Put<std::uint16_t>(1032);
    for (const std::int16_t sample : Noise(payload)) { writer.Put(static_cast<std::uint8_t>(sample)); }
    writer.Put<std::int16_t>(1000).Put<std::int16_t>(-2000).Put<std::uint8_t>(10).Put<std::uint8_t>(20).Fill(4, 0);
    return writer.Get();
}

constexpr short kUntouched = 0x5AA5;

struct Decoded {
    int result = 0;
    adpcm_state state{};
    std::vector<short> out = std::vector<short>(2048, kUntouched);
};

/// The datagram is followed by the end of its memory, so that the sanitizer sees a look beyond it.
Decoded Decode(const Bytes& datagram, adpcm_state state = {}) {
    Decoded decoded;
    decoded.state = state;
    decoded.result = DecodeRecivePackage(datagram.data(), decoded.state, decoded.out.data());
    return decoded;
}

std::vector<short> Reference(const TypeCase& type, const Bytes& datagram, adpcm_state state) {
    std::vector<short> out(2048, kUntouched);
    const unsigned char* payload = datagram.data() + kPayloadAt;
    if (type.coding == Coding::Pcm) {
        std::memcpy(out.data(), payload, type.payload);
    } else {
        adpcm_decoder(reinterpret_cast<const char*>(payload), out.data(), static_cast<int>(type.payload), &state,
                      type.coding == Coding::TwoChannel ? kAdpcmTwoChannel : kAdpcmMono);
    }
    return out;
}

class AudioTypeTest : public ::testing::TestWithParam<TypeCase> {};

TEST_P(AudioTypeTest, DecodesTheStatedBytesFromTheStatedDatagramAndNoMore) {
    const Bytes datagram = Datagram(GetParam().type, GetParam().payload);
    ASSERT_EQ(GetParam().datagram, datagram.size());
    const Decoded decoded = Decode(datagram, {-300, 40, 500, 50});
    EXPECT_EQ(GetParam().decoded, decoded.result);
    EXPECT_EQ(Reference(GetParam(), datagram, {-300, 40, 500, 50}), decoded.out);
}

TEST_P(AudioTypeTest, AdpcmLeavesTheStateBlockAndPcmLeavesTheState) {
    const Decoded decoded = Decode(Datagram(GetParam().type, GetParam().payload), {-300, 40, 500, 50});
    const bool pcm = GetParam().coding == Coding::Pcm;
    EXPECT_EQ(pcm ? -300 : 1000, decoded.state.predictedA);
    EXPECT_EQ(pcm ? 40 : 10, decoded.state.indexA);
    EXPECT_EQ(pcm ? 500 : -2000, decoded.state.predictedB);
    EXPECT_EQ(pcm ? 50 : 20, decoded.state.indexB);
}

INSTANTIATE_TEST_SUITE_P(AllTypes, AudioTypeTest, ::testing::ValuesIn(kTypes),
                         [](const auto& tested) { return "Type" + std::to_string(tested.param.type); });

TEST(AudioPacketTest, EveryOtherTypeDecodesToNothingAndLeavesStateAndOutput) {
    for (int type = 0; type <= 0xFFFF; ++type) {
        const bool known = std::any_of(std::begin(kTypes), std::end(kTypes),
                                       [type](const TypeCase& other) { return other.type == type; });
        if (known || type == 0x8112) { continue; }
        const Decoded decoded = Decode(Datagram(type, 0), {-300, 40, 500, 50});
        ASSERT_EQ(0, decoded.result) << type;
        ASSERT_EQ(-300, decoded.state.predictedA) << type;
        ASSERT_EQ(40, decoded.state.indexA) << type;
        ASSERT_EQ(kUntouched, decoded.out[0]) << type;
    }
}

TEST(AudioPacketTest, Type346DecodesToNothing) {
    EXPECT_EQ(0, Decode(Datagram(346, 441)).result);
}

TEST(AudioPacketTest, EndOfStreamGivesMinusTwoAndWritesNothing) {
    const Decoded decoded = Decode(Datagram(0x8112, 0), {-300, 40, 500, 50});
    EXPECT_EQ(-2, decoded.result);
    EXPECT_EQ(std::vector<short>(2048, kUntouched), decoded.out);
    EXPECT_EQ(-300, decoded.state.predictedA);
    EXPECT_EQ(50, decoded.state.indexB);
}

TEST(AudioPacketTest, NeitherMagicNorNodeNorLengthAreLookedAt) {
    Bytes datagram = Datagram(341, 1024);
    const Decoded expected = Decode(datagram);
    for (const std::size_t at : {0U, 1U, 2U, 6U, 10U, 16U, 17U}) { datagram[at] ^= 0xFFU; }
    const Decoded decoded = Decode(datagram);
    EXPECT_EQ(expected.result, decoded.result);
    EXPECT_EQ(expected.out, decoded.out);
}

TEST(AudioPacketTest, AStepIndexOutOfRangeIsTakenOverAsItStandsAndHarmless) {
    for (const int index : {0, 88, 89, 127, 128, 200, 255}) {
        for (const TypeCase& type : kTypes) {
            if (type.coding == Coding::Pcm) { continue; }
            Bytes datagram = Datagram(type.type, type.payload);
            datagram[kPayloadAt + type.payload + 4] = static_cast<std::uint8_t>(index);
            datagram[kPayloadAt + type.payload + 5] = static_cast<std::uint8_t>(255 - index);
            const Decoded first = Decode(datagram);
            EXPECT_EQ(index, static_cast<std::uint8_t>(first.state.indexA)) << type.type;
            EXPECT_EQ(255 - index, static_cast<std::uint8_t>(first.state.indexB)) << type.type;
            EXPECT_EQ(type.decoded, Decode(datagram, first.state).result) << type.type;
        }
    }
}

TEST(AudioPacketTest, ALostDatagramSpoilsOnlyTheNext) {
    const std::vector<std::int16_t> pcm = Noise(3 * 2048);
    std::array<_vxa_data_packet_t_mcast, 3> packets{};
    adpcm_state coder{};
    for (std::size_t i = 0; i < packets.size(); ++i) {
        SetMCastPackageHeader(packets[i], 0, 9500, 1);
        adpcm_coder(pcm.data() + i * 2048, reinterpret_cast<char*>(packets[i].payload), 1024, &coder, 0);
        packets[i].state = {coder.predictedA, coder.predictedB, static_cast<std::uint8_t>(coder.indexA),
                            static_cast<std::uint8_t>(coder.indexB)};
    }
    const auto bytes = [&](std::size_t i) { return FirstBytes(packets[i], sizeof(packets[i])); };
    const Decoded afterFirst = Decode(bytes(0));
    const Decoded second = Decode(bytes(1), afterFirst.state);
    const Decoded third = Decode(bytes(2), second.state);

    const Decoded secondAlone = Decode(bytes(1));
    EXPECT_NE(second.out, secondAlone.out);
    EXPECT_EQ(third.out, Decode(bytes(2), secondAlone.state).out);
}

TEST(AudioPacketTest, LevelProbesStartAtZero) {
    const std::array<short, 2> positive{5, 7};
    const std::array<short, 2> negative{-5, -7};
    EXPECT_EQ(7, GetMaxValue(positive.data(), 2));
    EXPECT_EQ(0, GetMinValue(positive.data(), 2));
    EXPECT_EQ(0, GetMaxValue(negative.data(), 2));
    EXPECT_EQ(-7, GetMinValue(negative.data(), 2));
}

TEST(AudioPacketTest, LevelProbesFindTheExtremesWhereverTheyAre) {
    const std::array<short, 4> samples{-32768, 1, -1, 32767};
    EXPECT_EQ(32767, GetMaxValue(samples.data(), 4));
    EXPECT_EQ(-32768, GetMinValue(samples.data(), 4));
    EXPECT_EQ(1, GetMaxValue(samples.data(), 3));
    EXPECT_EQ(0, GetMaxValue(samples.data(), 0));
    EXPECT_EQ(0, GetMinValue(nullptr, -1));
}

static_assert(kPayloadAt + 1024 + kTrailerBytes == sizeof(_vxa_data_packet_t_mcast));

} // namespace
} // namespace k740::test
