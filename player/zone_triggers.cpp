#include "player/zone_triggers.h"

#include "app/application.h"
#include "common/ip_address.h"
#include "common/stopwatch.h"
#include "devices/zone_string.h"
#include "zcu/trigger_job.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {
constexpr unsigned kPollMs = 10;
constexpr unsigned kTriggerTimeoutMs = 4000;

/// @return what the controllers of a task are asked; without node ID and multicast port
tagZCU_PARAM MakeTriggerParam(const tagTASK_STATUS& task) {
    tagZCU_PARAM param{};
    param.taskID = static_cast<uint32_t>(task.taskID);
    param.taskIDAgain = param.taskID;
    param.sequence = static_cast<uint16_t>(task.sequence);
    param.priority = static_cast<uint16_t>(task.priority);
    param.recovery = static_cast<uint16_t>(task.recovery);
    param.dryContactOutput = static_cast<uint16_t>(task.dryContactOutput);
    param.multicastIP = ConvertIPToDWORD(task.multicastIP);
    param.auxDeviceID = static_cast<uint32_t>(task.deviceID);
    param.auxPort = static_cast<int16_t>(task.auxPort);
    return param;
}

} // namespace

CZoneTriggers::CZoneTriggers(CK740ControlApp& app, const tagTASK_STATUS& task)
    : m_app(app), m_param(MakeTriggerParam(task)), m_instance(task.instance) {}

CZoneTriggers::~CZoneTriggers() {
    CloseThreadHandle(m_running);
}

void CZoneTriggers::Start(const std::string& zones, void* (*thread)(void*)) {
    m_app.ZCU().ClearOutDateJoinMCastResponse();
    m_param.sourceNodeID = m_app.Configuration().NodeID();
    m_param.multicastPort = static_cast<uint16_t>(m_app.Configuration().MulticastPort());
    const auto items = SplitZoneString(zones);
    m_controllerIDs.reserve(m_controllerIDs.size() + items.size());
    m_running.reserve(m_running.size() + items.size()); // so that no thread is made that cannot be kept
    for (const std::string& item : items) { StartThread(item, thread); }
}

void CZoneTriggers::StartThread(const std::string& item, void* (*thread)(void*)) {
    const ZoneItem zone = ParseZoneItem(item);
    m_controllerIDs.push_back(zone.deviceID);
    CTaskStatusTable& tasks = m_app.Player().Status();
    const auto taskID = static_cast<int>(m_param.taskID);
    const TaskInstance instance = m_instance;
    auto job = std::make_unique<TriggerJob>(
        TriggerJob{m_app.ZCU(), m_param, [&tasks, taskID, instance] { return tasks.IsOver(taskID, instance); },
                   [&tasks, taskID, instance] { return tasks.IsSuperseded(taskID, instance); }});
    job->param.zcuID = zone.deviceID;
    job->param.zoneMask = std::min(zone.mask, kEveryZoneMask);
    pthread_t id{};
    // A controller whose thread cannot be made counts as one that failed.
    if (createThread(id, thread, job.get(), 0, kSmallStackBytes) != 0) { return; }
    static_cast<void>(job.release()); // the thread owns it now
    m_running.push_back(id);
}

int CZoneTriggers::WaitForTriggerZCU(const std::function<bool()>& giveUp) {
    const int result = AwaitFirst(giveUp);
    CloseThreadHandle(std::exchange(m_running, {}));
    return result;
}

int CZoneTriggers::AwaitFirst(const std::function<bool()>& giveUp) {
    if (m_running.empty()) { return kNoTriggers; }
    CQBTime waited;
    waited.TimeStart();
    while (waited.TimeEnd() < kTriggerTimeoutMs) {
        m_app.Lifetime().Pause(kPollMs);
        if (JoinEnded() || giveUp()) { return kTriggered; }
        if (m_running.empty()) { return kAllTriggersFailed; }
    }
    return kTriggerWaitTimeout;
}

// A handle is of no use once its thread is joined, and may soon be another thread's, so it is forgotten at once.
bool CZoneTriggers::JoinEnded() {
    for (auto thread = m_running.begin(); thread != m_running.end();) {
        void* result = nullptr;
        if (pthread_tryjoin_np(*thread, &result) != 0) {
            ++thread;
            continue;
        }
        thread = m_running.erase(thread);
        if (result == kTriggerThreadSucceeded) { return true; }
    }
    return false;
}

void CZoneTriggers::CloseAudio() {
    m_app.Player().Status().BeginClosing(static_cast<int>(m_param.taskID), m_instance);
    for (const int id : m_controllerIDs) {
        ContainExceptions([&] { m_app.ZCU().ZCU_Request_CloseAudio(id, m_param.taskID); }); // the others' follow
    }
}
