#include "sim/journal.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace k740::sim {
namespace {

EventFilter Command(Event::Kind kind, std::uint16_t command) {
    return [=](const Event& event) { return event.kind == kind && event.packet && event.packet->command == command; };
}

EventFilter Of(std::uint32_t device, EventFilter filter) {
    return [device, filter = std::move(filter)](const Event& event) { return event.device == device && filter(event); };
}

} // namespace

EventFilter Received(std::uint16_t command) {
    return Command(Event::Kind::Received, command);
}

EventFilter Sent(std::uint16_t command) {
    return Command(Event::Kind::Sent, command);
}

EventFilter Received(std::uint32_t device, std::uint16_t command) {
    return Of(device, Received(command));
}

EventFilter Sent(std::uint32_t device, std::uint16_t command) {
    return Of(device, Sent(command));
}

EventFilter Happened(std::uint32_t device, Event::Kind kind) {
    return [=](const Event& event) { return event.device == device && event.kind == kind; };
}

void Journal::Note(Event event) {
    event.packet = Unpack(event.bytes);
    {
        const std::lock_guard lock(m_lock);
        if (m_bound && m_events.size() >= *m_bound) {
            ++m_dropped;
            return;
        }
        m_events.push_back(std::move(event));
    }
    m_noted.notify_all();
}

void Journal::SetBound(std::size_t events) {
    const std::lock_guard lock(m_lock);
    m_bound = events;
}

Journal::Batch Journal::Take(std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_lock);
    m_noted.wait_for(lock, timeout, [this] { return !m_events.empty(); });
    return {std::exchange(m_events, {}), std::exchange(m_dropped, 0)};
}

std::optional<Event> Journal::WaitFor(const EventFilter& filter, std::chrono::milliseconds timeout,
                                      std::size_t count) const {
    std::unique_lock lock(m_lock);
    std::size_t examined = 0;
    std::size_t found = 0;
    const auto examineNew = [&] {
        while (examined < m_events.size() && found < count) {
            if (filter(m_events[examined++])) { ++found; }
        }
        return found == count;
    };
    if (!m_noted.wait_for(lock, timeout, examineNew)) { return std::nullopt; }
    return examined > 0 ? std::optional(m_events[examined - 1]) : std::nullopt;
}

std::vector<Event> Journal::Events() const {
    const std::lock_guard lock(m_lock);
    return m_events;
}

std::vector<Event> Journal::Events(const EventFilter& filter) const {
    const std::lock_guard lock(m_lock);
    std::vector<Event> matching;
    std::ranges::copy_if(m_events, std::back_inserter(matching), filter);
    return matching;
}

std::size_t Journal::Count(const EventFilter& filter) const {
    const std::lock_guard lock(m_lock);
    return static_cast<std::size_t>(std::ranges::count_if(m_events, filter));
}

} // namespace k740::sim
