#include "sim/adpcm_decode.h"

#include "sim/adpcm_step.h"

namespace k740::sim {
namespace {

using adpcm::Step;

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
    return Decode<adpcm::TwoChannelDecoderMove>(codes, state.a, state.b);
}

std::vector<std::int16_t> DecodeMono(ByteView codes, AdpcmState& state) {
    return Decode<adpcm::StandardMove>(codes, state.a, state.a);
}

AdpcmState TwoChannelCoderState(ByteView codes, AdpcmState state) {
    for (const std::uint8_t byte : codes) {
        Step<adpcm::TwoChannelCoderMove>(byte >> 4, state.a);
        Step<adpcm::TwoChannelCoderMove>(byte & 15, state.b);
    }
    return state;
}

} // namespace k740::sim
