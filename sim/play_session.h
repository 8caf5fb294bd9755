// A zone controller's membership in the multicast group of one broadcast.
#pragma once

#include "sim/audio_activity.h"
#include "sim/reactor.h"
#include "sim/recording.h"
#include "sim/udp_socket.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace k740::sim {

/// Listens to the group of a play request from construction until Close and keeps what it heard. Reactor's thread only.
class PlaySession {
public:
    /// Told of what happens in the group.
    struct Listener {
        std::function<void(const Datagram&)> onEnd; ///< every end-of-stream datagram that is meant for the controller
        std::function<void(const PlaySession&, const Datagram&)> onAudio; ///< every datagram with audio
        /// Audio begins; or it ends, with silence or with the session.
        std::function<void(const PlaySession&, bool begins, Clock::time_point last)> onActivity;
        Recorder::Sink onSamples; ///< empty: nobody wants them
    };

    /// @param interfaceAddress  the controller's own
    /// @throws std::system_error when the group cannot be joined
    PlaySession(Reactor& reactor, std::uint32_t controller, const std::string& interfaceAddress,
                const PlayRequest& request, Keep keep, Listener listener);
    ~PlaySession();
    PlaySession(const PlaySession&) = delete;
    PlaySession& operator=(const PlaySession&) = delete;

    /// Takes what has arrived and leaves the group.
    void Close();
    [[nodiscard]] bool IsOpen() const { return m_socket.has_value(); }

    void AddZones(std::uint32_t mask) { m_recorder.SetZones(m_recorder.Zones() | mask); }
    [[nodiscard]] std::uint32_t Zones() const { return m_recorder.Zones(); }
    void RemoveZones(std::uint32_t mask) { m_recorder.SetZones(m_recorder.Zones() & ~mask); }

    [[nodiscard]] Endpoint Group() const { return {Heard().request.group, Heard().request.groupPort}; }
    [[nodiscard]] const Recording& Heard() const { return m_recorder.Get(); }

private:
    void ReceiveAll();

    Reactor& m_reactor;
    Recorder m_recorder;
    const Listener m_listener;
    AudioActivity m_activity;
    std::optional<UdpSocket> m_socket; // empty once the group is left
};

} // namespace k740::sim
