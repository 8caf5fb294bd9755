// Reproducible audio for tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace k740::test {

/// White noise over the whole range of 16 bits, from a linear congruential generator.
inline std::vector<std::int16_t> Noise(std::size_t count, std::uint32_t seed = 1) {
    std::vector<std::int16_t> samples(count);
    for (std::int16_t& sample : samples) {
        seed = seed * 1103515245U + 12345U;
        sample = static_cast<std::int16_t>(seed >> 16);
    }
    return samples;
}

} // namespace k740::test
