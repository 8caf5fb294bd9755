// Creation and use of the rational resampler through its handles.
#include "public/fa_resample/fa_fir.h"
#include "public/fa_resample/fa_handle.h"
#include "public/fa_resample/fa_resampler.h"
#include "public/fa_resample/fa_taps.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr int kSampleBytes = 2;
constexpr int64_t kHighestRatio = 16;
constexpr int kHighestFactor = 192000; // after reduction; bounds the taps, of which there are about 60 times as many
constexpr float kRelativeTransition = 0.2F; // width of the low-pass's transition band by its cut-off
constexpr float kKaiserAttenuation = 90;    // dB, of the Kaiser window with beta 8.96

bool IsRatioSupported(int up, int down) {
    return up >= 1 && down >= 1 && up <= kHighestRatio * down && down <= kHighestRatio * up;
}

int LowPassLength(int design, float transition) {
    switch (design) {
    case kFaBlackman:
        return fa_blackman_cof_num(transition);
    case kFaKaiser:
        return fa_kaiser_cof_num(transition, kKaiserAttenuation);
    default:
        return fa_hamming_cof_num(transition);
    }
}

/// An odd number of taps, so that the delay is a whole number of samples.
int DesignAntiAlias(float** h, int design, int factor) {
    const float cutOff = 1 / static_cast<float>(factor);
    return fa_fir_lpf_cof(h, LowPassLength(design, cutOff * kRelativeTransition) | 1, design, cutOff);
}

} // namespace

uintptr_t fa_resample_filter_init(int up, int down, int design, int frameLenBytes, float gain) {
    if (!IsRatioSupported(up, down) || frameLenBytes < kSampleBytes) { return kFaRefused; }
    const int divisor = std::gcd(up, down);
    const int factor = std::max(up, down) / divisor;
    if (factor > kHighestFactor) { return kFaRefused; }
    return CreateHandle([=] {
        const auto taps = TakeTaps([=](float** h) { return DesignAntiAlias(h, design, factor); });
        return RationalResampler(up / divisor, down / divisor, taps, frameLenBytes / kSampleBytes, gain);
    });
}

void fa_resample_filter_uninit(uintptr_t handle) {
    ReleaseHandle<RationalResampler>(handle);
}

int fa_resample(uintptr_t handle, const unsigned char* in, int inBytes, unsigned char* out, int* outBytes) {
    auto* resampler = FromHandle<RationalResampler>(handle);
    *outBytes = 0;
    if (resampler == nullptr || inBytes < 0 || inBytes / kSampleBytes > resampler->FrameLength()) { return -1; }
    *outBytes = resampler->Process(in, inBytes / kSampleBytes, out) * kSampleBytes;
    return 0;
}

int fa_get_resample_framelen_bytes(uintptr_t handle) {
    const auto* resampler = FromHandle<RationalResampler>(handle);
    return resampler == nullptr ? 0 : resampler->FrameLength() * kSampleBytes;
}
