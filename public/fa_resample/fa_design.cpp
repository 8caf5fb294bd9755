#include "public/fa_resample/fa_design.h"

#include "public/fa_resample/fa_require.h"

#include <cmath>
#include <numbers>

namespace {

double Sinc(double x) {
    if (x == std::floor(x)) { return x == 0 ? 1 : 0; }
    return std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

/// Impulse response at k samples from its middle of the ideal low-pass.
double IdealLowPass(double fc, double k) {
    return fc * Sinc(fc * k);
}

/// Multiplies a window by the ideal response; the first half is mirrored, for exact symmetry.
template <typename Response> void Shape(float* h, int N, Response response) {
    for (int n = 0; n <= (N - 1) / 2; ++n) {
        const auto tap = static_cast<float>(response(n - (N - 1) / 2.0) * h[n]);
        h[n] = tap;
        h[N - 1 - n] = tap;
    }
}

void RequireCentreTap(int N) {
    Require((N & 1) != 0, "N&1");
}

} // namespace

void DesignLowPass(float* h, int N, float fc) {
    Shape(h, N, [fc](double k) { return IdealLowPass(fc, k); });
}

void DesignHighPass(float* h, int N, float fc) {
    RequireCentreTap(N);
    Shape(h, N, [fc](double k) { return -IdealLowPass(fc, k); });
    h[N / 2] = 1 - fc;
}

void DesignBandPass(float* h, int N, float f1, float f2) {
    RequireCentreTap(N);
    Shape(h, N, [=](double k) { return IdealLowPass(f2, k) - IdealLowPass(f1, k); });
    h[N / 2] = f2 - f1;
}

void DesignBandStop(float* h, int N, float f1, float f2) {
    RequireCentreTap(N);
    Shape(h, N, [=](double k) { return IdealLowPass(f1, k) - IdealLowPass(f2, k); });
    h[N / 2] = 1 - (f2 - f1);
}
