#include "sim/intercom_line.h"

#include "sim/wire.h"

#include <utility>

namespace k740::sim {

IntercomLine::IntercomLine(Reactor& reactor, std::uint32_t device, const std::string& address,
                           AudioActivity::OnChange onActivity, AudioSource::OnChange onStream)
    : m_reactor(reactor), m_socket(UdpSocket::BoundTo({address, kIntercomAudioPort})),
      m_source(reactor, m_socket, device, std::move(onStream)), m_activity(reactor, std::move(onActivity)) {
    m_reactor.Watch(m_socket.Descriptor(), [this] { ReceiveAll(); });
}

IntercomLine::~IntercomLine() {
    m_reactor.Forget(m_socket.Descriptor());
}

void IntercomLine::ReceiveAll() {
    while (const auto datagram = m_socket.Receive()) {
        if (!m_deaf) { Take(*datagram); }
    }
}

void IntercomLine::Take(const Datagram& datagram) {
    if (m_recordPath.empty() && m_heard.kept.size() < IntercomRecording::kMostKept) {
        m_heard.kept.push_back(datagram);
    }
    const auto audio = ReadAudioDatagram(datagram.bytes);
    if (!audio || audio->coding == Coding::EndOfStream) {
        ++m_heard.foreign;
        return;
    }
    m_heard.node = audio->node;
    m_heard.stream = audio->stream;
    m_heard.sender = datagram.sender;
    if (!m_decoder.Continues(*audio)) { ++m_heard.gaps; }
    m_heard.samplesHeard += FormatOf(audio->type)->samples;
    ++m_heard.datagrams;
    Record(*audio);
    m_activity.Heard(datagram.arrival);
}

void IntercomLine::Record(const AudioDatagram& audio) {
    const bool keep = m_recordPath.empty() && m_heard.datagrams <= IntercomRecording::kMostKept;
    if (m_recordPath.empty() && !keep) { return m_decoder.Skip(audio); }
    const std::vector<std::int16_t> samples = m_decoder.Decode(audio);
    if (keep) {
        m_heard.samples.insert(m_heard.samples.end(), samples.begin(), samples.end());
        return;
    }
    if (!m_wav) { m_wav.emplace(m_recordPath); }
    m_wav->Append(samples);
}

std::string IntercomLine::RecordedFile() {
    if (!m_wav) { return {}; }
    m_wav->Flush();
    return m_wav->Path();
}

} // namespace k740::sim
