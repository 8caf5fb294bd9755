// WAV files of what zones heard.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace k740::sim {

inline constexpr int kSampleRate = 44100; // Hz

/// Writes 16 bit mono samples at 44.1 kHz.
/// @throws std::runtime_error when the file cannot be written
void WriteWav(const std::string& path, const std::vector<std::int16_t>& samples);

/// @throws std::runtime_error when the file cannot be read or is anything else than 16 bit mono at 44.1 kHz
std::vector<std::int16_t> ReadWav(const std::string& path);

} // namespace k740::sim
