// Signals that the codecs and resamplers are timed on: a coder with branches on its input is fast on some of them only.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

namespace bench {

constexpr std::size_t kBlockSamples = 2048; // of an audio datagram
constexpr std::size_t kBlocks = 64;         // enough that no branch predictor learns the noise by heart

/// kBlocks blocks of 44.1 kHz audio.
using Signal = std::vector<short>;

inline Signal Silence() {
    return Signal(kBlocks * kBlockSamples);
}

inline Signal Noise() {
    Signal signal(kBlocks * kBlockSamples);
    uint32_t seed = 1;
    for (short& sample : signal) {
        seed = seed * 1103515245 + 12345;
        sample = static_cast<short>(seed >> 16);
    }
    return signal;
}

/// A chord with a slow tremolo.
inline Signal Music() {
    Signal signal(kBlocks * kBlockSamples);
    for (std::size_t n = 0; n < signal.size(); ++n) {
        const double t = 2 * std::numbers::pi * static_cast<double>(n) / 44100;
        const double chord = std::sin(220 * t) + std::sin(277.2 * t) + std::sin(329.6 * t) + 0.3 * std::sin(1760 * t);
        signal[n] = static_cast<short>(4000 * chord * (1.2 + std::cos(3 * t)));
    }
    return signal;
}

/// Goes through the pieces of something for as long as a benchmark runs.
/// @param step  takes the number of a piece, 0..pieces - 1, and returns the samples it worked on
template <typename Step> void RunInTurn(benchmark::State& state, std::size_t pieces, Step step) {
    std::size_t piece = 0;
    int64_t samples = 0;
    for ([[maybe_unused]] const auto round : state) {
        samples += static_cast<int64_t>(step(piece));
        benchmark::ClobberMemory();
        piece = piece + 1 < pieces ? piece + 1 : 0;
    }
    state.SetItemsProcessed(samples);
}

/// Registers a benchmark once for each signal, as "name/noise" and so on.
/// @param body  (benchmark::State&, const Signal&)
template <typename Body> bool ForEachSignal(const std::string& name, Body body) {
    const auto add = [&](const char* kind, Signal (*make)()) {
        benchmark::RegisterBenchmark((name + "/" + kind).c_str(),
                                     [body, make](benchmark::State& state) { body(state, make()); });
    };
    add("noise", &Noise);
    add("music", &Music);
    add("silence", &Silence);
    return true;
}

} // namespace bench
