// One run of an audio stream task, from its channel to its last request.
#pragma once

#include "common/udp.h"
#include "player/task_run.h"
#include "player/zone_triggers.h"

#include <string>

class CStreamTask : public CTaskRun {
public:
    CStreamTask(CK740ControlApp& app, const tagTASK_QUEUE& task) : CTaskRun(app, task, kTaskNoFreeChannel) {}

private:
    short Play() override;
    short LeaveStopped() override;
    short JoinGroupAndPlay();
    short TriggerAndPlay();
    tagTASK_STATUS MakeRecord() const;
    /// @return false when there is no memory for them
    bool NewStreams();
    /// Removes the slots that this format of the host's audio does not use.
    void KeepStreamsOf(int format);
    void RemoveStreams();
    void SendEndOfStream(const CZoneTriggers& triggers);

    CQBUDP m_udp;
    int m_channelID = 0;
    std::string m_multicastIP;
};
