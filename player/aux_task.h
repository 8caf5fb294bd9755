// One run of a net AUX task, whose audio the AUX device itself sends.
#pragma once

#include "player/task_records.h"
#include "player/zone_triggers.h"

class CK740ControlApp;

/// Belongs to the task's thread. Takes no channel and sends no audio.
class CAUXTask {
public:
    CAUXTask(CK740ControlApp& app, const tagTASK_QUEUE& task) : m_app(app), m_task(task) {}

    /// Runs the task to its end and tells the host how it ended.
    void Run();

private:
    short TriggerAndWatch();
    bool IsSuperseded() const;
    short Leave();
    tagTASK_STATUS MakeRecord() const;
    void WatchUntilStopped();
    void Log(uint8_t level, const char* text);

    CK740ControlApp& m_app;
    const tagTASK_QUEUE& m_task;
};
