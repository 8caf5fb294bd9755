// One channel of an ADPCM coder, without branches on the signal: loud passages must not cost more than soft ones.
#pragma once

#include "codec/adpcm_step.h"

#include <cstddef>

namespace adpcm {

constexpr int kMagnitudeBits = 3;

/// A step size, and where in the table the steps are that may follow it.
struct EncoderStep {
    int32_t size;
    uint32_t row; // index * kMagnitudes
};

constexpr EncoderStep MakeEncoderStep(int index) {
    return {kStepSizes[static_cast<std::size_t>(index)], static_cast<uint32_t>(index * kMagnitudes)};
}

/// The step that follows, by row + magnitude, so that it costs one load after the magnitude is known.
constexpr auto kEncoderSteps = [] {
    std::array<EncoderStep, std::size_t{kIndexes} * kMagnitudes> steps{};
    for (int row = 0; row < kIndexes * kMagnitudes; ++row) {
        steps[static_cast<std::size_t>(row)] = MakeEncoderStep(NextIndex(row / kMagnitudes, row % kMagnitudes));
    }
    return steps;
}();

/// @tparam kRoundingShift  the prediction moves by step >> kRoundingShift more than the code says; 16 adds nothing
template <int kRoundingShift> class Encoder {
public:
    Encoder(int predicted, int index) : m_predicted(predicted), m_step(MakeEncoderStep(ClampIndex(index))) {}

    /// @return the 4-bit code of the sample
    unsigned Encode(int sample) {
        const int mirror = (sample - m_predicted) >> 31; // -1 for a falling signal, else 0
        int rest = std::max(sample - m_predicted, m_predicted - sample);
        uint32_t next = m_step.row;
        for (int bit = kMagnitudeBits - 1; bit >= 0; --bit) {
            const int part = m_step.size >> (kMagnitudeBits - 1 - bit);
            next += static_cast<uint32_t>(part - rest) >> 31 << bit; // the sign: set when the rest exceeds the part
            rest = rest > part ? rest - part : rest;
        }
        // ~x mirrors a falling signal, so that the prediction always rises and needs the upper bound only.
        const int predicted = (sample ^ mirror) + (m_step.size >> kRoundingShift) - rest;
        m_predicted = std::min(predicted, kHighestSample) ^ mirror;
        m_step = kEncoderSteps[next];
        return next % kMagnitudes | (static_cast<unsigned>(mirror) & kSignBit);
    }

    /// Digital silence leaves an encoder at rest as it is, and its code is 0.
    bool IsAtRest() const { return (static_cast<uint32_t>(m_predicted) | m_step.row) == 0; }

    int16_t Predicted() const { return static_cast<int16_t>(m_predicted); }
    int8_t Index() const { return static_cast<int8_t>(m_step.row / kMagnitudes); }

private:
    int m_predicted;
    EncoderStep m_step;
};

} // namespace adpcm
