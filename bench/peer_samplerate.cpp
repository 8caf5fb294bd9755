// libsamplerate's linear interpolation, given floats so that it is not charged for conversions.
#include "bench/conversion.h"
#include "bench/signal.h"

#include <samplerate.h>

#include <stdexcept>
#include <string>

namespace {

using bench::Conversion;
using bench::Signal;

void Resample(benchmark::State& state, const Signal& signal, const Conversion& conversion) {
    std::vector<float> in(signal.size());
    src_short_to_float_array(signal.data(), in.data(), static_cast<int>(signal.size()));
    std::vector<float> out(conversion.outCount + 16);
    int error = 0;
    SRC_STATE* resampler = src_new(SRC_LINEAR, 1, &error);
    bench::RunInTurn(state, in.size() / conversion.inCount, [&](std::size_t block) {
        SRC_DATA data{};
        data.data_in = &in[block * conversion.inCount];
        data.data_out = out.data();
        data.input_frames = static_cast<long>(conversion.inCount);
        data.output_frames = static_cast<long>(out.size());
        data.src_ratio = static_cast<double>(bench::kOutRate) / conversion.inRate;
        if (src_process(resampler, &data) != 0) { throw std::runtime_error("libsamplerate refused"); }
        return data.output_frames_gen;
    });
    src_delete(resampler);
}

bool Add(const Conversion& conversion) {
    return bench::ForEachSignal(conversion.name + std::string("/samplerate_linear"),
                                [=](auto& s, const auto& x) { Resample(s, x, conversion); });
}

const bool kRegistered = Add(bench::kFrom22kHz) && Add(bench::kFrom8kHz);

} // namespace
