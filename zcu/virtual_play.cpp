// A virtual zone controller plays a task: accepts it, receives its audio and hands it to the host.
#include "app/application.h"
#include "common/format.h"
#include "common/ip_address.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "player/group_receiver.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {

constexpr uint16_t kAccepted = 1;
constexpr uint16_t kJoined = 1;
constexpr unsigned kJoinReportPauseMs = 2;
constexpr unsigned kReceiverPauseMs = 80;
constexpr int kPlayBegins = 1; // messages to the host
constexpr int kPlayEnds = 2;
constexpr unsigned kPassPauseMs = 2;
constexpr unsigned kStillWantedMs = 29; // looked at once more than this has passed
constexpr unsigned kSilenceMs = 4999;   // the receiver gives up once more than this has passed without a datagram

/// Fills what both answers repeat of a request.
void Repeat(uint8_t (&echo)[8], const _vxa_play_task_req_t_V2& request) {
    std::memcpy(echo, &request.reserved9, sizeof(request.reserved9));
    std::memcpy(echo + sizeof(request.reserved9), &request.source, sizeof(request.source));
}

_vxa_play_task_rsp_t MakeAcceptance(uint32_t source, const _vxa_play_task_req_t_V2& request) {
    _vxa_play_task_rsp_t answer{};
    answer.joinFollows = 1;
    answer.result = kAccepted;
    answer.sequence = request.sequence;
    answer.tokenA = source;
    answer.tokenB = request.taskID;
    Repeat(answer.uninterpreted, request);
    answer.taskID = request.taskID;
    answer.trailing = request.kind;
    return answer;
}

_vxa_join_mcast_rsp_t MakeJoinReport(uint32_t source, const _vxa_play_task_req_t_V2& request) {
    _vxa_join_mcast_rsp_t report{};
    report.status = kJoined;
    report.tokenA = source;
    report.tokenB = request.taskID;
    Repeat(report.uninterpreted10, request);
    report.uninterpreted18 = request.taskID;
    report.uninterpreted22 = request.kind;
    return report;
}

} // namespace

void CZCU::ThreadResponsePlayTask(const _vxa_cmd_packet_t& packet, const std::string& senderIP) {
    const auto request = ReadPayload<_vxa_play_task_req_t_V2>(packet);
    VirtualPlay play{static_cast<int>(packet.sourceID),
                     static_cast<int>(packet.destinationID),
                     static_cast<int>(request.taskID),
                     0,
                     request.multicastIP,
                     request.multicastPort};
    m_app.Log().PushLog("", kLogInfo,
                        Format("=====Virutla ZCU receive a play request, ZCU %d, source device %d, task %d, %s",
                               play.virtualZCU, play.source, play.task, senderIP.c_str()));
    AnswerAsVirtual(packet, senderIP, kCmdTriggerTaskAnswer, MakeAcceptance(packet.sourceID, request));
    m_app.Lifetime().Pause(kJoinReportPauseMs);
    AnswerAsVirtual(packet, senderIP, kCmdJoinMulticastReport, MakeJoinReport(packet.sourceID, request));
    const auto instance = StartPlaying(play.source, play.virtualZCU, request);
    if (!instance) { return; }
    play.instance = *instance;
    m_app.Lifetime().Pause(kReceiverPauseMs);
    const bool started = StartThread("k740-vzcu-audio", [this, play] { ThreadRecvMulticastAudio(play); });
    m_app.Callbacks().TrainMessage(play.source, play.virtualZCU, kPlayBegins);
    if (!started) { ThreadRecvMulticastAudio(play); } // this thread serves as well
}

void CZCU::ThreadRecvMulticastAudio(const VirtualPlay& play) {
    CGroupReceiver receiver(m_app);
    ContainExceptions([&] {
        receiver.Join(ConvertIPToString(play.multicastIP), static_cast<int>(play.multicastPort));
        ReceiveUntilOver(play, receiver);
    });
    // However it ended, the controller is idle unless it plays something else by now.
    StopPlaying(play.virtualZCU, [&] {
        return m_taskZones.RemoveInstance(play.source, play.task, play.virtualZCU, play.instance) == 1;
    });
    m_app.Callbacks().TrainMessage(play.source, play.virtualZCU, kPlayEnds);
}

void CZCU::ReceiveUntilOver(const VirtualPlay& play, CGroupReceiver& receiver) {
    const auto leave = [&](const char* reason) {
        m_app.Log().PushLog("", kLogInfo, Format("%s, virtual ZCU %d", reason, play.virtualZCU));
    };
    const auto isCurrent = [&] {
        return m_taskZones.IsCurrent(play.source, play.task, play.virtualZCU, play.instance);
    };
    CQBTime sinceLook;
    CQBTime sinceDatagram;
    sinceLook.TimeStart();
    sinceDatagram.TimeStart();
    for (; !m_app.Lifetime().IsExiting(); m_app.Lifetime().Pause(kPassPauseMs)) {
        if (sinceLook.TimeEnd() > kStillWantedMs) {
            sinceLook.TimeStart();
            if (!isCurrent()) { return leave("Exit player for ZCU has none task"); }
        }
        if (sinceDatagram.TimeEnd() > kSilenceMs) {
            return leave("Exit player for receive multicast audio timeout over 5s");
        }
        const int length = receiver.Receive();
        if (length == kNothingReceived) { continue; }
        sinceDatagram.TimeStart();
        if (length == kEndOfStreamReceived) { return leave("Exit player for receive multicast exit"); }
        // Until it leaves, a receiver that was overtaken hears what the later one hands to the host.
        if (length > 0 && isCurrent()) {
            m_app.Callbacks().TrainAudio(play.source, play.task, {receiver.Audio(), length});
        }
    }
}
