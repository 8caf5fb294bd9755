#include "player/task_run.h"

#include "app/application.h"
#include "common/format.h"
#include "common/worker.h"
#include "player/zone_triggers.h"

void CTaskRun::Run() {
    short status = m_failure;
    const bool completed = ContainExceptions(
        [&] { status = m_app.Player().AwaitPredecessor(m_task) && !IsSuperseded() ? Play() : LeaveStopped(); });
    if (!completed) { BreakOff(status); }
    m_app.Player().Conclude(m_task, status);
}

bool CTaskRun::IsSuperseded() const {
    return m_app.Player().Status().IsSuperseded(m_task.taskID, m_task.instance);
}

bool CTaskRun::IsStopped() const {
    return m_app.Player().Status().IsTaskStoped(m_task.taskID, m_task.instance);
}

tagTASK_STATUS CTaskRun::MakeBroadcastRecord(short audioSource) const {
    tagTASK_STATUS record;
    record.taskID = m_task.taskID;
    record.status = kTaskBroadcasting;
    record.priority = m_task.priority;
    record.dryContactOutput = m_task.dryContactOutput;
    record.sequence = m_task.sequence;
    record.recovery = m_task.recovery;
    record.audioSource = audioSource;
    record.instance = m_task.instance;
    return record;
}

bool CTaskRun::Broadcast(CZoneTriggers& triggers, const std::function<void()>& play) {
    const bool completed = ContainExceptions([&] {
        m_app.Player().ReportRunning(m_task.taskID, kTaskBroadcasting);
        play();
    });
    triggers.CloseAudio();
    return completed;
}

void CTaskRun::LogTask(uint8_t level, const char* text) {
    m_app.Player().Log(level, Format("%s%d", text, m_task.taskID));
}

short CTaskRun::Fail(short status, const char* text) {
    ContainExceptions([&] { LogTask(kLogError, text); });
    return status;
}
