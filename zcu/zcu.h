// Zone controller control: status, heartbeats, task triggering and emergency mode.
#pragma once

#include "common/bounded_table.h"
#include "devices/status_table.h"
#include "protocol/cmd_packet.h"
#include "zcu/trigger_records.h"
#include "zcu/volume_records.h"
#include "zcu/zcu_status.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>

class CK740ControlApp;
class CQBUDP;

/// Results of the two steps of a trigger.
inline constexpr short kTriggerOk = 0;
inline constexpr short kTriggerRefused = -1;
inline constexpr short kTriggerInvalid = -3;
inline constexpr short kTriggerTimeout = -9;

/// How a trigger went.
struct TriggerOutcome {
    unsigned tokenA = 0; // as answered, 0 without an answer
    unsigned tokenB = 0;
    unsigned char joinFollows = 0; // not 0: a join report was announced
    bool acceptedNoJoin = false;
    short triggerResult = kTriggerOk;
    short joinResult = kTriggerOk; // kTriggerOk also when no report was awaited
};

/// @return 256 - p: devices rank the smaller number higher
constexpr uint16_t ConvertPriority(uint16_t p) {
    return static_cast<uint16_t>(256 - p);
}

/// Any thread may call anything.
class CZCU {
public:
    using VolumeAnswersV2 = CBoundedTable<tagZCU_GETVOLUME_V2, 2048>;
    using VolumeAnswersV3 = CBoundedTable<tagZCU_GETVOLUME_V3, 2048>;

    explicit CZCU(CK740ControlApp& app) : m_app(app) {}
    virtual ~CZCU() = default;

    /// Starts the threads that merge statuses and send heartbeats.
    void Initialization();

    // Status and heartbeat.

    /// Handles a status report: queues it for the next merge.
    void ZCU_Response_ZCUStatusReq(const _vxa_cmd_packet_t* packet);
    /// Merges the queued reports and ages the table; called by the refresh thread.
    void UpdateZCUStatus();
    /// Puts in a status that no device has reported.
    void UpdateZCUStatus(const tagZCU_QUERYSTATUS2& record);
    /// @param out  cleared first. @return 0 with a copy, -1 when the ID has no status
    int GetZCUStatus(int id, tagZCU_QUERYSTATUS2& out) const;
    std::deque<tagZCU_QUERYSTATUS2> GetAllZCUStatus() const { return m_status.Copy(); }
    /// Forgets a device that is no longer registered.
    void RemoveStatus(int id) { m_status.Remove(id); }
    /// Sends a heartbeat to one device, or with an ID below 1 to all registered ones.
    void SendHeartBeat(int id);
    /// @return 0 when IDs of this range get no heartbeat, else 1, sent or not
    int ZCU_Request_HeartBeat(int id);
    /// Marks the devices that are overdue as off line; called by the handshake thread.
    void SetDeviceOffLine();
    /// Queues an off-line status; nothing for an ID that is no zone controller's.
    void OffLine_ZCU(int id);
    /// Answers a heartbeat that is addressed to a virtual zone controller, and remembers who sent it.
    void ReceiveHandshake(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    std::deque<tagVIRTUAL_ZCU_CLIENT_SOCKET> GetVirtualClients() const { return m_virtualClients.Copy(); }

    // Task triggering.

    /// Tells a controller to play a stream task and waits until it has joined. Blocks for up to some 10 s.
    /// @param param    a recovery above 1 is written back as 0
    /// @param outcome  cleared first; stays clear for a device that is not registered
    /// @return         1 the controller plays, 0 it does not
    int ZCU_Request_TriggerNetTask(tagZCU_PARAM* param, TriggerOutcome& outcome);
    /// The same for an AUX task, which refuses a recovery above 1 and closes the audio when an answer stays out.
    /// @param isSuperseded  asked before that: closing carries the task's ID alone and would close a later task of the
    ///                      same ID; none means no
    int ZCU_Request_TriggerLBXTask_V2(tagZCU_PARAM* param, TriggerOutcome& outcome,
                                      const std::function<bool()>& isSuperseded = {});
    /// Threads that trigger one controller. @param param  a TriggerJob made with new, owned by the thread
    /// @return 0 the controller plays, else 1
    static void* ThreadTriggerZCUJoinNetStream(void* param);
    static void* ThreadTriggerZCUJoinNetAUX(void* param);
    void ZCU_Response_TriggerTask(const _vxa_cmd_packet_t* packet);
    void ZCU_Response_JoinMultiCast(const _vxa_cmd_packet_t* packet);
    /// Drops the answers that nobody claimed for 120 s.
    void ClearOutDateJoinMCastResponse();

    // Requests that need no answer. Each returns 1 when it was sent, else 0.

    int ZCU_Request_CloseAudio(int zcuID, unsigned taskID);
    int ZCU_Request_CloseZones(int zcuID, unsigned short zoneMask);
    /// Sends the end of a stream to the task's group. @param udp  the task's multicast socket; null sends nothing
    int ZCU_Request_ExitMultiCast_4K(CQBUDP* udp, int zcuID);
    int ZCU_Request_ExitMultiCast_2K(CQBUDP* udp, int zcuID);

    /// @param priority  1..255. @return 0 sent, -1 not
    int ZCU_Request_EnterEmergency(int id, int priority);
    int ZCU_Request_ExitEmergency(int id, int priority);

    VolumeAnswersV2& VolumesV2() { return m_volumesV2; }
    VolumeAnswersV3& VolumesV3() { return m_volumesV3; }

private:
    struct TriggerVariant;

    static void* ThreadRefreshDeviceStatus(void* zcu);
    static void* ThreadDeviceHandshake(void* zcu);
    void RunRefresh();
    void RunHandshake();
    int RequestTask(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome);
    bool AwaitAcceptance(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome);
    bool AwaitJoin(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome);
    void ReportTimeout(const tagZCU_PARAM& param, const TriggerVariant& variant, const std::string& text);
    void LogZCU(uint8_t level, const std::string& text);
    int RequestEmergency(int id, int priority, uint16_t command);
    int SendExitMulticast(CQBUDP* udp, int zcuID, uint16_t lengthField, std::size_t datagramBytes);

    CK740ControlApp& m_app;
    CStatusTable<tagZCU_QUERYSTATUS2, 65'536, 500> m_status;
    CBoundedTable<tagVIRTUAL_ZCU_CLIENT_SOCKET, 1024> m_virtualClients;
    CBoundedTable<tagZCU_TRIGGERTASK, 2048> m_triggerAnswers;
    CBoundedTable<tagZCU_JOINMCAST, 2048> m_joinReports;
    VolumeAnswersV2 m_volumesV2;
    VolumeAnswersV3 m_volumesV3;
};
