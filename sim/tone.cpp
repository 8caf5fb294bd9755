#include "sim/tone.h"

#include "sim/wav_file.h"

#include <cmath>
#include <numbers>

namespace k740::sim {

std::vector<std::int16_t> Tone(double hertz, std::size_t samples, double amplitude) {
    const double step = 2 * std::numbers::pi * hertz / kSampleRate;
    std::vector<std::int16_t> tone(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        tone[i] = static_cast<std::int16_t>(std::lround(amplitude * std::sin(step * static_cast<double>(i))));
    }
    return tone;
}

} // namespace k740::sim
