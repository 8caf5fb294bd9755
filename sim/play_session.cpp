#include "sim/play_session.h"

#include <utility>

namespace k740::sim {

PlaySession::PlaySession(Reactor& reactor, std::uint32_t controller, const std::string& interfaceAddress,
                         const PlayRequest& request, Keep keep, OnEnd onEnd)
    : m_reactor(reactor), m_recorder(controller, request, keep), m_onEnd(std::move(onEnd)),
      m_socket(UdpSocket::InGroup({request.group, request.groupPort}, interfaceAddress)) {
    m_reactor.Watch(m_socket->Descriptor(), [this] { ReceiveAll(); });
}

PlaySession::~PlaySession() {
    if (IsOpen()) { Close(); }
}

void PlaySession::Close() {
    ReceiveAll();
    m_reactor.Forget(m_socket->Descriptor());
    m_socket.reset();
    m_recorder.Close();
}

void PlaySession::ReceiveAll() {
    while (const auto datagram = m_socket->Receive()) {
        if (m_recorder.Take(*datagram)) { m_onEnd(*datagram); }
    }
}

} // namespace k740::sim
