#include "monitor/monitor.h"

#include "app/application.h"
#include "common/worker.h"

#include <algorithm>
#include <limits>

namespace {
constexpr int kMonitoredAlready = 1;
constexpr int kNoThread = -1;
constexpr int kTooManyZones = -2;
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
    StopMonitorZone(zcuID, zone);
    return kNoThread;
}

int CMonitor::List(Listed& listed) {
    const CQBSemLocker lock(&m_lock);
    if (m_zones.size() >= kMaxMonitoredZones) { return kTooManyZones; }
    const auto isListed = [&](const tagMONITOR_ZONES& known) { return known.IsZone(listed.zcuID, listed.zone); };
    if (std::any_of(m_zones.begin(), m_zones.end(), isListed)) { return kMonitoredAlready; }
    if (m_generation == std::numeric_limits<uint32_t>::max()) { m_generation = 0; }
    listed.generation = ++m_generation;
    m_zones.push_back({listed.zcuID, listed.zone, {}, listed.generation});
    return 0;
}

bool CMonitor::StartThreads(const Listed& listed) {
    return StartThread("k740-mon-group", [this, listed] { ThreadGetMonitoZoneMCastIP(listed); }) &&
           StartThread("k740-mon-audio", [this, listed] { ThreadRecvMultiData(listed); });
}

int CMonitor::StopMonitorZone(uint32_t zcuID, uint32_t zone) {
    const CQBSemLocker lock(&m_lock);
    std::erase_if(m_zones, [=](const tagMONITOR_ZONES& known) { return known.IsZone(zcuID, zone); });
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
    for (const tagMONITOR_ZONES& known : m_zones) {
        if (known.IsZone(zcuID, zone) && known.generation == generation) { out = known.multicast; }
    }
}

int CMonitor::IsMonitorZoneExists(uint32_t zcuID, uint32_t zone, uint32_t /*generation*/) const {
    const CQBSemLocker lock(&m_lock);
    return std::any_of(m_zones.begin(), m_zones.end(),
                       [=](const tagMONITOR_ZONES& known) { return known.IsZone(zcuID, zone); })
               ? 1
               : 0;
}

bool CMonitor::IsCurrent(const Listed& listed) const {
    const CQBSemLocker lock(&m_lock);
    return std::any_of(m_zones.begin(), m_zones.end(), [&](const tagMONITOR_ZONES& known) {
        return known.IsZone(listed.zcuID, listed.zone) && known.generation == listed.generation;
    });
}
