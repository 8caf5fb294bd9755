#include "sim/device.h"

#include "sim/audio_datagram.h"

#include <utility>

namespace k740::sim {

Device::Device(const Surroundings& surroundings, std::uint32_t id, const std::string& address,
               const std::vector<std::uint16_t>& furtherPorts)
    : m_surroundings(surroundings), m_id(id), m_address(address), m_listeners(Listen(address, furtherPorts)),
      m_source(surroundings.reactor, Socket(), id, StreamNoter(kRequestPort)) {
    for (const Listener& listener : m_listeners) {
        m_surroundings.reactor.Watch(listener.socket.Descriptor(), [this, &listener] { ReceiveAll(listener); });
    }
}

Device::~Device() {
    for (const Listener& listener : m_listeners) { m_surroundings.reactor.Forget(listener.socket.Descriptor()); }
}

std::vector<Device::Listener> Device::Listen(const std::string& address,
                                             const std::vector<std::uint16_t>& furtherPorts) {
    std::vector<Listener> listeners;
    listeners.push_back({kRequestPort, UdpSocket::BoundTo({address, kRequestPort})});
    for (const std::uint16_t port : furtherPorts) { listeners.push_back({port, UdpSocket::BoundTo({address, port})}); }
    return listeners;
}

void Device::ReceiveAll(const Listener& listener) {
    while (const auto datagram = listener.socket.Receive()) {
        if (!m_power) { continue; }
        const auto packet = Unpack(datagram->bytes);
        const bool lost = packet && m_faults.Loses(packet->command);
        Note({datagram->arrival,
              lost ? Event::Kind::Lost : Event::Kind::Received,
              m_id,
              listener.port,
              datagram->sender,
              datagram->bytes,
              {}});
        if (packet && !lost) { Take(*packet, *datagram); }
    }
}

void Device::Take(const Packet& packet, const Datagram& datagram) {
    if (packet.command != command::kGetVersion) { return Handle(packet, datagram); }
    Answer(packet, datagram.sender, command::kVersionAnswer, Payload(m_version));
}

void Device::SendRaw(ByteView bytes, const Endpoint& receiver) {
    m_surroundings.reactor.Run([&] {
        if (!m_power) { return; }
        // Before the send, so that its consequences are noted after it.
        Note({Clock::now(), Event::Kind::Sent, m_id, kRequestPort, receiver, Bytes(bytes.begin(), bytes.end()), {}});
        Socket().Send(bytes, receiver);
    });
}

void Device::SendToStation(std::uint16_t command, ByteView payload, std::uint16_t port) {
    SendToStation(command, m_surroundings.stationNode, payload, port);
}

void Device::SendToStation(std::uint16_t command, std::uint32_t destination, ByteView payload, std::uint16_t port) {
    SendRaw(Pack(MakePacket(m_id, destination, command, payload)), {m_surroundings.stationAddress, port});
}

void Device::SetVersion(const Version& version) {
    OnReactor().Run([&] { m_version = version; });
}

void Device::SetPower(bool on) {
    OnReactor().Run([&] {
        if (std::exchange(m_power, on) == on) { return; }
        if (on) { return RegainPower(); }
        StopStreams();
        LosePower();
    });
}

bool Device::HasPower() const {
    bool power = false;
    OnReactor().Run([&] { power = m_power; });
    return power;
}

void Device::SetAnswerFault(const AnswerFault& fault) {
    OnReactor().Run([&] { m_faults.Set(fault); });
}

void Device::SetAnswerFault(std::uint16_t request, const AnswerFault& fault) {
    OnReactor().Run([&] { m_faults.Set(request, fault); });
}

AudioSource& Device::Stream(const Endpoint& receiver, const AudioStream& stream) {
    m_source.Start(receiver, stream);
    return m_source;
}

void Device::SendEndOfStream(const Endpoint& group, std::uint32_t controller) {
    SendRaw(EndOfStream(m_id, controller), group);
}

void Device::Answer(const Packet& request, const Endpoint& requester, std::uint16_t command, ByteView payload) {
    const AnswerFault fault = m_faults.Of(request.command);
    if (fault.silent) { return; }
    const Bytes bytes = Pack(MakePacket(fault.source.value_or(m_id), request.source, command, payload));
    const Endpoint receiver{requester.ip, kReplyPort};
    After(fault.delay, [=, this] {
        for (int remaining = fault.twice ? 2 : 1; remaining > 0; --remaining) { SendRaw(bytes, receiver); }
    });
}

void Device::After(std::chrono::milliseconds delay, std::function<void()> work) {
    if (delay == std::chrono::milliseconds(0)) { return work(); }
    m_surroundings.reactor.After(delay, [life = std::weak_ptr(m_life), work = std::move(work)] {
        if (!life.expired()) { work(); }
    });
}

void Device::Repeat(std::chrono::milliseconds period, const std::function<void()>& work,
                    std::chrono::milliseconds firstDelay) {
    m_surroundings.reactor.Run([&] {
        const unsigned generation = ++m_repetition;
        if (period.count() == 0) { return; }
        After(firstDelay, [=, this] { RunRepeated(generation, period, work); });
    });
}

void Device::RunRepeated(unsigned generation, std::chrono::milliseconds period, const std::function<void()>& work) {
    if (generation != m_repetition) { return; }
    work();
    After(period, [=, this] { RunRepeated(generation, period, work); });
}

AudioSource::OnChange Device::StreamNoter(std::uint16_t port) {
    return [this, port](bool begins, const Endpoint& receiver, std::size_t sent) {
        Event event;
        event.time = Clock::now();
        event.kind = begins ? Event::Kind::StreamBegins : Event::Kind::StreamEnds;
        event.device = m_id;
        event.port = port;
        event.peer = receiver;
        event.audio = AudioCounts{0, 0, sent, 0, {}};
        Note(std::move(event));
    };
}

void Device::Note(Event event) {
    m_surroundings.journal.Note(std::move(event));
}

} // namespace k740::sim
