// A station made by hand: the requests and the audio that simulated devices are tried with.
#pragma once

#include "sim/adpcm_decode.h"
#include "sim/bytes.h"
#include "sim/udp_socket.h"
#include "sim/wire.h"

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace k740::test {

inline constexpr std::chrono::milliseconds kSoon{5000}; // far beyond what is expected
inline const sim::Endpoint kGroup{"225.0.0.1", 28100};

inline std::optional<sim::Datagram> WaitForDatagram(const sim::UdpSocket& socket,
                                                    std::chrono::milliseconds timeout = kSoon) {
    pollfd ready{socket.Descriptor(), POLLIN, 0};
    if (::poll(&ready, 1, static_cast<int>(timeout.count())) != 1) { return std::nullopt; }
    return socket.Receive();
}

/// Bytes 0 to 65 of a play request, sequence 1, port 28100; the group is 225.0.0.1 unless given.
inline sim::Bytes PlayPayload(std::uint32_t taskId, std::uint32_t zoneMask, std::uint32_t group = 0xE1000001) {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(1).Fill(2, 0).Put<std::uint16_t>(186).Fill(7, 0); // sequence, priority
    writer.Put(taskId).Put(taskId).Put(3).Put<std::uint8_t>(0).Fill(3, 0);      // 13 to 28
    writer.Put<std::uint16_t>(0xFFFF).Fill(7, 0).Put(zoneMask).Fill(8, 0);      // 29 to 49
    writer.Put(32).Put(group).Put<std::uint32_t>(28100).Put(sim::kDefaultStationNode);
    return writer.Get();
}

/// One audio datagram of type 341 that goes on from the state, which it moves.
inline sim::Bytes AudioBytes(std::uint8_t code, sim::AdpcmState& state) {
    const sim::Bytes codes(1024, code);
    state = sim::TwoChannelCoderState(codes, state);
    sim::ByteWriter writer;
    writer.Put(sim::kMagic).Fill(4, 0).Put(sim::kDefaultStationNode).Put(1);
    writer.Put<std::uint16_t>(341).Put<std::uint16_t>(1032).PutAll(codes);
    writer.Put(state.a.value).Put(state.b.value).Put(state.a.index).Put(state.b.index).Fill(4, 0);
    return writer.Get();
}

/// The 1,052 byte end-of-stream datagram for a controller.
inline sim::Bytes EndOfStreamBytes(std::uint32_t controller) {
    sim::ByteWriter writer;
    writer.Put(sim::kMagic).Fill(4, 0).Put(sim::kDefaultStationNode).Put(controller);
    writer.Put<std::uint16_t>(0x8112).Put<std::uint16_t>(1032).Fill(1034, 0);
    return writer.Get();
}

/// Sends requests to devices and takes their answers on 192.168.1.166:29001; it is in `station`.
class Station {
public:
    void Request(const std::string& device, std::uint32_t id, std::uint16_t command, sim::ByteView payload) const {
        m_socket.Send(sim::Pack(sim::MakePacket(sim::kDefaultStationNode, id, command, payload)),
                      {device, sim::kRequestPort});
    }
    void Play(const std::string& device, std::uint32_t id, std::uint32_t taskId, std::uint32_t zoneMask) const {
        Request(device, id, 0x0205, PlayPayload(taskId, zoneMask));
    }
    void CloseAudio(const std::string& device, std::uint32_t id, std::uint32_t taskId) const {
        sim::ByteWriter payload;
        payload.Put(taskId).Put(3);
        Request(device, id, 0x0101, payload.Get());
    }
    void Multicast(sim::ByteView bytes) const { m_socket.Send(bytes, kGroup); }

    /// The next packet, whatever its code.
    [[nodiscard]] std::optional<sim::Packet> Answer(std::chrono::milliseconds timeout = kSoon) const {
        const auto datagram = WaitForDatagram(m_socket, timeout);
        return datagram ? sim::Unpack(datagram->bytes) : std::nullopt;
    }
    /// The next packet's payload, empty unless it has this code.
    [[nodiscard]] sim::Bytes AnswerPayload(std::uint16_t command) const {
        const auto packet = Answer();
        if (!packet || packet->command != command) { return {}; }
        return {packet->payload.begin(), packet->payload.begin() + packet->length};
    }

private:
    const sim::UdpSocket m_socket = sim::UdpSocket::BoundTo({sim::kStationAddress, sim::kReplyPort});
};

} // namespace k740::test
