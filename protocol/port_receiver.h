// A UDP port that the library listens on for its whole life.
#pragma once

#include "common/shared_descriptor.h"
#include "protocol/cmd_packet.h"

#include <netinet/in.h>

#include <atomic>
#include <cstddef>
#include <functional>

class CK740ControlApp;
class CQBUDP;

inline constexpr std::size_t kReceiveBufferBytes = 5120;

/// One received datagram; zero beyond its end, cut when it is longer.
struct ReceiveBuffer {
    _vxa_cmd_packet_t packet;
    unsigned char beyond[kReceiveBufferBytes - sizeof(_vxa_cmd_packet_t)];

    const unsigned char* Bytes() const { return reinterpret_cast<const unsigned char*>(this); }
};
static_assert(sizeof(ReceiveBuffer) == kReceiveBufferBytes);

/// What is listened on, and who is told. Both functions are called on the receiving thread.
struct PortService {
    int port;
    const char* threadName; // at most 15 characters; a literal
    unsigned pauseMs;       // after a datagram that was refused or could not be received
    std::function<void(bool bound)> onBind;
    /// @return false to refuse the datagram
    std::function<bool(const ReceiveBuffer& buffer, std::size_t length, const sockaddr_in& sender)> onDatagram;
};

/// Receives on a thread of its own until the exit flag is set. A port that cannot be bound stays closed; the log says
/// so. A datagram is handled on the receiving thread, so a slow handler delays the next one.
class CPortReceiver {
public:
    CPortReceiver(CK740ControlApp& app, PortService service) : m_app(app), m_service(std::move(service)) {}

    void Start();
    /// Makes the thread notice the exit flag.
    void Wake() { m_shared.WakeOwner(); }
    /// @return whether the port is held or may still be opened
    bool HoldsPort() const { return m_shared.IsOpen(); }
    /// @return whether the port has been bound, or it is clear that it will not be
    bool IsSettled() const { return m_settled; }

private:
    void Run();
    void ReceiveOn(CQBUDP& socket);
    void ReceiveAll(int descriptor);

    CK740ControlApp& m_app;
    const PortService m_service;
    CSharedDescriptor m_shared;
    std::atomic<bool> m_settled{false};
};
