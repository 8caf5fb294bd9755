#include "public/fa_resample/fa_fir.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace {

using Window = std::function<int(float*, int)>;

const Window kBeta4 = [](float* w, int N) { return fa_kaiser_beta(w, N, 4); };

void ExpectWindow(const Window& window, const std::vector<float>& expected) {
    std::vector<float> w(expected.size() + 1, 77.0F);
    EXPECT_EQ(static_cast<int>(expected.size()), window(w.data(), static_cast<int>(expected.size())));
    for (std::size_t n = 0; n < expected.size(); ++n) { EXPECT_NEAR(expected[n], w[n], 1e-6) << n; }
    EXPECT_EQ(77.0F, w.back());
}

TEST(FaWindowTest, HammingOfFiveIsSymmetricWithOneInTheMiddle) {
    ExpectWindow(&fa_hamming, {0.08F, 0.54F, 1.0F, 0.54F, 0.08F});
    std::vector<float> w(5);
    fa_hamming(w.data(), 5);
    EXPECT_EQ(1.0F, w[2]);
}

TEST(FaWindowTest, HammingOfSixHasTwoMiddles) {
    ExpectWindow(&fa_hamming, {0.08F, 0.3978522F, 0.9121478F, 0.9121478F, 0.3978522F, 0.08F});
}

TEST(FaWindowTest, BlackmanAndKaiserFollowTheirFormulas) {
    ExpectWindow(&fa_blackman, {0.0F, 0.34F, 1.0F, 0.34F, 0.0F});
    ExpectWindow(&fa_kaiser, {0.0009495547F, 0.3243259F, 1.0F, 0.3243259F, 0.0009495547F});
    ExpectWindow(kBeta4, {0.0884805F, 0.8216091F, 0.8216091F, 0.0884805F});
}

TEST(FaWindowTest, EveryWindowIsExactlySymmetric) {
    for (const Window& window : {Window(&fa_hamming), Window(&fa_blackman), Window(&fa_kaiser), kBeta4}) {
        for (const int N : {2, 3, 64, 65, 441}) {
            std::vector<float> w(static_cast<std::size_t>(N));
            window(w.data(), N);
            EXPECT_EQ(w, std::vector<float>(w.rbegin(), w.rend()));
        }
    }
}

TEST(FaWindowTest, WindowOfOnePointIsOneAndOfNoneTouchesNothing) {
    for (const Window& window : {Window(&fa_hamming), Window(&fa_blackman), Window(&fa_kaiser), kBeta4}) {
        ExpectWindow(window, {1.0F});
        ExpectWindow(window, {});
        EXPECT_EQ(INT_MIN, window(nullptr, INT_MIN));
    }
}

TEST(FaWindowTest, AttenuationGivesBetaInThreeRanges) {
    EXPECT_EQ(0.0F, fa_kaiser_atten2beta(0));
    EXPECT_EQ(0.0F, fa_kaiser_atten2beta(21));
    EXPECT_GT(fa_kaiser_atten2beta(21.001F), 0.0F);
    EXPECT_NEAR(2.1166249, fa_kaiser_atten2beta(30), 1e-6);
    EXPECT_NEAR(0.5842 * std::pow(28.99, 0.4) + 0.07886 * 28.99, fa_kaiser_atten2beta(49.99F), 1e-5);
    EXPECT_NEAR(4.55126, fa_kaiser_atten2beta(50), 1e-6);
    EXPECT_NEAR(0.1102 * 51.3, fa_kaiser_atten2beta(60), 1e-6);
}

TEST(FaWindowTest, TapEstimatesAreTruncated) {
    EXPECT_EQ(206, fa_hamming_cof_num(0.03F));
    EXPECT_EQ(220, fa_blackman_cof_num(0.03F));
    EXPECT_EQ(241, fa_kaiser_cof_num(0.03F, 60));
    EXPECT_EQ(61, fa_kaiser_cof_num(0.03F, 21));
}

TEST(FaWindowTest, TapEstimateOfNoTransitionIsTheHighestInt) {
    EXPECT_EQ(std::numeric_limits<int>::max(), fa_hamming_cof_num(0));
}

TEST(FaWindowTest, TapEstimateOfANegativeTransitionIsZero) {
    EXPECT_EQ(0, fa_blackman_cof_num(-1));
}

} // namespace
