// Which tasks are accepted: the checks of a call in their order, and what noting a task takes.
#include "app/application.h"
#include "common/format.h"
#include "common/worker.h"
#include "player/player.h"

#include <optional>

namespace {

constexpr long kFirstPriority = 56;
constexpr long kLastPriority = 255;
constexpr long kLastAuxInterfacePort = 4;
constexpr long kLastZoneControllerPort = 2;

// Results, beside 0.
constexpr int kRefused = -1;
constexpr int kAlreadyRunning = -2;
constexpr int kLimitReached = -3;

bool IsPriority(long priority) {
    return priority >= kFirstPriority && priority <= kLastPriority;
}

bool IsFlag(long value) {
    return value == 0 || value == 1;
}

/// @return what is wrong with the source of an AUX task, null when nothing is
const char* FindAUXError(long deviceID, long auxPort) {
    if (IsAuxInterfaceID(deviceID)) {
        return auxPort >= 0 && auxPort <= kLastAuxInterfacePort ? nullptr : "Q-LBX AUX Port is error.";
    }
    if (IsZoneControllerID(deviceID)) {
        return auxPort >= 0 && auxPort <= kLastZoneControllerPort ? nullptr : "Q-ZCU2400 AUX Port is error.";
    }
    return "Device ID is error.";
}

/// Fills in what both kinds of task have, once it is checked.
void Fill(tagTASK_QUEUE& task, long taskID, long priority, long recovery, long dryContactOutput) {
    task.taskID = static_cast<int>(taskID);
    task.priority = static_cast<short>(priority);
    task.recovery = static_cast<short>(recovery);
    task.dryContactOutput = static_cast<short>(dryContactOutput);
}

} // namespace

int CPlayer::AddAudioTaskToTaskQueue(long taskID, long volume, long priority, long recovery, const std::string& zones,
                                     long dryContactOutput) {
    tagTASK_QUEUE task;
    task.zones = zones;
    if (!IsTaskID(taskID)) { return Reject("Task ID is invalid."); }
    if (!IsPriority(priority)) { return Reject("Priority is invalid."); }
    if (m_app.Devices().IsZoneStringValid(task.zones) != 1) { return Reject("Zones is error."); }
    if (volume < 0 || volume > kFullVolume) { return Reject("Volume is invalid."); }
    if (!IsFlag(recovery)) { return Reject("Recovery is invalid."); }
    if (!IsFlag(dryContactOutput)) { return Reject("DryContactOutput is invalid."); }
    task.type = kTaskTypeAudioStream;
    Fill(task, taskID, priority, recovery, dryContactOutput);
    task.volume = static_cast<short>(volume);
    return Accept(task, m_app.Configuration().MaxRunningTasks(), Format("Task %ld is running.", taskID));
}

int CPlayer::AddNetTaskToTaskQueue(long taskID, long priority, long deviceID, const std::string& multicastIP,
                                   long auxPort, long recovery, const std::string& zones, long dryContactOutput) {
    tagTASK_QUEUE task;
    task.zones = zones;
    if (!IsTaskID(taskID)) { return Reject("Task ID is error."); }
    if (!IsPriority(priority)) { return Reject("Priority is error."); }
    if (const char* error = FindAUXError(deviceID, auxPort)) { return Reject(error); }
    if (multicastIP.empty()) { return Reject("Multicast IP can not be null."); }
    if (m_app.Devices().IsZoneStringValid(task.zones) != 1) { return Reject("Zones is error."); }
    if (!IsFlag(recovery)) { return Reject("Recovery is error."); }
    if (!IsFlag(dryContactOutput)) { return Reject("DryContactOutput is error."); }
    task.type = kTaskTypeNetAUX;
    Fill(task, taskID, priority, recovery, dryContactOutput);
    task.deviceID = static_cast<int>(deviceID);
    task.auxPort = static_cast<int>(auxPort);
    task.multicastIP = multicastIP.substr(0, kMaxTaskMulticastText);
    return Accept(task, std::nullopt,
                  Format("Failed to K740_StartNetAUXTask(), task %ld status is broadcasting(2).", taskID));
}

int CPlayer::Reject(const std::string& reason) {
    Log(kLogError, reason);
    return kRefused;
}

// The host is called between noting the task and queueing it; what it does there, the task's thread finds.
int CPlayer::Accept(tagTASK_QUEUE& task, std::optional<int> limit, const std::string& alreadyRunning) {
    switch (m_status.Accept(task.taskID, limit, task.instance)) {
    case CTaskStatusTable::Acceptance::AlreadyRunning:
        Log(kLogError, alreadyRunning);
        return kAlreadyRunning;
    case CTaskStatusTable::Acceptance::LimitReached:
        m_app.Callbacks().TaskStatus(task.taskID, kTaskNoFreeChannel);
        Log(kLogError, "No free channel.");
        return kLimitReached;
    case CTaskStatusTable::Acceptance::Accepted:
        break;
    }
    // Without memory for it the task must not stay accepted for ever.
    const bool queued = ContainExceptions([&] {
        ReportRunning(task.taskID, kTaskAccepted);
        task.sequence = GetZCUTaskSequence();
        m_queue.Append(task);
    });
    if (!queued) {
        Conclude(task, kTaskNoFreeChannel);
        return kRefused;
    }
    StartNewTask();
    return 0;
}
