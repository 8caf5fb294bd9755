// One run of a net AUX task, whose audio the AUX device itself sends.
#pragma once

#include "player/task_run.h"

/// Takes no channel and sends no audio.
class CAUXTask : public CTaskRun {
public:
    CAUXTask(CK740ControlApp& app, const tagTASK_QUEUE& task) : CTaskRun(app, task, kTaskNotTriggered) {}

private:
    short Play() override;
    short LeaveStopped() override;
    tagTASK_STATUS MakeRecord() const;
    void WatchUntilStopped();
};
