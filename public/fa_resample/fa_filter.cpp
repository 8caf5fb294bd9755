// The block FIR filter behind the fa_fir_filter functions.
#include "public/fa_resample/fa_convolve.h"
#include "public/fa_resample/fa_fir.h"
#include "public/fa_resample/fa_handle.h"
#include "public/fa_resample/fa_require.h"
#include "public/fa_resample/fa_taps.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

/// Keeps the last taps - 1 samples of the stream in front of the frame.
struct BlockFilter {
    BlockFilter(int frameLength, std::vector<float> firTaps)
        : frame_len(frameLength), taps(std::move(firTaps)), line(History() + static_cast<std::size_t>(frameLength)) {}

    std::size_t History() const { return taps.size() - 1; }

    int frame_len;
    std::vector<float> taps;
    std::vector<float> line; // history, then the frame
};

void FilterFrame(BlockFilter* flt, const float* in, float* out, int frame_len) {
    Require(frame_len <= flt->frame_len, "frame_len <= flt->frame_len");
    const std::size_t history = flt->History();
    float* const frame = flt->line.data() + history;
    std::copy_n(in, frame_len, frame);
    std::fill_n(out, frame_len, 0.0F);
    for (std::size_t k = 0; k <= history; ++k) { AddScaled(frame - k, frame_len, flt->taps[k], out); }
    std::copy_n(flt->line.data() + frame_len, history, flt->line.data());
}

/// @param design  (float** h) -> number of taps
template <typename Design> uintptr_t CreateFilter(int frame_len, Design design) {
    if (frame_len < 1) { return kFaRefused; }
    return CreateHandle([&] { return BlockFilter(frame_len, TakeTaps(design)); });
}

} // namespace

uintptr_t fa_fir_filter_lpf_init(int frame_len, int fir_len, float fc, int window) {
    return CreateFilter(frame_len, [=](float** h) { return fa_fir_lpf_cof(h, fir_len, window, fc); });
}

uintptr_t fa_fir_filter_hpf_init(int frame_len, int fir_len, float fc, int window) {
    return CreateFilter(frame_len, [=](float** h) { return fa_fir_hpf_cof(h, fir_len, window, fc); });
}

uintptr_t fa_fir_filter_bandpass_init(int frame_len, int fir_len, float f1, float f2, int window) {
    return CreateFilter(frame_len, [=](float** h) { return fa_fir_bandpass_cof(h, fir_len, window, f1, f2); });
}

uintptr_t fa_fir_filter_bandstop_init(int frame_len, int fir_len, float f1, float f2, int window) {
    return CreateFilter(frame_len, [=](float** h) { return fa_fir_bandstop_cof(h, fir_len, window, f1, f2); });
}

void fa_fir_filter_uninit(uintptr_t handle) {
    ReleaseHandle<BlockFilter>(handle);
}

int fa_fir_filter(uintptr_t handle, const float* in, float* out, int frame_len) {
    auto* flt = FromHandle<BlockFilter>(handle);
    if (flt == nullptr || frame_len < 1) { return 0; }
    FilterFrame(flt, in, out, frame_len);
    return frame_len;
}

int fa_fir_filter_flush(uintptr_t handle, float* out) {
    auto* flt = FromHandle<BlockFilter>(handle);
    if (flt == nullptr) { return 0; }
    const auto tail = static_cast<int>(flt->History());
    std::fill_n(out, tail, 0.0F); // silence, filtered in place, pushes the stream out
    for (int done = 0; done < tail; done += flt->frame_len) {
        FilterFrame(flt, out + done, out + done, std::min(flt->frame_len, tail - done));
    }
    return tail;
}
