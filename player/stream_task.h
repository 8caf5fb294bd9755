// One run of an audio stream task, from its channel to its last request.
#pragma once

#include "common/udp.h"
#include "player/task_records.h"
#include "player/zone_triggers.h"

#include <string>

class CK740ControlApp;

/// Belongs to the task's thread.
class CStreamTask {
public:
    CStreamTask(CK740ControlApp& app, const tagTASK_QUEUE& task) : m_app(app), m_task(task) {}

    /// Plays the task to its end and tells the host how it ended.
    void Run();

private:
    short TakeChannelAndPlay();
    short JoinGroupAndPlay();
    short TriggerAndPlay();
    short Broadcast(CZoneTriggers& triggers);
    tagTASK_STATUS MakeRecord() const;
    void NewStreams();
    void RemoveStreams();
    void SendEndOfStream(const CZoneTriggers& triggers);
    bool IsSuperseded() const;
    short LeaveStopped();
    void Log(uint8_t level, const char* text);
    short Fail(short status, const char* text);

    CK740ControlApp& m_app;
    const tagTASK_QUEUE& m_task;
    CQBUDP m_udp;
    int m_channelID = 0;
    std::string m_multicastIP;
};
