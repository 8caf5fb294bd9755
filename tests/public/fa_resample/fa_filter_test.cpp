#include "public/fa_resample/fa_fir.h"
#include "tests/support/noise.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

using k740::test::Noise;

constexpr int kFrame = 64;

std::vector<float> FloatNoise(std::size_t count) {
    const auto noise = Noise(count, 11);
    return {noise.begin(), noise.end()};
}

/// What a filter makes of a stream that comes in pieces of the given lengths, its tail included.
std::vector<float> Filtered(uintptr_t filter, const std::vector<float>& x, const std::vector<int>& pieces, int tail) {
    std::vector<float> y(x.size() + static_cast<std::size_t>(tail));
    std::size_t done = 0;
    for (const int piece : pieces) {
        EXPECT_EQ(piece, fa_fir_filter(filter, x.data() + done, y.data() + done, piece));
        done += static_cast<std::size_t>(piece);
    }
    EXPECT_EQ(x.size(), done);
    EXPECT_EQ(tail, fa_fir_filter_flush(filter, y.data() + done));
    return y;
}

std::vector<float> Convolved(const std::vector<float>& x, float* h, int taps) {
    std::vector<float> y(x.size() + static_cast<std::size_t>(taps) - 1);
    fa_conv(x.data(), static_cast<int>(x.size()), h, taps, y.data());
    std::free(h);
    return y;
}

const std::vector<int> kPieces{64, 1, 7, 64, 32, 63, 64}; // 295

TEST(FaFilterTest, LowPassEqualsConvolutionOfTheWholeStream) {
    for (const int taps : {1, 2, 31, 32, 200}) { // also longer than a frame
        const auto x = FloatNoise(295);
        float* h = nullptr;
        const int count = fa_fir_lpf_cof(&h, taps, kFaHamming, 0.3F);
        const uintptr_t filter = fa_fir_filter_lpf_init(kFrame, taps, 0.3F, kFaHamming);
        EXPECT_EQ(Convolved(x, h, count), Filtered(filter, x, kPieces, taps - 1));
        fa_fir_filter_uninit(filter);
    }
}

TEST(FaFilterTest, OtherFiltersEqualConvolutionWithTheirRaisedDesigns) {
    const auto x = FloatNoise(295);
    float* h = nullptr;
    int count = fa_fir_hpf_cof(&h, 30, kFaKaiser, 0.3F);
    uintptr_t filter = fa_fir_filter_hpf_init(kFrame, 30, 0.3F, kFaKaiser);
    EXPECT_EQ(Convolved(x, h, count), Filtered(filter, x, kPieces, 30));
    fa_fir_filter_uninit(filter);

    count = fa_fir_bandpass_cof(&h, 30, kFaBlackman, 0.3F, 0.5F);
    filter = fa_fir_filter_bandpass_init(kFrame, 30, 0.3F, 0.5F, kFaBlackman);
    EXPECT_EQ(Convolved(x, h, count), Filtered(filter, x, kPieces, 30));
    fa_fir_filter_uninit(filter);

    count = fa_fir_bandstop_cof(&h, 30, kFaBlackman, 0.3F, 0.5F);
    filter = fa_fir_filter_bandstop_init(kFrame, 30, 0.3F, 0.5F, kFaBlackman);
    EXPECT_EQ(Convolved(x, h, count), Filtered(filter, x, kPieces, 30));
    fa_fir_filter_uninit(filter);
}

TEST(FaFilterTest, FlushClearsTheFilterForAnotherStream) {
    const uintptr_t filter = fa_fir_filter_lpf_init(kFrame, 31, 0.3F, kFaHamming);
    const auto x = FloatNoise(kFrame);
    const auto first = Filtered(filter, x, {kFrame}, 30);
    EXPECT_EQ(first, Filtered(filter, x, {kFrame}, 30));
    EXPECT_EQ(30, fa_fir_filter_flush(filter, std::vector<float>(30).data()));
    fa_fir_filter_uninit(filter);
}

TEST(FaFilterTest, FiltersInPlace) {
    const uintptr_t apart = fa_fir_filter_lpf_init(kFrame, 31, 0.3F, kFaHamming);
    const uintptr_t inPlace = fa_fir_filter_lpf_init(kFrame, 31, 0.3F, kFaHamming);
    auto x = FloatNoise(kFrame);
    std::vector<float> y(kFrame);
    fa_fir_filter(apart, x.data(), y.data(), kFrame);
    fa_fir_filter(inPlace, x.data(), x.data(), kFrame);
    EXPECT_EQ(y, x);
    fa_fir_filter_uninit(apart);
    fa_fir_filter_uninit(inPlace);
}

TEST(FaFilterTest, LowPassKeepsAConstantLevel) {
    const uintptr_t filter = fa_fir_filter_lpf_init(kFrame, 63, 0.3F, kFaHamming);
    std::vector<float> x(kFrame, 100.0F);
    std::vector<float> y(kFrame);
    fa_fir_filter(filter, x.data(), y.data(), kFrame);
    EXPECT_NEAR(100, y.back(), 0.5);
    fa_fir_filter_uninit(filter);
}

TEST(FaFilterTest, RefusesLengthsBelowOne) {
    EXPECT_EQ(kFaRefused, fa_fir_filter_lpf_init(0, 31, 0.3F, kFaHamming));
    EXPECT_EQ(kFaRefused, fa_fir_filter_lpf_init(-1, 31, 0.3F, kFaHamming));
    EXPECT_EQ(kFaRefused, fa_fir_filter_lpf_init(kFrame, 0, 0.3F, kFaHamming));
    EXPECT_EQ(kFaRefused, fa_fir_filter_hpf_init(kFrame, -2, 0.3F, kFaHamming));
}

TEST(FaFilterTest, RefusedHandleIsHarmless) {
    float sample = 77;
    for (const uintptr_t handle : {uintptr_t{0}, kFaRefused}) {
        EXPECT_EQ(0, fa_fir_filter(handle, &sample, &sample, 1));
        EXPECT_EQ(0, fa_fir_filter_flush(handle, &sample));
        fa_fir_filter_uninit(handle);
    }
    EXPECT_EQ(77, sample);
}

TEST(FaFilterTest, EmptyFrameIsNothing) {
    const uintptr_t filter = fa_fir_filter_lpf_init(kFrame, 31, 0.3F, kFaHamming);
    float sample = 77;
    EXPECT_EQ(0, fa_fir_filter(filter, &sample, &sample, 0));
    EXPECT_EQ(0, fa_fir_filter(filter, &sample, &sample, -1));
    EXPECT_EQ(77, sample);
    fa_fir_filter_uninit(filter);
}

TEST(FaFilterDeathTest, FrameLongerThanCreatedForAborts) {
    const uintptr_t filter = fa_fir_filter_lpf_init(kFrame, 31, 0.3F, kFaHamming);
    std::vector<float> x(kFrame + 1);
    EXPECT_EQ(kFrame, fa_fir_filter(filter, x.data(), x.data(), kFrame));
    EXPECT_DEATH(fa_fir_filter(filter, x.data(), x.data(), kFrame + 1), "frame_len <= flt->frame_len");
    fa_fir_filter_uninit(filter);
}

} // namespace
