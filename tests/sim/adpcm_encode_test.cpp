#include "sim/adpcm_encode.h"
#include "sim/tone.h"
#include "sim/wav_match.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace k740::sim {
namespace {

using Samples = std::vector<std::int16_t>;

Samples Noise(std::size_t count) {
    std::mt19937 random(740);
    std::uniform_int_distribution<int> level(-32768, 32767);
    Samples noise(count);
    for (std::int16_t& sample : noise) { sample = static_cast<std::int16_t>(level(random)); }
    return noise;
}

/// The code of one sample from (0, index 0), where the step is 7, 7 >> 1 is 3 and 7 >> 2 is 1.
int CodeOf(std::int16_t sample) {
    AdpcmState state;
    return EncodeMono(Samples{sample, 0}, state).at(0) >> 4;
}

TEST(AdpcmEncodeTest, MagnitudeBitsAreSetAboveTheStepItsHalfAndItsQuarter) {
    EXPECT_EQ(0, CodeOf(1));
    EXPECT_EQ(1, CodeOf(2));
    EXPECT_EQ(1, CodeOf(3));
    EXPECT_EQ(2, CodeOf(4)); // the rest of 1 is not above the quarter
    EXPECT_EQ(3, CodeOf(5));
    EXPECT_EQ(3, CodeOf(7));
    EXPECT_EQ(4, CodeOf(8));
    EXPECT_EQ(7, CodeOf(32767));
}

TEST(AdpcmEncodeTest, SignIsSetBelowTheValueOnly) {
    EXPECT_EQ(0, CodeOf(0));
    EXPECT_EQ(8, CodeOf(-1));
    EXPECT_EQ(8 | 4, CodeOf(-8));
    EXPECT_EQ(8 | 7, CodeOf(-32768));
}

TEST(AdpcmEncodeTest, TwoChannelPutsTheFirstSampleOnAInTheHighNibble) {
    AdpcmState state;
    EXPECT_EQ((Bytes{0x4C, 0x08}), EncodeTwoChannel(Samples{8, -8, 7, -8}, state));
    EXPECT_EQ(7, state.a.value);
    EXPECT_EQ(-7, state.b.value);
}

TEST(AdpcmEncodeTest, MonoGoesOnFromSampleToSample) {
    AdpcmState state;
    EXPECT_EQ((Bytes{0x48}), EncodeMono(Samples{8, 6}, state)); // the value is 7 and then 7 - (9 >> 3)
    EXPECT_EQ((AdpcmState{{6, 1}, {}}), state);
}

TEST(AdpcmEncodeTest, SilenceIsZerosAndLeavesTheStateAlone) {
    AdpcmState state;
    EXPECT_EQ(Bytes(1024), EncodeTwoChannel(Samples(2048), state));
    EXPECT_EQ(Bytes(1024), EncodeMono(Samples(2048), state));
    EXPECT_EQ(AdpcmState{}, state);
}

TEST(AdpcmEncodeTest, MonoDecoderArrivesWhereTheCoderDoesWhateverTheInput) {
    AdpcmState coder;
    AdpcmState decoder;
    DecodeMono(EncodeMono(Noise(20'000), coder), decoder);
    EXPECT_EQ(coder, decoder);
}

TEST(AdpcmEncodeTest, TwoChannelCoderArrivesWhereItsStateBlockIsCheckedWhateverTheInput) {
    AdpcmState coder;
    const Bytes codes = EncodeTwoChannel(Noise(20'000), coder);
    EXPECT_EQ(coder, TwoChannelCoderState(codes, {}));
}

TEST(AdpcmEncodeTest, DecodersGiveTheToneBack) {
    const Samples tone = Tone(440, 44'100);
    AdpcmState coder;
    AdpcmState decoder;
    const Samples mono = DecodeMono(EncodeMono(tone, coder), decoder);
    EXPECT_GT(Match(tone, mono).signalToNoiseDb, 25);

    Samples twoChannel; // as a receiver does it: the state is taken over block by block
    AdpcmState sender;
    for (std::size_t from = 0; from + 2048 <= tone.size(); from += 2048) {
        AdpcmState receiver = sender;
        const Samples block =
            DecodeTwoChannel(EncodeTwoChannel(SampleView(tone).subspan(from, 2048), sender), receiver);
        twoChannel.insert(twoChannel.end(), block.begin(), block.end());
    }
    EXPECT_GT(Match(Samples(tone.begin(), tone.begin() + static_cast<std::ptrdiff_t>(twoChannel.size())), twoChannel)
                  .signalToNoiseDb,
              15);
}

TEST(AdpcmEncodeTest, ToneKeepsItsAmplitudeAndFrequency) {
    const Samples tone = Tone(11'025, 8, 1000);
    EXPECT_EQ((Samples{0, 1000, 0, -1000, 0, 1000, 0, -1000}), tone);
}

} // namespace
} // namespace k740::sim
