// What the runs of audio stream and net AUX tasks do alike.
#pragma once

#include "player/task_records.h"

#include <cstdint>
#include <functional>

class CK740ControlApp;
class CZoneTriggers;

/// One run of a task, from its acceptance to its last report. Belongs to the task's thread.
class CTaskRun {
public:
    virtual ~CTaskRun() = default;
    CTaskRun(const CTaskRun&) = delete;
    CTaskRun& operator=(const CTaskRun&) = delete;

    /// Waits until a former run of the same task is over, plays, and tells the host how it ended.
    void Run();

protected:
    /// @param failure  state of a task that could not even fail in order
    CTaskRun(CK740ControlApp& app, const tagTASK_QUEUE& task, short failure)
        : m_app(app), m_task(task), m_failure(failure) {}

    /// @return the state in which the task ends
    virtual short Play() = 0;
    /// Leaves a task that was stopped before it was broadcasting. @return the state in which it ends
    virtual short LeaveStopped() = 0;

    /// @return whether the task's ID has been given to a later task
    bool IsSuperseded() const;
    bool IsStopped() const;
    /// @return the record of the broadcasting task, without what only one kind has
    tagTASK_STATUS MakeBroadcastRecord(short audioSource) const;
    /// Tells the host that the task broadcasts, runs play until it is stopped and then closes the audio, whatever
    /// play throws. @return false when it threw
    bool Broadcast(CZoneTriggers& triggers, const std::function<void()>& play);
    /// Logs a text that ends with the task's ID.
    void LogTask(uint8_t level, const char* text);
    /// Logs an error in the same way, if it can. @return status
    short Fail(short status, const char* text);
    /// Fails for a reason of the library's own, such as a lack of memory. @return status
    short BreakOff(short status) { return Fail(status, "Failed to play, task ID "); }

    CK740ControlApp& m_app;
    const tagTASK_QUEUE& m_task;

private:
    const short m_failure;
};
