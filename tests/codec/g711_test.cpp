#include "codec/g711.h"
#include "tests/support/sha256.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using k740::test::Sha256Prefix;

template <typename Result, typename Of> std::vector<Result> OverAll(int first, int last, Of of) {
    std::vector<Result> results;
    for (int input = first; input <= last; ++input) { results.push_back(of(input)); }
    return results;
}

template <typename Of> auto OverSamples(Of of) {
    return OverAll<unsigned char>(-32768, 32767, [of](int sample) { return of(static_cast<short>(sample)); });
}

template <typename Result, typename Of> auto OverCodes(Of of) {
    return OverAll<Result>(0, 255, [of](int code) { return of(static_cast<unsigned char>(code)); });
}

TEST(G711Test, EverySampleEncodesAsKnown) {
    EXPECT_EQ("38488f6fd710f468", Sha256Prefix(OverSamples(&linear2alaw)));
    EXPECT_EQ("81d633c9e6972a18", Sha256Prefix(OverSamples(&linear2ulaw)));
}

TEST(G711Test, EveryCodeDecodesAsKnown) {
    EXPECT_EQ("e04788d110e58ff8", Sha256Prefix(OverCodes<short>(&alaw2linear)));
    EXPECT_EQ("3dab54339e520bb2", Sha256Prefix(OverCodes<short>(&ulaw2linear)));
}

TEST(G711Test, EveryCodeTranscodesAsKnown) {
    EXPECT_EQ("c1515c134eca6f1d", Sha256Prefix(OverCodes<unsigned char>(&alaw2ulaw)));
    EXPECT_EQ("021355cc78820e9e", Sha256Prefix(OverCodes<unsigned char>(&ulaw2alaw)));
}

TEST(G711Test, SilenceHasItsCodes) {
    EXPECT_EQ(0xFF, linear2ulaw(0));
    EXPECT_EQ(0xD5, linear2alaw(0));
    EXPECT_EQ(0, ulaw2linear(0xFF));
    EXPECT_EQ(8, alaw2linear(0xD5));
}

TEST(G711Test, ALawEncodesEndsOfItsSegments) {
    EXPECT_EQ(0x55, linear2alaw(-1));
    EXPECT_EQ(0x55, linear2alaw(-8));
    EXPECT_EQ(0xDA, linear2alaw(255));
    EXPECT_EQ(0x5A, linear2alaw(-256));
    EXPECT_EQ(0xAA, linear2alaw(32767));
    EXPECT_EQ(0x2A, linear2alaw(-32768));
}

TEST(G711Test, ULawEncodesEndsOfItsSegments) {
    EXPECT_EQ(0x7E, linear2ulaw(-1));
    EXPECT_EQ(0xFE, linear2ulaw(4));
    EXPECT_EQ(0xE7, linear2ulaw(255));
    EXPECT_EQ(0x80, linear2ulaw(32635));
    EXPECT_EQ(0x00, linear2ulaw(-32768));
}

TEST(G711Test, DecodesTheExtremes) {
    EXPECT_EQ(-5504, alaw2linear(0x00));
    EXPECT_EQ(-32256, alaw2linear(0x2A));
    EXPECT_EQ(-8, alaw2linear(0x55));
    EXPECT_EQ(-32124, ulaw2linear(0x00));
    EXPECT_EQ(0, ulaw2linear(0x7F));
    EXPECT_EQ(32124, ulaw2linear(0x80));
}

TEST(G711Test, EncodingADecodedCodeGivesTheCode) {
    for (int code = 0; code < 256; ++code) {
        const auto byte = static_cast<unsigned char>(code);
        EXPECT_EQ(byte, linear2alaw(alaw2linear(byte)));
        if (code != 0x7F) { EXPECT_EQ(byte, linear2ulaw(ulaw2linear(byte))); } // the negative zero becomes the other
    }
}

TEST(G711Test, TranscodingKeepsTheSign) {
    for (int code = 0; code < 256; ++code) {
        const auto byte = static_cast<unsigned char>(code);
        EXPECT_EQ(code & 0x80, alaw2ulaw(byte) & 0x80);
        EXPECT_EQ(code & 0x80, ulaw2alaw(byte) & 0x80);
    }
}

TEST(G711Test, TranscodingTakesTheNearestLevelWhereTablesInUseDisagree) {
    EXPECT_EQ(0xD5 ^ 79, ulaw2alaw(0xFF ^ 80)); // levels of A-law count from 1
    EXPECT_EQ(0xFF ^ 80, alaw2ulaw(0xD5 ^ 79));
}

TEST(G711Test, SwapLinearExchangesTheBytesOfEverySample) {
    EXPECT_EQ(0x3412, swap_linear(0x1234));
    EXPECT_EQ(static_cast<short>(0x80FF), swap_linear(static_cast<short>(0xFF80)));
    for (int sample = -32768; sample <= 32767; ++sample) {
        ASSERT_EQ(sample, swap_linear(swap_linear(static_cast<short>(sample))));
    }
}

} // namespace
