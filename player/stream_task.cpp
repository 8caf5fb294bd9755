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
    short status = kTaskNone;
    const bool completed = ContainExceptions([&] { status = JoinGroupAndPlay(); });
    m_udp.Close();
    m_app.Player().Channels().ReleaseChannel(m_channelID);
    return completed ? status : kTaskNotTriggered;
}

short CStreamTask::JoinGroupAndPlay() {
    const std::string nic = m_app.Configuration().NIC();
    if (m_udp.join_multicast_send(m_multicastIP.c_str(), m_app.Configuration().MulticastPort(), nic) != 0) {
        return Fail(kTaskGroupNotJoined, "Failed to join into multi-cast group, task ID ");
    }
    Log(kLogInfo,
        Format("Allocated muliticast %s for task %d NIC:%s", m_multicastIP.c_str(), m_task.taskID, nic.c_str()));
    return TriggerAndPlay();
}

short CStreamTask::TriggerAndPlay() {
    CZoneTriggers triggers(m_app, MakeTriggerParam(MakeRecord()), m_task.instance);
    triggers.Start(m_task.zones, CZCU::ThreadTriggerZCUJoinNetStream);
    const int result = triggers.WaitForTriggerZCU([this] { return IsSuperseded(); });
    if (result != kTriggered) { return Fail(kTaskNotTriggered, "Failed to trigger all ZCU, task ID "); }

    NewStreams();
    const short status = Broadcast(triggers);
    RemoveStreams(); // while the channel is still this task's
    return status;
}

short CStreamTask::Broadcast(CZoneTriggers& triggers) {
    CTaskStatusTable& table = m_app.Player().Status();
    if (table.IsStopped(m_task.taskID, m_task.instance)) { return LeaveStopped(); }
    LogTask(kLogInfo, "Start to send audio stream to ZCU, task ID ");
    if (!table.BeginBroadcast(m_task.instance, MakeRecord())) { return LeaveStopped(); }
    m_app.Callbacks().TaskStatus(m_task.taskID, kTaskBroadcasting);
    CStreamSender(m_app, m_udp, m_task, m_channelID).Run();
    if (m_task.recovery == 0) { SendEndOfStream(triggers); }
    triggers.CloseAudio();
    LogTask(kLogInfo, "Task stoped, task ID ");
    return kTaskNone;
}

tagTASK_STATUS CStreamTask::MakeRecord() const {
    tagTASK_STATUS record = MakeBroadcastRecord(kAudioSourceStream);
    record.channelID = static_cast<short>(m_channelID);
    record.multicastIP = m_multicastIP;
    return record;
}

// Only the slots that the input format needs.
void CStreamTask::NewStreams() {
    CTaskStreams& streams = m_app.Player().Streams();
    const int format = m_app.Configuration().AudioStreamFormat();
    if (format != kFormat44K && format != kFormat22K) { streams.NewTaskStream8K(m_channelID, m_task.taskID); }
    if (format != kFormat44K) { streams.NewTaskStream22K(m_channelID, m_task.taskID); }
    streams.NewTaskStream44K(m_channelID, m_task.taskID);
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
