// Window functions, and the estimates of window and length for a wanted filter.
#include "public/fa_resample/fa_fir.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

using std::numbers::pi;

constexpr float kDefaultBeta = 8.96F;

/// Fills a window from its formula, each pair once; the formula takes the position 0..1 from end to end.
template <typename Formula> int FillSymmetric(float* w, int N, Formula formula) {
    if (N == 1) { w[0] = 1; }
    for (int n = 0; N > 1 && n <= (N - 1) / 2; ++n) {
        const auto value = static_cast<float>(formula(static_cast<double>(n) / (N - 1)));
        w[n] = value;
        w[N - 1 - n] = value;
    }
    return N;
}

/// Modified Bessel function of the first kind and order 0, by its power series.
double BesselI0(double x) {
    constexpr double kPrecision = 1e-16;
    double sum = 1;
    double term = 1; // (x / 2)^k / k!
    for (int k = 1; term * term > kPrecision * sum; ++k) {
        term *= x / 2 / k;
        sum += term * term;
    }
    return sum;
}

/// Truncated to what an int holds; 0 when it is not a number.
int TapCount(double estimate) {
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(std::max(0.0, estimate), kHighest));
}

} // namespace

int fa_hamming(float* w, int N) {
    return FillSymmetric(w, N, [](double t) { return 0.54 - 0.46 * std::cos(2 * pi * t); });
}

int fa_blackman(float* w, int N) {
    return FillSymmetric(w, N,
                         [](double t) { return 0.42 - 0.5 * std::cos(2 * pi * t) + 0.08 * std::cos(4 * pi * t); });
}

int fa_kaiser(float* w, int N) {
    return fa_kaiser_beta(w, N, kDefaultBeta);
}

int fa_kaiser_beta(float* w, int N, float beta) {
    return FillSymmetric(w, N, [beta, peak = BesselI0(beta)](double t) {
        const double x = 2 * t - 1;
        return BesselI0(beta * std::sqrt(1 - x * x)) / peak;
    });
}

float fa_kaiser_atten2beta(float atten) {
    if (atten <= 21) { return 0; }
    if (atten < 50) { return static_cast<float>(0.5842 * std::pow(atten - 21, 0.4) + 0.07886 * (atten - 21)); }
    return static_cast<float>(0.1102 * (atten - 8.7));
}

int fa_hamming_cof_num(float tw) {
    return TapCount(6.2 / tw);
}

int fa_blackman_cof_num(float tw) {
    return TapCount(6.6 / tw);
}

int fa_kaiser_cof_num(float tw, float atten) {
    return TapCount(atten > 21 ? 2 * (atten - 7.95) / (14.36 * tw) : 1.8444 / tw);
}
