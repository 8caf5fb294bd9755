// The zone monitor: the host listens to what zones play.
#pragma once

#include "common/sem.h"
#include "zcu/query_records.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class CGroupReceiver;
class CK740ControlApp;
class CQBTime;

inline constexpr std::size_t kMaxMonitoredZones = 5;

/// One monitored zone.
struct tagMONITOR_ZONES {
    uint32_t zcuID;
    uint32_t zone;           // 1..8
    _zone_mcast_t multicast; // 0 until the controller has told
    uint32_t generation;     // tells a zone that was stopped and started again from before

    bool IsZone(uint32_t id, uint32_t number) const { return zcuID == id && zone == number; }
};

/// Two threads for each monitored zone: one asks its controller for the zone's group, one receives it. They end by
/// themselves once their zone is no longer listed. Any thread may call anything.
class CMonitor {
public:
    explicit CMonitor(CK740ControlApp& app) : m_app(app) {}
    virtual ~CMonitor() = default;

    /// Forgets all zones; starts nothing.
    void Initialization();

    /// @return 0 started; 1 monitored already; -1 no thread could be made; -2 five zones are monitored
    int StartMonitorZone(uint32_t zcuID, uint32_t zone);
    /// @return 0, whether the zone was monitored or not
    int StopMonitorZone(uint32_t zcuID, uint32_t zone);
    /// Notes the group of the zone, whatever the generation.
    void SetMonitorZoneMCast(uint32_t zcuID, uint32_t zone, uint32_t generation, const _zone_mcast_t& multicast);
    /// @param out  zeroes when the zone is not monitored in this generation
    void GetMonitorZoneMCast(uint32_t zcuID, uint32_t zone, uint32_t generation, _zone_mcast_t& out) const;
    /// @return 1 when the zone is monitored, in whatever generation, else 0
    int IsMonitorZoneExists(uint32_t zcuID, uint32_t zone, uint32_t generation) const;

private:
    /// What a zone's threads are given.
    struct Listed {
        uint32_t zcuID;
        uint32_t zone;
        uint32_t generation;
    };

    int List(Listed& listed);
    void Unlist(const Listed& listed);
    bool StartThreads(const Listed& listed);
    bool IsCurrent(const Listed& listed) const;
    template <typename Match> bool IsAny(Match match) const;
    void ThreadGetMonitoZoneMCastIP(const Listed& listed);
    void QueryGroup(const Listed& listed);
    void ThreadRecvMultiData(const Listed& listed);
    /// Follows the zone's group and waits for a datagram.
    void PassAudio(const Listed& listed, CGroupReceiver& receiver, CQBTime& sinceFailedJoin);

    CK740ControlApp& m_app;
    uint32_t m_generation K740_GUARDED_BY(m_lock) = 0;
    std::vector<tagMONITOR_ZONES> m_zones K740_GUARDED_BY(m_lock);
    mutable CQBSem m_lock;
};
