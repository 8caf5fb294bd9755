// Our linear interpolation, in the blocks in which host audio is converted, and our filtering resampler.
#include "bench/conversion.h"
#include "bench/signal.h"
#include "public/fa_resample/fa_fir.h"

#include <string>

namespace {

using bench::Conversion;
using bench::Signal;

void Interpolate(benchmark::State& state, const Signal& signal, const Conversion& conversion) {
    std::vector<short> out(conversion.outCount);
    bench::RunInTurn(state, signal.size() / conversion.inCount, [&](std::size_t block) {
        resampleData(&signal[block * conversion.inCount], conversion.inRate, static_cast<int>(conversion.inCount),
                     out.data(), bench::kOutRate, static_cast<int>(out.size()), conversion.step);
        return out.size();
    });
}

void FilterAndResample(benchmark::State& state, const Signal& signal, const Conversion& conversion) {
    const auto frameBytes = static_cast<int>(conversion.inCount * sizeof(short));
    const uintptr_t resampler =
        fa_resample_filter_init(bench::kOutRate, conversion.inRate, kFaKaiser, frameBytes, 1.0F);
    std::vector<unsigned char> out((conversion.outCount + 1) * sizeof(short));
    bench::RunInTurn(state, signal.size() / conversion.inCount, [&](std::size_t block) {
        const auto* in = reinterpret_cast<const unsigned char*>(&signal[block * conversion.inCount]);
        int outBytes = 0;
        fa_resample(resampler, in, frameBytes, out.data(), &outBytes);
        return static_cast<std::size_t>(outBytes) / sizeof(short);
    });
    fa_resample_filter_uninit(resampler);
}

bool Add(const Conversion& conversion) {
    const std::string name = conversion.name;
    return bench::ForEachSignal(name + "/k740", [=](auto& s, const auto& x) { Interpolate(s, x, conversion); }) &&
           bench::ForEachSignal(name + "/k740_filtered",
                                [=](auto& s, const auto& x) { FilterAndResample(s, x, conversion); });
}

const bool kRegistered = Add(bench::kFrom22kHz) && Add(bench::kFrom8kHz);

} // namespace
