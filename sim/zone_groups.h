// The multicast groups on which the zones of a controller circulate what they play.
#pragma once

#include "sim/bytes.h"
#include "sim/wire.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace k740::sim {

/// Where the eight entries of the answer 0x8303 lie: hardware begins with them; virtual controllers put a byte 1
/// before.
enum class ZoneGroupLayout { Hardware, Virtual };

/// One entry per zone: the group's address and a word that goes with it.
class ZoneGroups {
public:
    /// @param zone   1 to 8; throws std::out_of_range for others
    /// @param group  IPv4 text; an empty one or 0.0.0.0 for none
    void Set(int zone, const std::string& group, std::uint32_t word);
    void SetLayout(ZoneGroupLayout layout) { m_layout = layout; }

    /// @return "0.0.0.0" for a zone (1 to 8) without a group
    [[nodiscard]] std::string GroupOf(int zone) const;

    /// The 65 bytes of an answer.
    [[nodiscard]] Bytes Payload() const;

private:
    struct Entry {
        std::uint32_t group = 0;
        std::uint32_t word = 0;
    };

    std::array<Entry, kZones> m_entries{}; // [0] is zone 1
    ZoneGroupLayout m_layout = ZoneGroupLayout::Hardware;
};

} // namespace k740::sim
