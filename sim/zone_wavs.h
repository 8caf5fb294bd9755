// WAV files of what the zones of a controller hear, written while they hear it.
#pragma once

#include "sim/wav_writer.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace k740::sim {

class ZoneWavs {
public:
    /// @param prefix  path to which "zone1.wav" and so on is appended
    explicit ZoneWavs(std::string prefix) : m_prefix(std::move(prefix)) {}

    /// Appends to the file of each zone of the mask (bit 0 is zone 1), which is made when its zone first hears
    /// anything.
    /// @throws std::runtime_error when a file cannot be written
    void Append(std::uint32_t zones, const std::vector<std::int16_t>& samples);
    void Flush();

    /// @return the files by zone
    [[nodiscard]] std::map<int, std::string> Paths() const;

private:
    const std::string m_prefix;
    std::map<int, WavWriter> m_files;
};

} // namespace k740::sim
