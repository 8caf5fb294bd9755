#include "sim/adpcm_decode.h"
#include "tests/support/sha256.h"

#include <gtest/gtest.h>

#include <numeric>

namespace k740::sim {
namespace {

using Samples = std::vector<std::int16_t>;

const Bytes kTwoChannelCodes{0x00, 0x7F, 0x7F, 0x7F, 0x7F, 0xD5, 0x80, 0x80};
const Bytes kMonoCodes{0x00, 0x7F, 0x7F, 0x7F, 0x7F, 0x28, 0x08, 0x08};

/// The movement of one code from (0, index 0), where the step is 7.
Samples FirstMoves(Samples (*decode)(ByteView, AdpcmState&)) {
    Samples moves;
    for (std::uint8_t code = 0; code < 8; ++code) {
        AdpcmState state;
        moves.push_back(decode(Bytes{static_cast<std::uint8_t>(code << 4)}, state).front());
    }
    return moves;
}

TEST(AdpcmDecodeTest, TwoChannelCodesAlternateBetweenChannels) {
    AdpcmState state;
    EXPECT_EQ((Samples{0, 0, 12, -12, 40, -40, 99, -99, 226, -226, 30, -30, 30, -30, 30, -30}),
              DecodeTwoChannel(kTwoChannelCodes, state));
    EXPECT_EQ((AdpcmState{{30, 34}, {-30, 34}}), state);
}

TEST(AdpcmDecodeTest, TwoChannelCoderStandsElsewhereThanItsDecoder) {
    EXPECT_EQ((AdpcmState{{29, 34}, {-29, 34}}), TwoChannelCoderState(kTwoChannelCodes, {}));
}

TEST(AdpcmDecodeTest, MonoCodesFollowEachOther) {
    AdpcmState state;
    EXPECT_EQ((Samples{0, 0, 11, -19, 44, -92, 201, -430, 927, -1983, 95, -283, 60, -252, 32, -226}),
              DecodeMono(kMonoCodes, state));
    EXPECT_EQ((AdpcmState{{-226, 58}, {}}), state);
}

TEST(AdpcmDecodeTest, VariantsRoundTheMovementDifferently) {
    EXPECT_EQ((Samples{0, 1, 3, 5, 7, 8, 10, 12}), FirstMoves(DecodeTwoChannel));
    EXPECT_EQ((Samples{0, 1, 3, 4, 7, 8, 10, 11}), FirstMoves(DecodeMono));
}

TEST(AdpcmDecodeTest, EveryByteInTurnGivesTheKnownSamples) {
    Bytes bytes(256);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    AdpcmState twoChannel;
    EXPECT_EQ("9a2a7881b205876b", test::Sha256Prefix(DecodeTwoChannel(bytes, twoChannel)));
    AdpcmState mono;
    EXPECT_EQ("fdb4db031c178ed5", test::Sha256Prefix(DecodeMono(bytes, mono)));
}

TEST(AdpcmDecodeTest, ValueAndIndexStayInRange) {
    AdpcmState up;
    const Samples rising = DecodeTwoChannel(Bytes(100, 0x77), up);
    EXPECT_EQ((AdpcmState{{32767, 88}, {32767, 88}}), up);
    EXPECT_EQ(32767, rising.back());
    AdpcmState down;
    DecodeMono(Bytes(100, 0xFF), down);
    EXPECT_EQ((AdpcmState{{-32768, 88}, {}}), down);
    DecodeMono(Bytes(100, 0x88), down);
    EXPECT_EQ(0, down.a.index);
}

TEST(AdpcmDecodeTest, IndexFromTheNetworkAboveTheTableActsAsItsLast) {
    AdpcmState wild{{0, 255}, {0, 89}};
    AdpcmState last{{0, 88}, {0, 88}};
    EXPECT_EQ(DecodeTwoChannel(Bytes{0x11}, last), DecodeTwoChannel(Bytes{0x11}, wild));
    EXPECT_EQ(last, wild);
}

} // namespace
} // namespace k740::sim
