// A paced stream of audio datagrams from a device to a multicast group or to another device.
#pragma once

#include "sim/bytes.h"
#include "sim/reactor.h"
#include "sim/udp_socket.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace k740::sim {

/// What a device streams, and how fast.
struct AudioStream {
    std::vector<std::int16_t> pcm{};         ///< 44.1 kHz mono; begins anew at its end; empty: silence
    std::optional<std::size_t> count{};      ///< datagrams after which the stream ends of itself; empty: on Stop
    std::uint16_t type = 341;                ///< one that carries audio
    std::uint32_t stream = 1;                ///< stream number in the header
    std::optional<std::uint32_t> node{};     ///< sender in the header; empty: the device itself
    std::chrono::microseconds period{46400}; ///< from datagram to datagram; below 1 ms only with a count
    unsigned loseEvery = 0;                  ///< every n-th datagram is coded but not sent; 0: all are sent
    std::vector<Bytes> datagrams{};          ///< whole datagrams to send in turn, in place of coded PCM; any bytes
};

/// Streams from one socket. Made and destroyed on the reactor's thread; its public functions are safe in every thread
/// and have taken effect when they return.
class AudioSource {
public:
    /// Called when a stream has begun and when it has ended, with the datagrams sent so far.
    using OnChange = std::function<void(bool begins, const Endpoint& receiver, std::size_t sent)>;

    /// @param socket    from which it sends; outlives the source
    /// @param device    ID of the device, for the header
    /// @param onChange  reactor's thread
    AudioSource(Reactor& reactor, const UdpSocket& socket, std::uint32_t device, OnChange onChange = {});
    ~AudioSource();
    AudioSource(const AudioSource&) = delete;
    AudioSource& operator=(const AudioSource&) = delete;

    /// Sends the first datagram now and the others on a grid of periods from then on. Ends an earlier stream.
    /// @throws std::invalid_argument for a type without audio, or for a period below 1 ms without a count;
    ///         std::system_error when there is no way to the receiver
    void Start(const Endpoint& receiver, const AudioStream& stream);
    void Stop();

    [[nodiscard]] bool IsStreaming() const;
    /// Datagrams sent since Start, lost ones not counted.
    [[nodiscard]] std::size_t Sent() const;

private:
    struct Progress;

    void SendNext(const std::shared_ptr<Progress>& progress);
    void Tell(bool begins, const Endpoint& receiver) const;
    void End();

    Reactor& m_reactor;
    const UdpSocket& m_socket;
    const std::uint32_t m_device;
    const OnChange m_onChange;

    // Of the reactor's thread.
    std::shared_ptr<Progress> m_progress; // of the present stream; timers look whether it is still there
    std::size_t m_sent = 0;
};

} // namespace k740::sim
