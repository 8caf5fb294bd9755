// Zone controller control: status, heartbeats, task triggering, volumes, queries, emergency mode, and the virtual zone
// controllers that the library plays itself.
#pragma once

#include "common/bounded_table.h"
#include "common/wake_signal.h"
#include "devices/status_table.h"
#include "protocol/cmd_packet.h"
#include "zcu/query_records.h"
#include "zcu/task_zones.h"
#include "zcu/trigger_records.h"
#include "zcu/virtual_records.h"
#include "zcu/volume_records.h"
#include "zcu/zcu_status.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class CK740ControlApp;
class CGroupReceiver;
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

inline constexpr std::size_t kMaxAnswers = 2048;         // that wait to be claimed, of each kind
inline constexpr std::size_t kMaxStatusReports = 65'536; // that wait to be merged
inline constexpr std::size_t kMaxStatuses = 500;
inline constexpr std::size_t kMaxVolumeReads = 4096;
inline constexpr std::size_t kMaxVirtualClients = 1024;
inline constexpr std::size_t kMaxTaskExtensions = 50'000;

/// @return 256 - p: devices rank the smaller number higher
constexpr uint16_t ConvertPriority(uint16_t p) {
    return static_cast<uint16_t>(256 - p);
}

/// Any thread may call anything.
class CZCU {
public:
    using VolumeAnswersV2 = CBoundedTable<tagZCU_GETVOLUME_V2, kMaxAnswers>;
    using VolumeAnswersV3 = CBoundedTable<tagZCU_GETVOLUME_V3, kMaxAnswers>;

    explicit CZCU(CK740ControlApp& app) : m_app(app) {}
    virtual ~CZCU() = default;

    /// Starts the threads that merge statuses, send heartbeats and report the status of virtual controllers.
    void Initialization();
    /// Makes threads that wait for work notice the exit flag.
    void WakeThreads();

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
    /// Forgets a controller that is no longer registered: its status and, if it is virtual, what it plays.
    void RemoveController(int id);
    /// Sends a heartbeat to one device, or with an ID below 1 to all registered ones.
    void SendHeartBeat(int id);
    /// @return 0 when IDs of this range get no heartbeat, else 1, sent or not
    int ZCU_Request_HeartBeat(int id);
    /// Marks the devices that are overdue as off line; called by the handshake thread.
    void SetDeviceOffLine();
    /// Queues an off-line status; nothing for an ID that is no zone controller's.
    void OffLine_ZCU(int id);

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
    void ClearOutDateJoinMCastResponse(time_t now = time(nullptr));

    // Requests that need no answer. Each returns 1 when it was sent, else 0.

    int ZCU_Request_CloseAudio(int zcuID, unsigned taskID);
    int ZCU_Request_CloseZones(int zcuID, unsigned short zoneMask);
    /// Sends the end of a stream to the task's group. @param udp  the task's multicast socket; null sends nothing
    int ZCU_Request_ExitMultiCast_4K(CQBUDP* udp, int zcuID);
    int ZCU_Request_ExitMultiCast_2K(CQBUDP* udp, int zcuID);

    /// @param priority  1..255. @return 0 sent, -1 not
    int ZCU_Request_EnterEmergency(int id, int priority);
    int ZCU_Request_ExitEmergency(int id, int priority);

    // Volumes. Requests return 0 when they were sent, -1 for a bad argument or without the device's socket; what a
    // controller answers waits for the thread that tells the host.

    int ZCU_Request_AdjustVolume(const tagADJUST_DEVICE_VOLUME_REQ_V2* request);
    int ZCU_Request_AdjustVolume(const tagADJUST_DEVICE_VOLUME_REQ_V3* request);
    int ZCU_Request_GetVolume_V2(int id);
    int ZCU_Request_GetVolume_V3(int id);
    void ZCU_Response_AdjustVolume_V2(const _vxa_cmd_packet_t* packet);
    void ZCU_Response_AdjustVolume_V3(const _vxa_cmd_packet_t* packet);
    void ZCU_Response_GetVolume_V2(const _vxa_cmd_packet_t* packet);
    void ZCU_Response_GetVolume_V3(const _vxa_cmd_packet_t* packet);
    VolumeAnswersV2& VolumesV2() { return m_volumesV2; }
    VolumeAnswersV3& VolumesV3() { return m_volumesV3; }
    /// Waits until volumes have been answered since the last call, at most ms milliseconds. For one thread.
    void AwaitVolumes(unsigned ms) { m_volumesAnswered.Wait(ms); }

    // Queries. They block until the device answers, for up to some 4 s.

    /// Asks a controller for the groups of its zones.
    /// @param err  0; -3 for null; -9 no answer
    /// @return     whether out was filled; not without the device's socket either, err is 0 then
    bool ZCU_Request_GetZoneMCastIP(int id, tagQUERY_ZONE_MCAST_IP_RSP* out, int& err);
    void ZCU_Response_GetZoneMCastIP(const _vxa_cmd_packet_t* packet);
    /// Asks any device for its version. @return 0; -2 no answer; -3 without the device's socket
    int GetDeviceVersion(int id, tagQUERY_DEVICE_VERSION_RSP* out);
    void DEV_Response_GetVersion(const _vxa_cmd_packet_t* packet);

    // Virtual zone controllers. The handlers ignore what is addressed to anything else, unless stated.

    /// Answers a heartbeat and remembers who sent it, whatever it is addressed to.
    void ReceiveHandshake(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    /// Accepts a play request on a thread of its own.
    void ReceivePlayTaskResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveCloseAudioResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveCloseZoneResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveGetVersion(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveGetMulticastIP(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    /// Note and forget zones that join a task later, whatever they are addressed to.
    void ReceiveAddTaskExtend(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveDelTaskExtend(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    std::deque<tagPLAY_TASK_EXTEND> GetTaskExtensions() const { return m_taskExtensions.Copy(); }

    PlayInstance NewTaskZones(int source, int virtualZCU, const _vxa_play_task_req_t_V2& request);
    /// @return 1 when something was removed, else 0
    int RemoveTaskZones(int source, int task, int virtualZCU, RemoveZones mode);
    /// @return the virtual controllers that hold the task
    std::vector<int> GetTaskZCU(int source, int task) const;
    /// Reads what a virtual controller plays. @return 0; -1, with nothing written, when it plays nothing
    int GetZoneTask(int virtualZCU, uint16_t& source, uint16_t& task, uint32_t& group, uint32_t& port) const;
    /// Puts in the status that make returns.
    /// @param make  given the task word, source << 16 | task, or 0; called with a lock held, so that the word stays
    ///              true
    /// @return      whether the controller is a registered virtual one
    bool PublishVirtualStatus(int virtualZCU, const std::function<tagZCU_QUERYSTATUS2(uint32_t taskWord)>& make);

    /// Sends the status of virtual controllers to all that have sent them heartbeats.
    void SendVirtualZCUStatus();
    /// Forgets those that have not been heard for 60 s.
    void RemoveInvalidVirtualZCUClients(time_t now);
    std::deque<tagVIRTUAL_ZCU_CLIENT_SOCKET> GetVirtualClients() const { return m_virtualClients.Copy(); }

private:
    struct TriggerVariant;

    /// A play request that has been accepted.
    struct VirtualPlay {
        int source;
        int virtualZCU;
        int task;
        PlayInstance instance;
        uint32_t multicastIP;
        uint32_t multicastPort;
    };

    void ThreadRefreshDeviceStatus();
    void ThreadDeviceHandshake();
    void ThreadSendVirutalZCUStatus();
    int RequestTask(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome);
    bool AwaitAcceptance(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome);
    bool AwaitJoin(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome);
    void ReportTimeout(const tagZCU_PARAM& param, const TriggerVariant& variant, const std::string& text);
    void LogZCU(uint8_t level, const std::string& text);
    int RequestEmergency(int id, int priority, uint16_t command);
    int SendExitMulticast(CQBUDP* udp, int zcuID, uint16_t lengthField, std::size_t datagramBytes);

    template <typename Record> int SendVolumeRequest(uint32_t id, uint16_t command, const Record& record);
    int SendVolumeRead(int id, uint16_t command);
    void QueueVolumeRead(uint32_t id, VolumeGeneration generation);
    void SendDueVolumeRead();

    bool IsVirtual(uint32_t id) const;
    /// Answers the sender of a request in the name of the virtual controller that it was addressed to.
    template <typename Record>
    void AnswerAsVirtual(const _vxa_cmd_packet_t& request, const std::string& senderIP, uint16_t command,
                         const Record& record) {
        SendAnswer(senderIP, MakePacket(request.destinationID, request.sourceID, command, record));
    }
    void SendAnswer(const std::string& ip, const _vxa_cmd_packet_t& packet);
    void ThreadResponsePlayTask(const _vxa_cmd_packet_t& packet, const std::string& senderIP);
    void ThreadRecvMulticastAudio(const VirtualPlay& play);
    void ReceiveUntilOver(const VirtualPlay& play, CGroupReceiver& receiver);
    /// The controller leaves what it plays for the requested task, as one step, and its clients are told.
    /// @return nothing when the controller has been removed meanwhile
    std::optional<PlayInstance> StartPlaying(int source, int virtualZCU, const _vxa_play_task_req_t_V2& request);
    /// The controller is idle if remove says so, as one step, and its clients are told.
    void StopPlaying(int virtualZCU, const std::function<bool()>& remove);
    /// Notes in the controller's status what it plays; 0, 0 for nothing.
    void SetTaskAudioID(int virtualZCU, int source, int task) K740_REQUIRES(m_virtualState);

    CK740ControlApp& m_app;
    CStatusTable<tagZCU_QUERYSTATUS2, kMaxStatusReports, kMaxStatuses> m_status;
    CBoundedTable<tagZCU_TRIGGERTASK, kMaxAnswers> m_triggerAnswers;
    CBoundedTable<tagZCU_JOINMCAST, kMaxAnswers> m_joinReports;
    VolumeAnswersV2 m_volumesV2;
    VolumeAnswersV3 m_volumesV3;
    CBoundedTable<tagGETVOLUME_PARAM, kMaxVolumeReads> m_volumeReads;
    CBoundedTable<tagQUERY_ZONE_MCAST_IP_RSP, kMaxAnswers> m_zoneGroups;
    CBoundedTable<tagQUERY_DEVICE_VERSION_RSP, kMaxAnswers> m_versions;

    CWakeSignal m_volumesAnswered;
    CWakeSignal m_shutdown; // of the handshake thread

    CQBSem m_virtualState; // what a virtual controller plays and what its status says change together
    CTaskZones m_taskZones;
    CBoundedTable<tagVIRTUAL_ZCU_CLIENT_SOCKET, kMaxVirtualClients> m_virtualClients;
    CBoundedTable<tagPLAY_TASK_EXTEND, kMaxTaskExtensions> m_taskExtensions;
};
