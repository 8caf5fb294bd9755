// The two rate changes that host audio needs.
#pragma once

#include <cstddef>

namespace bench {

/// One block of a conversion to 44.1 kHz.
struct Conversion {
    const char* name;
    int inRate;
    std::size_t inCount;
    std::size_t outCount;
    float step;
};

constexpr int kOutRate = 44100;
constexpr Conversion kFrom22kHz{"Resample22050To44100", 22050, 441, 882, 0.5F};
constexpr Conversion kFrom8kHz{"Resample8000To44100", 8000, 80, 441, 0.1814059F};

} // namespace bench
