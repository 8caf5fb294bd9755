// The two threads of a monitored zone.
#include "app/application.h"
#include "common/ip_address.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "monitor/monitor.h"
#include "player/group_receiver.h"

#include <cstring>

namespace {

constexpr unsigned kQueryPeriodMs = 3'000; // from the end of a query to the next
constexpr unsigned kPauseMs = 20;
constexpr unsigned kStillWantedMs = 20;
constexpr unsigned kJoinRetryMs = 1'000;
constexpr const char* kNoGroup = "0.0.0.0";
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

void CMonitor::ThreadGetMonitoZoneMCastIP(const Listed& listed) {
    CQBTime sinceQuery; // not started: the first query goes out at once
    while (!m_app.Lifetime().IsExiting() && IsCurrent(listed)) {
        if (sinceQuery.TimeEnd() >= kQueryPeriodMs) {
            ContainExceptions([&] { QueryGroup(listed); });
            sinceQuery.TimeStart();
        }
        m_app.Lifetime().Pause(kPauseMs);
    }
}

void CMonitor::QueryGroup(const Listed& listed) {
    tagQUERY_ZONE_MCAST_IP_RSP answer{};
    int error = 0;
    if (!m_app.ZCU().ZCU_Request_GetZoneMCastIP(static_cast<int>(listed.zcuID), &answer, error)) { return; }
    // The zone may have been stopped while the query waited.
    if (!IsCurrent(listed)) { return; }
    SetMonitorZoneMCast(listed.zcuID, listed.zone, listed.generation, ZoneMulticast(answer, listed.zone));
}

void CMonitor::ThreadRecvMultiData(const Listed& listed) {
    CGroupReceiver receiver(m_app);
    CQBTime sinceLook;
    CQBTime sinceFailedJoin; // not started: the first join is tried at once
    sinceLook.TimeStart();
    while (!m_app.Lifetime().IsExiting()) {
        if (sinceLook.TimeEnd() > kStillWantedMs) {
            if (!IsCurrent(listed)) { return; }
            sinceLook.TimeStart();
        }
        _zone_mcast_t multicast;
        GetMonitorZoneMCast(listed.zcuID, listed.zone, listed.generation, multicast);
        const std::string group = ConvertIPToString(multicast.group);
        if (group == kNoGroup) {
            receiver.Leave();
            m_app.Lifetime().Pause(kPauseMs);
            continue;
        }
        if (group != receiver.Group() && sinceFailedJoin.TimeEnd() > kJoinRetryMs &&
            !receiver.Join(group, m_app.Configuration().MulticastPort())) {
            sinceFailedJoin.TimeStart();
        }
        const int length = receiver.Receive();
        if (length > 0) {
            m_app.Callbacks().MonitorZone(static_cast<int>(listed.zcuID), static_cast<int>(listed.zone),
                                          {receiver.Audio(), length});
        }
    }
}
