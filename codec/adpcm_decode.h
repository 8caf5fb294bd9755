// One channel of an ADPCM decoder: one table look-up for each code.
#pragma once

#include "codec/adpcm_step.h"

#include <cstddef>

namespace adpcm {

/// What a code does at a step index.
struct DecoderStep {
    int32_t delta; // change of the predicted value
    uint32_t row;  // next index * kCodes
};

using DecoderSteps = std::array<DecoderStep, std::size_t{kIndexes} * kCodes>;

/// @param magnitudeDelta  (step size, magnitude) -> change of the predicted value for the positive code
template <typename MagnitudeDelta> constexpr DecoderSteps MakeDecoderSteps(MagnitudeDelta magnitudeDelta) {
    DecoderSteps steps{};
    for (int row = 0; row < kIndexes * kCodes; ++row) {
        const int index = row / kCodes;
        const int magnitude = row % kMagnitudes;
        const int delta = magnitudeDelta(kStepSizes[static_cast<std::size_t>(index)], magnitude);
        const bool negative = row % kCodes != magnitude;
        steps[static_cast<std::size_t>(row)] = {negative ? -delta : delta,
                                                static_cast<uint32_t>(NextIndex(index, magnitude) * kCodes)};
    }
    return steps;
}

class Decoder {
public:
    Decoder(int predicted, int index)
        : m_predicted(predicted), m_row(static_cast<uint32_t>(ClampIndex(index) * kCodes)) {}

    /// @return the sample of a 4-bit code
    short Decode(const DecoderSteps& steps, unsigned code) {
        const DecoderStep step = steps[m_row + code];
        m_predicted = std::clamp(m_predicted + step.delta, kLowestSample, kHighestSample);
        m_row = step.row;
        return static_cast<short>(m_predicted);
    }

    int16_t Predicted() const { return static_cast<int16_t>(m_predicted); }
    int8_t Index() const { return static_cast<int8_t>(m_row / kCodes); }

private:
    int m_predicted;
    uint32_t m_row;
};

/// The two codes of a byte, in the order of their samples.
constexpr unsigned FirstCode(char byte) {
    return static_cast<unsigned char>(byte) >> 4;
}
constexpr unsigned SecondCode(char byte) {
    return static_cast<unsigned char>(byte) & 0xFU;
}

} // namespace adpcm
