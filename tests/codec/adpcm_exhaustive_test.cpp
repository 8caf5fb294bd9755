// The ADPCM variants against their plain reference, over every index and code and over hostile states.
#include "codec/adpcm.h"
#include "tests/codec/adpcm_reference.h"
#include "tests/support/noise.h"

#include <gtest/gtest.h>

namespace {

using k740::test::Noise;

constexpr int kPredictions[] = {-32768, -32767, -20000, -1, 0, 1, 7, 20000, 32766, 32767};

ReferenceChannel Entry(int predicted, int index) {
    return {predicted, std::clamp(index, 0, 88)};
}

/// Steps both channels by one code each, the second with the opposite sign, and compares with the reference.
void ExpectDecodesLikeReference(int predicted, int index, int code) {
    const int other = code ^ 8;
    const char byte = static_cast<char>(code << 4 | other);
    short pcm[2];

    adpcm_state state{static_cast<int16_t>(predicted), static_cast<int8_t>(index), static_cast<int16_t>(predicted),
                      static_cast<int8_t>(index)};
    ReferenceChannel a = Entry(predicted, index);
    ReferenceChannel b = a;
    Intel_adpcm_decoder(&byte, pcm, 1, &state);
    ASSERT_EQ(ReferenceTwoChannelDecode(a, code), pcm[0]);
    ASSERT_EQ(ReferenceTwoChannelDecode(b, other), pcm[1]);
    ASSERT_EQ(a.index, state.indexA);
    ASSERT_EQ(b.index, state.indexB);
    ASSERT_EQ(b.predicted, state.predictedB);

    adpcm_state mono{static_cast<int16_t>(predicted), static_cast<int8_t>(index), 0, 0};
    ReferenceChannel channel = Entry(predicted, index);
    Intel_DVI_HAV_adpcm_decoder(&byte, pcm, 1, &mono);
    ASSERT_EQ(ReferenceMonoDecode(channel, code), pcm[0]);
    ASSERT_EQ(ReferenceMonoDecode(channel, other), pcm[1]);
    ASSERT_EQ(channel.index, mono.indexA);
}

void ExpectCodesLikeReference(int predicted, int index, int sample) {
    const short pcm[2] = {static_cast<short>(sample), static_cast<short>(sample)};
    char byte = 0;

    adpcm_state state{static_cast<int16_t>(predicted), static_cast<int8_t>(index), static_cast<int16_t>(~predicted),
                      static_cast<int8_t>(index)};
    ReferenceChannel a = Entry(predicted, index);
    ReferenceChannel b = Entry(~predicted, index);
    Intel_adpcm_coder(pcm, &byte, 1, &state);
    int expected = ReferenceTwoChannelCode(a, sample) << 4;
    expected |= ReferenceTwoChannelCode(b, sample);
    ASSERT_EQ(expected, static_cast<unsigned char>(byte));
    ASSERT_EQ(a.predicted, state.predictedA);
    ASSERT_EQ(b.predicted, state.predictedB);
    ASSERT_EQ(a.index, state.indexA);
    ASSERT_EQ(b.index, state.indexB);

    adpcm_state mono{static_cast<int16_t>(predicted), static_cast<int8_t>(index), 0, 0};
    ReferenceChannel channel = Entry(predicted, index);
    Intel_DVI_HAV_adpcm_coder(pcm, &byte, 1, &mono);
    expected = ReferenceMonoCode(channel, sample) << 4;
    expected |= ReferenceMonoCode(channel, sample);
    ASSERT_EQ(expected, static_cast<unsigned char>(byte));
    ASSERT_EQ(channel.predicted, mono.predictedA);
    ASSERT_EQ(channel.index, mono.indexA);
}

TEST(AdpcmExhaustiveTest, EveryCodeAtEveryIndexDecodesLikeTheReference) {
    for (int index = -128; index <= 127; ++index) { // also those that only the network can bring
        for (const int predicted : kPredictions) {
            for (int code = 0; code < 16; ++code) { ExpectDecodesLikeReference(predicted, index, code); }
        }
    }
}

TEST(AdpcmExhaustiveTest, EveryThresholdAtEveryIndexCodesLikeTheReference) {
    for (int index = -128; index <= 127; ++index) {
        const int step = Entry(0, index).Step();
        for (const int predicted : kPredictions) {
            for (int quarters = -8; quarters <= 8; ++quarters) {
                for (const int off : {-1, 0, 1}) {
                    const int sample = std::clamp(predicted + step * quarters / 4 + off, -32768, 32767);
                    ExpectCodesLikeReference(predicted, index, sample);
                }
            }
        }
    }
}

TEST(AdpcmExhaustiveTest, EverySampleCodesLikeTheReference) {
    for (const int index : {0, 1, 44, 87, 88}) {
        for (int sample = -32768; sample <= 32767; ++sample) { ExpectCodesLikeReference(-32768, index, sample); }
    }
}

void ExpectStreamCodesLikeReference(const std::vector<short>& pcm) {
    std::vector<char> code(pcm.size() / 2);
    adpcm_state state{};
    Intel_adpcm_coder(pcm.data(), code.data(), static_cast<int>(code.size()), &state);
    ReferenceChannel a{0, 0};
    ReferenceChannel b{0, 0};
    for (std::size_t i = 0; i < code.size(); ++i) {
        const int first = ReferenceTwoChannelCode(a, pcm[2 * i]);
        ASSERT_EQ(first << 4 | ReferenceTwoChannelCode(b, pcm[2 * i + 1]), static_cast<unsigned char>(code[i])) << i;
    }

    state = {};
    Intel_DVI_HAV_adpcm_coder(pcm.data(), code.data(), static_cast<int>(code.size()), &state);
    ReferenceChannel mono{0, 0};
    for (std::size_t i = 0; i < code.size(); ++i) {
        const int first = ReferenceMonoCode(mono, pcm[2 * i]);
        ASSERT_EQ(first << 4 | ReferenceMonoCode(mono, pcm[2 * i + 1]), static_cast<unsigned char>(code[i])) << i;
    }
    ASSERT_EQ(mono.predicted, state.predictedA);
    ASSERT_EQ(mono.index, state.indexA);
}

TEST(AdpcmExhaustiveTest, LongNoiseCodesLikeTheReference) {
    ExpectStreamCodesLikeReference(Noise(200000, 7));
}

TEST(AdpcmExhaustiveTest, NoiseBetweenSilencesOfEveryLengthCodesLikeTheReference) {
    std::vector<short> pcm;
    for (unsigned pause = 0; pause < 300; ++pause) { // a coder comes to rest some 90 samples after the sound ends
        const auto burst = Noise(1 + pause % 16, pause);
        for (const short sample : burst) { pcm.push_back(static_cast<short>(sample >> pause % 15)); }
        pcm.resize(pcm.size() + pause);
    }
    pcm.resize(pcm.size() / 2 * 2);
    ExpectStreamCodesLikeReference(pcm);
}

TEST(AdpcmExhaustiveTest, IndexesStayInRangeFromAnyEntryState) {
    const auto pcm = Noise(64, 9);
    std::vector<char> code(32);
    std::vector<short> out(64);
    for (int index = -128; index <= 127; ++index) {
        for (const int variant : {kAdpcmTwoChannel, kAdpcmMono}) {
            adpcm_state state{32767, static_cast<int8_t>(index), -32768, static_cast<int8_t>(-1 - index)};
            adpcm_state decoder = state;
            adpcm_coder(pcm.data(), code.data(), 32, &state, variant);
            adpcm_decoder(code.data(), out.data(), 32, &decoder, variant);
            for (const int8_t left : {state.indexA, decoder.indexA}) {
                ASSERT_TRUE(left >= 0 && left <= 88) << int{left};
            }
            if (variant == kAdpcmMono) { continue; }
            for (const int8_t left : {state.indexB, decoder.indexB}) {
                ASSERT_TRUE(left >= 0 && left <= 88) << int{left};
            }
        }
    }
}

} // namespace
