// Linear interpolation between the samples of one block.
#include "public/fa_resample/fa_fir.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr int kRunLength = 64; // outputs worked on together, so that the arithmetic is done on vectors
constexpr float kHighestPosition = 2147483520.0F; // highest float that fits an int

/// A run of outputs: where each lies between two input samples.
struct Run {
    std::array<int, kRunLength> index;      // of the sample before it
    std::array<float, kRunLength> fraction; // 0 at that sample, 1 at the next one
    std::array<float, kRunLength> before;
    std::array<float, kRunLength> after;
};

/// Positions that are not numbers count as 0, and none lies beyond the end, so that each converts to an index.
void LocateRun(Run& run, int first, int count, float step, float end) {
    for (int i = 0; i < count; ++i) {
        const float position = std::min(std::max(0.0F, static_cast<float>(first + i) * step), end);
        const int index = static_cast<int>(position);
        run.index[static_cast<std::size_t>(i)] = index;
        run.fraction[static_cast<std::size_t>(i)] = position - static_cast<float>(index);
    }
}

void GatherRun(Run& run, int count, const short* in, int last) {
    for (int i = 0; i < count; ++i) {
        const auto n = static_cast<std::size_t>(i);
        const int index = std::min(run.index[n], last);
        run.before[n] = in[index];
        run.after[n] = in[index + (index < last ? 1 : 0)];
    }
}

void InterpolateRun(const Run& run, int count, short* out) {
    for (int i = 0; i < count; ++i) {
        const auto n = static_cast<std::size_t>(i);
        const float value = run.after[n] * run.fraction[n] + (1 - run.fraction[n]) * run.before[n];
        out[i] = static_cast<short>(static_cast<int>(value));
    }
}

} // namespace

void resampleData(const short* in, int inRate, int inCount, short* out, int outRate, int outCount, float step) {
    if (inCount < 1) { return; }
    if (inRate == outRate) {
        std::copy_n(in, inCount, out);
        return;
    }
    Run run;
    const float end = std::min(static_cast<float>(inCount), kHighestPosition);
    int count = 0;
    for (int first = 0; first < outCount; first += count) {
        count = std::min(kRunLength, outCount - first);
        LocateRun(run, first, count, step, end);
        GatherRun(run, count, in, inCount - 1);
        InterpolateRun(run, count, out + first);
    }
}
