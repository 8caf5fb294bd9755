#include "sim/play_session.h"

#include <utility>

namespace k740::sim {

PlaySession::PlaySession(Reactor& reactor, std::uint32_t controller, const std::string& interfaceAddress,
                         const PlayRequest& request, Keep keep, Listener listener)
    : m_reactor(reactor), m_recorder(controller, request, keep), m_listener(std::move(listener)),
      m_activity(reactor, [this](bool begins, Clock::time_point last) { m_listener.onActivity(*this, begins, last); }),
      m_socket(UdpSocket::InGroup({request.group, request.groupPort}, interfaceAddress)) {
    m_recorder.SetSink(m_listener.onSamples);
    m_reactor.Watch(m_socket->Descriptor(), [this] { ReceiveAll(); });
}

PlaySession::~PlaySession() {
    if (IsOpen()) { Close(); }
}

void PlaySession::Close() {
    ReceiveAll();
    m_reactor.Forget(m_socket->Descriptor());
    m_socket.reset();
    m_activity.End();
    m_recorder.Close();
}

void PlaySession::ReceiveAll() {
    while (const auto datagram = m_socket->Receive()) {
        switch (m_recorder.Take(*datagram)) {
        case Recorder::Kind::Audio:
            m_activity.Heard(datagram->arrival);
            m_listener.onAudio(*this, *datagram);
            break;
        case Recorder::Kind::EndOfStream:
            m_listener.onEnd(*datagram);
            break;
        case Recorder::Kind::Other:
            break;
        }
    }
}

} // namespace k740::sim
