#include "player/task_run.h"

#include "app/application.h"
#include "common/format.h"
#include "common/worker.h"

void CTaskRun::Run() {
    short status = m_failure;
    ContainExceptions([&] {
        m_app.Player().AwaitPredecessor(m_task);
        status = IsSuperseded() ? LeaveStopped() : Play();
    });
    ContainExceptions([&] { m_app.Player().Conclude(m_task, status); });
}

bool CTaskRun::IsSuperseded() const {
    return m_app.Player().Status().IsSuperseded(m_task.taskID, m_task.instance);
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
    return record;
}

void CTaskRun::Log(uint8_t level, const std::string& text) {
    m_app.Log().PushLog("Player", level, text);
}

void CTaskRun::LogTask(uint8_t level, const char* text) {
    Log(level, Format("%s%d", text, m_task.taskID));
}

short CTaskRun::Fail(short status, const char* text) {
    LogTask(kLogError, text);
    return status;
}
