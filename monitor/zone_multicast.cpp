#include "monitor/zone_multicast.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr uint32_t kMulticastClassMask = 0xF0000000;
constexpr uint32_t kMulticastClass = 0xE0000000; // 224.0.0.0/4
constexpr uint8_t kVirtualTable = 1;

bool IsGroup(const _zone_mcast_t& multicast) {
    return (multicast.group & kMulticastClassMask) == kMulticastClass;
}

} // namespace

_zone_mcast_t ZoneMulticast(const tagQUERY_ZONE_MCAST_IP_RSP& answer, uint32_t zone) {
    // The answer's bytes end with a trailing one, to which the last entry behind a leading 1 extends.
    static_assert(offsetof(tagQUERY_ZONE_MCAST_IP_RSP, trailing) == sizeof(answer.table));
    const auto* bytes = reinterpret_cast<const unsigned char*>(&answer);
    const std::size_t offset = sizeof(_zone_mcast_t) * (zone - 1);
    _zone_mcast_t entry;
    std::memcpy(&entry, bytes + offset, sizeof(entry));
    if (IsGroup(entry)) { return entry; }
    if (answer.table[0] != kVirtualTable) { return {}; }
    std::memcpy(&entry, bytes + offset + 1, sizeof(entry));
    return IsGroup(entry) ? entry : _zone_mcast_t{};
}
