#include "sim/adpcm_encode.h"

#include "sim/adpcm_step.h"

#include <cstdlib>

namespace k740::sim {
namespace {

/// The code of what lies between the channel's value and the sample.
int Quantise(std::int16_t sample, const AdpcmChannel& channel) {
    int rest = std::abs(sample - channel.value);
    int code = sample < channel.value ? 8 : 0;
    int part = adpcm::StepSize(channel);
    for (const int bit : {4, 2, 1}) {
        if (rest > part) {
            code |= bit;
            rest -= part;
        }
        part >>= 1;
    }
    return code;
}

template <int (*kMove)(int, int)> int Code(std::int16_t sample, AdpcmChannel& channel) {
    const int code = Quantise(sample, channel);
    adpcm::Step<kMove>(code, channel);
    return code;
}

template <int (*kMove)(int, int)> Bytes Encode(SampleView samples, AdpcmChannel& high, AdpcmChannel& low) {
    Bytes codes;
    codes.reserve(samples.size() / 2);
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
        const int first = Code<kMove>(samples[i], high);
        codes.push_back(static_cast<std::uint8_t>(first << 4 | Code<kMove>(samples[i + 1], low)));
    }
    return codes;
}

} // namespace

Bytes EncodeTwoChannel(SampleView samples, AdpcmState& state) {
    return Encode<adpcm::TwoChannelCoderMove>(samples, state.a, state.b);
}

Bytes EncodeMono(SampleView samples, AdpcmState& state) {
    return Encode<adpcm::StandardMove>(samples, state.a, state.a);
}

} // namespace k740::sim
