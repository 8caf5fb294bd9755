#include "sim/zone_wavs.h"

#include "sim/wire.h"

namespace k740::sim {

void ZoneWavs::Append(std::uint32_t zones, const std::vector<std::int16_t>& samples) {
    for (int zone = 1; zone <= kZones; ++zone) {
        if ((zones & (1U << (zone - 1))) == 0) { continue; }
        auto found = m_files.find(zone);
        if (found == m_files.end()) {
            found = m_files.emplace(zone, WavWriter(m_prefix + "zone" + std::to_string(zone) + ".wav")).first;
        }
        found->second.Append(samples);
    }
}

void ZoneWavs::Flush() {
    for (auto& [zone, file] : m_files) { file.Flush(); }
}

std::map<int, std::string> ZoneWavs::Paths() const {
    std::map<int, std::string> paths;
    for (const auto& [zone, file] : m_files) { paths.emplace(zone, file.Path()); }
    return paths;
}

} // namespace k740::sim
