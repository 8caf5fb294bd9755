#include "codec/adpcm.h"
#include "tests/support/noise.h"
#include "tests/support/sha256.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <numeric>

namespace {

using k740::test::Noise;
using k740::test::Sha256Prefix;

const std::vector<short> kSteps{0, 0, 100, -100, 1000, -1000, 32767, -32768, 32767, -32768, 0, 0, 7, 8, -7, -8};

std::vector<unsigned char> Code(const std::vector<short>& pcm, adpcm_state& state, int variant) {
    std::vector<unsigned char> code(pcm.size() / 2);
    adpcm_coder(pcm.data(), reinterpret_cast<char*>(code.data()), static_cast<int>(code.size()), &state, variant);
    return code;
}

std::vector<short> Decode(const std::vector<unsigned char>& code, adpcm_state& state, int variant) {
    std::vector<short> pcm(code.size() * 2);
    adpcm_decoder(reinterpret_cast<const char*>(code.data()), pcm.data(), static_cast<int>(code.size()), &state,
                  variant);
    return pcm;
}

/// A saw-tooth that rises by 257 each sample.
std::vector<short> Saw(std::size_t count) {
    std::vector<short> signal(count);
    for (std::size_t n = 0; n < count; ++n) { signal[n] = static_cast<short>(257 * n); }
    return signal;
}

std::vector<unsigned char> AllBytes() {
    std::vector<unsigned char> bytes(256);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

void ExpectState(const adpcm_state& state, int predictedA, int indexA, int predictedB, int indexB) {
    EXPECT_EQ(predictedA, state.predictedA);
    EXPECT_EQ(indexA, state.indexA);
    EXPECT_EQ(predictedB, state.predictedB);
    EXPECT_EQ(indexB, state.indexB);
}

TEST(AdpcmTest, TwoChannelCoderTurnsStepsIntoKnownBytes) {
    adpcm_state state{};
    EXPECT_EQ((std::vector<unsigned char>{0x00, 0x7F, 0x7F, 0x7F, 0x7F, 0xD5, 0x80, 0x80}),
              Code(kSteps, state, kAdpcmTwoChannel));
    ExpectState(state, 29, 34, -29, 34);
}

TEST(AdpcmTest, MonoCoderTurnsStepsIntoKnownBytes) {
    adpcm_state state{};
    EXPECT_EQ((std::vector<unsigned char>{0x00, 0x7F, 0x7F, 0x7F, 0x7F, 0x28, 0x08, 0x08}),
              Code(kSteps, state, kAdpcmMono));
    ExpectState(state, -226, 58, 0, 0);
}

TEST(AdpcmTest, TwoChannelDecoderEndsInAnotherStateThanItsCoder) {
    adpcm_state coder{};
    adpcm_state decoder{};
    EXPECT_EQ((std::vector<short>{0, 0, 12, -12, 40, -40, 99, -99, 226, -226, 30, -30, 30, -30, 30, -30}),
              Decode(Code(kSteps, coder, kAdpcmTwoChannel), decoder, kAdpcmTwoChannel));
    ExpectState(decoder, 30, 34, -30, 34);
}

TEST(AdpcmTest, MonoDecoderEndsInTheStateOfItsCoder) {
    adpcm_state coder{};
    adpcm_state decoder{};
    EXPECT_EQ((std::vector<short>{0, 0, 11, -19, 44, -92, 201, -430, 927, -1983, 95, -283, 60, -252, 32, -226}),
              Decode(Code(kSteps, coder, kAdpcmMono), decoder, kAdpcmMono));
    ExpectState(decoder, -226, 58, 0, 0);
}

TEST(AdpcmTest, TwoChannelCodesAndDecodesNoiseExactly) {
    adpcm_state coder{};
    const auto code = Code(Noise(2048, 1), coder, kAdpcmTwoChannel);
    EXPECT_EQ((std::vector<unsigned char>{0x7F, 0x7F, 0xFF, 0xFF, 0xF7, 0x77, 0x7F, 0x7F}),
              std::vector<unsigned char>(code.begin(), code.begin() + 8));
    EXPECT_EQ("ef6b3ccba5d5b46d", Sha256Prefix(code));
    ExpectState(coder, -6719, 82, -13620, 85);

    adpcm_state decoder{};
    EXPECT_EQ("f5c668867bd27bc6", Sha256Prefix(Decode(code, decoder, kAdpcmTwoChannel)));
    ExpectState(decoder, -6718, 82, -13611, 85);
}

TEST(AdpcmTest, MonoCodesAndDecodesNoiseExactly) {
    adpcm_state coder{};
    const auto code = Code(Noise(2048, 1), coder, kAdpcmMono);
    EXPECT_EQ((std::vector<unsigned char>{0x7F, 0x7F, 0xFF, 0xFF, 0xF7, 0x02, 0x9F, 0x7D}),
              std::vector<unsigned char>(code.begin(), code.begin() + 8));
    EXPECT_EQ("77e981cae4350514", Sha256Prefix(code));
    ExpectState(coder, -18694, 82, 0, 0);

    adpcm_state decoder{};
    EXPECT_EQ("89f8faf5e2e7cb90", Sha256Prefix(Decode(code, decoder, kAdpcmMono)));
}

TEST(AdpcmTest, DifferenceEqualToAThresholdTakesTheLowerCode) {
    adpcm_state twoChannel{};
    adpcm_state mono{};
    EXPECT_EQ("1ffab46a034432a1", Sha256Prefix(Code(Saw(2048), twoChannel, kAdpcmTwoChannel)));
    EXPECT_EQ("3cbad1a81b0ba2a7", Sha256Prefix(Code(Saw(2048), mono, kAdpcmMono)));

    adpcm_state state{}; // step 7: its thresholds are 7, 3 and 1
    EXPECT_EQ(0x30, Code({7, 0}, state, kAdpcmTwoChannel)[0]);
}

TEST(AdpcmTest, EveryByteDecodesAsKnown) {
    adpcm_state twoChannel{};
    adpcm_state mono{};
    EXPECT_EQ("9a2a7881b205876b", Sha256Prefix(Decode(AllBytes(), twoChannel, kAdpcmTwoChannel)));
    EXPECT_EQ("fdb4db031c178ed5", Sha256Prefix(Decode(AllBytes(), mono, kAdpcmMono)));
}

TEST(AdpcmTest, FirstSampleIsInTheHighNibble) {
    for (const int variant : {kAdpcmTwoChannel, kAdpcmMono}) {
        adpcm_state state{};
        EXPECT_EQ(0x70, Code({1000, 0}, state, variant)[0] & 0xF0) << variant;
    }
}

TEST(AdpcmTest, SilenceCodesToZeroBytesAndLeavesTheStateZero) {
    for (const int variant : {kAdpcmTwoChannel, kAdpcmMono}) {
        adpcm_state state{};
        EXPECT_EQ(std::vector<unsigned char>(1024), Code(std::vector<short>(2048), state, variant)) << variant;
        ExpectState(state, 0, 0, 0, 0);
    }
}

TEST(AdpcmTest, OtherVariantTouchesNothing) {
    for (const int variant : {-1, 2, INT_MAX}) {
        adpcm_state state{1, 2, 3, 4};
        std::array<char, 2> code{'x', 'y'};
        std::array<short, 4> pcm{100, 200, 300, 400};
        adpcm_coder(pcm.data(), code.data(), 2, &state, variant);
        adpcm_decoder(code.data(), pcm.data(), 2, &state, variant);
        EXPECT_EQ((std::array<char, 2>{'x', 'y'}), code);
        EXPECT_EQ((std::array<short, 4>{100, 200, 300, 400}), pcm);
        ExpectState(state, 1, 2, 3, 4);
    }
}

TEST(AdpcmTest, CountBelowOneTouchesNothing) {
    for (const int variant : {kAdpcmTwoChannel, kAdpcmMono}) {
        for (const int count : {0, -1, INT_MIN}) {
            adpcm_state state{1, 127, 3, -128}; // not even the indexes are clamped
            char code = 'x';
            std::array<short, 2> pcm{100, 200};
            adpcm_coder(pcm.data(), &code, count, &state, variant);
            adpcm_decoder(&code, pcm.data(), count, &state, variant);
            EXPECT_EQ('x', code);
            EXPECT_EQ((std::array<short, 2>{100, 200}), pcm);
            ExpectState(state, 1, 127, 3, -128);
        }
    }
}

TEST(AdpcmTest, MonoLeavesChannelBAlone) {
    adpcm_state state{0, 0, 1234, -5};
    Decode(Code(Noise(64, 1), state, kAdpcmMono), state, kAdpcmMono);
    EXPECT_EQ(1234, state.predictedB);
    EXPECT_EQ(-5, state.indexB);
}

TEST(AdpcmTest, CodingInPiecesIsCodingAtOnce) {
    const auto pcm = Noise(2048, 3);
    for (const int variant : {kAdpcmTwoChannel, kAdpcmMono}) {
        adpcm_state whole{};
        adpcm_state pieces{};
        const auto expected = Code(pcm, whole, variant);
        auto code = Code({pcm.begin(), pcm.begin() + 2}, pieces, variant);
        const auto rest = Code({pcm.begin() + 2, pcm.end()}, pieces, variant);
        code.insert(code.end(), rest.begin(), rest.end());
        EXPECT_EQ(expected, code) << variant;
        ExpectState(pieces, whole.predictedA, whole.indexA, whole.predictedB, whole.indexB);
    }
}

} // namespace
