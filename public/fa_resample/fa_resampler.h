// Polyphase conversion of a stream of 16-bit samples by a rational factor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Thinks of each input sample as followed by up - 1 zeros, low-passes that, and keeps every down-th sample; works out
/// only the kept ones, each from the taps that meet input samples.
class RationalResampler {
public:
    /// @param up, down     without a common divisor, at least 1
    /// @param taps         low-pass at up times the input rate, with unit gain
    /// @param frameLength  longest frame in samples
    RationalResampler(int up, int down, const std::vector<float>& taps, int frameLength, float gain);

    int FrameLength() const { return m_frameLength; }

    /// @param in     count samples in host byte order, at most FrameLength()
    /// @param out    receives the samples in host byte order
    /// @return       samples written
    int Process(const unsigned char* in, int count, unsigned char* out);

private:
    float Dot(int64_t position) const;

    int m_up;
    int m_down;
    int m_frameLength;
    int m_tapsPerPhase;
    std::vector<float> m_phases; // for each phase its taps, last first
    std::vector<float> m_line;   // the last taps - 1 samples, then the frame
    int64_t m_position = 0;      // of the next output from the start of the frame, in input samples times up
};
