#include "player/aux_task.h"

#include "app/application.h"
#include "common/format.h"

namespace {
constexpr const char* kModule = "Player";
constexpr unsigned kWatchPauseMs = 100;
} // namespace

void CAUXTask::Run() {
    short status = kTaskNotTriggered;
    ContainExceptions([&] {
        m_app.Player().AwaitPredecessor(m_task);
        status = IsSuperseded() ? Leave() : TriggerAndWatch();
    });
    ContainExceptions([&] { m_app.Player().Conclude(m_task, status); });
}

short CAUXTask::TriggerAndWatch() {
    CTaskStatusTable& table = m_app.Player().Status();
    CZoneTriggers triggers(m_app, MakeTriggerParam(MakeRecord()), m_task.instance);
    triggers.Start(m_task.zones, CZCU::ThreadTriggerZCUJoinNetAUX);
    const int result = triggers.WaitForTriggerZCU([this] { return IsSuperseded(); });
    if (result != kTriggered) {
        Log(kLogError, "Failed to trigger AUX task devices, task ID ");
        return kTaskNotTriggered;
    }
    if (table.BeginBroadcast(m_task.instance, MakeRecord())) {
        m_app.Callbacks().TaskStatus(m_task.taskID, kTaskBroadcasting);
        Log(kLogError, "Prepare to play task ID "); // no error, but always logged as one
        WatchUntilStopped();
        triggers.CloseAudio();
    }
    return Leave();
}

bool CAUXTask::IsSuperseded() const {
    return m_app.Player().Status().IsSuperseded(m_task.taskID, m_task.instance);
}

short CAUXTask::Leave() {
    Log(kLogInfo, "Stop task, task ID ");
    return kTaskNone;
}

void CAUXTask::WatchUntilStopped() {
    CWakeList::Entry stopped(m_app.Player().StopWaiters());
    while (!m_app.Lifetime().IsExiting() && !m_app.Player().Status().IsStopped(m_task.taskID, m_task.instance)) {
        stopped.Wait(kWatchPauseMs);
    }
}

tagTASK_STATUS CAUXTask::MakeRecord() const {
    tagTASK_STATUS record;
    record.taskID = m_task.taskID;
    record.status = kTaskBroadcasting;
    record.multicastIP = m_task.multicastIP;
    record.priority = m_task.priority;
    record.dryContactOutput = m_task.dryContactOutput;
    record.sequence = m_task.sequence;
    record.recovery = m_task.recovery;
    record.audioSource = kAudioSourceNetAUX;
    record.deviceID = m_task.deviceID;
    record.auxPort = m_task.auxPort;
    return record;
}

void CAUXTask::Log(uint8_t level, const char* text) {
    m_app.Log().PushLog(kModule, level, Format("%s%d", text, m_task.taskID));
}
