// libsoxr with its "quick" recipe, which is its fastest.
#include "bench/conversion.h"
#include "bench/signal.h"

#include <soxr.h>

#include <string>

namespace {

using bench::Conversion;
using bench::Signal;

void Resample(benchmark::State& state, const Signal& signal, const Conversion& conversion) {
    std::vector<short> out(conversion.outCount * 2);
    const soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_QQ, 0);
    soxr_t resampler = soxr_create(conversion.inRate, bench::kOutRate, 1, nullptr, &io, &quality, nullptr);
    bench::RunInTurn(state, signal.size() / conversion.inCount, [&](std::size_t block) {
        std::size_t done = 0;
        soxr_process(resampler, &signal[block * conversion.inCount], conversion.inCount, nullptr, out.data(),
                     out.size(), &done);
        return done;
    });
    soxr_delete(resampler);
}

bool Add(const Conversion& conversion) {
    return bench::ForEachSignal(conversion.name + std::string("/soxr_quick"),
                                [=](auto& s, const auto& x) { Resample(s, x, conversion); });
}

const bool kRegistered = Add(bench::kFrom22kHz) && Add(bench::kFrom8kHz);

} // namespace
