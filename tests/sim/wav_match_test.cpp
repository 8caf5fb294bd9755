#include "sim/wav_match.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace k740::sim {
namespace {

/// A chirp, which resembles itself at no other offset.
std::vector<std::int16_t> Chirp(std::size_t count) {
    std::vector<std::int16_t> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / 44100;
        samples[i] = static_cast<std::int16_t>(10000 * std::sin(2 * 3.14159265 * (200 * t + 300 * t * t)));
    }
    return samples;
}

TEST(WavMatchTest, EqualAudioMatchesWithoutNoise) {
    const auto sent = Chirp(50000);
    const WavMatch match = Match(sent, sent);
    EXPECT_EQ(0, match.offset);
    EXPECT_EQ(50000U, match.compared);
    EXPECT_EQ(0U, match.missing);
    EXPECT_NEAR(1, match.correlation, 1e-9);
    EXPECT_EQ(std::numeric_limits<double>::infinity(), match.signalToNoiseDb);
}

TEST(WavMatchTest, LaterAudioIsFoundAtItsOffset) {
    const auto sent = Chirp(50000);
    std::vector<std::int16_t> heard(700, 0);
    heard.insert(heard.end(), sent.begin(), sent.end());
    EXPECT_EQ(700, Match(sent, heard).offset);
    EXPECT_EQ(0U, Match(sent, heard).missing);
}

TEST(WavMatchTest, AudioCutShortIsMissing) {
    const auto sent = Chirp(50000);
    const std::vector<std::int16_t> heard(sent.begin(), sent.end() - 2048);
    EXPECT_EQ(2048U, Match(sent, heard).missing);
}

TEST(WavMatchTest, OtherAudioDoesNotCorrelate) {
    auto other = Chirp(50000);
    for (std::size_t i = 0; i < other.size(); ++i) {
        other[i] = static_cast<std::int16_t>(static_cast<int>(i * 7919 % 20011) - 10000);
    }
    EXPECT_LT(Match(Chirp(50000), other).correlation, 0.2);
}

} // namespace
} // namespace k740::sim
