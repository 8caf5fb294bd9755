#include "protocol/communication.h"

#include "app/application.h"
#include "protocol/commands.h"

#include <arpa/inet.h>

#include <algorithm>

namespace {

constexpr unsigned kEmptyReceivePauseMs = 100;
constexpr unsigned kDatagramPauseMs = 1;
constexpr unsigned kBatchPauseMs = 5;

} // namespace

CCommunication::CCommunication(CK740ControlApp& app)
    : m_app(app), m_receiver29001(app, MakeService(kReplyPort, "k740-rx29001")),
      m_receiver28001(app, MakeService(kRequestPort, "k740-rx28001")) {}

PortService CCommunication::MakeService(int port, const char* threadName) {
    return {port, threadName, kEmptyReceivePauseMs, [this](bool bound) { m_state = bound ? kBound : kBindFailed; },
            [this](const ReceiveBuffer& buffer, std::size_t, const sockaddr_in& sender) {
                return ReceivePacket(buffer, sender);
            }};
}

void CCommunication::Initialization() {
    m_state = kBound;
    m_receiver29001.Start();
    m_receiver28001.Start();
    m_app.StartServiceThread("k740-sender", [this] { ThreadSender(); });
}

bool CCommunication::ReceivePacket(const ReceiveBuffer& buffer, const sockaddr_in& sender) {
    if (sender.sin_addr.s_addr == htonl(INADDR_ANY)) { return false; }
    char senderIP[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &sender.sin_addr, senderIP, sizeof(senderIP));
    ProcessResponse(&buffer.packet, senderIP);
    return true;
}

void CCommunication::ProcessResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (packet->magic != kPacketMagic) { return; }
    CZCU& zcu = m_app.ZCU();
    CRPK& rpk = m_app.RPK();
    CTALKER& talker = m_app.Talker();
    switch (packet->command) {
    case kCmdCloseAudio:
        return zcu.ReceiveCloseAudioResponse(packet, senderIP);
    case kCmdCloseZones:
        return zcu.ReceiveCloseZoneResponse(packet, senderIP);
    case kCmdHeartbeat:
        return zcu.ReceiveHandshake(packet, senderIP);
    case kCmdGetVersion:
        return zcu.ReceiveGetVersion(packet, senderIP);
    case kCmdTriggerTask:
        return zcu.ReceivePlayTaskResponse(packet, senderIP);
    case kCmdGetZoneMulticast:
        return zcu.ReceiveGetMulticastIP(packet, senderIP);
    case kCmdAddTaskExtend:
        return zcu.ReceiveAddTaskExtend(packet, senderIP);
    case kCmdDelTaskExtend:
        return zcu.ReceiveDelTaskExtend(packet, senderIP);
    case kCmdAdjustVolumeV2Answer:
        return zcu.ZCU_Response_AdjustVolume_V2(packet);
    case kCmdZCUStatusReport:
        return zcu.ZCU_Response_ZCUStatusReq(packet);
    case kCmdGetVolumeV2Answer:
        return zcu.ZCU_Response_GetVolume_V2(packet);
    case kCmdGetVersionAnswer:
        return zcu.DEV_Response_GetVersion(packet);
    case kCmdTriggerTaskAnswer:
        return zcu.ZCU_Response_TriggerTask(packet);
    case kCmdJoinMulticastReport:
        return zcu.ZCU_Response_JoinMultiCast(packet);
    case kCmdAdjustVolumeV3Answer:
        return zcu.ZCU_Response_AdjustVolume_V3(packet);
    case kCmdGetVolumeV3Answer:
        return zcu.ZCU_Response_GetVolume_V3(packet);
    case kCmdGetZoneMulticastAnswer:
        return zcu.ZCU_Response_GetZoneMCastIP(packet);
    case kCmdRPKStatusReport:
        return rpk.RPK_Response_RPKStatus(packet);
    case kCmdRPKMonitorAnswer:
        return rpk.ReceiveMonitorResponse(packet, senderIP);
    case kCmdRPKHeartbeat:
        return talker.ReceiveTalkerHandshake(packet, senderIP);
    case kCmdIntercomInvite:
        return talker.ReceiveRPKInviteTalker(packet, senderIP);
    case kCmdIntercomAnswer:
        return talker.ReceiveTalkerProcess(packet, senderIP);
    case kCmdRPKTaskAnswer:
        return rpk.ReceivePlayPTTAUXResponse(packet, senderIP);
    default:
        return;
    }
}

void CCommunication::AddSendBuffer(const tagSEND_BUFFER& entry) {
    if (m_sendQueue.Append(entry)) { m_sendQueued.Raise(); }
}

void CCommunication::WakeThreads() {
    m_receiver29001.Wake();
    m_receiver28001.Wake();
    m_sendQueued.Raise();
}

void CCommunication::ThreadSender() {
    CLifetime& lifetime = m_app.Lifetime();
    while (!lifetime.IsExiting()) {
        if (m_sendQueue.Size() == 0) { m_sendQueued.Wait(kIdleWaitMs); }
        ContainExceptions([this] { SendBatch(); });
        lifetime.Pause(kBatchPauseMs);
    }
}

void CCommunication::SendBatch() {
    for (const tagSEND_BUFFER& entry : m_sendQueue.TakeAll()) { Send(entry); }
}

void CCommunication::Send(const tagSEND_BUFFER& entry) {
    const std::size_t length = std::min<std::size_t>(entry.length, kSendBufferBytes);
    if (length > 0 && m_app.TrySendToDevice(entry.deviceID, entry.data, length) != SendResult::NoSocket) {
        m_app.Lifetime().Pause(kDatagramPauseMs);
    }
}
