// The two threads of a monitored zone.
#include "app/application.h"
#include "common/device_types.h"
#include "common/ip_address.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "monitor/monitor.h"
#include "monitor/zone_multicast.h"
#include "player/group_receiver.h"

namespace {

constexpr unsigned kQueryPeriodMs = 3'000; // from the end of a query to the next
constexpr unsigned kPauseMs = 20;
constexpr unsigned kStillWantedMs = 20;
constexpr unsigned kJoinRetryMs = 1'000;
constexpr const char* kNoGroup = "0.0.0.0";

} // namespace

void CMonitor::ThreadGetMonitoZoneMCastIP(const Listed& listed) {
    if (!IsZone(static_cast<int>(listed.zone))) { return; }
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

// What a pass throws, for want of memory say, costs that pass alone: nobody would start a zone that is listed.
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
        if (!ContainExceptions([&] { PassAudio(listed, receiver, sinceFailedJoin); })) {
            m_app.Lifetime().Pause(kPauseMs);
        }
    }
}

void CMonitor::PassAudio(const Listed& listed, CGroupReceiver& receiver, CQBTime& sinceFailedJoin) {
    _zone_mcast_t multicast;
    GetMonitorZoneMCast(listed.zcuID, listed.zone, listed.generation, multicast);
    const std::string group = ConvertIPToString(multicast.group);
    if (group == kNoGroup) {
        receiver.Leave();
        m_app.Lifetime().Pause(kPauseMs);
        return;
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
