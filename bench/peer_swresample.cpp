// libswresample with the shortest filter it accepts.
#include "bench/conversion.h"
#include "bench/signal.h"

#include <stdexcept>
#include <string>

extern "C" {
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace {

using bench::Conversion;
using bench::Signal;

SwrContext* Open(const Conversion& conversion) {
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    SwrContext* resampler = nullptr;
    swr_alloc_set_opts2(&resampler, &mono, AV_SAMPLE_FMT_S16, bench::kOutRate, &mono, AV_SAMPLE_FMT_S16,
                        conversion.inRate, 0, nullptr);
    av_opt_set_int(resampler, "filter_size", 1, 0);
    if (swr_init(resampler) < 0) { throw std::runtime_error("libswresample refused"); }
    return resampler;
}

void Resample(benchmark::State& state, const Signal& signal, const Conversion& conversion) {
    std::vector<short> out(conversion.outCount * 2);
    SwrContext* resampler = Open(conversion);
    bench::RunInTurn(state, signal.size() / conversion.inCount, [&](std::size_t block) {
        const auto* in = reinterpret_cast<const uint8_t*>(&signal[block * conversion.inCount]);
        auto* to = reinterpret_cast<uint8_t*>(out.data());
        return swr_convert(resampler, &to, static_cast<int>(out.size()), &in, static_cast<int>(conversion.inCount));
    });
    swr_free(&resampler);
}

bool Add(const Conversion& conversion) {
    return bench::ForEachSignal(conversion.name + std::string("/swresample_shortest"),
                                [=](auto& s, const auto& x) { Resample(s, x, conversion); });
}

const bool kRegistered = Add(bench::kFrom22kHz) && Add(bench::kFrom8kHz);

} // namespace
