#include "monitor/monitor.h"

#include "app/application.h"
#include "common/worker.h"

#include <algorithm>
#include <limits>

namespace {
constexpr int kMonitoredAlready = 1;
constexpr int kNoThread = -1;
constexpr int kTooManyZones = -2;

/// @return whether an entry is of the zone, in whatever generation
auto OfZone(uint32_t zcuID, uint32_t zone) {
    return [=](const tagMONITOR_ZONES& known) { return known.IsZone(zcuID, zone); };
}

auto OfGeneration(uint32_t zcuID, uint32_t zone, uint32_t generation) {
    return [=](const tagMONITOR_ZONES& known) { return known.IsZone(zcuID, zone) && known.generation == generation; };
}
} // namespace

void CMonitor::Initialization() {
    const CQBSemLocker lock(&m_lock);
    m_zones.clear();
    m_generation = 0;
}

int CMonitor::StartMonitorZone(uint32_t zcuID, uint32_t zone) {
    Listed listed{zcuID, zone, 0};
    const int result = List(listed);
    if (result != 0 || StartThreads(listed)) { return result; }
    Unlist(listed);
    return kNoThread;
}

int CMonitor::List(Listed& listed) {
    const CQBSemLocker lock(&m_lock);
    if (m_zones.size() >= kMaxMonitoredZones) { return kTooManyZones; }
    if (std::any_of(m_zones.begin(), m_zones.end(), OfZone(listed.zcuID, listed.zone))) { return kMonitoredAlready; }
    if (m_generation == std::numeric_limits<uint32_t>::max()) { m_generation = 0; }
    listed.generation = ++m_generation;
    m_zones.push_back({listed.zcuID, listed.zone, {}, listed.generation});
    return 0;
}

// By its generation: the zone may have been stopped and started again meanwhile.
void CMonitor::Unlist(const Listed& listed) {
    const CQBSemLocker lock(&m_lock);
    std::erase_if(m_zones, OfGeneration(listed.zcuID, listed.zone, listed.generation));
}

bool CMonitor::StartThreads(const Listed& listed) {
    return StartThread("k740-mon-group", [this, listed] { ThreadGetMonitoZoneMCastIP(listed); }) &&
           StartThread("k740-mon-audio", [this, listed] { ThreadRecvMultiData(listed); });
}

int CMonitor::StopMonitorZone(uint32_t zcuID, uint32_t zone) {
    const CQBSemLocker lock(&m_lock);
    std::erase_if(m_zones, OfZone(zcuID, zone));
    return 0;
}

void CMonitor::SetMonitorZoneMCast(uint32_t zcuID, uint32_t zone, uint32_t /*generation*/,
                                   const _zone_mcast_t& multicast) {
    const CQBSemLocker lock(&m_lock);
    for (tagMONITOR_ZONES& known : m_zones) {
        if (known.IsZone(zcuID, zone)) { known.multicast = multicast; }
    }
}

void CMonitor::GetMonitorZoneMCast(uint32_t zcuID, uint32_t zone, uint32_t generation, _zone_mcast_t& out) const {
    out = {};
    const CQBSemLocker lock(&m_lock);
    const auto found = std::find_if(m_zones.begin(), m_zones.end(), OfGeneration(zcuID, zone, generation));
    if (found != m_zones.end()) { out = found->multicast; }
}

int CMonitor::IsMonitorZoneExists(uint32_t zcuID, uint32_t zone, uint32_t /*generation*/) const {
    return IsAny(OfZone(zcuID, zone)) ? 1 : 0;
}

bool CMonitor::IsCurrent(const Listed& listed) const {
    return IsAny(OfGeneration(listed.zcuID, listed.zone, listed.generation));
}

template <typename Match> bool CMonitor::IsAny(Match match) const {
    const CQBSemLocker lock(&m_lock);
    return std::any_of(m_zones.begin(), m_zones.end(), match);
}
