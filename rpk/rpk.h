// Paging stations: status and tasks.
#pragma once

#include "common/bounded_table.h"
#include "devices/status_table.h"
#include "protocol/cmd_packet.h"
#include "rpk/rpk_records.h"

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
    void UpdateRPKStatus();
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

    /// Notes that push-to-talk audio of the station is being received; nothing when that is noted already.
    void NewMonitorPTTFlag(int id);
    void RemoveMonitorPTTFlag(int id);
    /// @return 0 when no push-to-talk audio is being received from the station, -1 when it is
    int GetMonitorPTTFlag(int id) const;

private:
    bool CheckTask(int id, int taskID);
    bool CheckStart(int priority, std::string& zones, std::string& zoneText);
    int AwaitTaskAnswer(int id, const char* action);
    bool Reject(const std::string& reason);

    CK740ControlApp& m_app;
    CStatusTable<tagRPK_QUERYSTATUS, 4096, 1024> m_status;
    CBoundedTable<tagRPK_TASK_RESULT, 2048> m_taskResults;
    CBoundedTable<tagRPK_MONITOR_PTT, 2048> m_pttMonitors;
};
