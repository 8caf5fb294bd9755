#include "protocol/communication.h"

#include "app/application.h"
#include "common/format.h"
#include "common/udp.h"
#include "common/worker.h"
#include "protocol/commands.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>
#include <deque>

namespace {

constexpr unsigned kEmptyReceivePauseMs = 100;
constexpr unsigned kDatagramPauseMs = 1;
constexpr unsigned kBatchPauseMs = 5;
constexpr unsigned kIdleSenderMs = 1000;
constexpr std::size_t kReceiveBufferBytes = 5120;

/// A packet with room for datagrams that are longer than one.
struct ReceiveBuffer {
    _vxa_cmd_packet_t packet;
    unsigned char beyond[kReceiveBufferBytes - sizeof(_vxa_cmd_packet_t)];
};
static_assert(sizeof(ReceiveBuffer) == kReceiveBufferBytes);

} // namespace

void CCommunication::Initialization() {
    m_state = kBound;
    StartReceiver(ThreadReceiver29001, m_socket29001);
    StartReceiver(ThreadReceiver28001, m_socket28001);
    pthread_t thread{};
    createThread(thread, ThreadSender, this, 1);
}

void CCommunication::StartReceiver(void* (*receiver)(void*), CSharedDescriptor& shared) {
    shared.Expect();
    pthread_t thread{};
    if (createThread(thread, receiver, this, 1) != 0) {
        shared.Withdraw([] {});
    }
}

void CCommunication::ProcessResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (packet->magic != kPacketMagic) { return; }
    CZCU& zcu = m_app.ZCU();
    CRPK& rpk = m_app.RPK();
    switch (packet->command) {
    case kCmdHeartbeat:
        return zcu.ReceiveHandshake(packet, senderIP);
    case kCmdZCUStatusReport:
        return zcu.ZCU_Response_ZCUStatusReq(packet);
    case kCmdTriggerTaskAnswer:
        return zcu.ZCU_Response_TriggerTask(packet);
    case kCmdJoinMulticastReport:
        return zcu.ZCU_Response_JoinMultiCast(packet);
    case kCmdRPKStatusReport:
        return rpk.RPK_Response_RPKStatus(packet);
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
    m_socket29001.WakeOwner();
    m_socket28001.WakeOwner();
    m_sendQueued.Raise();
}

void* CCommunication::ThreadReceiver28001(void* hub) {
    auto* self = static_cast<CCommunication*>(hub);
    const CThreadScope scope("k740-rx28001");
    self->RunReceiver(kRequestPort, self->m_socket28001);
    return nullptr;
}

void* CCommunication::ThreadReceiver29001(void* hub) {
    auto* self = static_cast<CCommunication*>(hub);
    const CThreadScope scope("k740-rx29001");
    self->RunReceiver(kReplyPort, self->m_socket29001);
    return nullptr;
}

void CCommunication::RunReceiver(int port, CSharedDescriptor& shared) {
    CQBUDP socket;
    if (!m_app.Lifetime().IsExiting()) {
        ContainExceptions([&] { ReceiveOn(port, socket, shared); });
    }
    shared.Withdraw([&socket] { socket.Close(); });
}

void CCommunication::ReceiveOn(int port, CQBUDP& socket, CSharedDescriptor& shared) {
    const int descriptor = socket.create_udp_host(port);
    if (descriptor < 0) {
        m_state = kBindFailed;
        m_app.Log().PushLog("Player", kLogError, Format("Failed to bind udp port %d", port));
        return;
    }
    m_state = kBound;
    // The socket is made known before the exit flag is looked at: whoever sets the flag then finds the socket to wake.
    shared.Publish(descriptor);
    ReceivePackets(descriptor, shared);
}

void CCommunication::ReceivePackets(int descriptor, CSharedDescriptor& shared) {
    ReceiveBuffer buffer{};
    sockaddr_in sender{};
    while (!m_app.Lifetime().IsExiting()) {
        socklen_t size = sizeof(sender);
        const ssize_t count =
            recvfrom(descriptor, &buffer, sizeof(buffer), 0, reinterpret_cast<sockaddr*>(&sender), &size);
        if (count > 0 && sender.sin_addr.s_addr != htonl(INADDR_ANY)) {
            char senderIP[INET_ADDRSTRLEN] = "";
            inet_ntop(AF_INET, &sender.sin_addr, senderIP, sizeof(senderIP));
            ContainExceptions([&] { ProcessResponse(&buffer.packet, senderIP); });
        } else if (!m_app.Lifetime().IsExiting()) {
            shared.Pause(kEmptyReceivePauseMs);
        }
        // A short datagram must read as zeros beyond its end, not as the one before it.
        if (count > 0) { std::memset(&buffer, 0, static_cast<std::size_t>(count)); }
    }
}

void* CCommunication::ThreadSender(void* hub) {
    const CThreadScope scope("k740-sender");
    static_cast<CCommunication*>(hub)->RunSender();
    return nullptr;
}

void CCommunication::RunSender() {
    CLifetime& lifetime = m_app.Lifetime();
    while (!lifetime.IsExiting()) {
        if (m_sendQueue.Size() == 0) { m_sendQueued.Wait(kIdleSenderMs); }
        ContainExceptions([this] { SendBatch(); });
        lifetime.Pause(kBatchPauseMs);
    }
}

void CCommunication::SendBatch() {
    for (const tagSEND_BUFFER& entry : m_sendQueue.TakeAll()) { Send(entry); }
}

void CCommunication::Send(const tagSEND_BUFFER& entry) {
    const std::size_t length = std::min<std::size_t>(entry.length, kSendBufferBytes);
    if (length > 0 && m_app.SendToDevice(entry.deviceID, entry.data, length)) {
        m_app.Lifetime().Pause(kDatagramPauseMs);
    }
}
