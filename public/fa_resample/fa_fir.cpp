// The designs as their callers see them, and convolution.
#include "public/fa_resample/fa_fir.h"

#include "public/fa_resample/fa_convolve.h"
#include "public/fa_resample/fa_design.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace {

int FillWindow(float* w, int N, int window) {
    switch (window) {
    case kFaBlackman:
        return fa_blackman(w, N);
    case kFaKaiser:
        return fa_kaiser(w, N);
    default:
        return fa_hamming(w, N);
    }
}

/// Allocates a window and lets the routine turn it into taps.
template <typename Routine> int Design(float** h, int N, int window, Routine routine) {
    *h = N > 0 ? static_cast<float*>(std::malloc(static_cast<std::size_t>(N) * sizeof(float))) : nullptr;
    if (*h == nullptr) { return 0; }
    FillWindow(*h, N, window);
    routine(*h, N);
    return N;
}

int RaisedToOdd(int N) {
    return N > 0 ? N | 1 : N;
}

} // namespace

int fa_fir_lpf_cof(float** h, int N, int window, float fc) {
    return Design(h, N, window, [=](float* taps, int count) { DesignLowPass(taps, count, fc); });
}

int fa_fir_hpf_cof(float** h, int N, int window, float fc) {
    return Design(h, RaisedToOdd(N), window, [=](float* taps, int count) { DesignHighPass(taps, count, fc); });
}

int fa_fir_bandpass_cof(float** h, int N, int window, float f1, float f2) {
    return Design(h, RaisedToOdd(N), window, [=](float* taps, int count) { DesignBandPass(taps, count, f1, f2); });
}

int fa_fir_bandstop_cof(float** h, int N, int window, float f1, float f2) {
    return Design(h, RaisedToOdd(N), window, [=](float* taps, int count) { DesignBandStop(taps, count, f1, f2); });
}

int fa_conv(const float* x, int nx, const float* h, int nh, float* y) {
    if (nx < 1 || nh < 1) { return 0; }
    const int count = nx + nh - 1;
    std::fill_n(y, count, 0.0F);
    for (int k = 0; k < nh; ++k) { AddScaled(x, nx, h[k], y + k); }
    return count;
}
