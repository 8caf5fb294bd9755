// Paging stations: status, tasks, zone monitoring and push-to-talk audio.
#pragma once

#include "common/bounded_table.h"
#include "devices/status_table.h"
#include "protocol/cmd_packet.h"
#include "rpk/rpk_records.h"

#include <time.h>

#include <cstdint>
#include <deque>
#include <string>

class CK740ControlApp;

/// Any thread may call anything.
class CRPK {
public:
    explicit CRPK(CK740ControlApp& app) : m_app(app) {}
    virtual ~CRPK() = default;

    /// Starts nothing: the periodic work runs on the zone controllers' refresh thread.
    void Initialization() {}

    /// Handles a status report: queues it for the next merge.
    void RPK_Response_RPKStatus(const _vxa_cmd_packet_t* packet);
    /// Queues an off-line status; nothing for an ID that is no paging station's.
    void OffLine_RPK(int id);
    /// Merges the queued reports, ages the table and forgets stations that are no longer registered.
    void UpdateRPKStatus(time_t now = time(nullptr));
    bool NeedsOffLineMark(int id, time_t now) const { return m_status.NeedsOffLineMark(id, now); }
    std::deque<tagRPK_QUERYSTATUS> GetAllRPKStatus() const { return m_status.Copy(); }

    /// Handles the answer to a task request.
    void ReceivePlayPTTAUXResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    /// Starts or stops a task of the station. Blocks until the station answers, for up to some 4 s.
    /// @param priority  56..255; a stop needs none
    /// @param zones     zone string; a stop needs none
    /// @param start     1 start, 0 stop
    /// @return          0 done; -1 bad argument or no socket; -2 no answer; -3 refused
    int StartStopRPKTask(int id, int taskID, int priority, std::string zones, int start);

    /// Notes the zone that the station monitors, in place of a former one.
    void NewMonitorZone(int id, int zcuID, int zone);
    /// @return 0 with a copy; -1, out untouched, when the station has never been told to monitor
    int GetMonitorZone(int id, tagRPK_MONITOR_ZONE& out) const;
    /// @return 0; -1 when there was nothing to forget
    int RemoveMonitorZone(int id);
    /// Handles the answer to a monitor request.
    void ReceiveMonitorResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    /// Tells the station to listen to a zone, or to stop. Blocks until it answers, for up to some 4 s.
    /// @param zcuID  controller of the zone; a stop takes the zone that was started last, if any, instead of both
    /// @param zone   1..8
    /// @param start  1 start, 0 stop
    /// @return       0 done; -1 bad argument or no socket; -2 no answer; -3 refused
    int StartStopRPKMonitor(int id, int zcuID, int zone, int start);

    /// Receives the station's push-to-talk audio on a thread of its own until its group is blanked or it is removed.
    void StartMonitorPTT(int id);
    /// Notes that push-to-talk audio of the station is being received. @return false when that is noted already
    bool NewMonitorPTTFlag(int id);
    void RemoveMonitorPTTFlag(int id);
    /// @return 0 when no push-to-talk audio is being received from the station, -1 when it is
    int GetMonitorPTTFlag(int id) const;

private:
    struct PTTReception;

    bool CheckTask(int id, int taskID);
    bool CheckStart(int priority, std::string& zones, std::string& zoneText);
    int AwaitTaskAnswer(int id, const char* action);
    bool CheckMonitor(int id, int zcuID, int zone, int start);
    int AwaitMonitorAnswer(int id, const char* action);
    bool Reject(const std::string& reason);
    void ThreadMonitorPTT(int id);
    void ReceivePTT(int id);
    /// Looks whether the audio is still wanted, and from which group, and waits for a datagram.
    /// @return false when it is not wanted any more
    bool PassPTT(int id, PTTReception& reception);

    CK740ControlApp& m_app;
    CStatusTable<tagRPK_QUERYSTATUS, 4096, 1024> m_status;
    CBoundedTable<tagRPK_TASK_RESULT, 2048> m_taskResults;
    CBoundedTable<tagRPK_MONITOR_ZONE, 2048> m_monitorZones;
    CBoundedTable<tagMONITOR_RESPONSE, 2048> m_monitorAnswers;
    CBoundedTable<tagRPK_MONITOR_PTT, 2048> m_pttMonitors;
};
