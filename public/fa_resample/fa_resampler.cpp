#include "public/fa_resample/fa_resampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

namespace {

short Saturated(float value) {
    constexpr float kLowest = std::numeric_limits<short>::min();
    constexpr float kHighest = std::numeric_limits<short>::max();
    return static_cast<short>(std::lrint(std::min(std::max(kLowest, value), kHighest)));
}

} // namespace

RationalResampler::RationalResampler(int up, int down, const std::vector<float>& taps, int frameLength, float gain)
    : m_up(up), m_down(down), m_frameLength(frameLength),
      m_tapsPerPhase(static_cast<int>((taps.size() - 1) / static_cast<std::size_t>(up)) + 1),
      m_phases(static_cast<std::size_t>(up) * static_cast<std::size_t>(m_tapsPerPhase)),
      m_line(static_cast<std::size_t>(m_tapsPerPhase) - 1 + static_cast<std::size_t>(frameLength)) {
    const auto phases = static_cast<std::size_t>(up);
    const auto perPhase = static_cast<std::size_t>(m_tapsPerPhase);
    const float scale = gain * static_cast<float>(up); // the zeros between the samples take 1 / up of the level
    for (std::size_t n = 0; n < taps.size(); ++n) {
        m_phases[n % phases * perPhase + (perPhase - 1 - n / phases)] = taps[n] * scale;
    }
}

float RationalResampler::Dot(int64_t position) const {
    const float* const samples = m_line.data() + position / m_up;
    const float* const taps = m_phases.data() + position % m_up * m_tapsPerPhase;
    return std::inner_product(taps, taps + m_tapsPerPhase, samples, 0.0F);
}

int RationalResampler::Process(const unsigned char* in, int count, unsigned char* out) {
    const std::size_t history = static_cast<std::size_t>(m_tapsPerPhase) - 1;
    for (int n = 0; n < count; ++n) {
        short sample = 0;
        std::memcpy(&sample, in + sizeof(sample) * static_cast<std::size_t>(n), sizeof(sample));
        m_line[history + static_cast<std::size_t>(n)] = sample;
    }
    int written = 0;
    const int64_t end = int64_t{count} * m_up;
    for (; m_position < end; m_position += m_down) {
        const short sample = Saturated(Dot(m_position));
        std::memcpy(out + sizeof(sample) * static_cast<std::size_t>(written++), &sample, sizeof(sample));
    }
    m_position -= end;
    std::copy_n(m_line.data() + count, history, m_line.data());
    return written;
}
