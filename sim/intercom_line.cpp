#include "sim/intercom_line.h"

#include "sim/wire.h"

namespace k740::sim {

IntercomLine::IntercomLine(Reactor& reactor, std::uint32_t device, const std::string& address)
    : m_reactor(reactor), m_socket(UdpSocket::BoundTo({address, kIntercomAudioPort})),
      m_source(reactor, m_socket, device) {
    m_reactor.Watch(m_socket.Descriptor(), [this] { ReceiveAll(); });
}

IntercomLine::~IntercomLine() {
    m_reactor.Forget(m_socket.Descriptor());
}

void IntercomLine::ReceiveAll() {
    while (const auto datagram = m_socket.Receive()) { Take(*datagram); }
}

void IntercomLine::Take(const Datagram& datagram) {
    if (m_heard.kept.size() < IntercomRecording::kMostKept) { m_heard.kept.push_back(datagram); }
    const auto audio = ReadAudioDatagram(datagram.bytes);
    if (!audio || audio->coding == Coding::EndOfStream) {
        ++m_heard.foreign;
        return;
    }
    m_heard.node = audio->node;
    m_heard.stream = audio->stream;
    m_heard.sender = datagram.sender;
    if (!m_decoder.Continues(*audio)) { ++m_heard.gaps; }
    if (++m_heard.datagrams > IntercomRecording::kMostKept) { return m_decoder.Skip(*audio); }
    const std::vector<std::int16_t> samples = m_decoder.Decode(*audio);
    m_heard.samples.insert(m_heard.samples.end(), samples.begin(), samples.end());
}

} // namespace k740::sim
