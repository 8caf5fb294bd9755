#include "player/aux_task.h"

#include "app/application.h"
#include "player/zone_triggers.h"

short CAUXTask::Play() {
    CZoneTriggers triggers(m_app, MakeRecord());
    triggers.Start(m_task.zones, CZCU::ThreadTriggerZCUJoinNetAUX);
    const int result = triggers.WaitForTriggerZCU([this] { return IsSuperseded(); });
    if (result != kTriggered) { return Fail(kTaskNotTriggered, "Failed to trigger AUX task devices, task ID "); }
    if (m_app.Player().Status().BeginBroadcast(MakeRecord())) {
        const bool completed = Broadcast(triggers, [this] {
            LogTask(kLogError, "Prepare to play task ID "); // no error, but always logged as one
            WatchUntilStopped();
        });
        if (!completed) { return BreakOff(kTaskNotTriggered); }
    }
    return LeaveStopped();
}

short CAUXTask::LeaveStopped() {
    LogTask(kLogInfo, "Stop task, task ID ");
    return kTaskNone;
}

void CAUXTask::WatchUntilStopped() {
    CWakeList::Entry stopped(m_app.Player().StopWaiters(), m_task.taskID);
    while (!m_app.Lifetime().IsExiting() && !IsStopped()) { stopped.Wait(kIdleWaitMs); }
}

tagTASK_STATUS CAUXTask::MakeRecord() const {
    tagTASK_STATUS record = MakeBroadcastRecord(kAudioSourceNetAUX);
    record.multicastIP = m_task.multicastIP;
    record.deviceID = m_task.deviceID;
    record.auxPort = m_task.auxPort;
    return record;
}
