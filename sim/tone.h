// A sine tone, for devices that stream something that can be heard and recognised.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace k740::sim {

/// @param hertz      frequency
/// @param samples    how many, at 44.1 kHz
/// @param amplitude  0 to 32767
std::vector<std::int16_t> Tone(double hertz, std::size_t samples, double amplitude = 10'000);

} // namespace k740::sim
