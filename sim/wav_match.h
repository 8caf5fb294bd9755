// How well what was heard matches what was sent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace k740::sim {

struct WavMatch {
    std::ptrdiff_t offset = 0;  // samples by which the sent audio begins later in what was heard
    std::size_t compared = 0;   // samples that both have
    std::size_t missing = 0;    // samples sent that were not heard
    double correlation = 0;     // of the compared samples, 1 for equal ones
    double signalToNoiseDb = 0; // the sent signal against its difference from what was heard
};

/// Finds where the sent audio lies in what was heard, within a tenth of a second, and compares the two.
WavMatch Match(const std::vector<std::int16_t>& sent, const std::vector<std::int16_t>& heard);

} // namespace k740::sim
