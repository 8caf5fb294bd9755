// One step of 4-bit IMA/DVI ADPCM, shared by coding and decoding.
#pragma once

#include "sim/adpcm_decode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace k740::sim::adpcm {

// IMA ADPCM, "Recommended practices for enhancing digital audio compatibility", revision 3.00.
inline constexpr std::array<int, 89> kSteps{
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};
inline constexpr std::array<int, 8> kIndexMoves{-1, -1, -1, -1, 2, 4, 6, 8};
inline constexpr int kLastIndex = static_cast<int>(kSteps.size()) - 1;

inline int IndexOf(const AdpcmChannel& channel) {
    return std::min<int>(channel.index, kLastIndex);
}
inline int StepSize(const AdpcmChannel& channel) {
    return kSteps[static_cast<std::size_t>(IndexOf(channel))];
}

inline int BitSum(int code, int four, int two, int one) {
    return ((code & 4) != 0 ? four : 0) + ((code & 2) != 0 ? two : 0) + ((code & 1) != 0 ? one : 0);
}
inline int StandardMove(int code, int step) {
    return (step >> 3) + BitSum(code, step, step >> 1, step >> 2);
}
inline int TwoChannelDecoderMove(int code, int step) {
    return BitSum(code, 4 * step, 2 * step, step) >> 2;
}
inline int TwoChannelCoderMove(int code, int step) {
    return BitSum(code, step, step >> 1, (step >> 1) >> 1);
}

/// Moves the channel by a code. @return its new value
template <int (*kMove)(int, int)> std::int16_t Step(int code, AdpcmChannel& channel) {
    const int index = IndexOf(channel);
    const int move = kMove(code, StepSize(channel));
    channel.value = static_cast<std::int16_t>(
        std::clamp((code & 8) != 0 ? channel.value - move : channel.value + move, -32768, 32767));
    channel.index =
        static_cast<std::uint8_t>(std::clamp(index + kIndexMoves[static_cast<std::size_t>(code & 7)], 0, kLastIndex));
    return channel.value;
}

} // namespace k740::sim::adpcm
