#include "player/player.h"

#include "app/application.h"
#include "common/format.h"
#include "common/stopwatch.h"
#include "player/aux_task.h"
#include "player/running_report.h"
#include "player/stream_task.h"
#include "player/zone_triggers.h"

#include <optional>

namespace {

constexpr const char* kModule = "Player";
constexpr uint16_t kLastSequence = 255;
constexpr unsigned kPredecessorPollMs = 10;
constexpr unsigned kPredecessorReportMs = 500;

// Results, beside 0.
constexpr int kBadZones = -1;
constexpr int kNothingToJoin = -2;
constexpr int kNotTaken = -1;
constexpr int kNotBroadcasting = -3;

} // namespace

void CPlayer::Log(uint8_t level, const std::string& text) {
    m_app.Log().PushLog(kModule, level, text);
}

void CPlayer::ReportRunning(int taskID, short status) {
    const CRunningReport underWay(taskID);
    m_app.Callbacks().TaskStatus(taskID, status);
}

// What fails here fails for the task at hand, which may be another thread's that queued it just before.
void CPlayer::StartNewTask() {
    const std::optional<tagTASK_QUEUE> task = m_queue.TakeOldest();
    if (!task) { return; }
    bool started = false;
    ContainExceptions([&] {
        started = task->type == kTaskTypeAudioStream
                      ? StartThread("k740-task", [this, task = *task] { ThreadPlayAudioStreamTask(task); })
                      : StartThread("k740-auxtask", [this, task = *task] { ThreadPlayNetAUXTask(task); });
    });
    if (!started) { Conclude(*task, kTaskNoFreeChannel); }
}

void CPlayer::ThreadPlayAudioStreamTask(const tagTASK_QUEUE& task) {
    CStreamTask(m_app, task).Run();
}

void CPlayer::ThreadPlayNetAUXTask(const tagTASK_QUEUE& task) {
    CAUXTask(m_app, task).Run();
}

bool CPlayer::AwaitPredecessor(const tagTASK_QUEUE& task) {
    using Predecessor = CTaskStatusTable::Predecessor;
    const auto predecessor = [&] { return m_status.FindPredecessor(task.taskID, task.instance); };
    while (predecessor() == Predecessor::Working) {
        if (m_app.Lifetime().IsExiting()) { return false; }
        m_app.Lifetime().Pause(kPredecessorPollMs);
    }
    CQBTime waited;
    waited.TimeStart();
    while (predecessor() != Predecessor::None && waited.TimeEnd() < kPredecessorReportMs) {
        m_app.Lifetime().Pause(kPredecessorPollMs);
    }
    return true;
}

void CPlayer::Conclude(const tagTASK_QUEUE& task, short status) {
    short told = kTaskNone; // also when there is no memory to note a failure
    ContainExceptions([&] { told = m_status.Conclude(task.taskID, task.instance, status); });
    m_app.Callbacks().TaskStatus(task.taskID, told);
    m_status.Forget(task.taskID, task.instance);
}

short CPlayer::StopTask(int taskID) {
    const short status = m_status.Remove(taskID);
    m_streams.Wake(m_channels.GetChannelID(taskID));
    m_stopWaiters.Raise(taskID);
    return status;
}

void CPlayer::WakeTasks() {
    m_streams.WakeAll();
    m_stopWaiters.RaiseAll();
}

int CPlayer::AddZones(int taskID, std::string zones) {
    if (m_app.Devices().IsZoneStringValid(zones) != 1) { return kBadZones; }
    tagTASK_STATUS task;
    m_status.GetTaskStatus(taskID, task);
    if (task.status != kTaskBroadcasting) {
        Log(kLogError, Format("Faile to add zones, task %d status is not broadcasting(2).", taskID));
        return kNothingToJoin;
    }
    if (task.audioSource != kAudioSourceStream && task.audioSource != kAudioSourceNetAUX) {
        Log(kLogError, Format("Faile to add zones, task %d audiosource is error.", taskID));
        return kNothingToJoin;
    }
    CZoneTriggers triggers(m_app, task);
    triggers.Start(zones, task.audioSource == kAudioSourceStream ? CZCU::ThreadTriggerZCUJoinNetStream
                                                                 : CZCU::ThreadTriggerZCUJoinNetAUX);
    return 0;
}

int CPlayer::PushTaskStream(int channelID, int taskID, const unsigned char* data, unsigned length) {
    const int format = m_app.Configuration().AudioStreamFormat();
    if (length == 0 || length > LargestChunk(format)) { return kNotTaken; }
    if (m_status.GetTaskStatus(taskID) != kTaskBroadcasting) { return kNotBroadcasting; }
    const int pushed = m_streams.PushHostAudio(channelID, taskID, format, data, static_cast<unsigned short>(length));
    return pushed == kPushOk ? 0 : kNotTaken;
}

uint16_t CPlayer::GetZCUTaskSequence() {
    const CQBSemLocker lock(&m_sequenceLock);
    m_sequence = m_sequence >= kLastSequence ? uint16_t{1} : static_cast<uint16_t>(m_sequence + 1);
    return m_sequence;
}

int CPlayer::NewChannel(int taskID, std::string& multicastIP) {
    return m_channels.NewChannel(taskID, m_app.Configuration().FirstMulticastIP(), multicastIP);
}
