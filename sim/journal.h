// Everything that simulated devices received and sent, with its time.
#pragma once

#include "sim/bytes.h"
#include "sim/udp_socket.h"
#include "sim/wire.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace k740::sim {

/// One thing that a device did or met. Audio is not noted here but counted in recordings; the end-of-stream datagrams
/// meant for the device are. Lost is what came, but was met as if the network had lost it.
struct Event {
    enum class Kind { Received, Sent, Lost, JoinedGroup, LeftGroup, EndOfStream };

    Clock::time_point time; // of the arrival, for what was received
    Kind kind = Kind::Received;
    std::uint32_t device = 0;     // ID of the device that received or sent
    std::uint16_t port = 0;       // the device's own
    Endpoint peer;                // sender or receiver; the group, for the kinds about one
    Bytes bytes;                  // the whole datagram
    std::optional<Packet> packet; // when the bytes are a command packet
};

using EventFilter = std::function<bool(const Event&)>;

/// Filters by device, direction and command code.
EventFilter Received(std::uint32_t device, std::uint16_t command);
EventFilter Sent(std::uint32_t device, std::uint16_t command);
/// The same for every device.
EventFilter Received(std::uint16_t command);
EventFilter Sent(std::uint16_t command);
/// A device joined or left a group, or got an end-of-stream datagram of its own.
EventFilter Happened(std::uint32_t device, Event::Kind kind);

/// The events in the order in which they were noted. All functions are safe in every thread.
class Journal {
public:
    /// Notes an event; its packet is filled in here.
    void Note(Event event);

    /// Blocks until that many matching events have been noted, those from before the call included.
    /// @return the last of these, or nothing when the time is over first
    std::optional<Event> WaitFor(const EventFilter& filter, std::chrono::milliseconds timeout,
                                 std::size_t count = 1) const;

    /// Blocks until there are more than `known` events.
    /// @return the events after the known ones; none when the time is over first
    std::vector<Event> WaitForMore(std::size_t known, std::chrono::milliseconds timeout) const;

    [[nodiscard]] std::vector<Event> Events() const;
    [[nodiscard]] std::vector<Event> Events(const EventFilter& filter) const;
    [[nodiscard]] std::size_t Count(const EventFilter& filter) const;

private:
    mutable std::mutex m_lock;
    mutable std::condition_variable m_noted;
    std::vector<Event> m_events; // guarded by m_lock
};

} // namespace k740::sim
