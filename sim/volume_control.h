// The output volumes of a zone controller of either generation, and its answers about them.
#pragma once

#include "sim/bytes.h"
#include "sim/wire.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace k740::sim {

/// Of a zone controller: version 2 has four channels and codes of its own, version 3 eight (it tells of ten).
enum class Generation { V2, V3 };

/// Levels are attenuation steps 0 to 19 as on the wire, 255 for a channel that does not exist.
class VolumeControl {
public:
    struct Answer {
        std::uint16_t command = 0;
        Bytes payload;
    };

    VolumeControl() { SetGeneration(Generation::V3); }

    /// All channels that the generation has are at 0 then.
    void SetGeneration(Generation generation);

    /// @throws std::invalid_argument unless there are 4 (version 2) or 10 levels (version 3)
    void SetLevels(const std::vector<std::uint8_t>& levels);
    [[nodiscard]] const std::vector<std::uint8_t>& Levels() const { return m_levels; }

    /// Meets a request about volumes.
    /// @return nothing for other codes, those of the other generation among them
    std::optional<Answer> Meet(const Packet& request);

private:
    void Set(std::size_t channel, std::uint8_t level);
    [[nodiscard]] Bytes LevelsPayload() const;

    Generation m_generation = Generation::V3;
    std::vector<std::uint8_t> m_levels;
};

} // namespace k740::sim
