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
#include <string>
#include <vector>

namespace k740::sim {

/// How much of a stream of audio a device has heard or sent.
struct AudioCounts {
    std::uint32_t task = 0;     // of a broadcast
    std::uint32_t intercom = 0; // of intercom audio
    std::size_t datagrams = 0;
    std::size_t gaps = 0;
    std::optional<Clock::time_point> last; // datagram
};

/// What became of a command to the simulator.
struct CommandOutcome {
    std::string origin; // who gave it
    std::string text;
    std::string error;              // empty: done
    std::vector<std::string> lines; // what it tells
};

/// One thing that a device did or met. Audio datagrams are not noted here but counted in recordings; the beginning and
/// the end of audio are, and the end-of-stream datagrams meant for the device. Lost is what came, but was met as if the
/// network had lost it.
struct Event {
    enum class Kind {
        Received,
        Sent,
        Lost,
        JoinedGroup,
        LeftGroup,
        EndOfStream,
        AudioBegins, // of a broadcast, at a zone controller
        AudioEnds,
        IntercomBegins, // heard by a paging station
        IntercomEnds,
        StreamBegins, // that the device sends
        StreamEnds,
        Command
    };

    Clock::time_point time; // of the arrival, for what was received
    Kind kind = Kind::Received;
    std::uint32_t device = 0;     // ID of the device that received or sent
    std::uint16_t port = 0;       // the device's own
    Endpoint peer;                // sender or receiver; the group, for the kinds about one
    Bytes bytes;                  // the whole datagram
    std::optional<Packet> packet; // when the bytes are a command packet
    std::optional<AudioCounts> audio{};
    std::optional<CommandOutcome> command{};
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
    /// Events taken out of the journal, and how many were not kept for want of room since the last time.
    struct Batch {
        std::vector<Event> events;
        std::size_t dropped = 0;
    };

    /// Keeps at most that many events at a time, for those who take them out; all, unless set.
    void SetBound(std::size_t events);

    /// Notes an event; its packet is filled in here. A full journal only counts it.
    void Note(Event event);

    /// Blocks until there are events or the time is over. @return all there are; the journal is empty afterwards
    Batch Take(std::chrono::milliseconds timeout);

    /// Blocks until that many matching events have been noted, those from before the call included.
    /// @return the last of these, or nothing when the time is over first
    std::optional<Event> WaitFor(const EventFilter& filter, std::chrono::milliseconds timeout,
                                 std::size_t count = 1) const;

    [[nodiscard]] std::vector<Event> Events() const;
    [[nodiscard]] std::vector<Event> Events(const EventFilter& filter) const;
    [[nodiscard]] std::size_t Count(const EventFilter& filter) const;

private:
    mutable std::mutex m_lock;
    mutable std::condition_variable m_noted;
    // Guarded by m_lock.
    std::vector<Event> m_events;
    std::optional<std::size_t> m_bound;
    std::size_t m_dropped = 0;
};

} // namespace k740::sim
