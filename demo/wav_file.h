// Reading the one kind of WAV file that the sample host broadcasts.
#pragma once

#include <string>
#include <vector>

/// Reads the PCM of a 44.1 kHz 16-bit mono WAV file (RIFF WAVE, IBM and Microsoft, 1991).
/// @throws std::runtime_error when the file cannot be read or holds anything else
std::vector<unsigned char> ReadPcm(const std::string& path);
