#include "player/player.h"

#include "app/application.h"
#include "common/format.h"
#include "common/stopwatch.h"
#include "player/aux_task.h"
#include "player/stream_task.h"
#include "player/zone_triggers.h"

#include <optional>

namespace {

constexpr const char* kModule = "Player";
constexpr long kFirstPriority = 56;
constexpr long kLastPriority = 255;
constexpr long kFullVolume = 100;
constexpr long kLastAuxInterfacePort = 4;
constexpr long kLastZoneControllerPort = 2;
constexpr uint16_t kLastSequence = 255;
constexpr unsigned kPredecessorPollMs = 10;
constexpr unsigned kPredecessorReportMs = 500;

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
    task.taskID = static_cast<int>(taskID);
    task.type = kTaskTypeAudioStream;
    task.priority = static_cast<short>(priority);
    task.recovery = static_cast<short>(recovery);
    task.dryContactOutput = static_cast<short>(dryContactOutput);
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
    task.taskID = static_cast<int>(taskID);
    task.type = kTaskTypeNetAUX;
    task.priority = static_cast<short>(priority);
    task.recovery = static_cast<short>(recovery);
    task.dryContactOutput = static_cast<short>(dryContactOutput);
    task.deviceID = static_cast<int>(deviceID);
    task.auxPort = static_cast<int>(auxPort);
    task.multicastIP = multicastIP.substr(0, kMaxTaskMulticastText);
    return Accept(task, std::nullopt,
                  Format("Failed to K740_StartNetAUXTask(), task %ld status is broadcasting(2).", taskID));
}

int CPlayer::Reject(const std::string& reason) {
    m_app.Log().PushLog(kModule, kLogError, reason);
    return -1;
}

// The host is called between noting the task and queueing it; what it does there, the task's thread finds.
int CPlayer::Accept(tagTASK_QUEUE& task, std::optional<int> limit, const std::string& alreadyRunning) {
    switch (m_status.Accept(task.taskID, limit, task.instance)) {
    case CTaskStatusTable::Acceptance::AlreadyRunning:
        Reject(alreadyRunning);
        return -2;
    case CTaskStatusTable::Acceptance::LimitReached:
        m_app.Callbacks().TaskStatus(task.taskID, kTaskNoFreeChannel);
        Reject("No free channel.");
        return -3;
    case CTaskStatusTable::Acceptance::Accepted:
        break;
    }
    m_app.Callbacks().TaskStatus(task.taskID, kTaskAccepted);
    task.sequence = GetZCUTaskSequence();
    // Without memory for it the task must not stay accepted for ever.
    const bool started = ContainExceptions([&] {
        m_queue.Append(task);
        StartNewTask();
    });
    if (started) { return 0; }
    Conclude(task, kTaskNoFreeChannel);
    return -1;
}

void CPlayer::StartNewTask() {
    const std::optional<tagTASK_QUEUE> task = m_queue.TakeOldest();
    if (!task) { return; }
    const bool started = task->type == kTaskTypeAudioStream
                             ? StartThread("k740-task", [this, task = *task] { ThreadPlayAudioStreamTask(task); })
                             : StartThread("k740-auxtask", [this, task = *task] { ThreadPlayNetAUXTask(task); });
    if (!started) { Conclude(*task, kTaskNoFreeChannel); }
}

void CPlayer::ThreadPlayAudioStreamTask(const tagTASK_QUEUE& task) {
    CStreamTask(m_app, task).Run();
}

void CPlayer::ThreadPlayNetAUXTask(const tagTASK_QUEUE& task) {
    CAUXTask(m_app, task).Run();
}

void CPlayer::AwaitPredecessor(const tagTASK_QUEUE& task) {
    using Predecessor = CTaskStatusTable::Predecessor;
    const auto predecessor = [&] { return m_status.FindPredecessor(task.taskID, task.instance); };
    while (predecessor() == Predecessor::Working) { m_app.Lifetime().Pause(kPredecessorPollMs); }
    CQBTime waited;
    waited.TimeStart();
    while (predecessor() != Predecessor::None && waited.TimeEnd() < kPredecessorReportMs) {
        m_app.Lifetime().Pause(kPredecessorPollMs);
    }
}

void CPlayer::Conclude(const tagTASK_QUEUE& task, short status) {
    m_app.Callbacks().TaskStatus(task.taskID, m_status.Conclude(task.taskID, task.instance, status));
    m_status.Forget(task.taskID, task.instance);
}

short CPlayer::StopTask(int taskID) {
    const short status = m_status.Remove(taskID);
    m_streams.Wake(m_channels.GetChannelID(taskID));
    m_stopWaiters.RaiseAll();
    return status;
}

void CPlayer::WakeTasks() {
    m_streams.WakeAll();
    m_stopWaiters.RaiseAll();
}

int CPlayer::AddZones(int taskID, std::string zones) {
    if (m_app.Devices().IsZoneStringValid(zones) != 1) { return -1; }
    const tagTASK_STATUS task = m_status.Find(taskID).value_or(tagTASK_STATUS{});
    if (task.status != kTaskBroadcasting) {
        Reject(Format("Faile to add zones, task %d status is not broadcasting(2).", taskID));
        return -2;
    }
    if (task.audioSource != kAudioSourceStream && task.audioSource != kAudioSourceNetAUX) {
        Reject(Format("Faile to add zones, task %d audiosource is error.", taskID));
        return -2;
    }
    CZoneTriggers triggers(m_app, MakeTriggerParam(task), m_status.Owner(taskID));
    triggers.Start(zones, task.audioSource == kAudioSourceStream ? CZCU::ThreadTriggerZCUJoinNetStream
                                                                 : CZCU::ThreadTriggerZCUJoinNetAUX);
    return 0;
}

int CPlayer::PushTaskStream(int channelID, int taskID, const unsigned char* data, unsigned length) {
    const int format = m_app.Configuration().AudioStreamFormat();
    if (length == 0 || length > LargestChunk(format)) { return -1; }
    if (m_status.Status(taskID) != kTaskBroadcasting) { return -3; }
    return m_streams.PushHostAudio(channelID, taskID, format, data, static_cast<unsigned short>(length)) == kPushOk
               ? 0
               : -1;
}

uint16_t CPlayer::GetZCUTaskSequence() {
    const CQBSemLocker lock(&m_sequenceLock);
    m_sequence = m_sequence >= kLastSequence ? uint16_t{1} : static_cast<uint16_t>(m_sequence + 1);
    return m_sequence;
}

int CPlayer::NewChannel(int taskID, std::string& multicastIP) {
    return m_channels.NewChannel(taskID, m_app.Configuration().FirstMulticastIP(), multicastIP);
}
