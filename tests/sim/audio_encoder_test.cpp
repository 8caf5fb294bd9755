#include "sim/audio_encoder.h"
#include "sim/tone.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::sim {
namespace {

using Samples = std::vector<std::int16_t>;

class AudioEncoderTypes : public ::testing::TestWithParam<std::uint16_t> {};

TEST_P(AudioEncoderTypes, AreReadBackAndDecodedWithoutAGap) {
    AudioEncoder encoder(7001, 3, GetParam());
    const Samples tone = Tone(440, 4 * encoder.SamplesPerDatagram());
    AudioDecoder decoder;
    for (std::size_t i = 0; i < 4; ++i) {
        const SampleView part =
            SampleView(tone).subspan(i * encoder.SamplesPerDatagram(), encoder.SamplesPerDatagram());
        const AudioDatagram made = encoder.Encode(part);
        const auto read = ReadAudioDatagram(Pack(made));
        ASSERT_TRUE(read);
        EXPECT_EQ(7001U, read->node);
        EXPECT_EQ(3U, read->stream);
        EXPECT_EQ(GetParam(), read->type);
        EXPECT_EQ(made.payload, read->payload);
        EXPECT_EQ(made.block, read->block);
        EXPECT_TRUE(decoder.Continues(*read));
        EXPECT_EQ(part.size(), decoder.Decode(*read).size());
    }
}

INSTANTIATE_TEST_SUITE_P(All, AudioEncoderTypes,
                         ::testing::Values(341, 342, 343, 344, 345, 352, 353, 354, 355, 356, 357, 359, 360));

TEST(AudioEncoderTest, HeaderHasTheNominalLengths) {
    EXPECT_EQ(1032, AudioEncoder(1, 1, 341).Encode(Samples(2048)).length);
    EXPECT_EQ(1032, AudioEncoder(1, 1, 343).Encode(Samples(2048)).length);
    EXPECT_EQ(520, AudioEncoder(1, 1, 345).Encode(Samples(882)).length);
}

TEST(AudioEncoderTest, PcmTravelsAsItIsWithAnEmptyBlock) {
    const Samples tone = Tone(440, 882);
    const auto read = ReadAudioDatagram(Pack(AudioEncoder(1, 1, 355).Encode(tone)));
    ASSERT_TRUE(read);
    EXPECT_EQ(tone, AudioDecoder().Decode(*read));
    EXPECT_EQ(AdpcmState{}, read->block);
}

TEST(AudioEncoderTest, TypesWithoutAudioAndOtherNumbersOfSamplesAreRefused) {
    EXPECT_THROW(AudioEncoder(1, 1, 346), std::invalid_argument);
    EXPECT_THROW(AudioEncoder(1, 1, kEndOfStreamType), std::invalid_argument);
    EXPECT_THROW(AudioEncoder(1, 1, 341).Encode(Samples(2047)), std::length_error);
    EXPECT_THROW(AudioEncoder(1, 1, 341).Encode(Samples(2049)), std::length_error);
}

TEST(AudioEncoderTest, AnyDatagramIsPackedAsItsFieldsSay) {
    AudioDatagram strange;
    strange.node = 0x01020304;
    strange.stream = 5;
    strange.type = 346;
    strange.length = 0x0607;
    strange.payload = {0xAA, 0xBB};
    strange.block = {{0x0908, 10}, {-2, 11}};
    EXPECT_EQ((Bytes{0x79, 0x4A, 0,    0,    0, 0,       // magic, reserved
                     4,    3,    2,    1,    5, 0, 0, 0, // node, stream
                     0x5A, 0x01, 7,    6,                // type, length
                     0xAA, 0xBB,                         // payload
                     8,    9,    0xFE, 0xFF,             // values of A and B
                     10,   11,   0,    0,    0, 0}),     // indexes of A and B, reserved
              Pack(strange));
}

TEST(AudioEncoderTest, EndOfStreamHasEitherSizeAndItsLength) {
    const auto whole = ReadAudioDatagram(EndOfStream(9500, 33));
    ASSERT_TRUE(whole);
    EXPECT_EQ(Coding::EndOfStream, whole->coding);
    EXPECT_EQ(9500U, whole->node);
    EXPECT_EQ(33U, whole->stream);
    EXPECT_EQ(1032, whole->length);
    const Bytes half = EndOfStream(9500, 33, kHalfEndOfStreamSize);
    EXPECT_EQ(540U, half.size());
    EXPECT_EQ(520, ReadAudioDatagram(half)->length);
}

} // namespace
} // namespace k740::sim
