#include "player/aux_task.h"

#include "app/application.h"
#include "player/zone_triggers.h"

namespace {
constexpr unsigned kWatchPauseMs = 100;
} // namespace

short CAUXTask::Play() {
    CTaskStatusTable& table = m_app.Player().Status();
    CZoneTriggers triggers(m_app, MakeTriggerParam(MakeRecord()), m_task.instance);
    triggers.Start(m_task.zones, CZCU::ThreadTriggerZCUJoinNetAUX);
    const int result = triggers.WaitForTriggerZCU([this] { return IsSuperseded(); });
    if (result != kTriggered) { return Fail(kTaskNotTriggered, "Failed to trigger AUX task devices, task ID "); }
    if (table.BeginBroadcast(m_task.instance, MakeRecord())) {
        m_app.Callbacks().TaskStatus(m_task.taskID, kTaskBroadcasting);
        LogTask(kLogError, "Prepare to play task ID "); // no error, but always logged as one
        WatchUntilStopped();
        triggers.CloseAudio();
    }
    return LeaveStopped();
}

short CAUXTask::LeaveStopped() {
    LogTask(kLogInfo, "Stop task, task ID ");
    return kTaskNone;
}

void CAUXTask::WatchUntilStopped() {
    CWakeList::Entry stopped(m_app.Player().StopWaiters());
    while (!m_app.Lifetime().IsExiting() && !m_app.Player().Status().IsStopped(m_task.taskID, m_task.instance)) {
        stopped.Wait(kWatchPauseMs);
    }
}

tagTASK_STATUS CAUXTask::MakeRecord() const {
    tagTASK_STATUS record = MakeBroadcastRecord(kAudioSourceNetAUX);
    record.multicastIP = m_task.multicastIP;
    record.deviceID = m_task.deviceID;
    record.auxPort = m_task.auxPort;
    return record;
}
