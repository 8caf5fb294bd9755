// When audio that a device hears begins and ends.
#pragma once

#include "sim/reactor.h"
#include "sim/udp_socket.h"

#include <chrono>
#include <functional>
#include <memory>

namespace k740::sim {

inline constexpr std::chrono::milliseconds kSilenceThatEndsAudio{500};

/// Told of every datagram with audio, tells when they begin to come and when none has come for half a second. Reactor's
/// thread only.
class AudioActivity {
public:
    /// @param begins  false: audio has ended
    /// @param last    arrival of the latest datagram
    using OnChange = std::function<void(bool begins, Clock::time_point last)>;

    AudioActivity(Reactor& reactor, OnChange onChange);

    void Heard(Clock::time_point arrival);
    /// Ends the audio, if any is going on.
    void End();

private:
    void LookAgain();

    Reactor& m_reactor;
    const OnChange m_onChange;
    std::shared_ptr<Clock::time_point> m_last; // empty in silence; the timer looks whether it is still there
};

} // namespace k740::sim
