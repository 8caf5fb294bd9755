// The communication hub: receives and dispatches every command packet, and sends queued ones.
#pragma once

#include "common/bounded_table.h"
#include "common/wake_signal.h"
#include "protocol/cmd_packet.h"
#include "protocol/port_receiver.h"

#include <atomic>
#include <cstdint>
#include <string>

class CK740ControlApp;

inline constexpr std::size_t kSendBufferBytes = 2048;
inline constexpr std::size_t kMaxQueuedSends = 5000;

/// A datagram that waits to be sent to a device.
struct tagSEND_BUFFER {
    int deviceID;                         // its registry socket is used
    unsigned char data[kSendBufferBytes]; // normally a command packet
    uint16_t length;                      // bytes to send; 0 skips the entry
};

/// Two receivers, for the ports 28001 and 29001, that behave alike, and a sender.
///
/// A packet is handled on the thread that received it, so a slow handler delays the next packet of its port.
class CCommunication {
public:
    enum ReceiverState { kNotStarted = 0, kBound = 1, kBindFailed = 255 };

    explicit CCommunication(CK740ControlApp& app);
    virtual ~CCommunication() = default;

    /// Starts the two receivers and the sender.
    void Initialization();

    /// Hands a packet to the manager that owns its command. A wrong magic or an unknown command is dropped.
    /// @param senderIP  dotted address of the sender
    void ProcessResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP);

    /// Queues a copy; the 5001st waiting entry is dropped.
    void AddSendBuffer(const tagSEND_BUFFER& entry);

    /// Makes all three threads notice the exit flag.
    void WakeThreads();
    /// @return whether a receiver holds its port or may still open it
    bool HoldsPorts() const { return m_receiver28001.HoldsPort() || m_receiver29001.HoldsPort(); }
    /// @return whether both ports have been bound, or it is clear that they will not be
    bool ArePortsSettled() const { return m_receiver28001.IsSettled() && m_receiver29001.IsSettled(); }
    int State() const { return m_state; }

private:
    PortService MakeService(int port, const char* threadName);
    bool ReceivePacket(const ReceiveBuffer& buffer, const sockaddr_in& sender);
    void ThreadSender();
    void SendBatch();
    void Send(const tagSEND_BUFFER& entry);

    CK740ControlApp& m_app;
    CBoundedTable<tagSEND_BUFFER, kMaxQueuedSends, WhenFull::RefuseNew> m_sendQueue;
    CWakeSignal m_sendQueued;
    std::atomic<int> m_state{kNotStarted};
    CPortReceiver m_receiver29001;
    CPortReceiver m_receiver28001;
};
