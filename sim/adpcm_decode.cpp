#include "sim/adpcm_decode.h"

#include <algorithm>
#include <array>

namespace k740::sim {
namespace {

// IMA ADPCM, "Recommended practices for enhancing digital audio compatibility", revision 3.00.
constexpr std::array<int, 89> kSteps{
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};
constexpr std::array<int, 8> kIndexMoves{-1, -1, -1, -1, 2, 4, 6, 8};
constexpr int kLastIndex = static_cast<int>(kSteps.size()) - 1;

int BitSum(int code, int four, int two, int one) {
    return ((code & 4) != 0 ? four : 0) + ((code & 2) != 0 ? two : 0) + ((code & 1) != 0 ? one : 0);
}

int StandardMove(int code, int step) {
    return (step >> 3) + BitSum(code, step, step >> 1, step >> 2);
}
int TwoChannelDecoderMove(int code, int step) {
    return BitSum(code, 4 * step, 2 * step, step) >> 2;
}
int TwoChannelCoderMove(int code, int step) {
    return BitSum(code, step, step >> 1, (step >> 1) >> 1);
}

template <int (*kMove)(int, int)> std::int16_t Step(int code, AdpcmChannel& channel) {
    const int index = std::min<int>(channel.index, kLastIndex);
    const int move = kMove(code, kSteps[static_cast<std::size_t>(index)]);
    channel.value = static_cast<std::int16_t>(
        std::clamp((code & 8) != 0 ? channel.value - move : channel.value + move, -32768, 32767));
    channel.index =
        static_cast<std::uint8_t>(std::clamp(index + kIndexMoves[static_cast<std::size_t>(code & 7)], 0, kLastIndex));
    return channel.value;
}

template <int (*kMove)(int, int)>
std::vector<std::int16_t> Decode(ByteView codes, AdpcmChannel& high, AdpcmChannel& low) {
    std::vector<std::int16_t> samples;
    samples.reserve(2 * codes.size());
    for (const std::uint8_t byte : codes) {
        samples.push_back(Step<kMove>(byte >> 4, high));
        samples.push_back(Step<kMove>(byte & 15, low));
    }
    return samples;
}

} // namespace

std::vector<std::int16_t> DecodeTwoChannel(ByteView codes, AdpcmState& state) {
    return Decode<TwoChannelDecoderMove>(codes, state.a, state.b);
}

std::vector<std::int16_t> DecodeMono(ByteView codes, AdpcmState& state) {
    return Decode<StandardMove>(codes, state.a, state.a);
}

AdpcmState TwoChannelCoderState(ByteView codes, AdpcmState state) {
    for (const std::uint8_t byte : codes) {
        Step<TwoChannelCoderMove>(byte >> 4, state.a);
        Step<TwoChannelCoderMove>(byte & 15, state.b);
    }
    return state;
}

} // namespace k740::sim
