// The step-size adaptation that both ADPCM variants share, as tables built at compile time.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace adpcm {

constexpr int kLastIndex = 88;
constexpr int kIndexes = kLastIndex + 1;
constexpr int kMagnitudes = 8; // codes without their sign bit
constexpr int kCodes = 16;
constexpr unsigned kSignBit = 8;

/// Step sizes of IMA/DVI ADPCM.
constexpr std::array<int16_t, kIndexes> kStepSizes{
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};

/// Change of the step index by the magnitude of a code, of IMA/DVI ADPCM.
constexpr std::array<int8_t, kMagnitudes> kIndexAdjustments{-1, -1, -1, -1, 2, 4, 6, 8};

constexpr int ClampIndex(int index) {
    return std::clamp(index, 0, kLastIndex);
}

constexpr int NextIndex(int index, int magnitude) {
    return ClampIndex(index + kIndexAdjustments[static_cast<std::size_t>(magnitude)]);
}

constexpr int kLowestSample = std::numeric_limits<int16_t>::min();
constexpr int kHighestSample = std::numeric_limits<int16_t>::max();

} // namespace adpcm
