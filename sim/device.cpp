#include "sim/device.h"

#include <utility>

namespace k740::sim {

Device::Device(const Surroundings& surroundings, std::uint32_t id, const std::string& address)
    : m_surroundings(surroundings), m_id(id), m_address(address),
      m_socket(UdpSocket::BoundTo({address, kRequestPort})) {
    m_surroundings.reactor.Watch(m_socket.Descriptor(), [this] { ReceiveAll(); });
}

Device::~Device() {
    m_surroundings.reactor.Forget(m_socket.Descriptor());
}

void Device::ReceiveAll() {
    while (const auto datagram = m_socket.Receive()) {
        Note({datagram->arrival, Event::Kind::Received, m_id, kRequestPort, datagram->sender, datagram->bytes, {}});
        if (const auto packet = Unpack(datagram->bytes)) { Handle(*packet, *datagram); }
    }
}

void Device::SendRaw(ByteView bytes, const Endpoint& receiver) {
    m_surroundings.reactor.Run([&] {
        // Before the send, so that its consequences are noted after it.
        Note({Clock::now(), Event::Kind::Sent, m_id, kRequestPort, receiver, Bytes(bytes.begin(), bytes.end()), {}});
        m_socket.Send(bytes, receiver);
    });
}

void Device::SendToStation(std::uint16_t command, ByteView payload, std::uint16_t port) {
    SendRaw(Pack(MakePacket(m_id, m_surroundings.stationNode, command, payload)),
            {m_surroundings.stationAddress, port});
}

void Device::Answer(const Packet& request, const Endpoint& requester, std::uint16_t command, ByteView payload) {
    SendRaw(Pack(MakePacket(m_id, request.source, command, payload)), {requester.ip, kReplyPort});
}

void Device::After(std::chrono::milliseconds delay, std::function<void()> work) {
    if (delay == std::chrono::milliseconds(0)) { return work(); }
    m_surroundings.reactor.After(delay, [life = std::weak_ptr(m_life), work = std::move(work)] {
        if (!life.expired()) { work(); }
    });
}

void Device::Repeat(std::chrono::milliseconds period, const std::function<void()>& work) {
    m_surroundings.reactor.Run([&] {
        ++m_repetition;
        if (period.count() > 0) { RunRepeated(m_repetition, period, work); }
    });
}

void Device::RunRepeated(unsigned generation, std::chrono::milliseconds period, const std::function<void()>& work) {
    if (generation != m_repetition) { return; }
    work();
    After(period, [=, this] { RunRepeated(generation, period, work); });
}

void Device::Note(Event event) {
    m_surroundings.journal.Note(std::move(event));
}

} // namespace k740::sim
