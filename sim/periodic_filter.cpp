#include "sim/periodic_filter.h"

#include <algorithm>
#include <set>
#include <utility>

namespace k740::sim {
namespace {

bool IsPeriodic(const Event& event) {
    using enum Event::Kind;
    static const std::set<std::pair<Event::Kind, std::uint16_t>> periodic{
        {Received, command::kHeartbeat},    {Sent, command::kHeartbeat},    {Received, command::kHeartbeatAnswer},
        {Received, command::kStatusReport}, {Sent, command::kStatusReport}, {Received, command::kPagingHeartbeat},
        {Sent, command::kPagingStatus}};
    return event.packet && periodic.contains({event.kind, event.packet->command});
}

} // namespace

bool PeriodicFilter::Passes(const Event& event) {
    if (m_lines == PeriodicLines::All || !IsPeriodic(event)) { return true; }
    const bool passes = m_lines == PeriodicLines::Changes && Differs(event);
    m_held += passes ? 0 : 1;
    return passes;
}

bool PeriodicFilter::Differs(const Event& event) {
    const Packet& packet = *event.packet;
    const std::uint32_t other = packet.source == event.device ? packet.destination : packet.source;
    const auto [latest, isNew] = m_latest.try_emplace({event.device, event.kind, packet.command, other});
    const std::size_t size = std::min<std::size_t>(packet.length, packet.payload.size());
    const ByteView payload(packet.payload.data(), size);
    if (!isNew && std::ranges::equal(latest->second, payload)) { return false; }
    latest->second.assign(payload.begin(), payload.end());
    return true;
}

} // namespace k740::sim
