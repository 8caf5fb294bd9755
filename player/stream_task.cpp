#include "player/stream_task.h"

#include "app/application.h"
#include "common/format.h"
#include "common/worker.h"
#include "player/stream_sender.h"

namespace {
constexpr int kEndOfStreamRounds = 2;
constexpr unsigned kAfterEndOfStreamMs = 20;
} // namespace

short CStreamTask::Play() {
    m_channelID = m_app.Player().NewChannel(m_task.taskID, m_multicastIP);
    if (m_channelID == kNoChannel) { return Fail(kTaskNoFreeChannel, "Failed to allocate a channel, task ID "); }
    short status = kTaskNotTriggered;
    const bool completed = ContainExceptions([&] { status = JoinGroupAndPlay(); });
    if (!completed) { BreakOff(status); }
    RemoveStreams(); // while the channel is still this task's
    m_udp.Close();
    m_app.Player().Channels().ReleaseChannel(m_channelID);
    return status;
}

short CStreamTask::JoinGroupAndPlay() {
    const std::string nic = m_app.Configuration().NIC();
    if (m_udp.join_multicast_send(m_multicastIP.c_str(), m_app.Configuration().MulticastPort(), nic) != 0) {
        return Fail(kTaskGroupNotJoined, "Failed to join into multi-cast group, task ID ");
    }
    m_app.Player().Log(kLogInfo, Format("Allocated muliticast %s for task %d NIC:%s", m_multicastIP.c_str(),
                                        m_task.taskID, nic.c_str()));
    // Before any controller is asked to play, because without them there is nothing to be heard. All of them, because
    // the input format may change until one plays; what is not touched takes no memory.
    return NewStreams() ? TriggerAndPlay() : BreakOff(kTaskNotTriggered);
}

short CStreamTask::TriggerAndPlay() {
    CZoneTriggers triggers(m_app, MakeRecord());
    triggers.Start(m_task.zones, CZCU::ThreadTriggerZCUJoinNetStream);
    const int result = triggers.WaitForTriggerZCU([this] { return IsSuperseded(); });
    if (result != kTriggered) { return Fail(kTaskNotTriggered, "Failed to trigger all ZCU, task ID "); }
    if (IsStopped()) { return LeaveStopped(); }
    KeepStreamsOf(m_app.Configuration().AudioStreamFormat());
    LogTask(kLogInfo, "Start to send audio stream to ZCU, task ID ");
    if (!m_app.Player().Status().BeginBroadcast(MakeRecord())) { return LeaveStopped(); }
    const bool completed = Broadcast(triggers, [&] {
        CStreamSender(m_app, m_udp, m_task, m_channelID).MulitCastStream_4K();
        if (m_task.recovery == 0) { SendEndOfStream(triggers); }
    });
    if (!completed) { return BreakOff(kTaskNotTriggered); }
    LogTask(kLogInfo, "Task stoped, task ID ");
    return kTaskNone;
}

tagTASK_STATUS CStreamTask::MakeRecord() const {
    tagTASK_STATUS record = MakeBroadcastRecord(kAudioSourceStream);
    record.channelID = static_cast<short>(m_channelID);
    record.multicastIP = m_multicastIP;
    return record;
}

bool CStreamTask::NewStreams() {
    CTaskStreams& streams = m_app.Player().Streams();
    return streams.NewTaskStream8K(m_channelID, m_task.taskID) &&
           streams.NewTaskStream22K(m_channelID, m_task.taskID) && streams.NewTaskStream44K(m_channelID, m_task.taskID);
}

void CStreamTask::KeepStreamsOf(int format) {
    CTaskStreams& streams = m_app.Player().Streams();
    if (format == kFormat44K) { streams.RemoveTaskStream22K(m_channelID, m_task.taskID); }
    if (format == kFormat44K || format == kFormat22K) { streams.RemoveTaskStream8K(m_channelID, m_task.taskID); }
}

void CStreamTask::RemoveStreams() {
    CTaskStreams& streams = m_app.Player().Streams();
    streams.RemoveTaskStream8K(m_channelID, m_task.taskID);
    streams.RemoveTaskStream22K(m_channelID, m_task.taskID);
    streams.RemoveTaskStream44K(m_channelID, m_task.taskID);
}

void CStreamTask::SendEndOfStream(const CZoneTriggers& triggers) {
    for (int round = 0; round < kEndOfStreamRounds; ++round) {
        for (const int id : triggers.ControllerIDs()) { m_app.ZCU().ZCU_Request_ExitMultiCast_4K(&m_udp, id); }
        m_app.Lifetime().Pause(kAfterEndOfStreamMs);
    }
}

short CStreamTask::LeaveStopped() {
    LogTask(kLogInfo, "Prepare to play task, but task was stoped, task ID ");
    return kTaskNone;
}
