// Taps of a design, owned.
#pragma once

#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

/// Copies the taps of a design and releases its array.
/// @param design  (float** h) -> number of taps, as the fa_fir_..._cof functions
/// @throws        std::bad_alloc when the design gives none
template <typename Design> std::vector<float> TakeTaps(Design design) {
    float* h = nullptr;
    const int count = design(&h);
    const std::unique_ptr<float, decltype(&std::free)> owner(h, &std::free);
    if (count < 1) { throw std::bad_alloc(); }
    return {h, h + count};
}
