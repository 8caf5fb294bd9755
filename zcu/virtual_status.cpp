// The status of virtual zone controllers: what they play, and the reports to those who listen.
#include "app/application.h"
#include "common/worker.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {

constexpr unsigned kReportPeriodMs = 2'000;
constexpr double kClientLifetimeSeconds = 60;

} // namespace

PlayInstance CZCU::NewTaskZones(int source, int virtualZCU, const _vxa_play_task_req_t_V2& request) {
    return m_taskZones.New(source, virtualZCU, request);
}

int CZCU::RemoveTaskZones(int source, int task, int virtualZCU, RemoveZones mode) {
    return m_taskZones.Remove(source, task, virtualZCU, mode);
}

std::vector<int> CZCU::GetTaskZCU(int source, int task) const {
    return m_taskZones.Controllers(source, task);
}

int CZCU::GetZoneTask(int virtualZCU, uint16_t& source, uint16_t& task, uint32_t& group, uint32_t& port) const {
    const auto played = m_taskZones.FindTask(virtualZCU);
    if (!played) { return -1; }
    source = played->sourceID;
    task = played->taskID;
    group = played->multicastIP;
    port = played->multicastPort;
    return 0;
}

// The registry has forgotten the controller before this runs. So whoever finds it registered, with the lock held, may
// still enter it: it is taken out again here.
void CZCU::RemoveController(int id) {
    const CQBSemLocker lock(&m_virtualState);
    RemoveTaskZones(0, -1, id, RemoveZones::OfEveryTask);
    m_status.Remove(id);
}

std::optional<PlayInstance> CZCU::StartPlaying(int source, int virtualZCU, const _vxa_play_task_req_t_V2& request) {
    PlayInstance instance = 0;
    {
        const CQBSemLocker lock(&m_virtualState);
        if (!IsVirtual(static_cast<uint32_t>(virtualZCU))) { return std::nullopt; }
        RemoveTaskZones(source, -1, virtualZCU, RemoveZones::OfEveryTask);
        instance = NewTaskZones(source, virtualZCU, request);
        SetTaskAudioID(virtualZCU, source, static_cast<int>(request.taskID));
    }
    SendVirtualZCUStatus();
    return instance;
}

void CZCU::StopPlaying(int virtualZCU, const std::function<bool()>& remove) {
    {
        const CQBSemLocker lock(&m_virtualState);
        if (!remove()) { return; }
        SetTaskAudioID(virtualZCU, 0, 0);
    }
    SendVirtualZCUStatus();
}

void CZCU::SetTaskAudioID(int virtualZCU, int source, int task) {
    m_status.Change(virtualZCU, [=](tagZCU_QUERYSTATUS2& record) {
        record.status.zoneTasks[0] = static_cast<uint32_t>(source) << 16 | static_cast<uint32_t>(task);
        if (source == 0 || task == 0) { record.status.zoneStates[0] = kZoneIdle; }
    });
}

bool CZCU::PublishVirtualStatus(int virtualZCU, const std::function<tagZCU_QUERYSTATUS2(uint32_t taskWord)>& make) {
    const CQBSemLocker lock(&m_virtualState);
    if (!IsVirtual(static_cast<uint32_t>(virtualZCU))) { return false; }
    uint16_t source = 0;
    uint16_t task = 0;
    uint32_t group = 0;
    uint32_t port = 0;
    GetZoneTask(virtualZCU, source, task, group, port);
    UpdateZCUStatus(make(uint32_t{source} << 16 | task));
    return true;
}

void CZCU::ThreadSendVirutalZCUStatus() {
    RunWorker(m_app.Lifetime(), kReportPeriodMs, [this] {
        RemoveInvalidVirtualZCUClients(time(nullptr));
        SendVirtualZCUStatus();
    });
}

void CZCU::RemoveInvalidVirtualZCUClients(time_t now) {
    m_virtualClients.EraseIf([now](const tagVIRTUAL_ZCU_CLIENT_SOCKET& client) {
        return difftime(now, client.lastHeard) >= kClientLifetimeSeconds;
    });
}

void CZCU::SendVirtualZCUStatus() {
    for (const tagVIRTUAL_ZCU_CLIENT_SOCKET& client : m_virtualClients.Copy()) {
        tagZCU_QUERYSTATUS2 record;
        if (GetZCUStatus(static_cast<int>(client.virtualZCUID), record) != 0 || record.IsOffLine()) { continue; }
        // One thing is played in all zones, and zone 1 stands for them.
        if (record.status.zoneTasks[0] != 0) { record.status.zoneStates[0] = kZonePlaying; }
        m_app.SendToAddress(client.ip, kReplyPort,
                            MakePacket(client.virtualZCUID, client.clientID, kCmdZCUStatusReport, record.status));
    }
}
