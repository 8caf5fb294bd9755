// ITU-T G.711 companding of 16-bit PCM to 8-bit A-law and mu-law, and back.
//
// Every function is pure, free of branches and inline, so that a loop over a block costs about a cycle per sample.
#pragma once

#include "codec/g711_tables.h"

#include <algorithm>

namespace g711 {

constexpr int kPositiveALaw = 0xD5; // sign bit set, even bits inverted
constexpr int kNegativeALaw = 0x55;
constexpr int kPositiveULaw = 0xFF; // sign bit set, all bits inverted
constexpr int kNegativeULaw = 0x7F;
constexpr int kULawBias = 33;     // moves the first mu-law segment to a power of two
constexpr short kULawClip = 0x7F; // code of every 14-bit magnitude from 8159 on

/// Joins the segments of a companding curve. Each halves the slope of the one before, so the curve is the lowest of
/// the lines through its segments: the 4 highest bits below the leading one, plus 16 for every segment.
///
/// @tparam kFirstShift  the first segment's steps are 1 << kFirstShift wide
/// @tparam kSegments    number of different slopes
/// @param magnitude     of a sample, at least the start of the first segment
template <int kFirstShift, int kSegments> constexpr short Compand(short magnitude) {
    short code = static_cast<short>(magnitude >> kFirstShift);
    for (int segment = 1; segment < kSegments; ++segment) {
        code = std::min(code, static_cast<short>((magnitude >> (kFirstShift + segment)) + 16 * segment));
    }
    return code;
}

} // namespace g711

/// @param sample  16-bit sample, of which the 13 highest bits count
inline unsigned char linear2alaw(short sample) {
    const int sign = sample >> 15; // 0 or -1
    const auto magnitude = static_cast<short>((sample >> 3) ^ sign);
    const int inversion = g711::kPositiveALaw ^ (sign & (g711::kPositiveALaw ^ g711::kNegativeALaw));
    return static_cast<unsigned char>(g711::Compand<1, 7>(magnitude) ^ inversion);
}

/// @return  the middle of the code's quantising interval, -32256..32256
inline short alaw2linear(unsigned char code) {
    return g711::kALawSamples[code];
}

/// @param sample  16-bit sample, of which the 14 highest bits count
inline unsigned char linear2ulaw(short sample) {
    const int sign = sample >> 15; // 0 or -1
    const auto magnitude = static_cast<short>(((sample >> 2) ^ sign) - sign);
    const auto biased = static_cast<short>(magnitude + g711::kULawBias);
    const auto companded = static_cast<short>(g711::Compand<1, 8>(biased) - 16);
    const int inversion = g711::kPositiveULaw ^ (sign & (g711::kPositiveULaw ^ g711::kNegativeULaw));
    return static_cast<unsigned char>(std::min(companded, g711::kULawClip) ^ inversion);
}

/// @return  the middle of the code's quantising interval, -32124..32124
inline short ulaw2linear(unsigned char code) {
    return g711::kULawSamples[code];
}

/// Transcodes by the tables of G.711, which keep the sign.
inline unsigned char alaw2ulaw(unsigned char code) {
    return static_cast<unsigned char>(g711::kALawToULaw[code]);
}
inline unsigned char ulaw2alaw(unsigned char code) {
    return static_cast<unsigned char>(g711::kULawToALaw[code]);
}

/// Exchanges the two bytes of a sample.
inline short swap_linear(short sample) {
    const auto bits = static_cast<unsigned short>(sample);
    return static_cast<short>(static_cast<unsigned short>(bits << 8 | bits >> 8));
}
