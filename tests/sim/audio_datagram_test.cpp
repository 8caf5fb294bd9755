#include "sim/audio_datagram.h"
#include "sim/wire.h"
#include "tests/sim/station.h"

#include <gtest/gtest.h>

namespace k740::sim {
namespace {

using test::AudioBytes;
using test::EndOfStreamBytes;

Bytes DatagramOf(std::uint16_t type, std::size_t size) {
    ByteWriter writer;
    writer.Put(kMagic).Fill(4, 0).Put(9500).Put(1).Put(type).Put<std::uint16_t>(1032).Fill(size - 18, 0);
    return writer.Get();
}

struct TypeCase {
    std::uint16_t type;
    std::size_t size; // bytes of the datagram
    std::size_t samples;
};

class AudioDatagramTypes : public ::testing::TestWithParam<TypeCase> {};

TEST_P(AudioDatagramTypes, AreReadInTheirSizeOnlyAndGiveTheirSamples) {
    const auto [type, size, samples] = GetParam();
    const auto datagram = ReadAudioDatagram(DatagramOf(type, size));
    ASSERT_TRUE(datagram);
    EXPECT_EQ(samples, AudioDecoder().Decode(*datagram).size());
    EXPECT_FALSE(ReadAudioDatagram(DatagramOf(type, size - 1)));
    EXPECT_FALSE(ReadAudioDatagram(DatagramOf(type, size + 1)));
}

INSTANTIATE_TEST_SUITE_P(All, AudioDatagramTypes,
                         ::testing::Values(TypeCase{341, 1052, 2048}, TypeCase{342, 1052, 2048},
                                           TypeCase{343, 1052, 2048}, TypeCase{344, 1052, 2048},
                                           TypeCase{345, 469, 882}, TypeCase{352, 469, 882}, TypeCase{353, 3556, 1764},
                                           TypeCase{354, 4124, 2048}, TypeCase{356, 4124, 2048},
                                           TypeCase{355, 1792, 882}, TypeCase{357, 1792, 882}, TypeCase{359, 910, 1764},
                                           TypeCase{360, 910, 1764}));

TEST(AudioDatagramTest, HeaderAndStateBlockAreRead) {
    Bytes bytes = DatagramOf(341, 1052);
    const Bytes block{0xC1, 0xE5, 0xCC, 0xCA, 0x52, 0x55};
    std::copy(block.begin(), block.end(), bytes.begin() + 1042);
    const auto datagram = ReadAudioDatagram(bytes);
    ASSERT_TRUE(datagram);
    EXPECT_EQ(9500U, datagram->node);
    EXPECT_EQ(1U, datagram->stream);
    EXPECT_EQ(1032, datagram->length);
    EXPECT_EQ((AdpcmState{{-6719, 82}, {-13620, 85}}), datagram->block);
}

TEST(AudioDatagramTest, EndOfStreamHas1052Or540BytesAndNamesItsController) {
    Bytes bytes = EndOfStreamBytes(33);
    const auto end = ReadAudioDatagram(bytes);
    ASSERT_TRUE(end);
    EXPECT_EQ(Coding::EndOfStream, end->coding);
    EXPECT_EQ(33U, end->stream);
    bytes.resize(540);
    EXPECT_TRUE(ReadAudioDatagram(bytes));
    bytes.resize(541);
    EXPECT_FALSE(ReadAudioDatagram(bytes));
}

TEST(AudioDatagramTest, UnknownTypeWrongMagicAndShortHeaderAreRefused) {
    EXPECT_FALSE(ReadAudioDatagram(DatagramOf(346, 469)));
    Bytes swapped = DatagramOf(341, 1052);
    std::swap(swapped[0], swapped[1]);
    EXPECT_FALSE(ReadAudioDatagram(swapped));
    EXPECT_FALSE(ReadAudioDatagram(Bytes(17)));
}

TEST(AudioDatagramTest, DecoderTakesOverTheStateOfTheBlock) {
    AdpcmState sender{{1000, 20}, {-1000, 30}}; // the receiver starts from zero and is set right by the block
    const auto first = ReadAudioDatagram(AudioBytes(0x12, sender));
    AdpcmState expectedState = sender;
    const auto second = ReadAudioDatagram(AudioBytes(0x34, sender));
    AudioDecoder decoder;
    decoder.Decode(*first);
    EXPECT_EQ(DecodeTwoChannel(second->payload, expectedState), decoder.Decode(*second));
}

TEST(AudioDatagramTest, PcmLeavesTheAdpcmStateAlone) {
    AdpcmState sender;
    const auto first = ReadAudioDatagram(AudioBytes(0x12, sender));
    const auto second = ReadAudioDatagram(AudioBytes(0x34, sender));
    AudioDecoder decoder;
    decoder.Decode(*first);
    decoder.Decode(*ReadAudioDatagram(DatagramOf(354, 4124)));
    EXPECT_TRUE(decoder.Continues(*second));
}

TEST(AudioDatagramTest, MissingDatagramIsSeenAtTheNextOne) {
    AdpcmState sender;
    const auto first = ReadAudioDatagram(AudioBytes(0x12, sender));
    const auto second = ReadAudioDatagram(AudioBytes(0xA5, sender));
    const auto third = ReadAudioDatagram(AudioBytes(0x34, sender));
    AudioDecoder decoder;
    EXPECT_TRUE(decoder.Continues(*first));
    EXPECT_FALSE(decoder.Continues(*second));
    decoder.Skip(*first);
    EXPECT_TRUE(decoder.Continues(*second));
    EXPECT_FALSE(decoder.Continues(*third));
}

} // namespace
} // namespace k740::sim
