// libspeexdsp's resampler at its lowest quality, which is its fastest.
#include "bench/conversion.h"
#include "bench/signal.h"

#include <speex/speex_resampler.h>

#include <string>

namespace {

using bench::Conversion;
using bench::Signal;

void Resample(benchmark::State& state, const Signal& signal, const Conversion& conversion) {
    std::vector<short> out(conversion.outCount + 16);
    int error = 0;
    SpeexResamplerState* resampler = speex_resampler_init(1, static_cast<spx_uint32_t>(conversion.inRate),
                                                          static_cast<spx_uint32_t>(bench::kOutRate), 0, &error);
    bench::RunInTurn(state, signal.size() / conversion.inCount, [&](std::size_t block) {
        auto inCount = static_cast<spx_uint32_t>(conversion.inCount);
        auto outCount = static_cast<spx_uint32_t>(out.size());
        speex_resampler_process_int(resampler, 0, &signal[block * conversion.inCount], &inCount, out.data(), &outCount);
        return outCount;
    });
    speex_resampler_destroy(resampler);
}

bool Add(const Conversion& conversion) {
    return bench::ForEachSignal(conversion.name + std::string("/speexdsp_q0"),
                                [=](auto& s, const auto& x) { Resample(s, x, conversion); });
}

const bool kRegistered = Add(bench::kFrom22kHz) && Add(bench::kFrom8kHz);

} // namespace
