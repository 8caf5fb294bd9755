// The inner loop of every convolution here.
#pragma once

/// Adds x[0..count-1] times tap to y. One tap over many samples, so that the compiler works on vectors without
/// reordering the sum of any one output.
inline void AddScaled(const float* x, int count, float tap, float* y) {
    for (int n = 0; n < count; ++n) { y[n] += tap * x[n]; }
}
