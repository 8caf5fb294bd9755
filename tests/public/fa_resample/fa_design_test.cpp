#include "public/fa_resample/fa_design.h"
#include "public/fa_resample/fa_fir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace {

/// Calls a design as its users do and releases its array as they do.
template <typename Design, typename... Arguments> std::vector<float> Taps(Design design, Arguments... arguments) {
    float* h = nullptr;
    const int count = design(&h, arguments...);
    std::vector<float> taps(h, h + count);
    std::free(h);
    return taps;
}

void ExpectHalf(const std::vector<float>& expected, const std::vector<float>& taps) {
    ASSERT_EQ(expected.size() * 2 - 1, taps.size());
    for (std::size_t n = 0; n < expected.size(); ++n) {
        EXPECT_NEAR(expected[n], taps[n], 1e-6) << n;
        EXPECT_EQ(taps[n], taps[taps.size() - 1 - n]) << n;
    }
}

double Gain(const std::vector<float>& taps, double frequency) {
    std::complex<double> sum = 0;
    for (std::size_t n = 0; n < taps.size(); ++n) {
        sum += std::polar(double{taps[n]}, -std::numbers::pi * frequency * static_cast<double>(n));
    }
    return std::abs(sum);
}

TEST(FaDesignTest, LowPassHasKnownTaps) {
    const auto taps = Taps(&fa_fir_lpf_cof, 7, kFaHamming, 0.5F);
    ExpectHalf({-0.0084883F, 0.0F, 0.2450986F, 0.5F}, taps);
    EXPECT_EQ(0.0F, taps[1]); // sinc is exactly zero there
    EXPECT_EQ(0.0F, taps[5]);
}

TEST(FaDesignTest, HighPassHasKnownTaps) {
    ExpectHalf({-0.0000712F, -0.0189308F, -0.1389944F, 0.75F}, Taps(&fa_fir_hpf_cof, 6, kFaKaiser, 0.25F));
}

TEST(FaDesignTest, BandPassHasKnownTaps) {
    ExpectHalf({-0.0144904F, -0.0493380F, 0.0717877F, 0.25F}, Taps(&fa_fir_bandpass_cof, 7, kFaHamming, 0.25F, 0.5F));
}

TEST(FaDesignTest, BandStopHasKnownTaps) {
    ExpectHalf({0.0F, 0.0206901F, -0.0587354F, 0.75F}, Taps(&fa_fir_bandstop_cof, 7, kFaBlackman, 0.25F, 0.5F));
}

TEST(FaDesignTest, LowPassKeepsAnEvenNumberOfTaps) {
    EXPECT_EQ(10U, Taps(&fa_fir_lpf_cof, 10, kFaHamming, 0.5F).size());
    EXPECT_EQ(11U, Taps(&fa_fir_lpf_cof, 11, kFaHamming, 0.5F).size());
}

TEST(FaDesignTest, OtherDesignsRaiseAnEvenNumberOfTaps) {
    for (const auto& [asked, given] : {std::pair{9, 9U}, {10, 11U}, {11, 11U}}) {
        EXPECT_EQ(given, Taps(&fa_fir_hpf_cof, asked, kFaHamming, 0.5F).size());
        EXPECT_EQ(given, Taps(&fa_fir_bandpass_cof, asked, kFaHamming, 0.2F, 0.5F).size());
        EXPECT_EQ(given, Taps(&fa_fir_bandstop_cof, asked, kFaHamming, 0.2F, 0.5F).size());
    }
}

TEST(FaDesignTest, NoTapsGiveNoArray) {
    for (const int N : {0, -1}) {
        float* h = nullptr;
        EXPECT_EQ(0, fa_fir_lpf_cof(&h, N, kFaHamming, 0.5F));
        EXPECT_EQ(nullptr, h);
        EXPECT_EQ(0, fa_fir_hpf_cof(&h, N, kFaHamming, 0.5F));
        EXPECT_EQ(nullptr, h);
    }
}

TEST(FaDesignTest, UnknownWindowIsHamming) {
    EXPECT_EQ(Taps(&fa_fir_lpf_cof, 31, kFaHamming, 0.3F), Taps(&fa_fir_lpf_cof, 31, 3, 0.3F));
    EXPECT_EQ(Taps(&fa_fir_lpf_cof, 31, kFaHamming, 0.3F), Taps(&fa_fir_lpf_cof, 31, -1, 0.3F));
}

TEST(FaDesignTest, DesignsPassAndStopWhatTheyShould) {
    constexpr int kTaps = 201;
    const auto low = Taps(&fa_fir_lpf_cof, kTaps, kFaKaiser, 0.4F);
    EXPECT_NEAR(1, Gain(low, 0.2), 1e-3);
    EXPECT_LT(Gain(low, 0.6), 1e-4);
    const auto high = Taps(&fa_fir_hpf_cof, kTaps, kFaKaiser, 0.4F);
    EXPECT_LT(Gain(high, 0.2), 1e-4);
    EXPECT_NEAR(1, Gain(high, 0.6), 1e-3);
    const auto pass = Taps(&fa_fir_bandpass_cof, kTaps, kFaKaiser, 0.3F, 0.6F);
    EXPECT_LT(Gain(pass, 0.1), 1e-4);
    EXPECT_NEAR(1, Gain(pass, 0.45), 1e-3);
    EXPECT_LT(Gain(pass, 0.8), 1e-4);
    const auto stop = Taps(&fa_fir_bandstop_cof, kTaps, kFaKaiser, 0.3F, 0.6F);
    EXPECT_NEAR(1, Gain(stop, 0.1), 1e-3);
    EXPECT_LT(Gain(stop, 0.45), 1e-4);
    EXPECT_NEAR(1, Gain(stop, 0.8), 1e-3);
}

TEST(FaDesignDeathTest, EvenNumberOfTapsAbortsTheRoutinesWithACentreTap) {
    float h[10] = {};
    EXPECT_DEATH(DesignHighPass(h, 10, 0.5F), "N&1");
    EXPECT_DEATH(DesignBandPass(h, 10, 0.2F, 0.5F), "N&1");
    EXPECT_DEATH(DesignBandStop(h, 10, 0.2F, 0.5F), "N&1");
    DesignLowPass(h, 10, 0.5F);
}

TEST(FaConvTest, ConvolvesCompletely) {
    const float x[] = {1, 2, 3};
    const float h[] = {10, 1};
    float y[5] = {0, 0, 0, 0, 77};
    EXPECT_EQ(4, fa_conv(x, 3, h, 2, y));
    EXPECT_EQ((std::vector<float>{10, 21, 32, 3, 77}), std::vector<float>(y, y + 5));
}

TEST(FaConvTest, NothingConvolvedIsNothing) {
    const float x = 1;
    float y = 77;
    EXPECT_EQ(0, fa_conv(&x, 0, &x, 1, &y));
    EXPECT_EQ(0, fa_conv(&x, 1, &x, 0, &y));
    EXPECT_EQ(0, fa_conv(&x, -1, &x, 1, &y));
    EXPECT_EQ(77, y);
}

} // namespace
